#include "receiver.h"

#include "commandline.h"
#include "receiversettings.h"
#include "service.h"

#include <QDateTime>

#include <algorithm>
#include <utility>

#include <poll.h>
#include <unistd.h>

using namespace std::chrono_literals;

namespace {

constexpr auto drainTime = 2s;
constexpr auto stopTime = 6s;     // for the archive
constexpr int pulseInterval = 20; // ms
constexpr int statusInterval = 60'000;
constexpr int metricsInterval = 5'000;

} // namespace

Receiver::Receiver(const ReceiverSettings& settings, QObject* parent)
    : QObject(parent),
      m_metrics(settings.metrics),
      m_reception(settings.reception),
      m_server(m_reception, settings.terminals),
      m_started(QDateTime::currentMSecsSinceEpoch())
{
    connect(&m_reception, &Reception::happened, this, &Receiver::tell);
    connect(&m_reception, &Reception::roomChanged, &m_server, &TerminalServer::setReading);
    connect(&m_server, &TerminalServer::happened, this, &Receiver::tell);
    connect(&m_statusTimer, &QTimer::timeout, this, &Receiver::tellStatus);
    connect(&m_metricsTimer, &QTimer::timeout, this, &Receiver::showMetrics);
    m_pulseTimer.setTimerType(Qt::PreciseTimer);
    connect(&m_pulseTimer, &QTimer::timeout, this, &Receiver::handlePulse);
    connect(&m_watchdogTimer, &QTimer::timeout, this, &Service::feedWatchdog);
}

QString Receiver::start()
{
    m_running.start();
    const QString error = m_reception.start();
    if (!error.isEmpty())
        return error;
    if (!m_server.listen())
        return m_server.errorString();
    m_toldLast = state();
    m_sincePulse.start();
    m_pulseTimer.start(pulseInterval);
    m_statusTimer.start(statusInterval);
    m_metricsTimer.start(metricsInterval);
    if (Service::watchdogInterval() > 0)
        m_watchdogTimer.start(Service::watchdogInterval());
    showMetrics();
    Service::tellReady();
    return {};
}

bool Receiver::stop()
{
    Service::tellStopping();
    m_server.drain(drainTime);
    const bool ended = m_reception.finish(stopTime);
    tellStatus();
    showMetrics();
    return ended;
}

/// A reader of standard error that no longer reads must not stop the service.
void Receiver::tell(const QString& text)
{
    pollfd errors{STDERR_FILENO, POLLOUT, 0};
    if (::poll(&errors, 1, 0) == 0) {
        ++m_untold;
        return;
    }
    if (const qint64 untold = std::exchange(m_untold, 0); untold > 0)
        tellError(tr("%1 messages were left out, as nobody read them").arg(untold));
    tellError(text);
}

ReceiverState Receiver::state() const
{
    return {m_started,
            QDateTime::currentMSecsSinceEpoch(),
            m_running.elapsed(),
            m_server.counters(),
            m_reception.counters(),
            m_longestStall};
}

void Receiver::handlePulse()
{
    m_longestStall = std::max(m_longestStall, m_sincePulse.restart() - pulseInterval);
}

void Receiver::tellStatus()
{
    const ReceiverState now = state();
    const QString line = statusLine(now, m_toldLast);
    m_toldLast = now;
    tell(line);
    Service::tellStatus(line);
}

void Receiver::showMetrics()
{
    const QString error = writeMetrics(m_metrics, metricsText(state()));
    if (!error.isEmpty() && !m_metricsTrouble)
        tell(tr("cannot write the metrics to %1: %2 (all else goes on)").arg(m_metrics, error));
    m_metricsTrouble = !error.isEmpty();
}
