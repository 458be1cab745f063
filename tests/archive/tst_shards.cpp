// An archive whose history three servers share beside a fourth, the first: it reads as one on a single server does, and
// keeps every report exactly once, whoever is lost while it is filled.

#include "archivewriter.h"
#include "databasetest.h"
#include "reporttext.h"
#include "shell.h"

#include <Pardel/archive.h>

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QRandomGenerator>
#include <QSqlQuery>

#include <algorithm>

namespace {

const QList<qint16> types = {0, 5, 15, 56, 65, 66, 67};

/// Makes the archive of the database that $db names, which the other three servers share.
const QByteArray create =
    "set -- $PARDEL_POSTGRES_PORTS; S='host=127.0.0.1 dbname=spread port='; \"$archive\" $db create "
    "--shard \"$S$2\" --shard \"$S$3\" --shard \"$S$4\"";

} // namespace

class TestShards : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase()
    {
        const Outcome made =
            runShell(QStringLiteral("for P in $PARDEL_POSTGRES_PORTS; do psql -qXp $P -d postgres -c 'CREATE DATABASE "
                                    "spread' || exit; done; "
                                    "createdb one && \"$simulate\" --terminals 200 --minutes 60 > '%1/1' && "
                                    "\"$simulate\" --terminals 200 --minutes 60 --seed 2 > '%1/2'")
                         .arg(m_folder.path()));
        QVERIFY2(made.status == 0, made.errors);
        for (const char* name : {"one", "spread", "second"})
            writeDatabaseIni(ini(name), QStringLiteral("postgres"), QLatin1String(name));
        m_one = openDatabase(ini("one"), QStringLiteral("one"));
        m_spread = openDatabase(ini("spread"), QStringLiteral("spread"));
        QVERIFY(runOn("one", "\"$archive\" $db create").startsWith("made archive.master_table"));
    }

    void refusesWhatIsNoShard_data() { addTableRows("shards.txt"); }

    void refusesWhatIsNoShard()
    {
        const QByteArray told =
            runOn("spread", "set -- $PARDEL_POSTGRES_PORTS; \"$archive\" $db create " + cell("options"));
        QVERIFY2(hasParts(told, cell("error")) && told.count('\n') == 1, told);
        QVERIFY2(told.contains("and has made none: ") && !told.contains("secret"), told);
        QCOMPARE(valuesOf(m_spread, QStringLiteral("SELECT to_regclass('archive.master_table') IS NULL")), "true");
        onShards("DROP SCHEMA IF EXISTS archive CASCADE");
    }

    void isMadeOnce()
    {
        QVERIFY2(runOn("one", create).contains("lies on this server alone; "), runOn("one", create));
        QCOMPARE(runOn("spread", create),
                 QByteArray("made archive.master_table, archive.lastdata, Connections, Commands, Sensors\n"));
        QCOMPARE(runOn("spread", create), QByteArray("all tables were there already\n"));
        QVERIFY(runOn("spread", "\"$archive\" $db create").startsWith("all tables were there already\n"));
        QVERIFY(runOn("spread", create + " --shard host=127.0.0.1").contains("lies on other shards, 127.0.0.1:"));
        // A second first server must not take the same shards.
        onShards("COMMENT ON TABLE archive.master_table IS 'of somebody else'");
        execute(m_one, QStringLiteral("CREATE DATABASE second"));
        const QByteArray second = runOn("second", create);
        QVERIFY2(second.contains("it has an archive.master_table that was not made for this shard"), second);

        execute(m_spread,
                QStringLiteral("ALTER TABLE archive.master_table DETACH PARTITION archive.master_table_shard_2"));
        QVERIFY(runOn("spread", "\"$import\" $db sample.bin").contains("has no partition for 1 of 3 remainders"));
        execute(
            m_spread,
            QStringLiteral("ALTER TABLE archive.master_table ATTACH PARTITION archive.master_table_shard_2 FOR VALUES "
                           "WITH (MODULUS 3, REMAINDER 1)"));
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
        execute(m_spread,
                QStringLiteral(
                    "CREATE ROLE storer LOGIN; GRANT USAGE ON SCHEMA archive TO storer; GRANT SELECT, INSERT ON "
                    "archive.master_table TO storer; GRANT SELECT, INSERT, UPDATE, DELETE ON archive.lastdata TO "
                    "storer; GRANT SELECT, INSERT ON \"Sensors\" TO storer"));
        writeFile(ini("storer"), contentOf(ini("spread")) + "SqlLogin=storer\n");
        const QByteArray import =
            "\"$import\" $db --hex --accept-damaged << E\na4d500001e 1000 0105 0100758a61 cccc\nE";
        QByteArray told = runOn("storer", import);
        QVERIFY2(told.contains("a user mapping of his own"), told);
        for (const char* server : {"pardel_shard_1", "pardel_shard_2", "pardel_shard_3"}) { // which ask for no password
            const QString rights =
                QStringLiteral("GRANT USAGE ON FOREIGN SERVER %1 TO storer; CREATE USER MAPPING FOR "
                               "storer SERVER %1 OPTIONS (user 'postgres', password_required 'false')");
            execute(m_spread, rights.arg(QLatin1String(server)));
        }
        told = runOn("storer", import);
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
        QCOMPARE(valuesOf(m_spread, QStringLiteral("SELECT count(*) FROM archive.master_table")).toLongLong(), stored);
    }

    void losesNothing_data() { addTableRows("shardfaults.txt"); }
    void losesNothing()
    {
        const quint32 seed = QRandomGenerator::global()->generate();
        QRandomGenerator random(seed);
        std::printf("seed %u\n", seed);
        const QByteArray both = '\'' + capture(1) + "' '" + capture(2) + '\'';
        int harmed = 0;
        for (int round = 0; round < 2; ++round) {
            empty();
            const QByteArray command =
                "N=" + QByteArray::number(random.bounded(2, 5)) + "; \"$import\" $db " + both + " & I=$!; sleep 0." +
                QByteArray::number(random.bounded(50, 500)).rightJustified(3, '0') + "; " + cell("harm") +
                "; wait $I; echo \"status $?\"; for N in 1 2 3 4; do \"$PARDEL_POSTGRES_START\" $N || exit; done";
            const QByteArray told = runOn("spread", command);
            QVERIFY2(told.startsWith("status "), told);
            harmed += told.startsWith("status 0") ? 0 : 1;
            if (told.startsWith("status 2"))
                QVERIFY2(hasParts(told, "cannot store reports: ...when the server answers again"), told);
            m_spread.close();
            QVERIFY(m_spread.open());
            // What has been told to be stored is there, and at most one transaction that was on its way.
            const qint64 there =
                valuesOf(m_spread, QStringLiteral("SELECT count(*) FROM archive.master_table")).toLongLong();
            QVERIFY2(there >= numberIn(told, "stored "), told);
            const QByteArray again = runOn("spread", "\"$import\" $db " + both);
            QVERIFY2(numberIn(again, "stored ") == numberIn(again, "reports ") - numberIn(again, "there already "),
                     again);
            QCOMPARE(there + numberIn(again, "stored "), m_reports - m_others);
            QCOMPARE(
                valuesOf(m_spread,
                         QStringLiteral("SELECT count(*) FROM (SELECT DISTINCT id_object, time_unix, fingerprint FROM "
                                        "archive.master_table) AS keys"))
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
        execute(m_spread, QStringLiteral("TRUNCATE archive.lastdata"));
    }

    /// The last states, or the history of an object.
    static QByteArrayList statesOf(const QSqlDatabase& db, qint32 object = 0)
    {
        QByteArrayList states;
        const auto take = [&](const MobData& state) {
            states += reportText(state);
            return true;
        };
        object == 0 ? readLastStates(types, db, take) : readHistory(object, 0, 0xFFFFFFFF, types, db, take);
        std::sort(states.begin(), states.end()); // of one time they come in any order
        return states;
    }

    void compareReaders() const
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
            const QByteArrayList history = statesOf(m_spread, object);
            QCOMPARE(history, statesOf(m_one, object));
            read += history.size();
            for (const quint32 before : {1767226000U, 1767229200U}) {
                const auto stateOf = [&](const QSqlDatabase& db) {
                    MobData state;
                    state.idObject = object;
                    state.sensors = {makeSensor(65), makeSensor(15), makeSensor(0), makeSensor(0)};
                    readPrevData(state, before, 86400, db);
                    return state;
                };
                const MobData state = stateOf(m_spread);
                QCOMPARE(state.timeUnix, stateOf(m_one).timeUnix);
                const QByteArray moment = " @" + QByteArray::number(state.timeUnix) + ' ';
                if (history.join(" \n").count(moment) == 1) // else either may come
                    QCOMPARE(reportText(state), reportText(stateOf(m_one)));
            }
        }
        QVERIFY2(read >= m_reports - 10, QByteArray::number(read)); // but those of objects that have no last state
    }

    const QTemporaryDir m_folder;
    QSqlDatabase m_one;
    QSqlDatabase m_spread;
    qint64 m_reports = 0;
    qint64 m_others = 35 + 2; // that are not in the simulated captures
};

QTEST_GUILESS_MAIN(TestShards)
#include "tst_shards.moc"
