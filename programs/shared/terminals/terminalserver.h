#pragma once

#include "admission.h"
#include "descriptors.h"
#include "listener.h"
#include "messagelimit.h"
#include "terminalconnection.h"
#include "terminalsettings.h"

#include <QElapsedTimer>
#include <QObject>
#include <QString>
#include <QTimer>

#include <chrono>
#include <list>

QT_BEGIN_NAMESPACE
class QSocketNotifier;
QT_END_NAMESPACE

class PacketReceiver;

/** What a TerminalServer has seen since it was made. Every connection accepted is open or has ended in one way. */
struct TerminalCounters
{
    int open = 0; ///< Connections, now.
    qint64 accepted = 0;
    qint64 ended = 0;            ///< By the terminal or the network, between two packets.
    qint64 cutOff = 0;           ///< By the terminal or the network, in the middle of a packet or of rubbish.
    qint64 closedForRubbish = 0; ///< More than MaximumBuffer bytes without a good packet, or too many of all.
    qint64 closedForSilence = 0; ///< No good packet for IdleSeconds, or none at first.
    qint64 closedForObject = 0;  ///< The receiver does not let the object in.
    qint64 madeRoom = 0;         ///< For another connection, being the one longest without a good packet.
    qint64 closedHere = 0;       ///< By close() or drain().

    qint64 slowed = 0;             ///< Connections that have sent faster than BytesPerSecond.
    qint64 slowedMilliseconds = 0; ///< For which these had to wait, together.

    // Not accepted:
    qint64 refusedForAddress = 0; ///< In no network of AllowFrom.
    qint64 refusedPerAddress = 0; ///< While PerAddress of the same address were open.

    DecodeCounts decoded;
};

/**
 * Takes the connections of terminals and hands their packets and reports to a PacketReceiver.
 *
 * Of every packet its bytes are handed over first, then its further reports, then its own (PacketDecoder says more);
 * packets of one terminal in their order, and none between the bytes of another and its last report. What a terminal
 * sends harms its own connection only:
 * - MaximumBuffer bytes without a good packet (checksum and structure) end the connection, and so do IdleSeconds. A
 *   terminal that goes on sending half a packet, or byte after byte of rubbish, is silent in this sense, and so is one
 *   that sends the 545-byte form, which has no checksum. Who has not yet sent any good packet has 20 seconds.
 * - A packet whose rest does not come for TerminalSettings::pause no longer keeps back good ones behind it.
 * - One that sends faster than the receiver takes is not read for a while, so that it has to wait. The connections are
 *   served in turn, with the packets of some 64 reports at a time, for 5 ms of every turn of the event loop; a single
 *   report is not interrupted. A connection holds no more than a piece of 8 KiB, an unfinished packet, and the
 *   system's own buffers. One that goes on sending more than BytesPerSecond is read no faster, so that the good packets
 *   of one do not fill what takes those of all; nothing of it is dropped, nor is it closed for that. When all hold more
 *   than 32 MiB of unfinished packets, one that adds to a large one is closed.
 * - When MaximumConnections are open, or as many as the system allows, the one that has gone longest without a good
 *   packet makes room for the next; those that never sent one go first. What came from it is served before.
 *
 * Everything happens in the thread's event loop. While a receiver runs an event loop of its own, nothing further is
 * handed over; terminals wait, and none is closed for that. In takePacket() and takeReport() a receiver may close or
 * destroy the server; letsIn() only answers.
 */
class TerminalServer : public QObject
{
    Q_OBJECT

public:
    /** @p receiver is not owned and has to outlive this. */
    TerminalServer(PacketReceiver& receiver, const TerminalSettings& settings, QObject* parent = nullptr);
    /** As close() does, but without a word. */
    ~TerminalServer() override;

    /** Starts to listen. @return whether it does; if not, errorString() says why */
    bool listen();
    /** Ends all connections and listens no more; what has come and was not handed over is lost. */
    void close();
    /**
     * Listens no more, reads what the connections hold at this moment in the system's buffers too, those that wait to
     * be accepted among them as far as there is room, hands it over and ends them, within this time; then as close().
     * Needs no event loop. While reading is off, nothing is read here either.
     */
    void drain(std::chrono::milliseconds most);

    /**
     * Whether packets are taken; at first they are. While they are not, terminals wait: their connections are accepted
     * up to the limit, beyond it wait too, and none is closed. The reports of a packet handed over still follow it.
     */
    void setReading(bool reading);

    QString errorString() const { return m_error; }    ///< One sentence, of the last listen() that failed.
    quint16 port() const { return m_listener.port(); } ///< 0 unless it listens.
    TerminalCounters counters() const;

Q_SIGNALS:
    /**
     * Something to be logged: where it listens, a connection taken, refused or closed and why, with its terminal's
     * address. At most 20 texts a second, in which terminals come and go; then one says how many were left out. Not to
     * be answered by closing or destroying the server at once.
     */
    void happened(const QString& text);
    /** The counters are not what they were; at most four times a second. */
    void countersChanged();

private:
    using Connection = TerminalConnection;
    using Connections = std::list<Connection>;

    int open() const { return static_cast<int>(m_newcomers.size() + m_known.size()); }
    QString startToListen();
    bool await(int descriptor, Connection* connection);
    void stopListening();
    void collectEvents();
    bool mayAccept();
    void acceptPending();
    bool acceptOne();
    bool admits(const Listener::Caller& caller);
    Connection* leastMissed();
    void enqueue(Connection& connection);
    bool hasWork() const;
    void turn();
    void serveStep();
    void handOver(Connection& connection);
    void settle(Connection& connection);
    void drop(Connection& connection, qint64 TerminalCounters::*counter, const QString& reason);
    Connection* firstSilent();
    void tick();
    void letTimePass(qint64 milliseconds);
    void tell(const QString& text);
    void tellLeftOut(bool now);

    PacketReceiver& m_receiver;
    const TerminalSettings m_settings;
    int m_mostConnections;
    QString m_error;
    Listener m_listener;
    Descriptor m_events; // of epoll
    QSocketNotifier* m_notifier = nullptr;
    bool m_callers = false; // there may be connections to be accepted
    Admission m_admission;
    TerminalCounters m_counters; // without what the open connections have decoded
    bool m_countersChanged = false;
    Connections m_newcomers;         // never sent a good packet, in the order of their coming
    Connections m_known;             // in the order of their last good packets
    std::list<Connection*> m_ready;  // have something to be read
    qint64 m_held = 0;               // bytes of them that wait for more
    Connection* m_current = nullptr; // being served, in no queue
    int m_served = 0;                // packets and reports of it, in its present turn
    bool m_turning = false;
    bool m_reading = true;
    QTimer m_turnTimer;
    QTimer m_tickTimer;
    QElapsedTimer m_sinceTick;
    MessageLimit m_messages;
};
