#include "fleet.h"

#include "packetbuilder.h"

#include <QDateTime>
#include <QDeadlineTimer>

#include <arpa/inet.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

Fleet::Fleet(quint16 port, quint32 first, int terminals, int packetsASecond)
    : m_port(port), m_first(first), m_rate(packetsASecond), m_terminals(static_cast<std::size_t>(terminals))
{}

Fleet::~Fleet()
{
    finish();
}

QByteArray Fleet::packetOf(quint32 object, quint32 time)
{
    return PacketBuilder(static_cast<qint16>(object))
        .group({RecordBuilder(1).little32(time)})
        .group({RecordBuilder(sensor).byte(static_cast<quint8>(valueAt(time)))})
        .sealed();
}

bool Fleet::isConnected(Terminal& terminal) const
{
    if (terminal.descriptor >= 0)
        return true;
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(m_port);
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    terminal.descriptor = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    if (::connect(terminal.descriptor, reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0)
        return true;
    ::close(terminal.descriptor);
    terminal.descriptor = -1;
    return false;
}

void Fleet::run()
{
    constexpr int turnMilliseconds = 10;
    std::size_t next = 0;
    while (!m_ending) {
        for (int i = 0; i < m_rate * turnMilliseconds / 1000; ++i) {
            const std::size_t index = next++ % m_terminals.size();
            Terminal& terminal = m_terminals[index];
            if (!isConnected(terminal))
                continue;
            const quint32 object = m_first + static_cast<quint32>(index);
            const QByteArray packet = packetOf(object, terminal.time);
            const qint64 now = QDateTime::currentMSecsSinceEpoch();
            const bool sent = ::send(terminal.descriptor, packet.constData(), static_cast<std::size_t>(packet.size()),
                                     MSG_NOSIGNAL) == packet.size();
            m_reports.push_back({object, terminal.time++, sent ? now : 0});
            if (!sent) {
                ::close(terminal.descriptor);
                terminal.descriptor = -1;
            }
        }
        msleep(turnMilliseconds);
    }
    const QDeadlineTimer deadline(m_patient ? 20'000 : 0);
    for (Terminal& terminal : m_terminals)
        ::shutdown(terminal.descriptor, SHUT_WR);
    for (const Terminal& terminal : m_terminals) {
        pollfd closed{terminal.descriptor, POLLIN, 0};
        ::poll(&closed, terminal.descriptor < 0 ? 0 : 1, static_cast<int>(deadline.remainingTime()));
        ::close(terminal.descriptor);
    }
}

void Fleet::stop()
{
    m_patient = false;
    finish();
}

void Fleet::finish()
{
    m_ending = true;
    wait();
}
