#pragma once

#include "messagelimit.h"
#include "packetdecoder.h"
#include "terminalsettings.h"

#include <QElapsedTimer>
#include <QObject>
#include <QString>
#include <QTcpServer>
#include <QTimer>

#include <deque>
#include <memory>
#include <vector>

class DataPumpNotifyer;

/** What a TerminalServer has seen since it was made. */
struct TerminalCounters
{
    int open = 0; ///< Connections, now.
    qint64 accepted = 0;
    qint64 refused = 0;          ///< While MaximumConnections were open.
    qint64 ended = 0;            ///< By the terminal or the network, between two packets.
    qint64 cutOff = 0;           ///< By the terminal or the network, in the middle of a packet or of rubbish.
    qint64 closedForRubbish = 0; ///< More than MaximumBuffer bytes without a good packet.
    qint64 closedForSilence = 0; ///< No good packet for IdleSeconds.
    DecodeCounts decoded;
};

/**
 * Takes the connections of terminals and announces their reports through the hub.
 *
 * Of every packet the further reports are announced first, then its own (PacketDecoder says more); packets of one
 * terminal in their order. What a terminal sends harms its own connection only:
 * - MaximumBuffer bytes without a good packet (checksum and structure) end the connection, and so do IdleSeconds. A
 *   terminal that goes on sending half a packet, or byte after byte of rubbish, is silent in this sense.
 * - A packet whose rest does not come for TerminalSettings::pause no longer keeps back good ones behind it.
 * - One that sends faster than the receivers take is not read for a while, so that it has to wait. The connections are
 *   served in turn, with the packets of some 64 reports at a time, for 5 ms of every turn of the event loop; a single
 *   report is not interrupted. A connection holds no more than two pieces of 16 KiB, an unfinished packet, and the
 *   system's own buffers.
 * - Connections are taken in a few at a time, and beyond MaximumConnections closed at once.
 *
 * Everything happens in the thread's event loop. While a receiver of a report runs an event loop of its own, no further
 * report is announced; terminals wait, and none is closed for that. A receiver may close or destroy the server.
 */
class TerminalServer : public QObject
{
    Q_OBJECT

public:
    /** @p hub is not owned and has to outlive this. */
    TerminalServer(DataPumpNotifyer& hub, const TerminalSettings& settings, QObject* parent = nullptr);
    /** As close() does, but without a word. */
    ~TerminalServer() override;

    /** Starts to listen. @return whether it does; if not, errorString() says why */
    bool listen();
    /** Ends all connections and listens no more; what has come and was not announced is lost. */
    void close();

    QString errorString() const { return m_error; }        ///< One sentence, of the last listen() that failed.
    quint16 port() const { return m_server.serverPort(); } ///< 0 unless it listens.
    TerminalCounters counters() const;

Q_SIGNALS:
    /**
     * Something to be logged: where it listens, a connection taken, refused or closed and why, with its terminal's
     * address. At most 20 texts a second, in which terminals come and go; then one says how many were left out. Not to
     * be answered by destroying the server at once.
     */
    void happened(const QString& text);
    /** The counters are not what they were; at most four times a second. */
    void countersChanged();

private:
    struct Connection;

    void acceptPending();
    void accept(QTcpSocket* socket);
    void enqueue(Connection& connection);
    void turn();
    bool serveStep();
    void refill(Connection& connection);
    void settle(Connection& connection);
    void drop(Connection& connection, qint64 TerminalCounters::*counter, const QString& reason);
    Connection* firstSilent() const;
    void tick();
    void tell(const QString& text);
    void tellLeftOut(bool now);

    DataPumpNotifyer& m_hub;
    const TerminalSettings m_settings;
    QString m_error;
    QTcpServer m_server;
    TerminalCounters m_counters; // without what the open connections have decoded
    bool m_countersChanged = false;
    std::vector<std::unique_ptr<Connection>> m_connections;
    std::deque<Connection*> m_ready; // have something to be read
    Connection* m_current = nullptr; // being served, in no queue
    int m_served = 0;                // reports of it, in its present turn
    bool m_turning = false;
    QTimer m_turnTimer;
    QTimer m_tickTimer;
    QElapsedTimer m_sinceTick;
    MessageLimit m_messages;
};
