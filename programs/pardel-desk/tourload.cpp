// The part of the tour in which terminals send.

#include "deskwindow.h"
#include "livesender.h"
#include "mapview.h"
#include "objectspanel.h"
#include "packetbuilder.h"
#include "statetable.h"
#include "tour.h"

#include <Pardel/treeobjcheckable.h>

#include <QDateTime>
#include <QElapsedTimer>
#include <QTcpSocket>
#include <QTextStream>
#include <QTimer>
#include <QTreeView>

#include <algorithm>
#include <utility>

#include <time.h>

namespace {

constexpr int packetsEach = 10;
constexpr quint32 seed = 47;   // that of the sample: known objects go on from where they live
constexpr int speedCode = 100; // of Tour::sentSpeed

/// The longest time for which the event loop did not come round, and the longest that it worked without a break: on a
/// machine that is busy with other things the first is longer.
class PauseMeter : public QTimer
{
public:
    PauseMeter()
    {
        setTimerType(Qt::PreciseTimer);
        callOnTimeout([this] {
            m_longestPause = std::max(m_longestPause, m_since.restart() - interval());
            const double now = worked();
            m_longestWork = std::max(m_longestWork, now - std::exchange(m_worked, now));
        });
        restart();
        start(10);
    }

    /// Begins anew, so that what the tour itself held the loop up with does not count.
    void restart()
    {
        m_since.start();
        m_worked = worked();
    }

    /// Both in milliseconds.
    qint64 longestPause() const { return m_longestPause; }
    qint64 longestWork() const { return static_cast<qint64>(m_longestWork); }

private:
    /// The processor time of this thread.
    static double worked()
    {
        timespec time{};
        clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
        return static_cast<double>(time.tv_sec) * 1e3 + static_cast<double>(time.tv_nsec) * 1e-6;
    }

    QElapsedTimer m_since;
    double m_worked = 0;
    qint64 m_longestPause = 0;
    double m_longestWork = 0;
};

/// A packet with no more than place, speed and time of now; the objects stand in rows over some hundred kilometres.
QByteArray packetOf(int number)
{
    constexpr int perRow = 256;
    const auto packed = [](double degrees) { return static_cast<quint32>(degrees * 1e7); };
    RecordBuilder place(11);
    const int row = number / perRow;
    place.little32(packed(50 + row * 0.02)).little32(packed(30 + number % perRow * 0.03));
    place.byte(speedCode).byte(0).little32(static_cast<quint32>(QDateTime::currentSecsSinceEpoch()));
    return PacketBuilder(static_cast<qint16>(number)).group({place}).sealed();
}

} // namespace

void Tour::receive()
{
    const TerminalServer& server = m_desk.server;
    expect(server.port() != 0, "a port for terminals");
    SimulationSettings vehicles;
    vehicles.terminals = m_terminals;
    vehicles.seed = seed;
    LiveSettings live;
    live.host = QStringLiteral("127.0.0.1");
    live.port = server.port();
    live.packets = packetsEach;
    LiveSender sender(vehicles, live);
    bool done = false;
    QObject::connect(&sender, &LiveSender::finished, &sender, [&](const QString& error) {
        done = true;
        expect(error.isEmpty(), error.toUtf8().constData());
    });
    PauseMeter meter;
    sender.start();
    const qint64 all = qint64(m_terminals) * packetsEach;
    const auto counted = [&] { return server.counters().decoded.packets; };
    await([&] { return counted() > all / 2 && (alarms() > 0 || counted() > all * 9 / 10); }, "packets of terminals");
    expect(server.counters().open == m_terminals, "the connections of all terminals");
    sortTable();
    selectEverywhere();
    save(m_desk, "live");
    meter.restart();
    await([&] { return done && counted() == all; }, "that all packets are sent and counted");
    QTextStream(stdout) << "tour: " << m_terminals
                        << " terminals, a packet a second each: longest pause of the event loop "
                        << meter.longestPause() << " ms, longest work in it " << meter.longestWork() << " ms\n";

    const qint32 newest = m_terminals;
    await([&] { return m_desk.map->markOf(newest).has_value(); }, "a terminal that was not known before, on the map");
    await([&] { return indexOf(*m_desk.objects->tree, newest).isValid(); }, "the same in the tree");
}

void Tour::sendOne(int number)
{
    const qint64 before = m_desk.server.counters().decoded.packets;
    QTcpSocket socket;
    socket.connectToHost(QStringLiteral("127.0.0.1"), m_desk.server.port());
    expect(socket.waitForConnected(), "a connection for one packet");
    socket.write(packetOf(number));
    await([&] { return m_desk.server.counters().decoded.packets == before + 1; }, "the packet");
}

void Tour::flood()
{
    if (m_objects == 0)
        return;
    QByteArray packets;
    for (int number = 0; number < m_objects; ++number)
        packets += packetOf(number);
    const qint64 before = m_desk.server.counters().decoded.packets;
    QTcpSocket socket;
    socket.connectToHost(QStringLiteral("127.0.0.1"), m_desk.server.port());
    expect(socket.waitForConnected(), "a connection for many objects");
    PauseMeter meter;
    QElapsedTimer all;
    all.start();
    socket.write(packets);
    await([&] { return m_desk.server.counters().decoded.packets == before + m_objects; },
          "the packets of many objects");
    const qint64 taken = all.elapsed();
    await(
        [&] {
            const QAbstractItemModel& tree = *m_desk.objects->tree->getTreeView()->model();
            int rows = 0;
            for (int group = 0; group < tree.rowCount(); ++group)
                rows += tree.rowCount(tree.index(group, 0));
            return rows >= m_objects && m_desk.table->model()->rowCount() >= m_objects;
        },
        "many objects in tree and table");
    QTextStream(stdout) << "tour: " << m_objects << " objects from one connection, " << packets.size()
                        << " bytes: taken after " << taken << " ms, shown after " << all.elapsed()
                        << " ms, longest pause of the event loop " << meter.longestPause() << " ms, longest work in it "
                        << meter.longestWork() << " ms\n";
    save(m_desk, "many");
}
