// What the writer leaves in the archive, whatever comes in whatever order, from however many and through failures.

#include "archiveschema.h"
#include "archivewriter.h"
#include "databasetest.h"
#include "reporttext.h"
#include "shell.h"

#include <Pardel/archive.h>

#include <QRandomGenerator>
#include <QSqlQuery>
#include <QSqlRecord>

#include <algorithm>

namespace {

const qint64 now = QDateTime::currentSecsSinceEpoch();

/// As laststates.txt has it; the position may be null.
QByteArray stateText(qint64 time, const MobData* position, const QList<Sensor>& sensors)
{
    QByteArrayList words = {time > now ? "@+" + QByteArray::number(time - now) : '@' + QByteArray::number(now - time)};
    if (position)
        words += reportText(*position).split(' ').mid(1, 2);
    if (!sensors.isEmpty())
        words += sensorsText(sensors);
    return words.join(' ');
}

/// A report of laststates.txt.
MobData reportOf(const QByteArray& text, qint32 object)
{
    MobData report = reportFrom(text);
    report.idObject = object;
    if (text.startsWith("@none"))
        report.timeUnix = MobData::noTime;
    else if (!text.startsWith("@0"))
        report.timeUnix = static_cast<qint32>(text.startsWith("@+") ? now + report.timeUnix : now - report.timeUnix);
    return report;
}

/// What a row of the table of last states holds.
QByteArray rowText(const QSqlRecord& row)
{
    const auto number = [&](const QByteArray& column) { return row.value(QString::fromLatin1(column)).toDouble(); };
    MobData state;
    qint32* const position[] = {&state.latitude, &state.longitude, &state.speed, &state.course};
    for (int i = 0; i < 4; ++i)
        *position[i] = static_cast<qint32>(number("sens_" + QByteArray::number(i + 1)));
    for (qint16 type = 0; type < 256; ++type) {
        const QByteArray status = ArchiveSchema::statusColumn(type);
        if (!row.isNull(QString::fromLatin1(status)))
            state.sensors += makeSensor(type, static_cast<float>(number(ArchiveSchema::valueColumn(type))),
                                        static_cast<qint8>(number(status)));
    }
    return stateText(static_cast<qint64>(number("time_unix")), row.isNull(QStringLiteral("sens_1")) ? nullptr : &state,
                     state.sensors);
}

/// The rule once more, word by word.
QByteArray literalLastState(QList<MobData> reports)
{
    std::sort(reports.begin(), reports.end(), [](const MobData& a, const MobData& b) {
        return a.timeUnix != b.timeUnix ? a.timeUnix < b.timeUnix : a.hash() < b.hash();
    });
    qint64 time = 0;
    const MobData* position = nullptr;
    QMap<qint16, Sensor> sensors;
    for (const MobData& report : qAsConst(reports)) {
        if (report.timeUnix == 0 || report.timeUnix == MobData::noTime || report.timeUnix > now + 86400)
            continue;
        time = report.timeUnix;
        if (report.latitude != 0 || report.longitude != 0)
            position = &report;
        for (const Sensor& sensor : report.sensors) {
            if (ArchiveSchema::hasColumns(sensor.type))
                sensors[sensor.type] = sensor;
        }
    }
    return time == 0 ? QByteArray() : stateText(time, position, sensors.values());
}

MobData randomReport(QRandomGenerator& random, qint32 object)
{
    MobData report;
    report.idObject = object;
    report.timeUnix = random.bounded(20) == 0 ? random.bounded(2) - 1
                                              : static_cast<qint32>(now + random.bounded(-40, 2) * 2000LL * 40);
    if (random.bounded(2) == 0)
        report = {object, random.bounded(3), random.bounded(3), random.bounded(9), 1, report.timeUnix, {}};
    for (int i = random.bounded(4); i > 0; --i)
        report.sensors += makeSensor(static_cast<qint16>(random.bounded(8)), static_cast<float>(random.bounded(100)));
    return report;
}

} // namespace

class TestArchiveWriter : public DatabaseTest
{
    Q_OBJECT

private Q_SLOTS:
    void lastStates_data() { addTableRows("laststates.txt"); }

    void lastStates()
    {
        makeTables();
        const QByteArrayList texts = cell("reports").split('&');
        QVector<int> order(texts.size());
        std::iota(order.begin(), order.end(), 0);
        do {
            for (const int inBatch : {1, 2, 9}) {
                ArchiveWriter writer(db);
                ++object;
                for (int i = 0; i < order.size(); ++i) {
                    writer.add(reportOf(texts[order[i]].trimmed(), object));
                    if (i % inBatch == 0)
                        writer.flush();
                }
                writer.flush();
                QCOMPARE(writer.error(), QString());
                QCOMPARE(lastState(object), cell("state"));
            }
        } while (std::next_permutation(order.begin(), order.end()));
    }

    void storesAsALiteralVersionDoes()
    {
        const quint32 seed = QRandomGenerator::global()->generate();
        QRandomGenerator random(seed);
        QSqlDatabase other = openAnother(QStringLiteral("other") + db.driverName());
        if (!ArchiveSchema::isPostgres(db))
            ArchiveSchema::attachArchive(other);
        for (int round = 0; round < 20; ++round) {
            QMap<qint32, QList<MobData>> all;
            QSet<QByteArray> different;
            ArchiveWriter writers[] = {ArchiveWriter(db), ArchiveWriter(other)};
            const qint32 first = object + 1;
            object += 3;
            for (int i = 0; i < 60; ++i) {
                ArchiveWriter& writer = writers[random.bounded(2)];
                const MobData report = randomReport(random, random.bounded(first, object + 1));
                all[report.idObject] += report;
                different += report.hash() + QByteArray::number(report.timeUnix);
                writer.add(report);
                if (random.bounded(5) == 0)
                    writer.flush();
            }
            for (ArchiveWriter& writer : writers)
                writer.flush();
            QCOMPARE(writers[0].stored() + writers[1].stored(), different.size());
            QCOMPARE(writers[0].repeated() + writers[1].repeated(), 60 - different.size());
            for (qint32 each = first; each <= object; ++each)
                QVERIFY2(lastState(each) == literalLastState(all[each]),
                         QByteArray::number(seed) + ": " + lastState(each) + " is not " + literalLastState(all[each]) +
                             " of " + reportsText(all[each]));
        }
    }

    void countsAndReadsBackTimesThatAreUnsigned()
    {
        ++object;
        const quint32 late = 0xF0000000U; // in 2097
        ArchiveWriter writer(db);
        for (const qint64 time : {qint64(late), qint64(-1), qint64(0), now - 10, now - 10})
            writer.add({object, 5, 6, 7, 8, static_cast<qint32>(time), {makeSensor(65, 1)}});
        QVERIFY(writer.stored() == 0 && writer.repeated() == 0);
        QTRY_VERIFY(writer.waitingMilliseconds() > 0);
        writer.flush();
        QCOMPARE(writer.stored(), 4);
        QCOMPARE(writer.repeated(), 1);
        QCOMPARE(writer.ahead(), 1);
        QCOMPARE(writer.waitingMilliseconds(), 0);
        QCOMPARE(valuesOf("SELECT min(time_unix) FROM archive.master_table"), "-1");
        MobData read;
        read.idObject = object;
        QVERIFY(readPrevData(read, late + 1, 10, db));
        QCOMPARE(read.timeUnix, static_cast<qint32>(late));
        QCOMPARE(lastState(object), "@10 5,6 7/8 65=1");

        // Where such clocks are believed, the later one counts though its bits are those of a negative number.
        ArchiveWriter believing(db, {std::chrono::hours(24 * 365 * 100)});
        for (const quint32 time : {late, late - 1})
            believing.add({object, 1, static_cast<qint32>(late - time), 0, 0, static_cast<qint32>(time + 1), {}});
        believing.flush();
        QCOMPARE(valuesOfObject("SELECT time_unix FROM archive.lastdata WHERE id_object = %1"), "4026531841");
        // And nobody else is kept from the object by it.
        ArchiveWriter after(db);
        after.add({object, 0, 0, 0, 0, static_cast<qint32>(now - 5), {makeSensor(66, 2)}});
        after.flush();
        QCOMPARE(lastState(object), "@5 66=2");
    }

    void comparesWithSoManyReports()
    {
        // Behind 10,000 reports without it, what is known of a sensor is not searched for any more.
        for (const int newer : {9'998, 9'999}) {
            ++object;
            ArchiveWriter(db).flush();
            store({"@20000 65=1", "@1 5,6 7/8"});
            insertReports(now - newer - 1, newer, object);
            store({"@19000 65=2", "@19500 66=3"});
            QCOMPARE(lastState(object), newer == 9'998 ? "@1 5,6 7/8 65=2 66=3" : "@1 5,6 7/8 65=1 66=3");
        }
    }

    void mendsLastStatesWhenReportsComeAgain()
    {
        ++object;
        const QByteArrayList reports = {"@90 5,6 7/8 65=1", "@80 66=2", "@70 65=3"};
        store(reports);
        execute(
            QStringLiteral("UPDATE archive.lastdata SET time_unix = %1, sens_1 = 9, sens_65 = 9 WHERE id_object = %2")
                .arg(now + 90'000)
                .arg(object));
        store(reports);
        QCOMPARE(lastState(object), "@70 5,6 7/8 65=3 66=2");
        execute("DELETE FROM archive.lastdata");
        store({reports[1], reports[0], reports[2]});
        QCOMPARE(lastState(object), "@70 5,6 7/8 65=3 66=2");
    }

    void entersSensorsOfNewObjects()
    {
        ++object;
        store({"@90 5,6 7/8"}); // without sensors still new
        store({"@80 66=1 65=1 15=1", "@70 66=2 3=1 300=1"});
        store({"@60 67=1"});
        QCOMPARE(valuesOfObject("SELECT \"Type\" FROM \"Sensors\" WHERE \"Id_objects\" = %1 ORDER BY \"Id\""),
                 "66 15 65");
        QCOMPARE(valuesOf("SELECT count(DISTINCT \"Id\") = count(*) AND min(\"Id\") = 1 AND max(\"Id\") = count(*) "
                          "FROM \"Sensors\""),
                 ArchiveSchema::isPostgres(db) ? "true" : "1");
        for (const char* statement : {"DROP TABLE \"Sensors\"", "CREATE TABLE \"Sensors\" (\"Id_objects\" text)"}) {
            execute(statement);
            ++object;
            ArchiveWriter writer(db);
            writer.add(reportOf("@90 65=1", object));
            writer.flush();
            QVERIFY(!writer.failed() && writer.stored() == 1 && !writer.sensorsError().isEmpty());
            QCOMPARE(lastState(object), "@90 65=1");
        }
    }

    void putsEveryTimeWhereItBelongs()
    {
        if (!ArchiveSchema::isPostgres(db))
            return; // there the archive is one table
        ++object;
        store({"@0", "@none", "@+80000", "@+90000000", "@100000000", "@1000000000"});
        const auto month = [](qint64 time) {
            return QDateTime::fromSecsSinceEpoch(time, Qt::UTC).toString(QStringLiteral("_yyyy_MM ")).toLatin1();
        };
        QCOMPARE(valuesOfObject("SELECT string_agg(replace(tableoid::regclass::text, 'archive.master_table', ''), ' ' "
                                "ORDER BY time_unix) || ' ' FROM archive.master_table WHERE id_object = %1"),
                 "_rest _rest _rest " + month(now - 100'000'000) + month(now + 80'000) + "_rest ");
    }

    void saysWhatToDoAndGoesOn_data() { addTableRows("archivefailures.txt"); }

    void saysWhatToDoAndGoesOn()
    {
        if (cell("database") == (ArchiveSchema::isPostgres(db) ? "SQLite" : "PostgreSQL"))
            QSKIP("a failure of the other database");
        ++object;
        ArchiveWriter writer(db);
        writer.add(reportOf("@90 65=1", object));
        execute(cell("harm").constData());
        writer.flush();
        QVERIFY(writer.failed() && writer.stored() == 0);
        QVERIFY2(writer.advice().contains(QLatin1String(cell("advice"))), qPrintable(writer.error() + writer.advice()));
        writer.add(reportOf("@80 65=1", object)); // not taken
        execute(cell("repair").constData());
        writer.flush();
        QVERIFY2(!writer.failed() && writer.stored() == 1, qPrintable(writer.error()));
        QCOMPARE(lastState(object), "@90 65=1");
    }

    void triesAgainWhereOthersAreInTheWay()
    {
        ++object;
        ArchiveWriter writer(db);
        writer.add(reportOf("@90 65=1", object));
        QSqlDatabase other = openAnother(QStringLiteral("locking") + db.driverName());
        if (ArchiveSchema::isPostgres(db)) {
            for (const char* statement : {
                     "CREATE SEQUENCE refused",
                     "CREATE FUNCTION refuse() RETURNS trigger AS $$ BEGIN IF nextval('refused') NOT IN (6, 9) THEN "
                     "RAISE EXCEPTION USING errcode = '40P01'; END IF; RETURN NULL; END $$ LANGUAGE plpgsql",
                     "CREATE TRIGGER refuse BEFORE UPDATE ON archive.lastdata EXECUTE FUNCTION refuse()",
                 })
                execute(statement);
        } else {
            execute("PRAGMA busy_timeout = 10");
            QSqlQuery(other).exec(QStringLiteral("BEGIN IMMEDIATE"));
        }
        writer.flush(); // refused five times
        QVERIFY(writer.failed() && writer.stored() == 0);
        QVERIFY2(writer.advice().contains(QLatin1String("run it again")), qPrintable(writer.error()));
        if (!ArchiveSchema::isPostgres(db))
            QSqlQuery(other).exec(QStringLiteral("ROLLBACK"));
        writer.flush();
        QVERIFY(!writer.failed() && writer.stored() == 1);
        writer.add(reportOf("@80 65=2", object));
        writer.flush(); // on PostgreSQL refused twice
        QVERIFY(!writer.failed() && writer.stored() == 2);
        QCOMPARE(lastState(object), "@80 65=2");
        execute(ArchiveSchema::isPostgres(db) ? QStringLiteral("DROP FUNCTION refuse() CASCADE")
                                              : QStringLiteral("PRAGMA busy_timeout = 5000"));
    }

    void keepsWhatItHasToldWhenTheServerDies();

private:
    /// And lets commits return before they are on the disk.
    void makeTables()
    {
        const bool postgres = ArchiveSchema::isPostgres(db);
        execute(postgres ? QStringLiteral("SET client_min_messages = warning; SET synchronous_commit = off")
                         : QStringLiteral("PRAGMA archive.synchronous = off"));
        QCOMPARE(ArchiveSchema::create(db), QString());
    }

    void store(const QByteArrayList& reports)
    {
        ArchiveWriter writer(db);
        for (const QByteArray& report : reports)
            writer.add(reportOf(report, object));
        writer.flush();
        QCOMPARE(writer.error(), QString());
    }

    QByteArray lastState(qint32 of) const
    {
        QSqlQuery query(QStringLiteral("SELECT * FROM archive.lastdata WHERE id_object = %1").arg(of), db);
        return query.next() ? rowText(query.record()) : QByteArray();
    }

    QByteArray valuesOfObject(const char* query) const { return valuesOf(QString::fromLatin1(query).arg(object)); }

    qint32 object = 0;
};

void TestArchiveWriter::keepsWhatItHasToldWhenTheServerDies()
{
    if (!ArchiveSchema::isPostgres(db))
        return;
    makeTables();
    execute("SET synchronous_commit = on");
    const qint32 first = object + 1;
    constexpr int reports = 170'000;
    const auto report = [&](int i) {
        const auto time = static_cast<qint32>(now - reports + i);
        return MobData{first + i % 1000, i, 1, 2, 3, time, {makeSensor(65, static_cast<float>(i))}};
    };
    ArchiveWriter writer(db);
    int given = 0;
    for (; !writer.failed() && given < reports; ++given) {
        if (given == 125'000) // one transaction is committed, the next one under way
            loseDatabase();
        writer.add(report(given));
    }
    QVERIFY(writer.failed());
    QVERIFY2(writer.advice().contains(QLatin1String("run it again")), qPrintable(writer.error()));
    QVERIFY(writer.stored() >= 50'000 && writer.stored() < given);

    const Outcome started = runShell(QStringLiteral("\"$PARDEL_POSTGRES_START\""));
    QVERIFY2(started.status == 0, started.errors);
    db.close();
    QVERIFY(db.open());
    const auto check = [&](qint64 told) {
        // All from the first on without a gap, and each with its own values.
        return valuesOf(QStringLiteral("SELECT count(*) >= %1 AND count(DISTINCT sens_1) = count(*) AND max(sens_1) = "
                                       "count(*) - 1 AND bool_and(id_object = %2 + sens_1 % 1000 AND "
                                       "time_unix = %3 + sens_1 AND sens_65 = sens_1) "
                                       "FROM archive.master_table WHERE id_object >= %2")
                            .arg(told)
                            .arg(first)
                            .arg(now - reports)) == "true";
    };
    QVERIFY(check(writer.stored()));
    writer.flush();
    QVERIFY2(!writer.failed(), qPrintable(writer.error()));
    for (; given < reports; ++given)
        writer.add(report(given));
    writer.flush();
    QVERIFY(check(reports));
    loseDatabase();
}

QTEST_GUILESS_MAIN(TestArchiveWriter)
#include "tst_archivewriter.moc"
