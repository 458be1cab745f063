// pardel-receive and its database while they are killed, run full and come back: what was sent is what is stored.
//
// PARDEL_FAULTS_SEED draws the moments (by default the clock), PARDEL_FAULTS_ROUNDS says how often each row is run.

#include "archiveconnection.h"
#include "fleet.h"
#include "testfiles.h"

#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QHash>
#include <QProcess>
#include <QSettings>
#include <QSqlQuery>
#include <QTcpServer>
#include <QTemporaryDir>
#include <QTest>
#include <QVariant>

#include <csignal>
#include <memory>
#include <random>

namespace {

constexpr qint64 promised = 1000;  // ms after which what has come outlives the receiver
constexpr int endsWithin = 10'000; // ms
constexpr int terminals = 20;
constexpr int packetsASecond = 2000;

quint16 freePort()
{
    QTcpServer server;
    server.listen(QHostAddress::LocalHost);
    return server.serverPort();
}

/// A receiver that can be killed and started again, with its spool.
class ReceiverProcess
{
public:
    ReceiverProcess(const QString& iniFile, const QString& spool) : m_iniFile(iniFile), m_spool(spool) {}
    ~ReceiverProcess() { kill(); }

    void start()
    {
        m_process = std::make_unique<QProcess>();
        m_process->setProcessChannelMode(QProcess::MergedChannels);
        m_process->start(QStringLiteral(PARDEL_RECEIVE),
                         {QStringLiteral("--ini"), m_iniFile, QStringLiteral("--group"), QStringLiteral("Db"),
                          QStringLiteral("--listen"), QStringLiteral("127.0.0.1:%1").arg(port),
                          QStringLiteral("--spool"), m_spool});
        const QDeadlineTimer deadline(20'000);
        while (!m_told.contains("listening on") &&
               m_process->waitForReadyRead(static_cast<int>(deadline.remainingTime())))
            m_told += m_process->readAll();
        QVERIFY2(m_told.contains("listening on 127.0.0.1 port " + QByteArray::number(port)), m_told);
        m_all += m_told;
        m_told.clear();
    }
    void kill()
    {
        if (!m_process)
            return;
        m_process->kill();
        m_process->waitForFinished();
        m_all += m_process->readAll();
        m_process.reset();
    }
    void end()
    {
        m_process->terminate();
        QVERIFY2(m_process->waitForFinished(endsWithin), "it did not end in time");
        m_all += m_process->readAll();
        QVERIFY2(m_process->exitStatus() == QProcess::NormalExit && m_process->exitCode() == 0, m_all);
        m_process.reset();
    }
    void limitFiles(const char* size) const
    {
        QCOMPARE(QProcess::execute(QStringLiteral("prlimit"), {QStringLiteral("--pid=%1").arg(m_process->processId()),
                                                               QStringLiteral("--fsize=%1:").arg(QLatin1String(size))}),
                 0);
    }
    bool isRunning() const { return m_process != nullptr; }
    int spooledFiles() const { return static_cast<int>(QDir(m_spool).entryList({QStringLiteral("*.packets")}).size()); }
    QByteArray told() const { return m_all; }
    QByteArray toldSoFar()
    {
        m_all += m_process->readAll();
        return m_all;
    }

    const quint16 port = freePort();

private:
    const QString m_iniFile;
    const QString m_spool;
    std::unique_ptr<QProcess> m_process;
    QByteArray m_told;
    QByteArray m_all;
};

} // namespace

class TestFaults : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase()
    {
        const QByteArray given = qgetenv("PARDEL_FAULTS_SEED");
        const quint32 seed =
            given.isEmpty() ? static_cast<quint32>(QDateTime::currentMSecsSinceEpoch()) : given.toUInt();
        qInfo("PARDEL_FAULTS_SEED=%u", seed);
        m_random.seed(seed);
        QVERIFY2(qEnvironmentVariableIsSet("PARDEL_POSTGRES_START"), "run this test through scripts/with-postgres");
    }

    void keepsWhatWasSent_data() { addTableRows("faults.txt"); }
    void keepsWhatWasSent()
    {
        for (int round = std::max(qEnvironmentVariableIntValue("PARDEL_FAULTS_ROUNDS"), 1); round > 0; --round) {
            makeArchive(cell("database"));
            ReceiverProcess receiver(m_iniFile, m_folder->filePath(QStringLiteral("spool")));
            receiver.start();
            Fleet fleet(receiver.port, 1, terminals, packetsASecond);
            fleet.start();
            std::vector<Period> losses;
            for (const QByteArray& fault : cell("faults").split(';')) {
                QTest::qSleep(draw(100, 1500));
                cause(fault.trimmed(), receiver, losses);
                if (QTest::currentTestFailed())
                    return;
            }
            QTest::qSleep(draw(100, 1500));
            fleet.finish();
            endWithAllStored(receiver);
            if (!QTest::currentTestFailed())
                compare({&fleet}, losses);
            if (QTest::currentTestFailed()) {
                qInfo("%s", receiver.told().constData());
                return;
            }
        }
    }

    void severalFillOneArchive_data()
    {
        QTest::addColumn<QByteArray>("database");
        QTest::newRow("SQLite") << QByteArray("sqlite3");
        QTest::newRow("PostgreSQL") << QByteArray("postgres");
    }
    void severalFillOneArchive()
    {
        QFETCH(QByteArray, database);
        makeArchive(database);
        ReceiverProcess one(m_iniFile, m_folder->filePath(QStringLiteral("one")));
        ReceiverProcess other(m_iniFile, m_folder->filePath(QStringLiteral("other")));
        one.start();
        other.start();
        // Both send the same reports, and so does a capture.
        Fleet fleet(one.port, 1, terminals, packetsASecond);
        Fleet twin(other.port, 1, terminals, packetsASecond);
        fleet.start();
        twin.start();
        QFile capture(m_folder->filePath(QStringLiteral("capture")));
        QVERIFY(capture.open(QIODevice::WriteOnly));
        for (quint32 i = 0; i < 100 * terminals; ++i)
            capture.write(Fleet::packetOf(1 + i % terminals, Fleet::firstTime + i / terminals));
        capture.close();
        for (int i = 0; i < 3; ++i) {
            QCOMPARE(QProcess::execute(QStringLiteral(PARDEL_IMPORT),
                                       {QStringLiteral("--ini"), m_iniFile, QStringLiteral("--group"),
                                        QStringLiteral("Db"), capture.fileName()}),
                     0);
        }
        QTest::qSleep(draw(1000, 2000));
        fleet.finish();
        twin.finish();
        endWithAllStored(one);
        endWithAllStored(other);
        compare({&fleet, &twin}, {});
    }

    void keepsAllOnAFullDisk()
    {
        makeArchive("postgres");
        const QString spool = m_folder->filePath(QStringLiteral("spool"));
        QDir().mkpath(spool);
        if (QProcess::execute(QStringLiteral("mount"),
                              {QStringLiteral("-t"), QStringLiteral("tmpfs"), QStringLiteral("-o"),
                               QStringLiteral("size=2m"), QStringLiteral("tmpfs"), spool}) != 0)
            QSKIP("needs the right to mount");
        {
            ReceiverProcess receiver(m_iniFile, spool);
            receiver.start();
            runServerScript("PARDEL_POSTGRES_STOP");
            Fleet fleet(receiver.port, 1, terminals, 20 * packetsASecond);
            fleet.start();
            QTRY_VERIFY_WITH_TIMEOUT(receiver.toldSoFar().contains("cannot write to the spool"), 60'000);
            receiver.end();
            runServerScript("PARDEL_POSTGRES_START");
            // The last status line says what had been taken.
            const QByteArray told = receiver.told();
            const QByteArray mark("0 connected; packets ");
            const QByteArray packets =
                told.mid(told.lastIndexOf(mark) + mark.size()).split(' ').first().replace(',', "");
            fleet.stop();
            endWithAllStored(receiver, true);
            const ArchiveConnection archive(m_iniFile, QStringLiteral("Db"));
            QSqlQuery query(QStringLiteral("SELECT count(*) FROM archive.master_table"), archive.database());
            QVERIFY(query.next());
            QVERIFY2(packets.toInt() > 10'000 && query.value(0).toInt() >= packets.toInt(), told);
        }
        QCOMPARE(QProcess::execute(QStringLiteral("umount"), {spool}), 0);
    }

private:
    struct Period
    {
        qint64 from;
        qint64 to;
    };

    int draw(int from, int to) { return std::uniform_int_distribution<int>(from, to)(m_random); }

    static void runServerScript(const char* variable)
    {
        QCOMPARE(QProcess::execute(qEnvironmentVariable(variable), {}), 0);
    }

    void makeArchive(const QByteArray& type)
    {
        m_folder = std::make_unique<QTemporaryDir>();
        m_iniFile = m_folder->filePath(QStringLiteral("db.ini"));
        const bool sqlite = type == "sqlite3";
        QString name = m_folder->filePath(QStringLiteral("main.db"));
        if (!sqlite) {
            name = QStringLiteral("faults_%1").arg(++m_databases);
            QCOMPARE(QProcess::execute(QStringLiteral("createdb"), {name}), 0);
        }
        {
            QSettings settings(m_iniFile, QSettings::IniFormat);
            settings.setValue(QStringLiteral("Db/DBType"), QString::fromLatin1(type));
            settings.setValue(QStringLiteral("Db/BaseName"), name);
            settings.setValue(QStringLiteral("Db/SqlHostName"), qEnvironmentVariable("PGHOST"));
            settings.setValue(QStringLiteral("Db/SqlPort"), qEnvironmentVariable("PGPORT"));
        }
        QCOMPARE(QProcess::execute(QStringLiteral(PARDEL_ARCHIVE),
                                   {QStringLiteral("--ini"), m_iniFile, QStringLiteral("--group"), QStringLiteral("Db"),
                                    QStringLiteral("create")}),
                 0);
    }

    void cause(const QByteArray& fault, ReceiverProcess& receiver, std::vector<Period>& losses) const
    {
        const qint64 now = QDateTime::currentMSecsSinceEpoch();
        if (fault == "kill receiver") {
            losses.push_back({now - promised, std::numeric_limits<qint64>::max()});
            receiver.kill();
        } else if (fault == "end receiver") {
            losses.push_back({now, std::numeric_limits<qint64>::max()});
            receiver.end();
        } else if (fault == "start receiver") {
            receiver.start();
            losses.back().to = QDateTime::currentMSecsSinceEpoch();
        } else if (fault == "kill server") {
            runServerScript("PARDEL_POSTGRES_STOP");
        } else if (fault == "start server") {
            runServerScript("PARDEL_POSTGRES_START");
        } else if (fault == "fill spool") {
            receiver.limitFiles("0");
        } else if (fault == "clear spool") {
            receiver.limitFiles("unlimited");
        } else {
            QFAIL(fault);
        }
    }

    /// Everything that the receiver has is in the archive when it has ended, perhaps for the second time.
    static void endWithAllStored(ReceiverProcess& receiver, bool hasEnded = false)
    {
        if (!hasEnded)
            receiver.end();
        if (!QTest::currentTestFailed() && receiver.spooledFiles() > 0) {
            receiver.start();
            receiver.end();
        }
        QCOMPARE(receiver.spooledFiles(), 0);
    }

    /// Every report that was sent is there once with its value, but those of the losses may be missing; and no other
    /// is.
    void compare(const std::vector<const Fleet*>& fleets, const std::vector<Period>& losses) const
    {
        const auto key = [](quint32 object, quint32 time) { return quint64(object) << 32 | time; };
        QHash<quint64, bool> sent; // whether it has to be there
        for (const Fleet* fleet : fleets) {
            for (const Fleet::Report& report : fleet->reports()) {
                const bool sure =
                    report.sent > 0 && std::none_of(losses.begin(), losses.end(), [&](const Period& period) {
                        return report.sent >= period.from && report.sent <= period.to;
                    });
                bool& before = sent[key(report.object, report.time)];
                before = before || sure;
            }
        }
        const ArchiveConnection archive(m_iniFile, QStringLiteral("Db"));
        QVERIFY2(archive.error().isEmpty(), qPrintable(archive.error()));
        QSqlQuery query(archive.database());
        QVERIFY(query.exec(
            QStringLiteral("SELECT id_object, time_unix, sens_%1 FROM archive.master_table").arg(Fleet::sensor)));
        int wrong = 0;
        int unsure = 0;
        QHash<quint64, int> there;
        while (query.next()) {
            const auto time = query.value(1).toUInt();
            const quint64 report = key(query.value(0).toUInt(), time);
            wrong += ++there[report] > 1 || !sent.contains(report) || query.value(2).toInt() != Fleet::valueAt(time);
        }
        int missing = 0;
        for (auto report = sent.cbegin(); report != sent.cend(); ++report) {
            missing += report.value() && !there.contains(report.key());
            unsure += !report.value();
        }
        qInfo("%d reports sent, %d of them in the moments of a fault; %d stored", int(sent.size()), unsure,
              int(there.size()));
        QVERIFY(sent.size() > 200); // on a machine that is busy with other things, too
        QCOMPARE(wrong, 0);
        QCOMPARE(missing, 0);
        QVERIFY(query.exec(
            QStringLiteral("SELECT count(*) FROM archive.lastdata last WHERE time_unix = (SELECT "
                           "max(time_unix) FROM archive.master_table m WHERE m.id_object = last.id_object)")));
        QVERIFY(query.next());
        QCOMPARE(query.value(0).toInt(), terminals);
    }

    std::mt19937 m_random;
    std::unique_ptr<QTemporaryDir> m_folder;
    QString m_iniFile;
    int m_databases = 0;
};

QTEST_GUILESS_MAIN(TestFaults)
#include "tst_faults.moc"
