// pardel-import as its users run it, on both databases.

#include "databasetest.h"
#include "reporttext.h"
#include "shell.h"

#include <Pardel/archive.h>

#include <QSqlQuery>
#include <QTest>
#include <QVariant>

class TestImport : public DatabaseTest
{
    Q_OBJECT

public:
    TestImport() : DatabaseTest("import.sql") {}

private Q_SLOTS:
    void saysWhatFails()
    {
        for (const auto& [arguments, error] : {
                 std::pair("--ini /nowhere --group Db", "pardel-import: cannot read the settings file /nowhere\n"),
                 {"--ini \"$1\" --group No", ".ini has no group No\n"},
                 {"--ini \"$1\"", "--ini and --group are needed. (see pardel-import --help)\n"},
                 {"--ini \"$1\" --group Db sample.bin", "master_table"}, // no table and no --create
                 {"--ini \"$1\" --group Db --create no.bin", "cannot read no.bin: No such file"},
             }) {
            const QByteArray told = run(QStringLiteral("\"$import\" ") + QLatin1String(arguments));
            QVERIFY2(told.contains(error) && told.endsWith("status 2"), told);
        }
    }

    void storesOnceAndReadsBack()
    {
        const QString import = QStringLiteral("\"$import\" --ini \"$1\" --group Db --create sample.bin");
        const QByteArray first = run(import);
        QVERIFY2(first.contains("reports 35, stored 35, there already 0, rejected 0,") && first.endsWith("status 0"),
                 first);
        const QByteArray second = run(import);
        QVERIFY2(second.contains("reports 35, stored 0, there already 35,"), second);
        QCOMPARE(count("archive.master_table"), 35);
        QCOMPARE(count("archive.lastdata"), 3);
        for (const char* table : {"\"Commands\"", "\"Connections\""})
            QCOMPARE(count(table), 0); // nobody's users and commands are made up

        MobData state;
        state.idObject = 2;
        state.sensors = {makeSensor(15), makeSensor(0), makeSensor(56), makeSensor(0)}; // the first half is read
        readLastData(state, db);
        QCOMPARE(reportText(state), QByteArray("2 562396313,363842381 14/338 @1767226033 15=1:15 0=0 56=0 0=0"));
        state.sensors = {makeSensor(65)};
        QVERIFY(readPrevData(state, 1767226033, 3600, db)); // a block of a track
        QCOMPARE(reportText(state), QByteArray("2 562354526,363820823 61/30 @1767225973 65=24"));

        // A state, then one a second older; an object number above 2^15, types without columns and twice, no number
        // (negative).
        const QByteArray report =
            "a4d500fffe 2e00 0105 0164000000 0205 0301000000 0302000000 0402 0f01 4123 4139 0700 0106 "
            "3200ffc00000 cccc\n";
        const QString importHex = QStringLiteral("\"$import\" --ini \"$1\" --group Db --hex");
        const QByteArray told = run(importHex, report + report);
        run(importHex, QByteArray(report).replace("0164", "0163"));
        QVERIFY2(told.contains("stored 1, there already 1,"), told);
        state = {-2, 0, 0, 0, 0, 0, {makeSensor(65), makeSensor(56)}};
        readLastData(state, db);
        QCOMPARE(reportText(state), QByteArray("-2 0,3 0/0 @100 65=7 56=0"));
        run(importHex, "a4d5000008 0d00 01024123 cccc"); // of no time: stored, but nobody's last state
        QCOMPARE(count("archive.master_table"), 38);
        QCOMPARE(count("archive.lastdata"), 4);
    }

    void goesOnWhereAMonthCameEarly()
    {
        // A state from the future lay in PostgreSQL's default partition; now its month has come.
        execute(QStringLiteral(
            "INSERT INTO archive.master_table (id_object, time_unix, fingerprint) VALUES (9, 1770681601, 'x')"));
        const QByteArray told =
            run(QStringLiteral("\"$import\" --ini \"$1\" --group Db --hex"), "a4d5000009 1000 0105 0100758a69 cccc");
        QVERIFY2(told.contains("stored 1,") && told.endsWith("status 0"), told);
    }

    void goesOnAfterAFailure()
    {
        const QString all =
            QStringLiteral("\"$simulate\" --terminals 500 --minutes 60 | \"$import\" --ini \"$1\" --group Db");
        if (db.driverName() != QLatin1String("QSQLITE")) {
            // The server stops while packets still come.
            const QByteArray lost = run(QStringLiteral(
                "{ \"$simulate\" --terminals 500 --minutes 60; \"$PARDEL_POSTGRES_STOP\"; \"$simulate\" --seed 2; } "
                "| \"$import\" --ini \"$1\" --group Db"));
            QVERIFY2(lost.contains("cannot store reports: ") && lost.endsWith("status 2"), lost);
            return;
        }
        // A file that may not grow any more, after the first of two transactions.
        const int before = count("archive.master_table");
        const QByteArray full = run(QStringLiteral("trap '' XFSZ; ulimit -f 32000; ") + all);
        QVERIFY2(full.contains("cannot store reports: ") && full.endsWith("status 2"), full);
        const int stored = count("archive.master_table") - before;
        QVERIFY(stored > 0);
        const QByteArray again = run(all);
        QVERIFY2(again.contains("there already " + QByteArray::number(stored)) && again.endsWith("status 0"), again);
    }

private:
    /// What @p program writes on standard error, in which $1 is the settings file, and its exit status.
    QByteArray run(const QString& program, const QByteArray& input = QByteArray()) const;
    int count(const char* table) const;
};

QByteArray TestImport::run(const QString& program, const QByteArray& input) const
{
    const Outcome outcome = runShell(program, input, {iniFile});
    return outcome.errors + "status " + QByteArray::number(outcome.status);
}

int TestImport::count(const char* table) const
{
    QSqlQuery query(QStringLiteral("SELECT count(*) FROM ") + QLatin1String(table), db);
    return query.next() ? query.value(0).toInt() : -1;
}

QTEST_GUILESS_MAIN(TestImport)
#include "tst_import.moc"
