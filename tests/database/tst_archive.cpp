#include "databasetest.h"
#include "reporttext.h"
#include "testtable.h"

#include <Pardel/archive.h>

#include <QTest>

namespace {

/// A report with values of its own everywhere, which show where nothing was read.
MobData presetReport(int object)
{
    MobData report;
    report.idObject = object;
    report.latitude = report.longitude = report.speed = report.course = report.timeUnix = 9;
    return report;
}

/// A report that could not be read: the object, its preset values and these sensors.
void readsNothing(const QSqlDatabase& db, const char* sensors = "")
{
    MobData report = presetReport(2);
    QVERIFY(readLastData(report, db) && !readPrevData(report, 501, 100, db));
    QCOMPARE(reportText(report), QByteArray("2 9,9 9/9 @9") + sensors);
}

} // namespace

class TestArchive : public DatabaseTest
{
    Q_OBJECT

public:
    TestArchive() : DatabaseTest("archive.sql") {}

private Q_SLOTS:
    void reads_data() { addTableRows("archive.txt"); }
    void reads();
    void takesTheNewestWithinBounds();
    void saysNothingWhenItFails();
};

void TestArchive::reads()
{
    MobData last = presetReport(cell(0).toInt());
    for (const QByteArray& type : cell(1).simplified().split(' ')) {
        if (!type.isEmpty())
            last.sensors += makeSensor(type.toShort(), 99, 9);
    }
    MobData previous = last;
    const QList<Sensor> shared = last.sensors;
    const QByteArray preset = sensorsText(shared);
    for (int time = 0; time < 2; ++time) { // what the first call has appended is there in the second
        QVERIFY(readLastData(last, db));
        QCOMPARE(reportText(last), cell(2));
        QCOMPARE(readPrevData(previous, 501, 100, db), !cell(2).contains("@9"));
        QCOMPARE(reportText(previous), cell(2));
    }
    QCOMPARE(sensorsText(shared), preset);
}

void TestArchive::takesTheNewestWithinBounds()
{
    struct Bounds
    {
        uint before;
        uint depth;
        int time; // 9 where nothing is found
    };
    for (const Bounds& bounds : {
             Bounds{501, 501, 500},                  // the newest before
             {500, 500, 200},                        // that moment is not before
             {500, 300, 200},                        // the deepest is included
             {500, 299, 9},                          // a second too shallow
             {500, 501, 9},                          // deeper than time: wraps
             {4294967295U, 4294967295U, 2147483647}, // above 2^31
         }) {
        MobData report = presetReport(1);
        QCOMPARE(readPrevData(report, bounds.before, bounds.depth, db), bounds.time != 9);
        QCOMPARE(report.timeUnix, bounds.time);
    }
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
    MobData report = presetReport(2);
    QVERIFY(readLastData(report, db));
    QCOMPARE(reportText(report), QByteArray("2 11,21 31/41 @500"));

    loseDatabase();
    readsNothing(db);
}

QTEST_GUILESS_MAIN(TestArchive)
#include "tst_archive.moc"
