#include "databasetest.h"
#include "reporttext.h"
#include "testfiles.h"

#include <Pardel/archive.h>

#include <QTest>

namespace {

/// A report with values of its own everywhere, which show where nothing was read.
MobData presetReport(int object)
{
    return {object, 9, 9, 9, 9, 9, {}};
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

    void reads()
    {
        MobData last = presetReport(cell("object").toInt());
        for (const QString& type : QString::fromUtf8(cell("asked")).split(QLatin1Char(' '), Qt::SkipEmptyParts))
            last.sensors += makeSensor(type.toShort(), 99, 9);
        MobData previous = last;
        for (int time = 0; time < 2; ++time) { // what the first call has appended is there in the second
            QVERIFY(readLastData(last, db));
            QCOMPARE(reportText(last), cell("report"));
            QCOMPARE(readPrevData(previous, 501, 100, db), !cell("report").contains("@9"));
            QCOMPARE(reportText(previous), cell("report"));
        }
    }

    void takesTheNewestWithinBounds()
    {
        for (const auto& [before, depth, time] : {
                 std::tuple(501U, 501U, 500),            // the newest before
                 {500, 500, 200},                        // that moment is not before
                 {500, 300, 200},                        // the deepest is included
                 {500, 299, 9},                          // a second too shallow: nothing is found
                 {500, 501, 9},                          // deeper than time: wraps
                 {4294967295U, 4294967295U, 2147483647}, // above 2^31
             }) {
            MobData report = presetReport(1);
            QCOMPARE(readPrevData(report, before, depth, db), time != 9);
            QCOMPARE(report.timeUnix, time);
        }
    }

    void saysNothingWhenItFails()
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
};

QTEST_GUILESS_MAIN(TestArchive)
#include "tst_archive.moc"
