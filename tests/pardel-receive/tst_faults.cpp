// pardel-receive and its database while they are killed, run full and come back: what was sent is what is stored.
//
// PARDEL_FAULTS_SEED draws the moments (by default the clock), PARDEL_FAULTS_ROUNDS says how often each row is run.

#include "archiveconnection.h"
#include "databasetest.h"
#include "fleet.h"
#include "receiverprocess.h"

#include <QDateTime>
#include <QDir>
#include <QHash>
#include <QSqlQuery>

#include <memory>
#include <random>

namespace {

constexpr qint64 promised = 1000; // ms after which what has come outlives the receiver
constexpr int terminals = 20;
constexpr int packetsASecond = 2000;

/// A receiver with its spool.
struct Receiver : ReceiverProcess
{
    Receiver(const QString& iniFile, const QString& folder)
        : ReceiverProcess(iniFile, QStringLiteral("$db --spool '%1'").arg(folder)), spool(folder)
    {}
    int spooledFiles() const { return static_cast<int>(spool.entryList({QStringLiteral("*.packets")}).size()); }

    const QDir spool;
};

} // namespace

class TestFaults : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase()
    {
        quint32 seed = qgetenv("PARDEL_FAULTS_SEED").toUInt();
        if (seed == 0)
            seed = static_cast<quint32>(QDateTime::currentMSecsSinceEpoch());
        qInfo("PARDEL_FAULTS_SEED=%u", seed);
        m_random.seed(seed);
        QVERIFY2(qEnvironmentVariableIsSet("PARDEL_POSTGRES_START"), "run this test through scripts/with-postgres");
    }

    void keepsWhatWasSent_data() { addTableRows("faults.txt"); }
    void keepsWhatWasSent()
    {
        for (int round = std::max(qEnvironmentVariableIntValue("PARDEL_FAULTS_ROUNDS"), 1); round > 0; --round) {
            makeArchive(cell("database"));
            Receiver receiver(m_iniFile, m_folder->filePath(QStringLiteral("spool")));
            receiver.start();
            Fleet fleet(receiver.port(), 1, terminals, packetsASecond);
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
            QVERIFY2(!QTest::currentTestFailed(), receiver.told());
        }
    }

    void severalFillOneArchive_data() { addTableRows("databases.txt"); }
    void severalFillOneArchive()
    {
        makeArchive(cell("database"));
        Receiver one(m_iniFile, m_folder->filePath(QStringLiteral("one")));
        Receiver other(m_iniFile, m_folder->filePath(QStringLiteral("other")));
        one.start();
        other.start();
        // Both send the same reports, and so does a capture.
        Fleet fleet(one.port(), 1, terminals, packetsASecond);
        Fleet twin(other.port(), 1, terminals, packetsASecond);
        fleet.start();
        twin.start();
        QByteArray capture;
        for (quint32 i = 0; i < 100 * terminals; ++i)
            capture += Fleet::packetOf(1 + i % terminals, Fleet::firstTime + i / terminals);
        for (int i = 0; i < 3; ++i)
            QCOMPARE(runShell(QStringLiteral("\"$import\" $db"), capture, m_iniFile).status, 0);
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
        if (runShell(QStringLiteral("mount -t tmpfs -o size=2m tmpfs '%1'").arg(spool)).status != 0)
            QSKIP("needs the right to mount");
        {
            Receiver receiver(m_iniFile, spool);
            receiver.start();
            std::vector<Period> losses;
            cause("kill server", receiver, losses);
            Fleet fleet(receiver.port(), 1, terminals, 20 * packetsASecond);
            fleet.start();
            QTRY_VERIFY_WITH_TIMEOUT(receiver.told().contains("cannot write to the spool"), 60'000);
            const QByteArray told = receiver.end();
            cause("start server", receiver, losses);
            // The last status line says what had been taken.
            const QByteArray mark("0 connected; packets ");
            const QByteArray packets =
                told.mid(told.lastIndexOf(mark) + mark.size()).split(' ').first().replace(',', "");
            fleet.stop();
            endWithAllStored(receiver, true);
            const ArchiveConnection archive(m_iniFile, QStringLiteral("Db"));
            const QString count = QStringLiteral("SELECT count(*) FROM archive.master_table");
            const int stored = valuesOf(archive.database(), count).toInt();
            QVERIFY2(packets.toInt() > 10'000 && stored >= packets.toInt(), told);
        }
        QCOMPARE(runShell(QStringLiteral("umount '%1'").arg(spool)).status, 0);
    }

private:
    struct Period
    {
        qint64 from;
        qint64 to;
    };

    int draw(int from, int to) { return std::uniform_int_distribution<int>(from, to)(m_random); }

    void makeArchive(const QByteArray& type)
    {
        m_folder = std::make_unique<QTemporaryDir>();
        m_iniFile = m_folder->filePath(QStringLiteral("db.ini"));
        const bool postgres = type == "postgres";
        const QString name =
            postgres ? QStringLiteral("faults_%1").arg(++m_databases) : m_folder->filePath(QStringLiteral("main.db"));
        writeDatabaseIni(m_iniFile, QString::fromLatin1(type), name);
        const QString make = QStringLiteral("%1 \"$archive\" $db create");
        const Outcome made =
            runShell(make.arg(postgres ? QStringLiteral("createdb %1 &&").arg(name) : QString()), {}, m_iniFile);
        QVERIFY2(made.status == 0, made.errors);
    }

    void cause(const QByteArray& fault, Receiver& receiver, std::vector<Period>& losses) const
    {
        const qint64 now = QDateTime::currentMSecsSinceEpoch();
        if (fault == "kill receiver") {
            losses.push_back({now - promised, std::numeric_limits<qint64>::max()});
            receiver.kill();
        } else if (fault == "end receiver") {
            losses.push_back({now, std::numeric_limits<qint64>::max()});
            QVERIFY2(!receiver.end().isEmpty(), receiver.told());
        } else if (fault == "start receiver") {
            receiver.start();
            losses.back().to = QDateTime::currentMSecsSinceEpoch();
        } else {
            static const QMap<QByteArray, QString> commands = {
                {"kill server", QStringLiteral("\"$PARDEL_POSTGRES_STOP\" # %1")},
                {"start server", QStringLiteral("\"$PARDEL_POSTGRES_START\" # %1")},
                {"fill spool", QStringLiteral("prlimit --pid=%1 --fsize=0:")},
                {"clear spool", QStringLiteral("prlimit --pid=%1 --fsize=unlimited:")},
            };
            QVERIFY2(commands.contains(fault), fault);
            QCOMPARE(runShell(commands[fault].arg(receiver.processId())).status, 0);
        }
    }

    /// Everything that the receiver has is in the archive when it has ended, perhaps for the second time.
    static void endWithAllStored(Receiver& receiver, bool hasEnded = false)
    {
        QVERIFY2(hasEnded || !receiver.end().isEmpty(), receiver.told());
        if (receiver.spooledFiles() > 0) {
            receiver.start();
            QVERIFY2(!receiver.end().isEmpty(), receiver.told());
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
        const QString all = QStringLiteral("SELECT id_object, time_unix, sens_%1 FROM archive.master_table");
        QSqlQuery query(all.arg(Fleet::sensor), archive.database());
        int wrong = 0;
        int missing = 0;
        int unsure = 0;
        QHash<quint64, int> there;
        while (query.next()) {
            const auto time = query.value(1).toUInt();
            const quint64 report = key(query.value(0).toUInt(), time);
            wrong += ++there[report] > 1 || !sent.contains(report) || query.value(2).toInt() != Fleet::valueAt(time);
        }
        for (auto report = sent.cbegin(); report != sent.cend(); ++report) {
            missing += report.value() && !there.contains(report.key());
            unsure += !report.value();
        }
        qInfo("%d reports sent, %d of them in the moments of a fault; %d stored", int(sent.size()), unsure,
              int(there.size()));
        QVERIFY(sent.size() > 200); // on a machine that is busy with other things, too
        QCOMPARE(wrong, 0);
        QCOMPARE(missing, 0);
        const QString right =
            QStringLiteral("SELECT count(*) FROM archive.lastdata last WHERE time_unix = (SELECT "
                           "max(time_unix) FROM archive.master_table WHERE id_object = last.id_object)");
        QCOMPARE(valuesOf(archive.database(), right), QByteArray::number(terminals));
    }

    std::mt19937 m_random;
    std::unique_ptr<QTemporaryDir> m_folder;
    QString m_iniFile;
    int m_databases = 0;
};

QTEST_GUILESS_MAIN(TestFaults)
#include "tst_faults.moc"
