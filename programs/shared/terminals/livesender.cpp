#include "livesender.h"

#include <QDateTime>
#include <QSocketNotifier>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cmath>

#include <netdb.h>
#include <sys/epoll.h>
#include <sys/socket.h>

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
        m_lines.push_back({Terminal(static_cast<qint16>(number), simulation.seed), Descriptor(), false, QByteArray()});
    m_timer.setSingleShot(true);
    m_timer.setTimerType(Qt::PreciseTimer);
    connect(&m_timer, &QTimer::timeout, this, &LiveSender::sendDue);
}

LiveSender::~LiveSender() = default;

void LiveSender::FreeAddresses::operator()(addrinfo* addresses) const
{
    freeaddrinfo(addresses);
}

void LiveSender::start()
{
    // Where this is refused, the connection that finds none left says so.
    allowDescriptors(static_cast<int>(m_lines.size()));
    addrinfo hints{};
    hints.ai_socktype = SOCK_STREAM;
    addrinfo* found = nullptr;
    const QByteArray port = QByteArray::number(m_live.port);
    if (const int error = getaddrinfo(m_live.host.toUtf8().constData(), port.constData(), &hints, &found); error != 0)
        return handleError(0, QString::fromLocal8Bit(gai_strerror(error)));
    m_addresses.reset(found);
    m_address = found;
    m_events = Descriptor(epoll_create1(EPOLL_CLOEXEC));
    if (!m_events.isOpen())
        return handleError(0, qt_error_string(errno));
    // Qt's event loop would ask about every socket at each turn.
    auto* const notifier = new QSocketNotifier(m_events.get(), QSocketNotifier::Read, this);
    connect(notifier, &QSocketNotifier::activated, this, &LiveSender::handleEvents);
    dialMore();
}

void LiveSender::dialMore()
{
    // The first alone: it finds which of the host's addresses answers.
    const std::size_t atOnce = m_connected == 0 ? 1 : dialledAtOnce;
    while (!m_finished && m_dialled < m_lines.size() && m_dialled < m_connected + atOnce)
        dial(m_dialled++);
}

void LiveSender::dial(std::size_t index)
{
    Line& line = m_lines[index];
    line.socket = Descriptor(::socket(m_address->ai_family, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0));
    const int socket = line.socket.get();
    epoll_event event{};
    event.events = EPOLLIN | EPOLLOUT | EPOLLRDHUP | EPOLLET;
    event.data.u64 = index;
    // Waited for once it dials, as one that does not is told of as hung up.
    const bool dials =
        socket >= 0 && (::connect(socket, m_address->ai_addr, m_address->ai_addrlen) == 0 || errno == EINPROGRESS);
    if (!dials || epoll_ctl(m_events.get(), EPOLL_CTL_ADD, socket, &event) != 0)
        handleError(index, qt_error_string(errno));
}

void LiveSender::handleEvents()
{
    std::array<epoll_event, 256> events;
    const int count = epoll_wait(m_events.get(), events.data(), static_cast<int>(events.size()), 0);
    for (int i = 0; i < count && !m_finished; ++i) {
        const epoll_event& event = events[static_cast<std::size_t>(i)];
        handleEvent(static_cast<std::size_t>(event.data.u64), event.events);
    }
}

void LiveSender::handleEvent(std::size_t index, quint32 events)
{
    Line& line = m_lines[index];
    if (!line.socket.isOpen())
        return; // of an address tried before, or hung up
    if (!line.connected) {
        handleDialled(index);
        return;
    }
    std::array<char, 1 << 12> answer; // a terminal does not listen
    ssize_t size = 1;
    while ((events & (EPOLLIN | EPOLLRDHUP | EPOLLHUP | EPOLLERR)) != 0 && size > 0)
        size = recv(line.socket.get(), answer.data(), answer.size(), 0);
    if (size == 0)
        handleError(index, QStringLiteral("it has closed the connection"));
    else if (size < 0 && errno != EAGAIN && errno != EINTR)
        handleError(index, qt_error_string(errno));
    else if (!line.unsent.isEmpty() && send(index, QByteArray()) && m_hangingUp)
        hangUp(line);
}

void LiveSender::handleDialled(std::size_t index)
{
    int error = 0;
    socklen_t size = sizeof error;
    getsockopt(m_lines[index].socket.get(), SOL_SOCKET, SO_ERROR, &error, &size);
    if (error != 0)
        return handleError(index, qt_error_string(error));
    m_lines[index].connected = true;
    if (++m_connected < m_lines.size()) {
        dialMore();
        return;
    }
    m_sinceBegin.start();
    sendDue();
}

void LiveSender::handleError(std::size_t index, const QString& error)
{
    if (m_connected == 0 && m_address && m_address->ai_next) {
        m_address = m_address->ai_next;
        dial(index);
        return;
    }
    const QString sentence = m_lines[index].connected ? QStringLiteral("terminal %1 has lost its connection to %2: %3")
                                                      : QStringLiteral("cannot connect terminal %1 to %2: %3");
    finish(sentence.arg(QString::number(index + 1), m_place, error));
}

/// After what the system did not take before. @return whether it goes on
bool LiveSender::send(std::size_t index, const QByteArray& bytes)
{
    Line& line = m_lines[index];
    line.unsent += bytes; // shares them if there was nothing
    const ssize_t size =
        ::send(line.socket.get(), line.unsent.constData(), static_cast<std::size_t>(line.unsent.size()), MSG_NOSIGNAL);
    if (size < 0 && errno != EAGAIN && errno != EINTR) {
        handleError(index, qt_error_string(errno));
        return false;
    }
    if (size == line.unsent.size())
        line.unsent = QByteArray();
    else if (size > 0)
        line.unsent.remove(0, static_cast<int>(size));
    if (line.unsent.size() <= mostUnsent)
        return true;
    finish(QStringLiteral("%1 does not take the packets of terminal %2").arg(m_place).arg(index + 1));
    return false;
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
        if (!send(index, m_lines[index].terminal.driveUntil(now, period)))
            return;
    }
    if (m_sent < m_packets) {
        m_timer.start(static_cast<int>(
            std::ceil(std::max(leastPause, static_cast<double>(m_sent) / packetsAMillisecond - elapsed))));
        return;
    }
    m_hangingUp = true;
    for (Line& line : m_lines)
        hangUp(line);
}

/// Once all has been handed to the system.
void LiveSender::hangUp(Line& line)
{
    if (!line.unsent.isEmpty())
        return;
    line.socket = Descriptor();
    if (--m_connected == 0)
        finish(QString());
}

void LiveSender::finish(const QString& error)
{
    if (m_finished)
        return;
    m_finished = true;
    m_timer.stop();
    for (Line& line : m_lines)
        line.socket = Descriptor();
    Q_EMIT finished(error);
}
