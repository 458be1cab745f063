// An archive whose history three servers share beside a fourth, the first: it reads as one on a single server does, and
// keeps every report exactly once, whoever is lost while it is filled.

#include "archivewriter.h"
#include "reporttext.h"
#include "shell.h"
#include "testfiles.h"

#include <Pardel/archive.h>
#include <Pardel/connection.h>

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QRandomGenerator>
#include <QSettings>
#include <QSqlQuery>
#include <QTemporaryDir>
#include <QThread>

#include <algorithm>

namespace {

const QStringList ports = qEnvironmentVariable("PARDEL_POSTGRES_PORTS").split(QLatin1Char(' '));
const QList<qint16> types = {0, 5, 15, 56, 65, 66, 67};

QString shardOptions(const QString& database)
{
    QString options;
    for (int i = 1; i < ports.size(); ++i)
        options += QStringLiteral(" --shard 'host=127.0.0.1 port=%1 dbname=%2'").arg(ports[i], database);
    return options;
}

} // namespace

class TestShards : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase()
    {
        QCOMPARE(ports.size(), 4);
        const Outcome made =
            runShell(QStringLiteral("for P in $PARDEL_POSTGRES_PORTS; do psql -qXp $P -d postgres -c 'CREATE DATABASE "
                                    "spread' || exit; done; "
                                    "createdb one && \"$simulate\" --terminals 200 --minutes 60 > '%1/1' && "
                                    "\"$simulate\" --terminals 200 --minutes 60 --seed 2 > '%1/2'")
                         .arg(m_folder.path()));
        QVERIFY2(made.status == 0, made.errors);
        for (const char* name : {"one", "spread"}) {
            QSettings settings(ini(name), QSettings::IniFormat);
            settings.setValue(QStringLiteral("Db/DBType"), QStringLiteral("postgres"));
            settings.setValue(QStringLiteral("Db/BaseName"), QLatin1String(name));
            settings.setValue(QStringLiteral("Db/SqlHostName"), qEnvironmentVariable("PGHOST"));
            settings.setValue(QStringLiteral("Db/SqlPort"), qEnvironmentVariable("PGPORT"));
            settings.sync();
            QString connection = QLatin1String(name);
            QVERIFY(openDataBaseBySettings(connection, settings, QStringLiteral("Db"), QString()).type() ==
                    QSqlError::NoError);
            (qstrcmp(name, "one") == 0 ? m_one : m_spread) = QSqlDatabase::database(connection);
        }
        QVERIFY(runOn("one", "\"$archive\" $db create").startsWith("made archive.master_table"));
    }

    void refusesWhatIsNoShard_data()
    {
        QTest::addColumn<QString>("options");
        QTest::addColumn<QByteArray>("error");
        const QString here = QStringLiteral("--shard 'host=127.0.0.1 port=%1'");
        QTest::newRow("no host") << QStringLiteral("--shard port=1") << QByteArray("--shard number 1 has no host=");
        QTest::newRow("unknown word") << QStringLiteral("--shard 'password=secret hots=x'") << QByteArray("\"hots\"");
        QTest::newRow("itself") << here.arg(ports[0])
                                << QByteArray(":%1/spread: it is the database of the group or of");
        QTest::newRow("twice the same") << here.arg(ports[1]) + QLatin1Char(' ') + here.arg(ports[1])
                                        << QByteArray("or of another --shard");
        QTest::newRow("nobody there") << here.arg(1) << QByteArray("127.0.0.1:1/spread: connection to server at");
        QTest::newRow("no such user") << here.arg(ports[1] + QLatin1String(" user=nobody password=secret"))
                                      << QByteArray("role \"nobody\" does not exist");
    }

    void refusesWhatIsNoShard()
    {
        QFETCH(QString, options);
        QFETCH(QByteArray, error);
        const QByteArray told = runOn("spread", "\"$archive\" $db create " + options.toUtf8());
        QVERIFY2(told.contains(error.replace("%1", ports[0].toUtf8())) && told.count('\n') == 1, told);
        QVERIFY2(told.contains("and has made none: ") && !told.contains("secret"), told);
        QCOMPARE(valueOf(m_spread, "SELECT to_regclass('archive.master_table') IS NULL"), "true");
        onShards("DROP SCHEMA IF EXISTS archive CASCADE");
    }

    void isMadeOnce()
    {
        const QByteArray create = "\"$archive\" $db create" + shardOptions(QStringLiteral("spread")).toUtf8();
        QVERIFY2(runOn("one", create).contains("lies on this server alone; "), runOn("one", create));
        QCOMPARE(runOn("spread", create),
                 QByteArray("made archive.master_table, archive.lastdata, Connections, Commands, Sensors\n"));
        QCOMPARE(runOn("spread", create), QByteArray("all tables were there already\n"));
        QVERIFY(runOn("spread", "\"$archive\" $db create").startsWith("all tables were there already\n"));
        QVERIFY(runOn("spread", create + " --shard host=127.0.0.1").contains("lies on other shards, 127.0.0.1:"));
        // A second first server must not take the same shards.
        onShards("COMMENT ON TABLE archive.master_table IS 'of somebody else'");
        execute(m_one, "CREATE DATABASE second");
        const QByteArray second =
            runOn("one", "cp \"${db#--ini }\" /dev/null 2>&1; sed 's/=one/=second/' '" + ini("one").toUtf8() + "' > '" +
                             ini("second").toUtf8() + "'; \"$archive\" --ini '" + ini("second").toUtf8() +
                             "' --group Db create" + shardOptions(QStringLiteral("spread")).toUtf8());
        QVERIFY2(second.contains("it has an archive.master_table that was not made for this shard"), second);

        execute(m_spread, "ALTER TABLE archive.master_table DETACH PARTITION archive.master_table_shard_2");
        QVERIFY(runOn("spread", "\"$import\" $db sample.bin").contains("has no partition for 1 of 3 remainders"));
        execute(m_spread, "ALTER TABLE archive.master_table ATTACH PARTITION archive.master_table_shard_2 FOR VALUES "
                          "WITH (MODULUS 3, REMAINDER 1)");
        onShards("DROP INDEX archive.master_table_states");
        QVERIFY(runOn("spread", "\"$import\" $db sample.bin").contains("the shard pardel_shard_1 has no unique index"));
        onShards("CREATE UNIQUE INDEX master_table_states ON archive.master_table (id_object, time_unix, fingerprint)");
    }

    void readsAsOneServer()
    {
        const QByteArray import = "\"$import\" $db sample.bin '" + capture(1) + "' '" + capture(2) + '\'';
        const QByteArray told = runOn("one", import);
        m_reports = numberIn(told, "stored ");
        QVERIFY2(m_reports > 15'000, told);
        for (const qint64 stored : {m_reports, qint64(0)}) { // the second time they are there
            const QByteArray spread = runOn("spread", import);
            QCOMPARE(numberIn(spread, "stored "), stored);
            QCOMPARE(numberIn(spread, "there already ") + stored, numberIn(told, "there already ") + m_reports);
            QCOMPARE(statesOf(m_spread), statesOf(m_one));
        }
        compareReaders();
        onShards("SELECT 1 / (count(*) > 4000)::integer FROM archive.master_table"); // each has its share
        onShards("SELECT 1 / (count(*) = 0)::integer FROM archive.master_table_rest WHERE time_unix > 0");
        // The shard finds the newest of a day and sends few.
        QByteArray plan;
        QSqlQuery explain(
            QStringLiteral("EXPLAIN (ANALYZE, VERBOSE) SELECT time_unix, sens_65 FROM archive.master_table "
                           "WHERE id_object = 2 and time_unix < 1767229200 and time_unix >= 1767142800 "
                           "ORDER by time_unix DESC LIMIT 1"),
            m_spread);
        while (explain.next())
            plan += explain.value(0).toByteArray() + '\n';
        QVERIFY2(plan.contains("ORDER BY time_unix DESC") && plan.count("Foreign Scan") == 1, plan);
    }

    void lateReportsCountAsOnOneServer()
    {
        const quint32 seed = QRandomGenerator::global()->generate();
        QRandomGenerator random(seed);
        std::printf("seed %u\n", seed);
        const qint64 steps[] = {0, 1, 1800, 3600, 43'200, 90'000, 864'000};
        ArchiveWriter writers[] = {ArchiveWriter(m_one), ArchiveWriter(m_spread)};
        for (int i = 0; i < 1500; ++i) {
            MobData report;
            report.idObject = random.bounded(5000, 5020);
            report.timeUnix = static_cast<qint32>(1767300000 - steps[random.bounded(7)] * random.bounded(3));
            if (random.bounded(2) == 0)
                report.latitude = random.bounded(3);
            for (int sensor = random.bounded(4); sensor > 0; --sensor)
                report.sensors +=
                    makeSensor(types[random.bounded(types.size())], static_cast<float>(random.bounded(100)));
            const bool flush = random.bounded(20) == 0;
            for (ArchiveWriter& writer : writers) {
                writer.add(report);
                if (flush)
                    writer.flush();
            }
        }
        for (ArchiveWriter& writer : writers) {
            writer.flush();
            QCOMPARE(writer.error(), QString());
        }
        QCOMPARE(writers[1].stored(), writers[0].stored());
        m_reports += writers[0].stored();
        m_others += writers[0].stored();
        compareReaders();
    }

    void countsWhatIsAhead()
    {
        for (const char* name : {"one", "spread"}) {
            const QByteArray told = runOn(name, "\"$import\" $db --hex --accept-damaged << E\n"
                                                "a4d500001e 1000 0105 01000000f0 cccc\n" // in 2097
                                                "a4d500001e 1000 0105 0100758a60 cccc\nE");
            QVERIFY2(told.contains("stored 2,") && told.contains("ahead 1,"), told);
        }
        m_reports += 2;
        QCOMPARE(statesOf(m_spread), statesOf(m_one));
    }

    void keepsHouse()
    {
        const QJsonObject status = QJsonDocument::fromJson(runOn("spread", "\"$archive\" $db status --json")).object();
        QCOMPARE(qint64(status.value(QStringLiteral("reports")).toDouble()), m_reports);
        QCOMPARE(status.value(QStringLiteral("shards")).toArray().size(), 3);
        onShards("INSERT INTO archive.master_table (id_object, time_unix, fingerprint) VALUES (-1, 1780444800, 'x')");
        const QByteArray moved = runOn("spread", "\"$archive\" $db partition");
        QCOMPARE(moved.count("moved 1 report into pardel_shard_"), 3);
        onShards("SELECT 1 / count(*) FROM archive.master_table_2026_06");
        onShards("DELETE FROM archive.master_table WHERE id_object = -1");
        const QDate today = QDateTime::currentDateTimeUtc().date();
        const int months = (today.year() - 2026) * 12 + today.month() - 6; // from July 2026 on
        const QByteArray dry =
            runOn("spread", QStringLiteral("\"$archive\" $db retain --dry-run --months %1").arg(months).toUtf8());
        QVERIFY2(dry.count("would drop pardel_shard_") >= 6 &&
                     dry.count("archive.master_table_2026_06: 0 reports") == 3,
                 dry);
    }

    void storesForAUserWithRights()
    {
        execute(m_spread, "CREATE ROLE storer LOGIN; GRANT USAGE ON SCHEMA archive TO storer; GRANT SELECT, INSERT ON "
                          "archive.master_table TO storer; GRANT SELECT, INSERT, UPDATE, DELETE ON archive.lastdata TO "
                          "storer; GRANT SELECT, INSERT ON \"Sensors\" TO storer");
        const QByteArray import = "{ cat '" + ini("spread").toUtf8() + "'; echo SqlLogin=storer; } > '" +
                                  ini("storer").toUtf8() + "'; \"$import\" --ini '" + ini("storer").toUtf8() +
                                  "' --group Db --hex --accept-damaged << E\na4d500001e 1000 0105 0100758a61 cccc\nE";
        QByteArray told = runOn("spread", import);
        QVERIFY2(told.contains("a user mapping of his own"), told);
        for (int i = 1; i < ports.size(); ++i) { // these servers ask for no password
            const QString server = QStringLiteral("pardel_shard_%1").arg(i);
            execute(m_spread,
                    QStringLiteral("GRANT USAGE ON FOREIGN SERVER %1 TO storer; CREATE USER MAPPING FOR storer "
                                   "SERVER %1 OPTIONS (user 'postgres', password_required 'false')")
                        .arg(server));
        }
        told = runOn("spread", import);
        QVERIFY2(told.contains("stored 1,") && told.count('\n') == 1, told);
    }

    void twoAtOnceStoreTheSame()
    {
        empty();
        const QByteArray told =
            runOn("spread", "\"$import\" $db '" + capture(1) + "' '" + capture(2) + "' & \"$import\" $db '" +
                                capture(2) + "' '" + capture(1) + "'; S=$?; wait $! && echo \"status $S\"");
        QVERIFY2(told.contains("status 0"), told);
        qint64 stored = 0;
        for (const QByteArray& line : told.split('\n'))
            stored += numberIn(line, "stored ");
        QCOMPARE(stored, m_reports - m_others);
        QCOMPARE(valueOf(m_spread, "SELECT count(*) FROM archive.master_table").toLongLong(), stored);
    }

    void losesNothing_data()
    {
        QTest::addColumn<QString>("harm");
        QTest::newRow("a shard") << QStringLiteral("\"$PARDEL_POSTGRES_STOP\" %1");
        QTest::newRow("the first server") << QStringLiteral("\"$PARDEL_POSTGRES_STOP\" 1");
        QTest::newRow("the importer") << QStringLiteral("kill -9 $I");
    }

    void losesNothing();

private:
    QString ini(const char* name) const { return m_folder.filePath(QLatin1String(name) + QStringLiteral(".ini")); }
    QByteArray capture(int number) const { return m_folder.filePath(QString::number(number)).toUtf8(); }

    /// What a shell's command writes, errors last.
    QByteArray runOn(const char* name, const QByteArray& command) const
    {
        const Outcome outcome = runShell(QString::fromUtf8(command), QByteArray(), ini(name));
        return outcome.output + outcome.errors;
    }

    static qint64 numberIn(const QByteArray& text, const char* before)
    {
        const auto place = text.indexOf(before);
        return place < 0 ? 0 : text.mid(place + static_cast<int>(qstrlen(before))).split(',').first().toLongLong();
    }

    static void execute(QSqlDatabase& db, const QString& statement)
    {
        QSqlQuery query(db);
        QVERIFY2(query.exec(statement), qPrintable(query.lastError().text()));
    }
    static void execute(QSqlDatabase& db, const char* statement) { execute(db, QLatin1String(statement)); }

    static QByteArray valueOf(const QSqlDatabase& db, const char* statement)
    {
        QSqlQuery query(QLatin1String(statement), db);
        return query.next() ? query.value(0).toByteArray() : query.lastError().text().toUtf8();
    }

    static void onShards(const char* statement)
    {
        const Outcome outcome =
            runShell(QStringLiteral("for P in ${PARDEL_POSTGRES_PORTS#* }; do PGOPTIONS='-c client_min_messages=error' "
                                    "psql -qXv ON_ERROR_STOP=1 -p $P -d spread -c \"%1\" || exit; done")
                         .arg(QLatin1String(statement)));
        QVERIFY2(outcome.status == 0, outcome.errors);
    }

    void empty()
    {
        onShards("TRUNCATE archive.master_table");
        execute(m_spread, "TRUNCATE archive.lastdata");
    }

    static QByteArrayList statesOf(const QSqlDatabase& db)
    {
        QByteArrayList states;
        readLastStates(types, db, [&](const MobData& state) {
            states += reportText(state);
            return true;
        });
        return states;
    }

    static QByteArrayList historyOf(const QSqlDatabase& db, qint32 object)
    {
        QByteArrayList states;
        readHistory(object, 0, 0xFFFFFFFF, types, db, [&](const MobData& state) {
            states += reportText(state);
            return true;
        });
        std::sort(states.begin(), states.end()); // of one time they come in any order
        return states;
    }

    void compareReaders() const;

    const QTemporaryDir m_folder;
    QSqlDatabase m_one;
    QSqlDatabase m_spread;
    qint64 m_reports = 0;
    qint64 m_others = 35 + 2; // that are not in the simulated captures
};

void TestShards::compareReaders() const
{
    QVector<qint32> objects;
    readLastStates({}, m_one, [&](const MobData& state) {
        objects += state.idObject;
        return true;
    });
    QVERIFY(objects.size() >= 200);
    QCOMPARE(statesOf(m_spread), statesOf(m_one));
    qint64 read = 0;
    for (const qint32 object : qAsConst(objects)) {
        const QByteArrayList history = historyOf(m_spread, object);
        QCOMPARE(history, historyOf(m_one, object));
        read += history.size();
        for (const quint32 before : {1767226000U, 1767229200U}) {
            MobData states[2];
            bool found[2];
            for (const bool spread : {false, true}) {
                states[spread].idObject = object;
                states[spread].sensors = {makeSensor(65), makeSensor(15), makeSensor(0), makeSensor(0)};
                found[spread] = readPrevData(states[spread], before, 86400, spread ? m_spread : m_one);
            }
            QCOMPARE(found[1], found[0]);
            QCOMPARE(states[1].timeUnix, states[0].timeUnix);
            const QByteArray moment = '@' + QByteArray::number(states[0].timeUnix);
            const auto ofOneTime = std::count_if(history.begin(), history.end(), [&](const QByteArray& state) {
                return state.split(' ').contains(moment);
            });
            if (ofOneTime == 1) // else either may come
                QCOMPARE(reportText(states[1]), reportText(states[0]));
        }
    }
    QVERIFY2(read >= m_reports - 10, QByteArray::number(read)); // but those of objects that have no last state
}

void TestShards::losesNothing()
{
    QFETCH(QString, harm);
    const quint32 seed = QRandomGenerator::global()->generate();
    QRandomGenerator random(seed);
    std::printf("seed %u\n", seed);
    const QByteArray both = '\'' + capture(1) + "' '" + capture(2) + '\'';
    int harmed = 0;
    for (int round = 0; round < 2; ++round) {
        empty();
        const QByteArray command =
            QStringLiteral(
                "\"$import\" $db %1 & I=$!; sleep 0.%2; %3; wait $I; echo \"status $?\"; for N in 1 2 3 4; do "
                "\"$PARDEL_POSTGRES_START\" $N || exit; done")
                .arg(QString::fromUtf8(both))
                .arg(random.bounded(5, 50), 2, 10, QLatin1Char('0'))
                .arg(harm.contains(QLatin1Char('%')) ? harm.arg(random.bounded(2, 5)) : harm)
                .toUtf8();
        const QByteArray told = runOn("spread", command);
        QVERIFY2(told.startsWith("status "), told);
        harmed += told.startsWith("status 0") ? 0 : 1;
        if (told.startsWith("status 2"))
            QVERIFY2(told.contains("cannot store reports: ") && told.contains("when the server answers again"), told);
        m_spread.close();
        QVERIFY(m_spread.open());
        // What has been told to be stored is there, and at most one transaction that was on its way.
        const qint64 there = valueOf(m_spread, "SELECT count(*) FROM archive.master_table").toLongLong();
        const qint64 stored = numberIn(told, "stored ");
        QVERIFY2(there >= stored, told);
        const QByteArray again = runOn("spread", "\"$import\" $db " + both);
        QVERIFY2(numberIn(again, "stored ") == numberIn(again, "reports ") - numberIn(again, "there already "), again);
        QCOMPARE(there + numberIn(again, "stored "), m_reports - m_others);
        QCOMPARE(valueOf(m_spread, "SELECT count(*) FROM (SELECT DISTINCT id_object, time_unix, fingerprint FROM "
                                   "archive.master_table) AS keys")
                     .toLongLong(),
                 m_reports - m_others);
        // As is right, the last states too.
        QByteArrayList states = statesOf(m_spread);
        QVERIFY(states.size() == 200);
        m_one.close();
        QVERIFY(m_one.open());
        const QByteArrayList expected = statesOf(m_one);
        for (const QByteArray& state : states)
            QVERIFY2(expected.contains(state) || state.startsWith("1 ") || state.startsWith("2 ") ||
                         state.startsWith("3 ") || state.startsWith("30 "),
                     state);
    }
    QVERIFY(harmed > 0);
}

QTEST_GUILESS_MAIN(TestShards)
#include "tst_shards.moc"
