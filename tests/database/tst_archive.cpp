#include "databasetest.h"
#include "reporttext.h"

#include <Pardel/archive.h>

#include <QTest>

namespace {

const QStringList archive = {
    QStringLiteral(R"(CREATE TABLE "Sensors" ("Id" INTEGER, "Id_objects" BIGINT, "Type" INTEGER))"),
    QStringLiteral(R"(INSERT INTO "Sensors" VALUES (9, 2, 12), (8, 2, 3), (7, 4, 5), (3, 4294967291, 65548), )"
                   "(4, 6, 3)"),
    QStringLiteral("CREATE TABLE archive.lastdata (id_object BIGINT, time_unix INTEGER, sens_1 INTEGER, sens_2 TEXT, "
                   "sens_3 INTEGER, sens_4 INTEGER, status_3 INTEGER, sens_5 TEXT, status_5 TEXT, "
                   "sens_12 DOUBLE PRECISION, status_12 INTEGER, sens_ INTEGER, status_ INTEGER)"),
    QStringLiteral("INSERT INTO archive.lastdata VALUES "
                   "(1, 500, -10, '20', 30, 40, 128, '-2.5', '300', 0.1, -1, 8, 4), "
                   "(2, 500, 11, '21', 31, 41, 7, '5', '5', 12, 12, 0, 0), "
                   "(3, 500, NULL, 'x', NULL, NULL, NULL, 'x', 'x', NULL, NULL, NULL, NULL), "
                   "(4, 500, 12, '22', 32, 42, 7, '5.5', '5', 12, 12, 0, 0), "
                   "(4294967291, 500, 13, '23', 33, 43, 7, '5', '5', 12.5, 12, 0, 0)"),
    QStringLiteral("CREATE TABLE archive.master_table AS SELECT * FROM archive.lastdata"),
    QStringLiteral("INSERT INTO archive.master_table (id_object, time_unix, sens_1) VALUES "
                   "(1, 200, 2), (1, 100, 1), (1, 2147483647, 4), (2, 499, 1), (4, 501, 3), (6, 501, 3)"),
};

/// A report with values of its own everywhere, which show where nothing was read.
MobData presetReport(int object, const QList<int>& types)
{
    MobData report;
    report.idObject = object;
    report.latitude = report.longitude = report.speed = report.course = report.timeUnix = 9;
    for (int type : types)
        report.sensors += makeSensor(static_cast<qint16>(type), 99, 9);
    return report;
}

/// A report that could not be read: the object, its preset values and these sensors.
void readsNothing(const QSqlDatabase& db, const char* sensors = "")
{
    MobData report = presetReport(2, {});
    QVERIFY(readLastData(report, db) && !readPrevData(report, 501, 100, db));
    QCOMPARE(reportText(report), QByteArray("2 9,9 9/9 @9") + sensors);
}

} // namespace

class TestArchive : public DatabaseTest
{
    Q_OBJECT

public:
    TestArchive() : DatabaseTest(archive) {}

private Q_SLOTS:
    void reads_data();
    void reads();
    void takesTheNewestWithinBounds_data();
    void takesTheNewestWithinBounds();
    void saysNothingWhenItFails();
};

void TestArchive::reads_data()
{
    QTest::addColumn<int>("object");
    QTest::addColumn<QList<int>>("types");
    QTest::addColumn<QByteArray>("expected"); // "@9" where nothing is found
    const auto row = [](const char* name, int object, const QList<int>& types, const QByteArray& expected) {
        QTest::newRow(name) << object << types << expected;
    };
    row("no sensors fitted", 1, {}, "1 -10,20 30/40 @500");
    row("two fitted, in the order of Id: one is read", 2, {}, "2 11,21 31/41 @500 3=31:7 12=0");
    row("one fitted", 4, {}, "4 12,22 32/42 @500 5=5.5:5");
    row("negative object, type cut to 16 bits", -5, {}, "-5 13,23 33/43 @500 12=12.5:12");
    row("one chosen, others fitted", 2, {5}, "2 11,21 31/41 @500 5=5:5");
    row("three: two are read", 1, {12, 5, 3}, "1 -10,20 30/40 @500 12=0.100000001:-1 5=-2.5:44 3=99:9");
    row("four: two are read", 1, {3, 12, 5, 3}, "1 -10,20 30/40 @500 3=30:-128 12=0.100000001:-1 5=99:9 3=99:9");
    row("five: three are read", 4, {3, 3, 5, 5, 5}, "4 12,22 32/42 @500 3=32:7 3=32:7 5=5.5:5 5=99:9 5=99:9");
    row("type -1 reads as a subtraction", 1, {-1}, "1 -10,20 30/40 @500 -1=7:3");
    row("NULL and no numbers", 3, {5, 3, 12}, "3 0,0 0/0 @500 5=0 3=0 12=99:9");
    row("no state", 6, {}, "6 9,9 9/9 @9 3=0");
    row("unknown object", 7, {3}, "7 9,9 9/9 @9 3=99:9");
    row("no such column", 1, {77}, "1 9,9 9/9 @9 77=99:9");
}

void TestArchive::reads()
{
    QFETCH(int, object);
    QFETCH(QList<int>, types);
    QFETCH(QByteArray, expected);
    MobData last = presetReport(object, types);
    MobData previous = last;
    const QList<Sensor> shared = last.sensors;
    const QByteArray preset = sensorsText(shared);
    for (int time = 0; time < 2; ++time) { // what the first call has appended is there in the second
        QVERIFY(readLastData(last, db));
        QCOMPARE(reportText(last), expected);
        QCOMPARE(readPrevData(previous, 501, 100, db), !expected.contains("@9"));
        QCOMPARE(reportText(previous), expected);
    }
    QCOMPARE(sensorsText(shared), preset);
}

void TestArchive::takesTheNewestWithinBounds_data()
{
    QTest::addColumn<uint>("before");
    QTest::addColumn<uint>("depth");
    QTest::addColumn<int>("time"); // 9 where nothing is found
    QTest::newRow("newest before") << 501U << 501U << 500;
    QTest::newRow("that moment is not before") << 500U << 500U << 200;
    QTest::newRow("deepest is included") << 500U << 300U << 200;
    QTest::newRow("a second too shallow") << 500U << 299U << 9;
    QTest::newRow("no depth") << 501U << 0U << 9;
    QTest::newRow("deeper than time: wraps") << 500U << 501U << 9;
    QTest::newRow("above 2^31") << 4294967295U << 4294967295U << 2147483647;
    QTest::newRow("both above 2^31") << 4294967295U << 1U << 9;
}

void TestArchive::takesTheNewestWithinBounds()
{
    QFETCH(uint, before);
    QFETCH(uint, depth);
    QFETCH(int, time);
    MobData report = presetReport(1, {});
    QCOMPARE(readPrevData(report, before, depth, db), time != 9);
    QCOMPARE(report.timeUnix, time);
}

void TestArchive::saysNothingWhenItFails()
{
    readsNothing(QSqlDatabase());
    readsNothing(QSqlDatabase::cloneDatabase(db, QStringLiteral("closed")));
    QSqlDatabase::removeDatabase(QStringLiteral("closed"));

    execute(QStringLiteral("ALTER TABLE archive.lastdata RENAME TO hidden"));
    execute(QStringLiteral("DROP TABLE archive.master_table"));
    readsNothing(db, " 3=0 12=0");
    execute(QStringLiteral("ALTER TABLE archive.hidden RENAME TO lastdata"));
    execute(QStringLiteral("DROP TABLE \"Sensors\""));
    MobData report = presetReport(2, {});
    QVERIFY(readLastData(report, db));
    QCOMPARE(reportText(report), QByteArray("2 11,21 31/41 @500"));

    loseDatabase();
    readsNothing(db);
}

QTEST_GUILESS_MAIN(TestArchive)
#include "tst_archive.moc"
