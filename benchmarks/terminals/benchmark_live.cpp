// Whether the desk's window stays responsive while 1,000 terminals send a packet a second each: the longest pauses of
// an event loop in which a TerminalServer fills a sorted table of last states, first with these terminals alone, then
// with three more beside them that flood the server; before that, what a server alone takes for 10,000 terminals. The
// terminals are pardel-simulate, the floods this program again.

#include "hubannouncer.h"
#include "packetreceiver.h"
#include "terminalserver.h"

#include <Pardel/crc_ccitt.h>
#include <Pardel/interfaces.h>
#include <Pardel/tutils.h>

#include <QApplication>
#include <QDateTime>
#include <QEventLoop>
#include <QProcess>
#include <QSortFilterProxyModel>
#include <QStandardItemModel>
#include <QTableView>
#include <QTcpSocket>

#include <algorithm>
#include <cstdio>
#include <ctime>
#include <vector>

#include <unistd.h>

namespace {

constexpr int terminals = 1000;
constexpr int heartbeatMilliseconds = 2;
constexpr double target = 100; // ms
constexpr qint16 floodObject = -1;

double milliseconds(clockid_t clock)
{
    timespec now{};
    clock_gettime(clock, &now);
    return static_cast<double>(now.tv_sec) * 1e3 + static_cast<double>(now.tv_nsec) / 1e6;
}

/// A table of last states, sorted by time, in a window.
class LastStates
{
public:
    explicit LastStates(DataPumpNotifyer& hub)
    {
        m_sorted.setSourceModel(&m_model);
        m_sorted.setSortRole(Qt::DisplayRole);
        m_view.setModel(&m_sorted);
        m_view.setSortingEnabled(true);
        m_view.sortByColumn(1, Qt::DescendingOrder);
        m_view.resize(800, 600);
        m_view.show();
        QObject::connect(&hub, &DataPumpNotifyer::OnDataRecievedSignal, &m_model,
                         [this](MobData& report) { take(report); });
    }

    qint64 packets() const { return m_packets; } // of the simulated terminals
    int objects() const { return static_cast<int>(m_rows.size()); }

private:
    void take(const MobData& report)
    {
        // Only a packet's own report has the sensor with which the parser completes it.
        if (report.idObject != floodObject && SensorExist(report, 106))
            ++m_packets;
        const auto known = m_rows.constFind(report.idObject);
        if (known == m_rows.constEnd()) {
            QList<QStandardItem*> row;
            for (int column = 0; column < 5; ++column)
                row += new QStandardItem;
            m_rows.insert(report.idObject, row);
            m_model.appendRow(row);
            row[0]->setData(report.idObject, Qt::DisplayRole);
            show(row, report);
        } else if ((*known)[1]->data(Qt::DisplayRole).toDateTime().toSecsSinceEpoch() <= report.timeUnix) {
            show(*known, report);
        }
    }

    static void show(const QList<QStandardItem*>& row, const MobData& report)
    {
        row[1]->setData(QDateTime::fromSecsSinceEpoch(report.timeUnix), Qt::DisplayRole);
        row[2]->setData(report.speed, Qt::DisplayRole);
        row[3]->setData(report.course, Qt::DisplayRole);
        row[4]->setData(TUtils::isAlarm(report), Qt::DisplayRole);
    }

    QStandardItemModel m_model{0, 5};
    QSortFilterProxyModel m_sorted;
    QTableView m_view;
    QHash<int, QList<QStandardItem*>> m_rows;
    qint64 m_packets = 0;
};

/// How long the event loop does nothing else than one thing.
class Heartbeat
{
public:
    Heartbeat()
    {
        m_timer.setTimerType(Qt::PreciseTimer);
        QObject::connect(&m_timer, &QTimer::timeout, &m_timer, [this] { beat(); });
        m_timer.start(heartbeatMilliseconds);
    }

    void print() const
    {
        std::vector<double> pauses = m_pauses;
        std::sort(pauses.begin(), pauses.end());
        std::printf("longest pause of the event loop: %.1f ms (target: none above %.0f), 99.9 %% below %.1f ms; "
                    "longest in processor time: %.1f ms, %.1f s after the beginning\n",
                    pauses.back(), target, pauses[pauses.size() * 999 / 1000], m_longestWork,
                    (m_longestAt - m_begin) / 1000);
    }

private:
    void beat()
    {
        const double now = milliseconds(CLOCK_MONOTONIC);
        const double work = milliseconds(CLOCK_THREAD_CPUTIME_ID);
        m_pauses.push_back(std::max(0.0, now - m_last - heartbeatMilliseconds));
        if (work - m_lastWork > m_longestWork) {
            m_longestWork = work - m_lastWork;
            m_longestAt = now;
        }
        m_last = now;
        m_lastWork = work;
    }

    QTimer m_timer;
    const double m_begin = milliseconds(CLOCK_MONOTONIC);
    double m_last = m_begin;
    double m_lastWork = milliseconds(CLOCK_THREAD_CPUTIME_ID);
    double m_longestWork = 0;
    double m_longestAt = m_begin;
    std::vector<double> m_pauses; // ms
};

/// Sends as fast as it is taken, and connects again when it is closed, until it is killed.
int flood(const QString& kind, quint16 port)
{
    QByteArray bytes = QByteArray::fromHex("a4d500ffff0d0001024123"); // one that is as small as it can be
    if (kind == QLatin1String("reports")) // one that holds as many further reports as it can
        bytes = QByteArray::fromHex("a4d500ffff38f6") +
                ("\xFF\x0E" + QByteArray("\xE2" + QByteArray(12, '\x11')).repeated(255)).repeated(19);
    Append_CRC_CCITT(bytes, false);
    if (kind == QLatin1String("rubbish"))
        bytes = QByteArray(1 << 16, '\xA4');
    for (;;) {
        QTcpSocket socket;
        socket.connectToHost(QStringLiteral("127.0.0.1"), port);
        socket.waitForConnected();
        while (socket.state() == QAbstractSocket::ConnectedState) {
            socket.write(bytes.repeated(std::max(1, (1 << 16) / static_cast<int>(bytes.size()))));
            socket.waitForBytesWritten(-1);
        }
    }
}

/// Simulated terminals that send a packet a second each; until so many milliseconds after they have ended.
void runTerminals(int count, quint16 port, int seconds, int afterwards)
{
    QProcess simulate;
    simulate.setProcessChannelMode(QProcess::ForwardedChannels);
    QEventLoop loop;
    QObject::connect(&simulate, QOverload<int, QProcess::ExitStatus>::of(&QProcess::finished), &loop,
                     // What has been sent may still lie in the system's buffers.
                     [&] { QTimer::singleShot(afterwards, &loop, &QEventLoop::quit); });
    QObject::connect(&simulate, &QProcess::errorOccurred, &loop, &QEventLoop::quit);
    simulate.start(QStringLiteral(PARDEL_SIMULATE),
                   {QStringLiteral("--terminals"), QString::number(count), QStringLiteral("--connect"),
                    QStringLiteral("127.0.0.1:%1").arg(port), QStringLiteral("--packets"), QString::number(seconds)});
    loop.exec();
}

long residentKiB()
{
    long size = 0;
    long resident = 0;
    if (std::FILE* const file = std::fopen("/proc/self/statm", "r")) {
        if (std::fscanf(file, "%ld %ld", &size, &resident) != 2)
            resident = 0;
        std::fclose(file);
    }
    return resident * sysconf(_SC_PAGESIZE) / 1024;
}

/// What a server takes for many terminals. @return whether all their packets have arrived
bool measureMany(int count, int seconds)
{
    TerminalSettings settings;
    settings.port = 0;
    settings.maximumConnections = count;
    settings.perAddress = 0; // all are on this machine
    PacketReceiver nobody;
    TerminalServer server(nobody, settings);
    if (!server.listen()) {
        std::fprintf(stderr, "%s\n", qPrintable(server.errorString()));
        return false;
    }
    const long before = residentKiB();
    const Heartbeat heartbeat;
    const double work = milliseconds(CLOCK_PROCESS_CPUTIME_ID);
    long most = 0;
    QTimer look;
    QObject::connect(&look, &QTimer::timeout, &look, [&] { most = std::max(most, residentKiB()); });
    look.start(1000);
    runTerminals(count, server.port(), seconds, 2000);
    const double worked = milliseconds(CLOCK_PROCESS_CPUTIME_ID) - work;
    const TerminalCounters counters = server.counters();
    std::printf("\n%d terminals, a packet a second each, %d s, a server alone\n", count, seconds);
    heartbeat.print();
    std::printf("processor: %.1f us a packet, with the connections' coming and going; memory: %.1f KiB a connection\n",
                worked * 1000 / static_cast<double>(counters.decoded.packets),
                static_cast<double>(most - before) / count);
    std::printf("packets arrived: %lld of %lld\n", counters.decoded.packets, qint64{count} * seconds);
    return counters.decoded.packets == qint64{count} * seconds;
}

/// @return whether all packets of the simulated terminals have arrived
bool measure(int seconds, bool floods)
{
    DataPumpNotifyer hub;
    LastStates table(hub);
    QCoreApplication::processEvents(); // the window's first picture loads fonts
    TerminalSettings settings;
    settings.port = 0;
    settings.perAddress = 0; // all are on this machine
    HubAnnouncer announcer(hub);
    TerminalServer server(announcer, settings);
    if (!server.listen()) {
        std::fprintf(stderr, "%s\n", qPrintable(server.errorString()));
        return false;
    }
    const QString port = QString::number(server.port());
    std::vector<std::unique_ptr<QProcess>> flooding;
    for (const char* kind : {"packets", "reports", "rubbish"}) {
        if (!floods)
            break;
        flooding.push_back(std::make_unique<QProcess>());
        flooding.back()->start(QCoreApplication::applicationFilePath(),
                               {QStringLiteral("--flood"), QLatin1String(kind), port});
    }
    const Heartbeat heartbeat;
    const double begin = milliseconds(CLOCK_MONOTONIC);
    const double work = milliseconds(CLOCK_PROCESS_CPUTIME_ID);
    runTerminals(terminals, server.port(), seconds, floods ? 5000 : 1000);
    const double share =
        (milliseconds(CLOCK_PROCESS_CPUTIME_ID) - work) / (milliseconds(CLOCK_MONOTONIC) - begin) * 100;
    for (const auto& process : flooding) {
        process->kill();
        process->waitForFinished();
    }
    const TerminalCounters counters = server.counters();
    const qint64 sent = qint64{terminals} * seconds;
    std::printf("\n%d terminals, a packet a second each, %d s%s\n", terminals, seconds,
                floods ? ", beside three floods" : "");
    heartbeat.print();
    std::printf("processor: %.1f %% of one; packets arrived: %lld of %lld, from %d objects\n", share, table.packets(),
                sent, table.objects());
    std::printf("connections: %lld taken, %lld closed for rubbish; reports announced: %lld\n", counters.accepted,
                counters.closedForRubbish, counters.decoded.reports);
    return table.packets() == sent;
}

} // namespace

int main(int argc, char* argv[])
{
    if (argc == 4 && qstrcmp(argv[1], "--flood") == 0) {
        const QCoreApplication application(argc, argv);
        return flood(QLatin1String(argv[2]), QByteArray(argv[3]).toUShort());
    }
    qputenv("QT_QPA_PLATFORM", "offscreen");
    const QApplication application(argc, argv);
    const bool many = measureMany(10000, 30);
    const bool alone = measure(60, false);
    const bool beside = measure(30, true);
    return many && alone && beside ? 0 : 1;
}
