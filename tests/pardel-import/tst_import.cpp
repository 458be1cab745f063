// pardel-import as its users run it, on both databases.

#include "databasetest.h"
#include "packetbuilder.h"
#include "reporttext.h"
#include "shell.h"

#include <Pardel/archive.h>

#include <QDir>
#include <QFile>
#include <QProcess>
#include <QTemporaryDir>
#include <QTimer>

#include <algorithm>

class TestImport : public DatabaseTest
{
    Q_OBJECT

private Q_SLOTS:
    void storesOnceAndReadsBack()
    {
        const QString import = QStringLiteral("\"$import\" $db --create sample.bin");
        QVERIFY(
            run(QStringLiteral("\"$import\" $db sample.bin")).endsWith("makes the tables that are missing\nstatus 2"));
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

        // An object number above 2^15, types without columns and twice, no number (negative).
        run(QStringLiteral("\"$import\" $db --hex --accept-damaged"),
            "a4d500fffe 2e00 0105 0164000000 0205 0301000000 0302000000 0402 0f01 4123 4139 0700 0106 3200ffc00000 "
            "cccc");
        state = {-2, 0, 0, 0, 0, 0, {makeSensor(65), makeSensor(56)}};
        readLastData(state, db);
        QCOMPARE(reportText(state), QByteArray("-2 0,3 0/0 @100 65=7 56=0"));
    }

    void runs_data() { addTableRows("imports.txt"); }
    void runs() { runRow("import", iniFile); }

    void skippedRunsAreToldInBounds()
    {
        const QByteArray told = run(QStringLiteral("\"$import\" $db --create"),
                                    QByteArray("\0a4", 3).repeated(9) +
                                        (QByteArray::fromHex("a4d50000110d00010241239521") + "?").repeated(5000));
        QVERIFY2(told.contains("skipped bytes 5027,") && told.count('\n') < 30, told);
        QVERIFY2(told.contains("more times\n"), told);
    }

    void storesWhatComesWithoutWaitingForTheEnd()
    {
        const int before = count("archive.master_table");
        QProcess import;
        import.start(QStringLiteral(PARDEL_IMPORT),
                     {QStringLiteral("--ini"), iniFile, QStringLiteral("--group"), QStringLiteral("Db")});
        QVERIFY(import.waitForStarted());
        import.write(QByteArray::fromHex("a4d5000011ffff")); // a damaged length: the rest would be waited for
        qsizetype sent = 0;
        QTimer timer; // faster than the importer takes for a pause
        const auto send = [&] {
            const auto time = RecordBuilder(1).little32(static_cast<quint32>(1'770'000'000 + ++sent));
            import.write(PacketBuilder(31).group({time}).sealed());
        };
        connect(&timer, &QTimer::timeout, this, send);
        timer.start(20);
        QTRY_VERIFY_WITH_TIMEOUT(count("archive.master_table") > before, 20'000);
        timer.stop();
        send(); // of which it has not heard when the signal comes
        while (import.bytesToWrite() > 0)
            QVERIFY(import.waitForBytesWritten());
        import.terminate();
        QVERIFY(import.waitForFinished());
        const QByteArray told = import.readAllStandardError();
        QVERIFY2(import.exitCode() == 1 && told.contains("skipped bytes 7, damaged 0,"), told);
        QCOMPARE(count("archive.master_table") - before, static_cast<int>(sent));
    }

    void tellsWhatASignalKeptItFromReading()
    {
        QTemporaryDir folder;
        QFile large(folder.filePath(QStringLiteral("large.bin")));
        QVERIFY(large.open(QIODevice::WriteOnly) && large.resize(qint64(1) << 40)); // takes no space, but minutes
        QProcess import;
        import.start(QStringLiteral(PARDEL_IMPORT),
                     {QStringLiteral("--ini"), iniFile, QStringLiteral("--group"), QStringLiteral("Db"),
                      QStringLiteral("--create"), QStringLiteral("-"), large.fileName(), QStringLiteral("later.bin")});
        QVERIFY(import.waitForStarted());
        import.closeWriteChannel();
        const QDir files(QStringLiteral("/proc/%1/fd").arg(import.processId()));
        const auto isReading = [&] {
            const QFileInfoList open = files.entryInfoList(QDir::AllEntries | QDir::System);
            return std::any_of(open.begin(), open.end(),
                               [&](const QFileInfo& file) { return file.symLinkTarget() == large.fileName(); });
        };
        QTRY_VERIFY_WITH_TIMEOUT(isReading(), 20'000);
        import.terminate();
        QVERIFY(import.waitForFinished());
        const QByteArray told = import.readAllStandardError();
        QVERIFY2(told.contains("large.bin: its last 10") && told.contains(" bytes are not read, as a signal came\n"),
                 told);
        QVERIFY2(told.contains("not read, as a signal came: later.bin\n"), told);
        QCOMPARE(import.exitCode(), 1);
    }

    void tellsWhatAUserWithoutRightsCannotDo()
    {
        run(QStringLiteral("\"$import\" $db --create"));
        if (db.driverName() == QLatin1String("QSQLITE"))
            return;
        const QString import = QStringLiteral("{ cat '%1'; echo SqlLogin=storer; } > '%1.few'; \"$import\" "
                                              "--ini '%1.few' --group Db --hex --accept-damaged")
                                   .arg(iniFile);
        const QByteArray packet = "a4d500001e 1000 0105 0100758a60 cccc"; // of 2021-04
        execute(QStringLiteral("CREATE ROLE storer LOGIN"));
        QByteArray told = run(import, packet);
        QVERIFY2(told.contains("needs the rights USAGE on the schema archive,") && told.endsWith("status 2"), told);
        execute(QStringLiteral("GRANT USAGE ON SCHEMA archive TO storer; GRANT SELECT, INSERT ON archive.master_table "
                               "TO storer; GRANT SELECT, INSERT, UPDATE, DELETE ON archive.lastdata TO storer"));
        told = run(import, packet);
        QVERIFY2(told.contains("stored 1,") && told.endsWith("status 0"), told);
        QVERIFY2(told.contains("cannot make the partition archive.master_table_2021_04: ERROR: "), told);
        QVERIFY2(told.contains("run \"pardel-archive partition\")\n"), told);
        QVERIFY2(told.contains("has the rights SELECT and INSERT there)\n"), told);
    }

    void goesOnWhereAMonthCameEarly()
    {
        // A state from the future lay in PostgreSQL's default partition; now its month has come.
        insertReports(1770681601, 1, 9);
        const QByteArray told =
            run(QStringLiteral("\"$import\" $db --hex --accept-damaged"), "a4d5000009 1000 0105 0100758a69 cccc");
        QVERIFY2(told.contains("stored 1,") && told.endsWith("status 0"), told);
    }

    void goesOnAfterAFailure()
    {
        if (db.driverName() != QLatin1String("QSQLITE"))
            return; // the test of the archive's writer loses a server
        const QString all = QStringLiteral("\"$simulate\" --terminals 500 --minutes 240 | \"$import\" $db");
        // A file that may not grow any more, after one or two of the transactions.
        const int before = count("archive.master_table");
        const QByteArray full = run(QStringLiteral("trap '' XFSZ; ulimit -f 70000; ") + all);
        QVERIFY2(full.contains("cannot store reports: ") && full.endsWith("status 2"), full);
        const int stored = count("archive.master_table") - before;
        QVERIFY(stored > 0);
        const QByteArray again = run(all);
        QVERIFY2(again.contains("there already " + QByteArray::number(stored)) && again.endsWith("status 0"), again);
    }

private:
    /// What a command writes on standard error, and its exit status.
    QByteArray run(const QString& command, const QByteArray& input = QByteArray()) const
    {
        const Outcome outcome = runShell(command, input, iniFile);
        return outcome.errors + "status " + QByteArray::number(outcome.status);
    }

    int count(const char* table) const
    {
        return valuesOf(QLatin1String("SELECT count(*) FROM ") + QLatin1String(table)).toInt();
    }
};

QTEST_GUILESS_MAIN(TestImport)
#include "tst_import.moc"
