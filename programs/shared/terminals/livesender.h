#pragma once

#include "descriptors.h"
#include "simulation.h"

#include <QByteArray>
#include <QElapsedTimer>
#include <QObject>
#include <QString>
#include <QTimer>

#include <memory>
#include <vector>

struct addrinfo;

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

    ~LiveSender() override;

    /** Looks the host up, which is waited for, and begins to connect; once. */
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
        Descriptor socket;
        bool connected = false;
        QByteArray unsent; // what the system did not take yet
    };
    struct FreeAddresses
    {
        void operator()(addrinfo* addresses) const;
    };

    void dialMore();
    void dial(std::size_t index);
    void handleEvents();
    void handleEvent(std::size_t index, quint32 events);
    void handleDialled(std::size_t index);
    void handleError(std::size_t index, const QString& error);
    bool send(std::size_t index, const QByteArray& bytes);
    void sendDue();
    void hangUp(Line& line);
    void finish(const QString& error);

    const LiveSettings m_live;
    const QString m_place;  // HOST:PORT, as people are told
    const qint64 m_packets; // of all terminals
    std::vector<Line> m_lines;
    std::size_t m_dialled = 0;
    std::size_t m_connected = 0;
    std::unique_ptr<addrinfo, FreeAddresses> m_addresses; // of the host
    const addrinfo* m_address = nullptr;                  // at which the first connection finds it
    Descriptor m_events;                                  // of epoll
    QElapsedTimer m_sinceBegin;
    QTimer m_timer;
    qint64 m_sent = 0;
    bool m_hangingUp = false;
    bool m_finished = false;
};
