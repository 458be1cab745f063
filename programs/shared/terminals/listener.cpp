#include "listener.h"

#include <QCoreApplication>
#include <QtEndian>

#include <cerrno>

#include <netinet/in.h>
#include <sys/socket.h>

QString Listener::listen(const QString& address, quint16 port)
{
    QHostAddress parsed;
    if (!parsed.setAddress(address))
        return QCoreApplication::translate("Listener", "that is no IP address");
    if (parsed == QHostAddress(QHostAddress::AnyIPv6))
        parsed = QHostAddress(QHostAddress::Any); // with IPv4
    if (!m_server.listen(parsed, port))
        return m_server.errorString();
    m_server.pauseAccepting();
    // Qt asks for a queue of 50, which overflows when all terminals come back at once; they would wait for seconds.
    ::listen(descriptor(), queue);
    return QString();
}

Listener::Caller Listener::accept() const
{
    sockaddr_storage peer{};
    auto* const address = reinterpret_cast<sockaddr*>(&peer);
    Caller caller;
    do {
        socklen_t size = sizeof peer;
        caller.socket = Descriptor(accept4(descriptor(), address, &size, SOCK_NONBLOCK | SOCK_CLOEXEC));
    } while (!caller.socket.isOpen() && (errno == EINTR || errno == ECONNABORTED));
    if (!caller.socket.isOpen()) {
        caller.error = errno == EAGAIN ? 0 : errno;
        return caller;
    }
    const quint16 port =
        qFromBigEndian(address->sa_family == AF_INET6 ? reinterpret_cast<const sockaddr_in6*>(&peer)->sin6_port
                                                      : reinterpret_cast<const sockaddr_in*>(&peer)->sin_port);
    caller.source = QHostAddress(address);
    bool isIPv4 = false;
    if (const quint32 number = caller.source.toIPv4Address(&isIPv4); isIPv4)
        caller.source = QHostAddress(number);
    caller.name = QCoreApplication::translate("Listener", "%1 port %2").arg(caller.source.toString()).arg(port);
    return caller;
}
