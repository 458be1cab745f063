#include "terminalserver.h"

#include "descriptors.h"

#include <Pardel/interfaces.h>

#include <QHostAddress>
#include <QPointer>
#include <QTcpSocket>

#include <algorithm>
#include <utility>

#include <sys/socket.h>

namespace {

constexpr qint64 pieceSize = 1 << 14;  // bytes of one connection, read and served at a time
constexpr qint64 turnMilliseconds = 5; // of work between two looks of the event loop at everything else
constexpr int reportsAtATime = 64;     // of one connection
constexpr int acceptedAtOnce = 16;     // connections
constexpr int backlog = 4096;          // connections that the system keeps waiting
constexpr qint64 longestTick = 250;    // ms

} // namespace

struct TerminalServer::Connection
{
    Connection(QTcpSocket* s, const DecodeSettings& settings)
        : socket(s),
          name(QStringLiteral("%1 port %2").arg(s->peerAddress().toString()).arg(s->peerPort())),
          decoder(CaptureFramer::Raw, settings, counts)
    {}

    QTcpSocket* const socket; // owned by the QTcpServer
    const QString name;
    DecodeCounts counts;
    PacketDecoder decoder;
    // Milliseconds, without those for which it waited in a queue here:
    qint64 silence = 0; // since a good packet
    qint64 stuck = 0;   // since anything was found in its bytes, or since the last pause
    qint64 foundBefore = 0;
    qint64 packetsBefore = 0; // when its present turn began
    qint64 unfinished = 0;    // bytes with which it ended
    bool queued = false;
    bool ended = false;    // by the other side
    bool finished = false; // and the decoder knows
};

TerminalServer::TerminalServer(DataPumpNotifyer& hub, const TerminalSettings& settings, QObject* parent)
    : QObject(parent), m_hub(hub), m_settings(settings)
{
    // The rest of those that wait stay in the system's queue until the next turn.
    m_server.setMaxPendingConnections(acceptedAtOnce);
    connect(&m_server, &QTcpServer::newConnection, this, [this] { m_turnTimer.start(); });
    connect(&m_server, &QTcpServer::acceptError, this, [this] {
        tell(tr("cannot take a connection: %1").arg(m_server.errorString())); // QTcpServer pauses; tick() resumes
    });
    // A timer, not a posted event: posted events that post again keep the event loop from everything else.
    m_turnTimer.setSingleShot(true);
    m_turnTimer.setInterval(0);
    connect(&m_turnTimer, &QTimer::timeout, this, &TerminalServer::turn);
    m_tickTimer.setInterval(
        static_cast<int>(std::clamp<qint64>(std::min(settings.idle, settings.pause).count() / 4, 1, longestTick)));
    connect(&m_tickTimer, &QTimer::timeout, this, &TerminalServer::tick);
}

TerminalServer::~TerminalServer()
{
    const QSignalBlocker silent(this);
    close();
}

bool TerminalServer::listen()
{
    const QString place = tr("%1 port %2").arg(m_settings.address).arg(m_settings.port);
    QHostAddress address;
    if (!address.setAddress(m_settings.address)) {
        m_error = tr("cannot listen on %1: that is no IP address").arg(place);
        return false;
    }
    if (!m_server.listen(address, m_settings.port)) {
        m_error = tr("cannot listen on %1: %2").arg(place, m_server.errorString());
        return false;
    }
    // Qt asks for a queue of 50, which overflows when all terminals come back at once; they would wait for seconds.
    ::listen(static_cast<int>(m_server.socketDescriptor()), backlog);
    for (const QString& complaint : m_settings.complaints)
        tell(complaint);
    if (!allowDescriptors(m_settings.maximumConnections))
        tell(tr("the system does not let this program open %1 connections").arg(m_settings.maximumConnections));
    tell(tr("listening on %1 port %2").arg(m_settings.address).arg(port()));
    m_sinceTick.start();
    m_tickTimer.start();
    return true;
}

void TerminalServer::close()
{
    m_server.close();
    m_turnTimer.stop();
    m_tickTimer.stop();
    while (!m_connections.empty())
        drop(*m_connections.back(), nullptr, tr("the desk closes"));
    tellLeftOut(true);
}

TerminalCounters TerminalServer::counters() const
{
    TerminalCounters counters = m_counters;
    counters.open = static_cast<int>(m_connections.size());
    for (const auto& connection : m_connections)
        counters.decoded += connection->counts;
    return counters;
}

void TerminalServer::acceptPending()
{
    for (int i = 0; i < acceptedAtOnce; ++i) {
        QTcpSocket* const socket = m_server.nextPendingConnection();
        if (!socket)
            return;
        accept(socket);
    }
    m_turnTimer.start();
}

void TerminalServer::accept(QTcpSocket* socket)
{
    if (m_connections.size() >= static_cast<std::size_t>(m_settings.maximumConnections)) {
        ++m_counters.refused;
        m_countersChanged = true;
        const QString text = tr("%1 port %2 refused: %3 connections are open")
                                 .arg(socket->peerAddress().toString())
                                 .arg(socket->peerPort())
                                 .arg(m_connections.size());
        socket->abort();
        socket->deleteLater();
        tell(text);
        return;
    }
    ++m_counters.accepted;
    m_countersChanged = true;
    m_connections.push_back(std::make_unique<Connection>(socket, m_settings.decode));
    Connection& connection = *m_connections.back();
    socket->setReadBufferSize(pieceSize);
    connect(socket, &QTcpSocket::readyRead, this, [this, &connection] { enqueue(connection); });
    connect(socket, &QTcpSocket::disconnected, this, [this, &connection] {
        connection.ended = true;
        enqueue(connection);
    });
    // Both may have happened before anyone listened.
    connection.ended = socket->state() == QAbstractSocket::UnconnectedState;
    if (connection.ended || socket->bytesAvailable() > 0)
        enqueue(connection);
    tell(tr("%1 connected").arg(connection.name));
}

void TerminalServer::enqueue(Connection& connection)
{
    if (connection.queued || m_current == &connection)
        return;
    connection.queued = true;
    m_ready.push_back(&connection);
    if (!m_turning)
        m_turnTimer.start();
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
    while (serveStep()) {
        if (!self)
            return;
        if (time.elapsed() >= turnMilliseconds)
            break;
    }
    m_turning = false;
    if (m_current || !m_ready.empty())
        m_turnTimer.start();
}

/// Announces a report, or goes on to the next connection. @return false when there is nothing to do
bool TerminalServer::serveStep()
{
    if (!m_current) {
        if (m_ready.empty())
            return false;
        m_current = m_ready.front();
        m_ready.pop_front();
        m_current->queued = false;
        m_current->packetsBefore = m_current->counts.packets;
        m_served = 0;
        m_countersChanged = true;
        if (m_current->decoder.exhausted())
            refill(*m_current);
    }
    const bool itsTurnIsOver = m_served >= reportsAtATime && m_current->decoder.betweenPackets();
    if (!itsTurnIsOver && m_current->decoder.ready()) {
        ++m_served;
        MobData report = m_current->decoder.take();
        m_hub.OnDataRecieved(report);
        return true; // with nothing touched: the receivers may have closed or destroyed this
    }
    Connection& served = *m_current;
    m_current = nullptr;
    settle(served);
    return true;
}

void TerminalServer::refill(Connection& connection)
{
    const QByteArray piece = connection.socket->read(pieceSize);
    if (!piece.isEmpty()) {
        connection.decoder.feed(piece);
    } else if (connection.ended && !connection.finished) {
        connection.unfinished = connection.decoder.pendingBytes();
        connection.decoder.finish();
        connection.finished = true;
    }
}

/// A connection's turn is over: judges what it has sent.
void TerminalServer::settle(Connection& connection)
{
    if (connection.counts.packets > connection.packetsBefore)
        connection.silence = 0;
    if (connection.decoder.found() > connection.foundBefore || connection.decoder.pendingBytes() == 0)
        connection.stuck = 0;
    connection.foundBefore = connection.decoder.found();
    if (connection.decoder.bytesSinceGoodPacket() > m_settings.maximumBuffer) {
        drop(connection, &TerminalCounters::closedForRubbish,
             tr("more than %1 bytes without a good packet").arg(m_settings.maximumBuffer));
    } else if (!connection.decoder.exhausted()) {
        enqueue(connection);
    } else if (connection.finished && connection.unfinished > 0) {
        drop(connection, &TerminalCounters::cutOff,
             tr("cut off after %1 bytes that are no whole packet").arg(connection.unfinished));
    } else if (connection.finished) {
        drop(connection, &TerminalCounters::ended, connection.socket->errorString());
    } else if (connection.ended || connection.socket->bytesAvailable() > 0) {
        enqueue(connection);
    }
}

void TerminalServer::drop(Connection& connection, qint64 TerminalCounters::*counter, const QString& reason)
{
    if (counter)
        ++(m_counters.*counter);
    m_countersChanged = true;
    m_counters.decoded += connection.counts;
    const QString text = tr("%1 closed: %2 (%3 packets, %4 bad checksums, %5 rejected, %6 bytes of rubbish)")
                             .arg(connection.name, reason)
                             .arg(connection.counts.packets)
                             .arg(connection.counts.badChecksums)
                             .arg(connection.counts.rejected)
                             .arg(connection.counts.skippedBytes);
    connection.socket->disconnect(this);
    connection.socket->abort();
    connection.socket->deleteLater();
    if (m_current == &connection)
        m_current = nullptr;
    m_ready.erase(std::remove(m_ready.begin(), m_ready.end(), &connection), m_ready.end());
    m_connections.erase(std::find_if(m_connections.begin(), m_connections.end(),
                                     [&](const auto& candidate) { return candidate.get() == &connection; }));
    tell(text);
}

TerminalServer::Connection* TerminalServer::firstSilent() const
{
    const auto found = std::find_if(m_connections.begin(), m_connections.end(), [this](const auto& connection) {
        return !connection->queued && m_current != connection.get() && connection->silence > m_settings.idle.count();
    });
    return found == m_connections.end() ? nullptr : found->get();
}

void TerminalServer::tick()
{
    // A moment in which the event loop stood still is not the terminals' silence.
    const qint64 passed = std::min<qint64>(m_sinceTick.restart(), 2 * m_tickTimer.interval());
    for (const auto& connection : m_connections) {
        if (connection->queued || m_current == connection.get())
            continue; // it waits for the server
        connection->silence += passed;
        connection->stuck += passed;
        if (connection->stuck >= m_settings.pause.count() && connection->decoder.pendingBytes() > 0) {
            connection->stuck = 0;
            connection->decoder.pause();
            enqueue(*connection);
        }
    }
    while (Connection* const connection = firstSilent())
        drop(*connection, &TerminalCounters::closedForSilence,
             tr("no good packet for %1 s").arg(static_cast<double>(m_settings.idle.count()) / 1000));
    tellLeftOut(false);
    m_server.resumeAccepting();
    if (std::exchange(m_countersChanged, false))
        Q_EMIT countersChanged();
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
