// pardel-import as its users run it, on both databases.

#include "databasetest.h"
#include "packetbuilder.h"
#include "reporttext.h"
#include "shell.h"

#include <Pardel/archive.h>

#include <QFile>
#include <QProcess>
#include <QTimer>

class TestImport : public DatabaseTest
{
    Q_OBJECT

private Q_SLOTS:
    void storesOnceAndReadsBack()
    {
        const QByteArray import = "\"$import\" $db --create sample.bin";
        tells("\"$import\" $db sample.bin", "makes the tables that are missing\nstatus 2");
        tells(import, "reports 35, stored 35, there already 0, rejected 0,...status 0");
        tells(import, "reports 35, stored 0, there already 35,...status 0");
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
        run("\"$import\" $db --hex --accept-damaged",
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
        const QByteArray packets = (QByteArray::fromHex("a4d50000110d00010241239521") + "?").repeated(5000);
        const QByteArray told = run("\"$import\" $db --create", QByteArray("\0a4", 3).repeated(9) + packets);
        QVERIFY2(hasParts(told, "more times\n...skipped bytes 5027,") && told.count('\n') < 30, told);
    }

    void storesWhatComesWithoutWaitingForTheEnd()
    {
        const int before = count("archive.master_table");
        QProcess import;
        startShell(import, QStringLiteral("exec \"$import\" $db"), iniFile);
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
        large.close();
        QProcess import;
        const QString command = QStringLiteral("exec \"$import\" $db --create - '%1' later.bin");
        startShell(import, command.arg(large.fileName()), iniFile);
        import.closeWriteChannel();
        const QString files = QStringLiteral("ls -l /proc/%1/fd").arg(import.processId());
        QTRY_VERIFY_WITH_TIMEOUT(runShell(files).output.contains("large.bin"), 20'000);
        import.terminate();
        QVERIFY(import.waitForFinished());
        const QByteArray told = import.readAllStandardError();
        QVERIFY2(hasParts(told,
                          "large.bin: its last 10... bytes are not read, as a signal came\n...not read, as a signal "
                          "came: later.bin\n"),
                 told);
        QCOMPARE(import.exitCode(), 1);
    }

    void tellsWhatAUserWithoutRightsCannotDo()
    {
        run("\"$import\" $db --create");
        if (db.driverName() == QLatin1String("QSQLITE"))
            return;
        const QByteArray import =
            "set -- $db; { cat \"$2\"; echo SqlLogin=storer; } > \"$2.few\"; \"$import\" --ini \"$2.few\" "
            "--group Db --hex --accept-damaged";
        const QByteArray packet = "a4d500001e 1000 0105 0100758a60 cccc"; // of 2021-04
        execute("CREATE ROLE storer LOGIN");
        tells(import, "needs the rights USAGE on the schema archive,...status 2", packet);
        execute("GRANT USAGE ON SCHEMA archive TO storer; GRANT SELECT, INSERT ON archive.master_table TO storer; "
                "GRANT SELECT, INSERT, UPDATE, DELETE ON archive.lastdata TO storer");
        tells(import,
              "stored 1,...has the rights SELECT and INSERT there)\n...cannot make the partition "
              "archive.master_table_2021_04: ERROR: ...run \"pardel-archive partition\")\nstatus 0",
              packet);
    }

    void goesOnAfterAFailure()
    {
        if (db.driverName() != QLatin1String("QSQLITE"))
            return; // the test of the archive's writer loses a server
        const QByteArray all = "\"$simulate\" --terminals 500 --minutes 240 | \"$import\" $db";
        // A file that may not grow any more, after one or two of the transactions.
        const int before = count("archive.master_table");
        tells("trap '' XFSZ; ulimit -f 70000; " + all, "cannot store reports: ...status 2");
        const int stored = count("archive.master_table") - before;
        QVERIFY(stored > 0);
        tells(all, "there already " + QByteArray::number(stored) + "...status 0");
    }

private:
    int count(const char* table) const
    {
        return valuesOf(QStringLiteral("SELECT count(*) FROM ") + QLatin1String(table)).toInt();
    }
};

QTEST_GUILESS_MAIN(TestImport)
#include "tst_import.moc"
