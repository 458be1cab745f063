#include "livesender.h"

#include "descriptors.h"

#include <QDateTime>
#include <QTcpSocket>

#include <algorithm>
#include <cmath>

namespace {

constexpr std::size_t dialledAtOnce = 32; // a listener's queue overflows at some more
constexpr double leastPause = 5;          // ms between two looks at what is due
constexpr qint64 mostUnsent = 1 << 20;    // bytes of one terminal

QString placeText(const LiveSettings& live)
{
    return (live.host.contains(QLatin1Char(':')) ? QStringLiteral("[%1]:%2") : QStringLiteral("%1:%2"))
        .arg(live.host, QString::number(live.port));
}

qint64 packetsOfEach(const SimulationSettings& simulation, const LiveSettings& live)
{
    return live.packets > 0 ? live.packets : static_cast<qint64>(std::ceil(simulation.minutes * 60.0 * live.rate));
}

} // namespace

LiveSender::LiveSender(const SimulationSettings& simulation, const LiveSettings& live, QObject* parent)
    : QObject(parent),
      m_live(live),
      m_place(placeText(live)),
      m_packets(packetsOfEach(simulation, live) * simulation.terminals)
{
    m_lines.reserve(static_cast<std::size_t>(simulation.terminals));
    for (int number = 1; number <= simulation.terminals; ++number)
        m_lines.push_back({Terminal(static_cast<qint16>(number), simulation.seed), new QTcpSocket(this)});
    m_timer.setSingleShot(true);
    m_timer.setTimerType(Qt::PreciseTimer);
    connect(&m_timer, &QTimer::timeout, this, &LiveSender::sendDue);
}

void LiveSender::start()
{
    // Where this is refused, the connection that finds none left says so.
    allowDescriptors(static_cast<int>(m_lines.size()));
    connectMore();
}

void LiveSender::connectMore()
{
    // The first alone: it finds which of the host's addresses answers.
    const std::size_t atOnce = m_connected == 0 ? 1 : dialledAtOnce;
    while (!m_finished && m_dialled < m_lines.size() && m_dialled < m_connected + atOnce) {
        const std::size_t index = m_dialled++;
        QTcpSocket* const socket = m_lines[index].socket;
        connect(socket, &QTcpSocket::connected, this, [this, index] { handleConnected(index); });
        connect(socket, &QTcpSocket::disconnected, this, &LiveSender::handleDisconnected);
        connect(socket, &QTcpSocket::errorOccurred, this, [this, index] { handleError(index); });
        if (index == 0)
            socket->connectToHost(m_live.host, m_live.port);
        else
            socket->connectToHost(m_address, m_live.port);
    }
}

void LiveSender::handleConnected(std::size_t index)
{
    m_lines[index].connected = true;
    if (m_connected == 0)
        m_address = m_lines.front().socket->peerAddress();
    if (++m_connected < m_lines.size()) {
        connectMore();
        return;
    }
    m_sinceBegin.start();
    sendDue();
}

void LiveSender::handleError(std::size_t index)
{
    const QTcpSocket& socket = *m_lines[index].socket;
    if (m_hangingUp && socket.bytesToWrite() == 0)
        return; // it has got all
    const QString sentence = m_lines[index].connected ? QStringLiteral("terminal %1 has lost its connection to %2: %3")
                                                      : QStringLiteral("cannot connect terminal %1 to %2: %3");
    finish(sentence.arg(QString::number(index + 1), m_place, socket.errorString()));
}

void LiveSender::sendDue()
{
    const double period = 1 / m_live.rate;
    const auto count = static_cast<qint64>(m_lines.size());
    const double packetsAMillisecond = static_cast<double>(count) * m_live.rate / 1000;
    const double now = static_cast<double>(QDateTime::currentMSecsSinceEpoch()) / 1000;
    const auto elapsed = static_cast<double>(m_sinceBegin.elapsed());
    for (; m_sent < m_packets && static_cast<double>(m_sent) <= elapsed * packetsAMillisecond; ++m_sent) {
        const auto index = static_cast<std::size_t>(m_sent % count);
        Line& line = m_lines[index];
        line.socket->write(line.terminal.driveUntil(now, period));
        if (m_finished)
            return;
        if (line.socket->bytesToWrite() > mostUnsent) {
            finish(QStringLiteral("%1 does not take the packets of terminal %2").arg(m_place).arg(index + 1));
            return;
        }
    }
    if (m_sent == m_packets)
        hangUp();
    else
        m_timer.start(static_cast<int>(
            std::ceil(std::max(leastPause, static_cast<double>(m_sent) / packetsAMillisecond - elapsed))));
}

void LiveSender::hangUp()
{
    m_hangingUp = true;
    for (const Line& line : m_lines) {
        if (!m_finished)
            line.socket->disconnectFromHost(); // once all that is written has been sent
    }
}

void LiveSender::handleDisconnected()
{
    if (m_hangingUp && --m_connected == 0)
        finish(QString());
}

void LiveSender::finish(const QString& error)
{
    if (m_finished)
        return;
    m_finished = true;
    m_timer.stop();
    for (const Line& line : m_lines)
        line.socket->abort();
    Q_EMIT finished(error);
}
