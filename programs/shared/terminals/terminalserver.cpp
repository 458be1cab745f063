#include "terminalserver.h"

#include "packetreceiver.h"

#include <Pardel/mobdata.h>

#include <QPointer>
#include <QSocketNotifier>

#include <algorithm>
#include <array>
#include <cerrno>
#include <utility>

#include <sys/epoll.h>

namespace {

constexpr qint64 turnMilliseconds = 5; // of work between two looks of the event loop at everything else
constexpr int servedAtATime = 64;      // packets and reports of one connection
constexpr int acceptedAtOnce = 64;     // connections
constexpr qint64 largePacket = 4096;   // bytes, of which no terminal that behaves has many unfinished
constexpr int lookedAt = 64;           // connections, for one that makes room
constexpr qint64 longestTick = 250;    // ms

qint64 TerminalCounters::*counterOf(TerminalConnection::End end)
{
    switch (end) {
    case TerminalConnection::Ended: return &TerminalCounters::ended;
    case TerminalConnection::CutOff: return &TerminalCounters::cutOff;
    case TerminalConnection::Drained: break;
    }
    return &TerminalCounters::closedHere;
}

} // namespace

TerminalServer::TerminalServer(PacketReceiver& receiver, const TerminalSettings& settings, QObject* parent)
    : QObject(parent),
      m_receiver(receiver),
      m_settings(settings),
      m_mostConnections(settings.maximumConnections),
      m_admission(settings)
{
    // A timer, not a posted event: posted events that post again keep the event loop from everything else.
    m_turnTimer.setSingleShot(true);
    m_turnTimer.setInterval(0);
    connect(&m_turnTimer, &QTimer::timeout, this, &TerminalServer::turn);
    const auto shortest = std::min({settings.idle, settings.newcomer, settings.pause});
    m_tickTimer.setInterval(static_cast<int>(std::clamp<qint64>(shortest.count() / 4, 1, longestTick)));
    connect(&m_tickTimer, &QTimer::timeout, this, &TerminalServer::tick);
}

TerminalServer::~TerminalServer()
{
    const QSignalBlocker silent(this);
    close();
}

bool TerminalServer::listen()
{
    if (m_notifier)
        return true;
    m_error = startToListen();
    if (!m_error.isEmpty()) {
        m_error = tr("cannot listen on %1 port %2: %3").arg(m_settings.address).arg(m_settings.port).arg(m_error);
        close();
        return false;
    }
    // Qt's event loop asks about every socket of its own at each turn, epoll tells of those alone at which something
    // is.
    m_notifier = new QSocketNotifier(m_events.get(), QSocketNotifier::Read, this);
    connect(m_notifier, &QSocketNotifier::activated, this, [this] {
        collectEvents();
        turn();
    });
    for (const QString& complaint : m_settings.complaints)
        tell(complaint);
    m_mostConnections = std::max(1, allowDescriptors(m_settings.maximumConnections));
    if (m_mostConnections < m_settings.maximumConnections)
        tell(tr("the system lets this program open %1 connections, not %2")
                 .arg(m_mostConnections)
                 .arg(m_settings.maximumConnections));
    tell(tr("listening on %1 port %2").arg(m_settings.address).arg(port()));
    m_sinceTick.start();
    m_tickTimer.start();
    return true;
}

/// @return empty, or why it does not
QString TerminalServer::startToListen()
{
    if (const QString error = m_listener.listen(m_settings.address, m_settings.port); !error.isEmpty())
        return error;
    m_events = Descriptor(epoll_create1(EPOLL_CLOEXEC));
    return m_events.isOpen() && await(m_listener.descriptor(), nullptr) ? QString() : qt_error_string(errno);
}

/// Lets epoll tell once whenever something comes, as it may have to wait here. @return whether it does
bool TerminalServer::await(int descriptor, Connection* connection)
{
    epoll_event event{};
    event.events = EPOLLIN | EPOLLRDHUP | EPOLLET;
    event.data.ptr = connection;
    return epoll_ctl(m_events.get(), EPOLL_CTL_ADD, descriptor, &event) == 0;
}

void TerminalServer::close()
{
    stopListening();
    m_turnTimer.stop();
    m_tickTimer.stop();
    for (Connections* const connections : {&m_newcomers, &m_known}) {
        while (!connections->empty())
            drop(connections->front(), &TerminalCounters::closedHere, tr("the server closes"));
    }
    m_events = Descriptor();
    tellLeftOut(true);
}

void TerminalServer::drain(std::chrono::milliseconds most)
{
    QElapsedTimer time;
    time.start();
    if (m_notifier)
        collectEvents();
    for (int i = 0; i < Listener::queue && m_callers && open() < m_mostConnections && time.elapsed() < most.count();
         ++i)
        acceptOne();
    stopListening();
    for (Connections* const connections : {&m_newcomers, &m_known}) {
        for (Connection& connection : *connections) {
            connection.beginToDrain();
            enqueue(connection);
        }
    }
    m_turning = true; // what comes in meanwhile waits for nothing
    const QPointer<TerminalServer> self(this);
    while (hasWork() && ((m_current && !m_current->decoder.betweenPackets()) || time.elapsed() < most.count())) {
        serveStep();
        if (!self)
            return;
    }
    m_turning = false;
    if (open() > 0)
        tell(tr("%1 connections are closed with what they hold unread").arg(open()));
    close();
}

void TerminalServer::setReading(bool reading)
{
    m_reading = reading;
    if (reading && m_notifier)
        m_turnTimer.start();
}

void TerminalServer::stopListening()
{
    if (m_notifier) {
        m_notifier->setEnabled(false);
        m_notifier->deleteLater(); // it may be that which called
        m_notifier = nullptr;
    }
    m_listener.close();
    m_callers = false;
}

TerminalCounters TerminalServer::counters() const
{
    TerminalCounters counters = m_counters;
    counters.open = open();
    for (const Connections* const connections : {&m_newcomers, &m_known}) {
        for (const Connection& connection : *connections)
            counters.decoded += connection.counts;
    }
    return counters;
}

/// Of sockets and listener, each of which is told of once until it has been read empty.
void TerminalServer::collectEvents()
{
    std::array<epoll_event, 512> events;
    const int count = epoll_wait(m_events.get(), events.data(), static_cast<int>(events.size()), 0);
    for (int i = 0; i < count; ++i) {
        const epoll_event& event = events[static_cast<std::size_t>(i)];
        if (!event.data.ptr) {
            m_callers = true;
            continue;
        }
        Connection& connection = *static_cast<Connection*>(event.data.ptr);
        connection.readable = true;
        connection.hungUp = connection.hungUp || (event.events & (EPOLLRDHUP | EPOLLHUP | EPOLLERR)) != 0;
        enqueue(connection);
    }
}

/// Whether there may be a connection to be accepted, and room for it.
bool TerminalServer::mayAccept()
{
    return m_callers && (open() < m_mostConnections || (m_reading && leastMissed()));
}

void TerminalServer::acceptPending()
{
    for (int i = 0; i < acceptedAtOnce && mayAccept() && acceptOne(); ++i) {
    }
}

/// @return whether there may be more
bool TerminalServer::acceptOne()
{
    Listener::Caller caller = m_listener.accept();
    if (!caller.socket.isOpen()) {
        m_callers = false; // after an error until the next tick
        if (caller.error != 0)
            tell(tr("cannot take a connection: %1").arg(qt_error_string(caller.error)));
        return false;
    }
    m_countersChanged = true;
    if (!admits(caller))
        return true;
    if (open() >= m_mostConnections)
        drop(*leastMissed(), &TerminalCounters::madeRoom, tr("longest without a good packet, it makes room"));
    ++m_counters.accepted;
    m_admission.enter(caller.source);
    m_newcomers.emplace_back(std::move(caller.socket), caller.source, caller.name, m_settings.decode,
                             m_settings.bytesPerSecond);
    Connection& connection = m_newcomers.back();
    connection.self = std::prev(m_newcomers.end());
    tell(tr("%1 connected").arg(caller.name));
    if (await(connection.socket.get(), &connection))
        enqueue(connection); // most have sent by now
    else
        drop(connection, &TerminalCounters::closedHere, qt_error_string(errno));
    return true;
}

bool TerminalServer::admits(const Listener::Caller& caller)
{
    switch (m_admission.ask(caller.source)) {
    case Admission::Admitted: return true;
    case Admission::WrongNetwork:
        ++m_counters.refusedForAddress;
        tell(tr("%1 refused: it is in none of the networks that AllowFrom lets in").arg(caller.name));
        break;
    case Admission::TooMany:
        ++m_counters.refusedPerAddress;
        tell(tr("%1 refused: %2 connections of its address are open (PerAddress)")
                 .arg(caller.name)
                 .arg(m_settings.perAddress));
        break;
    }
    return false;
}

/// The connection that has gone longest without a good packet, of those that do not wait for being served: what they
/// have sent is looked at first. Null if it has to be waited for.
TerminalServer::Connection* TerminalServer::leastMissed()
{
    int looks = 0;
    for (Connection& connection : m_newcomers.empty() ? m_known : m_newcomers) {
        if (!connection.queued && m_current != &connection)
            return &connection;
        if (++looks == lookedAt)
            break;
    }
    return nullptr;
}

void TerminalServer::enqueue(Connection& connection)
{
    if (connection.queued || m_current == &connection)
        return;
    connection.queued = true;
    connection.turn = m_ready.insert(m_ready.end(), &connection);
}

bool TerminalServer::hasWork() const
{
    return (m_current && !m_current->decoder.betweenPackets()) || (m_reading && (m_current || !m_ready.empty()));
}

void TerminalServer::turn()
{
    if (m_turning)
        return; // within a receiver's own event loop; the outer turn goes on when that ends
    m_turning = true;
    const QPointer<TerminalServer> self(this);
    QElapsedTimer time;
    time.start();
    acceptPending();
    while (hasWork() && time.elapsed() < turnMilliseconds) {
        serveStep();
        if (!self)
            return;
    }
    m_turning = false;
    if (hasWork() || mayAccept())
        m_turnTimer.start();
}

/// Hands over a packet or a report, or goes on to the next connection.
void TerminalServer::serveStep()
{
    if (!m_current) {
        m_current = m_ready.front();
        m_ready.pop_front();
        m_current->queued = false;
        m_current->packetsBefore = m_current->counts.packets;
        m_served = 0;
        m_countersChanged = true;
        if (m_current->decoder.exhausted())
            m_current->refill();
    }
    // After each of the receiver's functions nothing is touched: it may have closed or destroyed this.
    PacketDecoder& decoder = m_current->decoder;
    if (!decoder.betweenPackets()) {
        ++m_served;
        const MobData report = decoder.take();
        m_receiver.takeReport(report);
    } else if (m_served < servedAtATime && decoder.nextPacket()) {
        ++m_served;
        handOver(*m_current);
    } else {
        settle(*std::exchange(m_current, nullptr));
    }
}

void TerminalServer::handOver(Connection& connection)
{
    const PacketDecoder& decoder = connection.decoder;
    if (!decoder.isRawOnly() && !m_receiver.letsIn(static_cast<quint32>(decoder.object()))) {
        drop(connection, &TerminalCounters::closedForObject, tr("object %1 is not let in").arg(decoder.object()));
        return;
    }
    const QByteArray packet = decoder.packet();
    m_receiver.takePacket(packet);
}

/// A connection's turn is over: judges what it has sent.
void TerminalServer::settle(Connection& connection)
{
    if (connection.counts.packets > connection.packetsBefore) {
        connection.silence = 0;
        m_known.splice(m_known.end(), std::exchange(connection.known, true) ? m_known : m_newcomers, connection.self);
    }
    if (connection.decoder.found() > connection.foundBefore || connection.decoder.pendingBytes() == 0)
        connection.stuck = 0;
    connection.foundBefore = connection.decoder.found();
    const qint64 held = connection.decoder.exhausted() ? connection.decoder.pendingBytes() : 0;
    m_held += held - std::exchange(connection.held, held);
    if (held > largePacket && m_held > m_settings.maximumHeld) {
        drop(connection, &TerminalCounters::closedForRubbish,
             tr("all connections hold more than %1 bytes of unfinished packets").arg(m_settings.maximumHeld));
    } else if (connection.decoder.bytesSinceGoodPacket() > m_settings.maximumBuffer) {
        drop(connection, &TerminalCounters::closedForRubbish,
             tr("more than %1 bytes without a good packet").arg(m_settings.maximumBuffer));
    } else if (!connection.decoder.exhausted()) { // NOLINT(bugprone-branch-clone): before its end is told
        enqueue(connection);
    } else if (connection.end) {
        drop(connection, counterOf(*connection.end), connection.reason);
    } else if (connection.isHeldBack()) {
        if (!std::exchange(connection.slowed, true)) {
            ++m_counters.slowed;
            tell(tr("%1 sends more than %2 bytes a second (BytesPerSecond): it has to wait, and loses nothing")
                     .arg(connection.name)
                     .arg(m_settings.bytesPerSecond));
        }
    } else if (connection.readable || connection.toDrain) {
        enqueue(connection);
    }
}

void TerminalServer::drop(Connection& connection, qint64 TerminalCounters::*counter, const QString& reason)
{
    ++(m_counters.*counter);
    m_countersChanged = true;
    m_counters.decoded += connection.counts;
    m_held -= connection.held;
    m_admission.leave(connection.source);
    const QString text = tr("%1 closed: %2 (%3 packets, %4 bad checksums, %5 rejected, %6 bytes of rubbish)")
                             .arg(connection.name, reason)
                             .arg(connection.counts.packets)
                             .arg(connection.counts.badChecksums)
                             .arg(connection.counts.rejected)
                             .arg(connection.counts.skippedBytes);
    if (m_current == &connection)
        m_current = nullptr;
    if (connection.queued)
        m_ready.erase(connection.turn);
    (connection.known ? m_known : m_newcomers).erase(connection.self);
    tell(text);
}

TerminalServer::Connection* TerminalServer::firstSilent()
{
    const auto firstOf = [this](Connections& connections, std::chrono::milliseconds most) -> Connection* {
        for (Connection& connection : connections) {
            if (connection.queued || m_current == &connection)
                continue;
            return connection.silence > most.count() ? &connection : nullptr;
        }
        return nullptr;
    };
    Connection* const newcomer = firstOf(m_newcomers, std::min(m_settings.newcomer, m_settings.idle));
    return newcomer ? newcomer : firstOf(m_known, m_settings.idle);
}

void TerminalServer::tick()
{
    // A moment in which the event loop stood still is not the terminals' silence.
    const qint64 passed = std::min<qint64>(m_sinceTick.restart(), 2 * m_tickTimer.interval());
    if (m_reading)
        letTimePass(passed);
    m_callers = true; // after an error the system tells of none that came before
    m_turnTimer.start();
    tellLeftOut(false);
    if (std::exchange(m_countersChanged, false))
        Q_EMIT countersChanged();
}

void TerminalServer::letTimePass(qint64 milliseconds)
{
    for (Connections* const connections : {&m_newcomers, &m_known}) {
        for (Connection& connection : *connections) {
            const bool wasHeldBack = connection.isHeldBack();
            connection.letTimePass(milliseconds);
            if (connection.queued || m_current == &connection)
                continue; // it waits for the server
            if (wasHeldBack) {
                m_counters.slowedMilliseconds += milliseconds;
                enqueue(connection);
                continue;
            }
            connection.silence += milliseconds;
            connection.stuck += milliseconds;
            if (connection.stuck >= m_settings.pause.count() && connection.decoder.pendingBytes() > 0) {
                connection.stuck = 0;
                connection.decoder.pause();
                enqueue(connection);
            }
        }
    }
    while (Connection* const connection = firstSilent()) {
        const auto limit = connection->known ? m_settings.idle : std::min(m_settings.newcomer, m_settings.idle);
        drop(*connection, &TerminalCounters::closedForSilence,
             tr("no good packet for %1 s").arg(static_cast<double>(limit.count()) / 1000));
    }
}

void TerminalServer::tell(const QString& text)
{
    tellLeftOut(false);
    if (m_messages.admits())
        Q_EMIT happened(text);
}

void TerminalServer::tellLeftOut(bool now)
{
    if (const qint64 count = m_messages.takeLeftOut(now); count > 0)
        Q_EMIT happened(tr("%1 more messages of that second are left out").arg(count));
}
