#pragma once

#include "descriptors.h"

#include <QHostAddress>
#include <QString>
#include <QTcpServer>

/** A port at which connections wait to be taken; told of by whoever waits for its descriptor. */
class Listener
{
public:
    /** A connection, not blocking, or that there is none. */
    struct Caller
    {
        Descriptor socket;   ///< Not open if there is none.
        int error = 0;       ///< Then: an errno if it could not be taken, 0 if none waits.
        QHostAddress source; ///< IPv4 that came as IPv6 is IPv4.
        QString name;        ///< Address and port, for people.
    };

    static constexpr int queue = 4096; ///< Connections that the system keeps waiting.

    /** Starts to listen; at :: for IPv4 too. @return empty, or why it does not */
    QString listen(const QString& address, quint16 port);
    void close() { m_server.close(); }

    quint16 port() const { return m_server.serverPort(); }                           ///< 0 unless it listens.
    int descriptor() const { return static_cast<int>(m_server.socketDescriptor()); } ///< -1 unless it listens.
    Caller accept() const;

private:
    QTcpServer m_server; // its connections are accepted here
};
