#include "databasetest.h"
#include "reporttext.h"

#include <Pardel/archive.h>

#include <QRegularExpression>
#include <QSet>
#include <QSqlQuery>

namespace {

constexpr quint32 endOfTime = 4294967295;

/// A report with values of its own everywhere, which show where nothing was read.
MobData presetReport(int object)
{
    return {object, 9, 9, 9, 9, 9, {}};
}

QString errorText(const QSqlError& error)
{
    return error.type() == QSqlError::NoError ? QString() : error.text();
}

/// Nothing can be read: reports stay as they are but for these sensors, and the readers of many states say why.
void readsNothing(const QSqlDatabase& db, const char* why, const char* sensors = "")
{
    MobData report = presetReport(2);
    QVERIFY(readLastData(report, db) && !readPrevData(report, 501, 100, db));
    QCOMPARE(reportText(report), QByteArray("2 9,9 9/9 @9") + sensors);

    int states = 0;
    const auto count = [&](const MobData&) { return ++states > 0; };
    QList<qint16> types = {99};
    const QStringList told = {errorText(readHistory(2, 0, endOfTime, {5}, db, count)),
                              errorText(readHistory(2, 0, endOfTime, {}, db, count)),
                              errorText(readLastStates({5}, db, count)), errorText(readSensorTypes(types, db))};
    QCOMPARE(states, 0);
    QCOMPARE(types, QList<qint16>{99});
    QCOMPARE(told.filter(QRegularExpression(QLatin1String(why))), told);
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

    void takesTheNewestWithinBounds_data() { addTableRows("archive_bounds.txt"); }

    void takesTheNewestWithinBounds()
    {
        MobData report = presetReport(1);
        const bool found = readPrevData(report, cell("before").toUInt(), cell("depth").toUInt(), db);
        QCOMPARE(found ? QByteArray::number(report.timeUnix) : "none", cell("time"));
        QVERIFY(found || report.timeUnix == 9);
    }

    void readsStates_data() { addTableRows("archive_states.txt"); }

    void readsStates()
    {
        QList<qint16> types;
        for (const QString& type : QString::fromUtf8(cell("types")).split(QLatin1Char(' '), Qt::SkipEmptyParts))
            types += type.toShort();
        QList<MobData> states;
        const auto keep = [&](const MobData& state) {
            states += state;
            return true;
        };
        const QByteArrayList period = cell("period").split(' ');
        const QSqlError error =
            period.size() < 3 ? readLastStates(types, db, keep)
                              : readHistory(period[0].toInt(), period[1].toUInt(), period[2].toUInt(), types, db, keep);
        QCOMPARE(errorText(error), QString());
        QCOMPARE(reportsText(states), cell("states"));
    }

    void readsManyInPages()
    {
        QSet<qint32> latitudes; // each row has its own
        qint32 time = 0;
        int count = 0;
        const auto take = [&](const MobData& state) {
            ++count;
            latitudes.insert(state.latitude);
            if (state.timeUnix < time)
                return false;
            time = state.timeUnix;
            if (count % 1000 == 1) { // as an application may, on the same connection
                QSqlQuery query(db);
                MobData other = presetReport(4);
                return readLastData(other, db) && other.timeUnix == 500 && db.transaction() &&
                       query.exec(QStringLiteral("UPDATE \"Sensors\" SET \"Type\" = \"Type\"")) && db.rollback();
            }
            return true;
        };
        QCOMPARE(errorText(readHistory(8, 0, endOfTime, {12}, db, take)), QString());
        QCOMPARE(latitudes.size(), 30'000);
        QCOMPARE(count, 30'000);

        int left = 300;
        QCOMPARE(errorText(readHistory(8, 0, endOfTime, {}, db, [&](const MobData&) { return --left > 0; })),
                 QString());
        QCOMPARE(left, 0);
        QCOMPARE(errorText(readHistory(8, 0, endOfTime, {}, db, {})), QString());
    }

    void tellsSensorTypes()
    {
        QList<qint16> types = {99};
        QCOMPARE(errorText(readSensorTypes(types, db)), QString());
        QCOMPARE(types, (QList<qint16>{5, 12}));
    }

    void saysWhetherItFails()
    {
        readsNothing(QSqlDatabase(), "^Driver not loaded Driver not loaded$");
        readsNothing(QSqlDatabase::cloneDatabase(db, QStringLiteral("closed")), "^The connection is not open$");
        QSqlDatabase::removeDatabase(QStringLiteral("closed"));

        execute(QStringLiteral("ALTER TABLE archive.lastdata RENAME TO hidden"));
        execute(QStringLiteral("DROP TABLE archive.master_table"));
        readsNothing(db, "archive\\.(lastdata|master_table)", " 3=0 12=0");
        execute(QStringLiteral("ALTER TABLE archive.hidden RENAME TO lastdata"));
        execute(QStringLiteral("DROP TABLE \"Sensors\""));
        MobData report = presetReport(2);
        QVERIFY(readLastData(report, db));
        QCOMPARE(reportText(report), QByteArray("2 11,21 31/41 @500"));

        execute(QStringLiteral("INSERT INTO archive.lastdata (id_object) WITH RECURSIVE ids(n) AS (SELECT 10 UNION ALL "
                               "SELECT n + 1 FROM ids WHERE n < 4999) SELECT n FROM ids"));
        const bool postgres = db.driverName() != QLatin1String("QSQLITE");
        int states = 0;
        const QSqlError lost = readLastStates({5}, db, [&](const MobData&) {
            if (++states == 100)
                loseDatabase();
            return true;
        });
        QVERIFY(errorText(lost).contains(QLatin1String(postgres ? "server closed the connection" : "not open")) &&
                states < 2000);
        readsNothing(db, ".");
    }
};

QTEST_GUILESS_MAIN(TestArchive)
#include "tst_archive.moc"
