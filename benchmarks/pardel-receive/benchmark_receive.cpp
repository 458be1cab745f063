// pardel-receive with PostgreSQL (run through scripts/with-postgres): how fast it stores beside pardel-import, 10,000
// terminals at a packet a second, and 1,000 terminals beside senders that mean no good. Each time what was sent is
// compared with what is stored.

#include "fleet.h"
#include "metrics.h"
#include "packetbuilder.h"
#include "postgres.h"
#include "toolruns.h"

#include <Pardel/connection.h>
#include <Pardel/packetframer.h>

#include <QCoreApplication>
#include <QDeadlineTimer>
#include <QElapsedTimer>
#include <QFile>
#include <QProcess>
#include <QRegularExpression>
#include <QSettings>
#include <QSqlDatabase>
#include <QSqlQuery>
#include <QTemporaryDir>
#include <QVariant>

#include <cstdio>
#include <functional>
#include <memory>
#include <thread>

#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

namespace {

constexpr int patience = 120'000; // ms

/// A receiver that stores in a fresh database.
class Receiver
{
public:
    Receiver(const QString& folder, const QString& name)
        : m_ini(folder + QLatin1Char('/') + name + QLatin1String(".ini")),
          m_name(name),
          m_metrics(folder + QLatin1Char('/') + name)
    {
        if (!makePostgresDatabase(name, m_ini, name))
            qFatal("no PostgreSQL server: run this through scripts/with-postgres");
        {
            QSettings settings(m_ini, QSettings::IniFormat);
            settings.setValue(QStringLiteral("Receiver/PerAddress"), 0);
        }
        QProcess::execute(QStringLiteral(PARDEL_ARCHIVE),
                          {QStringLiteral("--ini"), m_ini, QStringLiteral("--group"), name, QStringLiteral("create")});
        QString connection = name;
        QSettings settings(m_ini, QSettings::IniFormat);
        openDataBaseBySettings(connection, settings, name, QString());
        m_db = QSqlDatabase::database(connection);
        m_process.setProcessChannelMode(QProcess::MergedChannels);
        m_process.start(QStringLiteral(PARDEL_RECEIVE),
                        {QStringLiteral("--ini"), m_ini, QStringLiteral("--group"), name, QStringLiteral("--listen"),
                         QStringLiteral("127.0.0.1:0"), QStringLiteral("--spool"),
                         folder + QLatin1String("/spool-") + name, QStringLiteral("--metrics"), m_metrics});
        QByteArray told;
        const QByteArray mark("listening on 127.0.0.1 port ");
        while (!told.contains(mark) && m_process.waitForReadyRead(patience))
            told += m_process.readAll();
        port = static_cast<quint16>(told.mid(told.indexOf(mark) + mark.size()).split('\n').first().toInt());
    }

    const QString& ini() const { return m_ini; }
    const QString& group() const { return m_name; }

    qint64 valueOf(const QString& statement) const
    {
        QSqlQuery query(statement, m_db);
        return query.next() ? query.value(0).toLongLong() : -1;
    }
    qint64 rows() const { return valueOf(QStringLiteral("SELECT count(*) FROM archive.master_table")); }

    void waitForRows(qint64 count)
    {
        const QDeadlineTimer deadline(patience);
        while (rows() < count && !deadline.hasExpired()) {
            m_process.waitForReadyRead(1); // so that its messages do not fill the pipe
            m_process.readAll();
        }
    }

    /// Of the process until now.
    double peakMegabytes() const { return figure("status", "VmHWM:\\s+(\\d+) kB", 1024); }

    /// Ends it, with everything stored. @return its last metrics
    QHash<QByteArray, double> end()
    {
        m_process.terminate();
        while (m_process.state() != QProcess::NotRunning && m_process.waitForReadyRead(patience))
            m_process.readAll();
        m_process.waitForFinished(patience);
        QFile file(m_metrics);
        if (m_process.exitCode() != 0 || !file.open(QIODevice::ReadOnly))
            qFatal("the receiver did not end well");
        return readMetrics(file.readAll());
    }

    /// Keeps its messages from filling the pipe while something else is done.
    void readFor(int milliseconds)
    {
        const QDeadlineTimer deadline(milliseconds);
        while (!deadline.hasExpired()) {
            m_process.waitForReadyRead(100);
            m_process.readAll();
        }
    }
    bool readWhile(QProcess& other)
    {
        while (!other.waitForFinished(0) && other.state() != QProcess::NotRunning)
            readFor(200);
        return other.exitCode() == 0;
    }

    quint16 port = 0;

private:
    double figure(const char* name, const char* pattern, double unit) const
    {
        QFile file(QStringLiteral("/proc/%1/%2").arg(m_process.processId()).arg(QLatin1String(name)));
        if (!file.open(QIODevice::ReadOnly))
            return 0;
        return QRegularExpression(QLatin1String(pattern))
                   .match(QString::fromLatin1(file.readAll()))
                   .captured(1)
                   .toDouble() /
               unit;
    }

    const QString m_ini;
    const QString m_name;
    const QString m_metrics;
    QSqlDatabase m_db;
    QProcess m_process;
};

int connectTo(quint16 port)
{
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(port);
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    const int descriptor = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    if (::connect(descriptor, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0)
        std::perror("cannot connect to the receiver");
    return descriptor;
}

bool sendAll(int descriptor, const QByteArray& bytes)
{
    for (qsizetype sent = 0; sent < bytes.size();) {
        const ssize_t size =
            ::send(descriptor, bytes.constData() + sent, static_cast<std::size_t>(bytes.size() - sent), MSG_NOSIGNAL);
        if (size <= 0)
            return false;
        sent += size;
    }
    return true;
}

double part(const QHash<QByteArray, double>& metrics, const char* end)
{
    return metrics.value(QByteArray("commit_seconds_bucket{le=\"") + end + "\"}") /
           metrics.value("commit_seconds_count");
}

// ---- as fast as it goes

void measureThroughput(const QString& folder)
{
    constexpr int connections = 100;
    const QString capture = folder + QLatin1String("/capture");
    if (!simulateTo(capture, 400))
        qFatal("cannot write %s", qPrintable(capture));
    double imported = 0;
    qint64 reports = 0;
    for (int round = 0; round < 2; ++round) {
        const QString name = QStringLiteral("imported%1").arg(round);
        const QString ini = folder + QLatin1Char('/') + name + QLatin1String(".ini");
        makePostgresDatabase(name, ini, name);
        QElapsedTimer timer;
        timer.start();
        QProcess::execute(QStringLiteral(PARDEL_IMPORT), {QStringLiteral("--ini"), ini, QStringLiteral("--group"), name,
                                                          QStringLiteral("--create"), capture});
        const double seconds = static_cast<double>(timer.elapsed()) / 1000;
        imported = round == 0 ? seconds : std::min(imported, seconds);
        QString connection = name;
        QSettings settings(ini, QSettings::IniFormat);
        openDataBaseBySettings(connection, settings, name, QString());
        QSqlQuery query(QStringLiteral("SELECT count(*) FROM archive.master_table"),
                        QSqlDatabase::database(connection));
        reports = query.next() ? query.value(0).toLongLong() : 0;
    }

    // A terminal's packets stay on one connection, in their order.
    std::vector<QByteArray> streams(connections);
    QFile file(capture);
    file.open(QIODevice::ReadOnly);
    PacketFramer framer;
    framer.feed(file.readAll());
    framer.finish();
    PacketFramer::Frame frame;
    for (std::size_t i = 0; framer.next(frame); ++i)
        streams[i % 1000 % connections].append(frame.toByteArray());
    double received = 0;
    for (int round = 0; round < 2; ++round) {
        Receiver receiver(folder, QStringLiteral("received%1").arg(round));
        QElapsedTimer timer;
        timer.start();
        std::vector<std::thread> senders;
        senders.reserve(streams.size());
        for (const QByteArray& stream : streams) {
            senders.emplace_back([&stream, port = receiver.port] {
                const int descriptor = connectTo(port);
                sendAll(descriptor, stream);
                ::close(descriptor);
            });
        }
        receiver.waitForRows(reports);
        const double seconds = static_cast<double>(timer.elapsed()) / 1000;
        received = round == 0 ? seconds : std::min(received, seconds);
        for (std::thread& sender : senders)
            sender.join();
        const QHash<QByteArray, double> metrics = receiver.end();
        if (receiver.rows() != reports || metrics.value("packets_total{kind=\"damaged\"}") > 0)
            qFatal("%lld rows instead of %lld", receiver.rows(), reports);
    }
    std::printf("flat out from %d connections: %lld reports in %.2f s, by pardel-import in %.2f s\n", connections,
                reports, received, imported);
    std::printf("ratio receive / import, as fast: %.2f (target: at least 0.70)\n\n", imported / received);
}

// ---- many terminals

void measureFleet(const QString& folder, int terminals, int seconds)
{
    Receiver receiver(folder, QStringLiteral("fleet"));
    QProcess simulate;
    simulate.setProcessChannelMode(QProcess::ForwardedChannels);
    simulate.start(QStringLiteral(PARDEL_SIMULATE),
                   {QStringLiteral("--terminals"), QString::number(terminals), QStringLiteral("--connect"),
                    QStringLiteral("127.0.0.1:%1").arg(receiver.port), QStringLiteral("--rate"), QStringLiteral("1"),
                    QStringLiteral("--packets"), QString::number(seconds)});
    if (!simulate.waitForStarted() || !receiver.readWhile(simulate))
        qFatal("pardel-simulate fails");
    receiver.readFor(1000);
    const double memory = receiver.peakMegabytes();
    const QHash<QByteArray, double> metrics = receiver.end();
    const qint64 packets = static_cast<qint64>(metrics.value("packets_total{kind=\"good\"}"));
    const auto stored = static_cast<qint64>(metrics.value("reports_stored_total"));
    const qint64 incomplete =
        receiver.valueOf(QStringLiteral("SELECT count(*) FROM (SELECT id_object FROM archive.master_table GROUP BY 1 "
                                        "HAVING count(DISTINCT time_unix) < %1) AS few")
                             .arg(seconds));
    std::printf(
        "%d terminals at a packet a second for %d s: %lld of %lld packets received; %lld reports stored, %lld rows, "
        "%lld objects, %lld of them with fewer than %d moments\n",
        terminals, seconds, packets, qint64(terminals) * seconds, stored, receiver.rows(),
        receiver.valueOf(QStringLiteral("SELECT count(*) FROM archive.lastdata")), incomplete, seconds);
    std::printf("stored within 1 s of arrival: %.2f %%, within 2 s: %.2f %% (target: 99)\n", 100 * part(metrics, "1"),
                100 * part(metrics, "2"));
    std::printf("memory of the receiver: %.0f MiB (target: below 256)\n", memory);
    std::printf("longest stall of its event loop: %.0f ms (target: 200)\n\n",
                1000 * metrics.value("longest_stall_seconds"));
}

// ---- strangers

/// Sends what a function makes until that makes nothing or it is told to stop, over one connection after the other.
void harass(quint16 port, const std::atomic<bool>& stop, const std::function<QByteArray()>& make)
{
    while (!stop) {
        const int descriptor = connectTo(port);
        const timeval patienceOfSend{0, 200'000};
        ::setsockopt(descriptor, SOL_SOCKET, SO_SNDTIMEO, &patienceOfSend, sizeof patienceOfSend);
        QByteArray bytes = make();
        while (!stop && !bytes.isEmpty() && sendAll(descriptor, bytes))
            bytes = make();
        while (!stop && bytes.isEmpty())
            ::usleep(10'000);
        ::close(descriptor);
    }
}

void measureBesideStrangers(const QString& folder, int terminals, int seconds)
{
    constexpr int firstStranger = 2000; // object
    constexpr int manyObjects = 50'000;
    constexpr int mostPackets = 1'000'000; // of each flood, which all are to be stored in the end
    Receiver receiver(folder, QStringLiteral("strangers"));
    std::atomic<bool> stop{false};
    std::vector<std::thread> strangers;
    strangers.emplace_back([&receiver, &stop] {
        quint32 object = 0;
        quint32 time = Fleet::firstTime;
        harass(receiver.port, stop, [&] {
            QByteArray packets;
            for (int i = 0; i < 100 && time < Fleet::firstTime + mostPackets / manyObjects; ++i) {
                packets += Fleet::packetOf(firstStranger + object, time);
                object = (object + 1) % manyObjects;
                time += object == 0 ? 1 : 0;
            }
            return packets;
        });
    });
    quint32 floodTime = Fleet::firstTime;
    strangers.emplace_back([&receiver, &stop, &floodTime] {
        harass(receiver.port, stop, [&] {
            return floodTime < Fleet::firstTime + mostPackets ? Fleet::packetOf(1999, floodTime++) : QByteArray();
        });
    });
    strangers.emplace_back([&receiver, &stop] {
        const QByteArray rubbish = QByteArray::fromHex("a4d5ffffa4d500").repeated(5000);
        harass(receiver.port, stop, [&] { return rubbish; });
    });
    strangers.emplace_back([&receiver, &stop] { // half packets, and then nothing
        std::vector<int> held;
        while (!stop) {
            held.push_back(connectTo(receiver.port));
            sendAll(held.back(), Fleet::packetOf(1998, 1).left(9));
            ::usleep(10'000);
        }
        for (const int descriptor : held)
            ::close(descriptor);
    });
    Fleet fleet(receiver.port, 1, terminals, terminals);
    fleet.start();
    receiver.readFor(seconds * 1000);
    stop = true;
    std::thread finishing([&fleet] { fleet.finish(); });
    for (std::thread& stranger : strangers)
        stranger.join();
    receiver.readFor(1000);
    finishing.join();
    const double memory = receiver.peakMegabytes();
    const auto sent = static_cast<qint64>(fleet.reports().size());
    const QString good =
        QStringLiteral("SELECT count(*) FROM archive.master_table WHERE id_object <= %1").arg(terminals);
    const QDeadlineTimer deadline(patience);
    while (receiver.valueOf(good) < sent && !deadline.hasExpired())
        receiver.readFor(100);
    const qint64 stored = receiver.valueOf(good);
    const QHash<QByteArray, double> metrics = receiver.end();
    std::printf(
        "%d terminals at a packet a second for %d s beside a flood, %d objects from one connection, rubbish and half "
        "packets: %lld of their %lld packets stored; %.0f packets in all, %lld objects, %.0f bytes skipped\n",
        terminals, seconds, manyObjects, stored, sent, metrics.value("packets_total{kind=\"good\"}"),
        receiver.valueOf(QStringLiteral("SELECT count(*) FROM archive.lastdata")),
        metrics.value("skipped_bytes_total"));
    std::printf("memory of the receiver: %.0f MiB\n", memory);
    std::printf("longest stall of its event loop: %.0f ms (target: 200)\n",
                1000 * metrics.value("longest_stall_seconds"));
}

} // namespace

int main(int argc, char* argv[])
{
    const QCoreApplication application(argc, argv);
    const QTemporaryDir folder;
    const int seconds = argc > 1 ? QByteArray(argv[1]).toInt() : 120;
    measureThroughput(folder.path());
    measureFleet(folder.path(), 10'000, seconds);
    measureBesideStrangers(folder.path(), 1000, std::min(seconds, 30));
    return 0;
}
