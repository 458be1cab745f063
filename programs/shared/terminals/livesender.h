#pragma once

#include "simulation.h"

#include <QElapsedTimer>
#include <QHostAddress>
#include <QObject>
#include <QString>
#include <QTimer>

#include <vector>

QT_BEGIN_NAMESPACE
class QTcpSocket;
QT_END_NAMESPACE

/** Where simulated terminals send to, and how often. */
struct LiveSettings
{
    QString host; ///< A name or an address.
    quint16 port = 0;
    double rate = 1; ///< Packets a second of every terminal, leastRate to mostRate.
    int packets = 0; ///< Of every terminal; 0: as many as come in the simulation's minutes.

    static constexpr double leastRate = 0.02;
    static constexpr double mostRate = 100;
};

/**
 * Lets simulated terminals send as real ones do: every terminal over a TCP connection of its own, at its own moments,
 * with the time of the moment in its packets.
 *
 * Sending begins when all are connected, the terminals spread evenly over the time between two packets of one; every
 * terminal sends the packets that are asked for. It is all done in the thread's event loop.
 */
class LiveSender : public QObject
{
    Q_OBJECT

public:
    LiveSender(const SimulationSettings& simulation, const LiveSettings& live, QObject* parent = nullptr);

    /** Begins to connect; once. */
    void start();

Q_SIGNALS:
    /**
     * All is sent and handed to the system, or it went wrong, which ends all connections: then @p error says in one
     * sentence what did, otherwise it is empty. Emitted once.
     */
    void finished(const QString& error);

private:
    struct Line
    {
        Terminal terminal;
        QTcpSocket* socket; // owned by the sender
        bool connected = false;
    };

    void connectMore();
    void handleConnected(std::size_t index);
    void handleError(std::size_t index);
    void handleDisconnected();
    void sendDue();
    void hangUp();
    void finish(const QString& error);

    const LiveSettings m_live;
    const QString m_place;  // HOST:PORT, as people are told
    const qint64 m_packets; // of all terminals
    std::vector<Line> m_lines;
    std::size_t m_dialled = 0;
    std::size_t m_connected = 0;
    QHostAddress m_address; // what the first connection found the host at
    QElapsedTimer m_sinceBegin;
    QTimer m_timer;
    qint64 m_sent = 0;
    bool m_hangingUp = false;
    bool m_finished = false;
};
