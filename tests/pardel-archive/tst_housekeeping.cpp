// pardel-archive as its users run it, on both databases: killed at any moment too, and beside an import.

#include "archiveschema.h"
#include "databasetest.h"
#include "partitions.h"
#include "retention.h"
#include "shell.h"

#include <QDateTime>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QRandomGenerator>
#include <QSqlQuery>

#include <limits>

using namespace ArchivePartitions;

class TestHousekeeping : public DatabaseTest
{
    Q_OBJECT

private Q_SLOTS:
    void saysWhatFails_data() { addTableRows("archivecommands.txt"); }
    void saysWhatFails() { runRow("archive", iniFile); }

    void keepsHouse()
    {
        QVERIFY(run("create").startsWith("made archive.master_table, archive.lastdata, "));
        QVERIFY(run("create").startsWith("all tables were there already\n"));
        if (!ArchiveSchema::isPostgres(db))
            QVERIFY(run("create --shard host=a").contains("--shard needs PostgreSQL; group Db in "));
        QVERIFY(run("status").contains(" 0 reports, last states of 0 objects, "));
        fill({0, 1, 2, 4}, 3);
        for (const qint64 time : {qint64(0), qint64(-1), ancient, farFuture, farFuture + 1})
            insertReports(time);
        execute(QStringLiteral("INSERT INTO archive.lastdata (id_object, time_unix) VALUES (1, 1)"));
        const bool postgres = ArchiveSchema::isPostgres(db);
        const QString before = tables();

        QJsonObject status = QJsonDocument::fromJson(run("status --json")).object();
        QCOMPARE(status.value(QStringLiteral("reports")).toInt(), 17);
        QCOMPARE(status.value(QStringLiteral("objects")).toInt(), 1);
        QCOMPARE(status.value(QStringLiteral("oldest")).toDouble(), double(firstSecond(month(4))));
        QCOMPARE(status.value(QStringLiteral("newest")).toDouble(), double(firstSecond(month(0)) + 2));
        const QJsonObject rest = postgres ? status.value(QStringLiteral("rest")).toObject() : status;
        QCOMPARE(spans(rest), monthText(4) + "=3/3 " + monthText(2) + "=3/3 " + monthText(1) + "=3/3 " + monthText(0) +
                                  "=3/3 withoutTime=3/1 farFuture=2/1");
        const QByteArray dry = run("retain --months 2 --dry-run");
        QVERIFY2(dry.contains("would delete 3 reports of " + monthText(4)) && !dry.contains(monthText(1) + " from"),
                 dry);
        QCOMPARE(tables(), before);

        const QByteArray moved = run("partition");
        QVERIFY2(moved.startsWith(postgres ? "moved 3 reports into archive.master_table_" : "nothing to do: "), moved);
        if (postgres) {
            QVERIFY2(moved.contains("stay in archive.master_table_rest: 3 reports without a time (0, -1 or before "),
                     moved);
            QCOMPARE(tables(), partitions({4, 2, 1, 0}) + QStringLiteral("archive.master_table_rest:5"));
            status = QJsonDocument::fromJson(run("status --json")).object();
            QCOMPARE(spans(status.value(QStringLiteral("rest")).toObject()),
                     QByteArray("withoutTime=3/1 farFuture=2/1"));
            const QJsonObject last = status.value(QStringLiteral("partitions")).toArray().last().toObject();
            QCOMPARE(last.value(QStringLiteral("from")).toDouble(), double(firstSecond(month(0))));
            QCOMPARE(last.value(QStringLiteral("reports")).toInt(), 3);
            QVERIFY(run("partition").startsWith("nothing to move\n"));
            insertReports(firstSecond(month(3))); // to the rest
        }
        const QByteArray dropped = run("retain --months 2");
        QVERIFY2(dropped.contains(postgres ? "dropped archive.master_table_" : "deleted 3 reports of "), dropped);
        QVERIFY2(dropped.contains(": 2 reports of the far future"), dropped);
        QCOMPARE(tables(), postgres ? partitions({1, 0}) + QStringLiteral("archive.master_table_rest:5")
                                    : QStringLiteral("archive.master_table:11"));
        QVERIFY(run("retain --months 2").startsWith("nothing is older than " + monthText(1)));
        QCOMPARE(valuesOf("SELECT count(*) FROM archive.lastdata"), "1");
    }

    void letsOlderArchivesTellOfChanges()
    {
        makeNew();
        const QByteArray import = "\"$simulate\" --terminals 3 --minutes %1 | \"$import\" $db";
        const auto fill = [&](int minutes) {
            QCOMPARE(runShell(QString::fromLatin1(import).arg(minutes), {}, iniFile).status, 0);
        };
        const char* const changes = "SELECT count(*), count(changed), count(DISTINCT changed) FROM archive.lastdata";
        execute(QStringLiteral("DROP INDEX archive.lastdata_changed"));
        fill(1);
        QCOMPARE(valuesOf(changes), "3 0 0");
        const QByteArray index = "the index archive.lastdata_changed\n";
        QVERIFY(run("create").startsWith("made " + index));
        execute(QStringLiteral("DROP INDEX archive.lastdata_changed"));
        execute(QStringLiteral("ALTER TABLE archive.lastdata DROP COLUMN changed"));
        fill(2);
        QVERIFY(run("create").startsWith("made the column changed of archive.lastdata, " + index));
        QVERIFY(run("create").startsWith("all tables were there already\n"));
        fill(3);
        QCOMPARE(valuesOf(changes), "3 3 1");
        if (!ArchiveSchema::isPostgres(db))
            return;
        execute(QStringLiteral("ALTER TABLE archive.lastdata DROP COLUMN changed"));
        QSqlDatabase other = openAnother(QStringLiteral("busy"));
        other.transaction();
        QSqlQuery(other).exec(QStringLiteral("SELECT FROM archive.lastdata")); // as a backup does
        const QByteArray told = run("create");
        QVERIFY2(told.startsWith("failed: ") && told.contains("cannot add the column changed and its index"), told);
        other.close();
    }

    void givesSpaceBack()
    {
        if (ArchiveSchema::isPostgres(db))
            return; // a dropped table's files are gone
        for (const char* mode : {"NONE", "INCREMENTAL"}) {
            makeNew();
            execute(QStringLiteral("PRAGMA archive.auto_vacuum = ") + QLatin1String(mode));
            execute(QStringLiteral("VACUUM archive"));
            fill({0, 2, 3}, 25'000); // more than are deleted in a transaction
            const int pages = valuesOf("PRAGMA archive.page_count").toInt();
            const QByteArray told = run("retain --months 2");
            QVERIFY2(told.contains("deleted 25,000 reports of " + monthText(2)) && told.contains(" has given back "),
                     told);
            QVERIFY(valuesOf("PRAGMA archive.page_count").toInt() < pages / 2);
            QCOMPARE(valuesOf("PRAGMA archive.freelist_count"), "0");
            QCOMPARE(valuesOf("PRAGMA archive.auto_vacuum"), "2"); // in steps from now on
        }
    }

    void sparesWhatIsNoMonth_data() { addTableRows("fates.txt"); }

    void sparesWhatIsNoMonth()
    {
        const QDate kept(2026, 3, 1);
        const auto time = [&](const char* column) {
            return cell(column) == "lowest" ? std::numeric_limits<qint64>::min()
                                            : firstSecond(kept) + cell(column).toInt();
        };
        Part part;
        part.kind = Part::Range;
        part.first = time("first");
        part.next = time("next");
        part.foreign = cell("server") == "other";
        const Fate fate = fateOf(part, kept);
        QCOMPARE(fate.goes ? QByteArray("goes") : ("stays: " + fate.whyStays.toUtf8()).trimmed(), cell("fate"));
    }

    void goesOnAfterAKill_data() { addTableRows("kills.txt"); }

    void goesOnAfterAKill()
    {
        const QByteArray command = cell("command");
        const int kept = cell("kept").toInt();
        if (command == "partition" && !ArchiveSchema::isPostgres(db))
            return; // one table
        constexpr int kills = 8;
        constexpr int longest = 30;     // ms before a kill
        constexpr int patience = 60000; // ms
        int killed = 0;
        const quint32 seed = QRandomGenerator::global()->generate();
        QRandomGenerator random(seed);
        std::printf("seed %u\n", seed);
        makeNew();
        for (int ago = 0; ago < killedMonths; ++ago)
            fill({ago}, 2000); // one step
        if (!cell("before").isEmpty())
            run(cell("before"));
        for (int round = 0; round <= kills; ++round) {
            QProcess program;
            const QString arguments = QStringLiteral("--ini %1 --group Db %2").arg(iniFile, QLatin1String(command));
            program.start(QStringLiteral(PARDEL_ARCHIVE), arguments.split(QLatin1Char(' ')));
            if (round % 2 == 1) // has done a step
                program.waitForReadyRead(patience);
            if (!program.waitForFinished(round < kills ? random.bounded(1, longest) : patience)) {
                program.kill();
                program.waitForFinished();
                ++killed;
            }
            if (round == kills)
                QCOMPARE(program.readAllStandardError() + QByteArray::number(program.exitCode()), QByteArray("0"));
            for (int ago = 0; ago < killedMonths; ++ago) {
                const QByteArray there =
                    valuesOf(QStringLiteral("SELECT count(*), count(DISTINCT time_unix) FROM "
                                            "archive.master_table WHERE time_unix >= %1 AND time_unix < %2")
                                 .arg(firstSecond(month(ago)))
                                 .arg(firstSecond(month(ago - 1))));
                const bool whole = there == "2000 2000";
                QVERIFY2(whole || (there == "0 0" && ago >= kept), there);
                QVERIFY(round < kills || whole == (ago < kept));
            }
        }
        QVERIFY(killed > 2);
        if (command == "partition")
            QCOMPARE(valuesOf("SELECT count(*) FROM archive.master_table_rest"), "0");
    }

    void runsBesideAnImport()
    {
        // The simulated reports are of the last minute of 2025 and of January 2026, which the rest holds too.
        const QDate january(2026, 1, 1);
        makeNew();
        const int ago = (month(0).year() - january.year()) * 12 + month(0).month() - january.month();
        fill({ago, ago + 2, ago + 3}, 2000);
        QProcess import;
        import.setProcessChannelMode(QProcess::MergedChannels);
        import.start(QStringLiteral("/bin/sh"),
                     {QStringLiteral("-c"),
                      QStringLiteral("\"$0\" --terminals 400 --minutes 60 | \"$1\" --ini \"$2\" --group Db"),
                      QStringLiteral(PARDEL_SIMULATE), QStringLiteral(PARDEL_IMPORT), iniFile});
        QVERIFY(import.waitForStarted());
        for (bool last = false; !last;) {
            last = import.waitForFinished(10);
            run("partition");
            run("retain --months " + QByteArray::number(ago + 2)); // from December 2025 on
            run("status");
        }
        const QByteArray told = import.readAll();
        QVERIFY2(import.exitCode() == 0, told);
        const Outcome again =
            runShell(QStringLiteral("\"$simulate\" --terminals 400 --minutes 60 | \"$import\" $db"), {}, iniFile);
        QVERIFY2(again.errors.contains(" stored 0, "), again.errors);
        QCOMPARE(valuesOf("SELECT count(*) FROM archive.master_table WHERE length(fingerprint) = 1"), "2000");
    }

private:
    static constexpr int killedMonths = 8;
    const QDate m_today = QDateTime::currentDateTimeUtc().date();
    const qint64 ancient = firstSecond(m_today.addYears(-12));
    const qint64 farFuture = firstSecond(m_today.addDays(70));

    QDate month(int ago) const { return monthOf(m_today).addMonths(-ago); }
    QByteArray monthText(int ago) const { return month(ago).toString(QStringLiteral("yyyy-MM")).toLatin1(); }

    /// What a command that has to succeed writes.
    QByteArray run(const QByteArray& command) const;
    void makeNew();
    /// Reports in the first seconds of months, each of another object.
    void fill(const QVector<int>& monthsAgo, int rows);
    QString tables() const;
    QString partitions(const QVector<int>& monthsAgo) const;
    static QByteArray spans(const QJsonObject& part);
};

QByteArray TestHousekeeping::run(const QByteArray& command) const
{
    const Outcome outcome = runShell(QStringLiteral("\"$archive\" $db ") + QLatin1String(command), {}, iniFile);
    return outcome.status == 0 && outcome.errors.isEmpty() ? outcome.output : "failed: " + outcome.errors;
}

void TestHousekeeping::makeNew()
{
    execute(QStringLiteral("DROP TABLE IF EXISTS archive.master_table"));
    execute(QStringLiteral("DROP TABLE IF EXISTS archive.lastdata"));
    QCOMPARE(ArchiveSchema::create(db), QString());
}

void TestHousekeeping::fill(const QVector<int>& monthsAgo, int rows)
{
    for (const int ago : monthsAgo)
        insertReports(firstSecond(month(ago)), rows, 0, 50);
}

/// Where the reports lie: "TABLE:REPORTS" of each.
QString TestHousekeeping::tables() const
{
    return QString::fromUtf8(valuesOf(
        ArchiveSchema::isPostgres(db) ? "SELECT tableoid::regclass::text || ':' || count(*) FROM archive.master_table "
                                        "GROUP BY tableoid ORDER BY 1"
                                      : "SELECT 'archive.master_table:' || count(*) FROM archive.master_table"));
}

/// What tables() says of months' partitions with three reports each.
QString TestHousekeeping::partitions(const QVector<int>& monthsAgo) const
{
    QString text;
    for (const int ago : monthsAgo)
        text += monthTable(month(ago)) + QLatin1String(":3 ");
    return text;
}

/// "2026-01=REPORTS/OBJECTS" of each month and of what is none.
QByteArray TestHousekeeping::spans(const QJsonObject& part)
{
    const auto text = [](const QJsonObject& contents) {
        return '=' + QByteArray::number(contents.value(QStringLiteral("reports")).toInt()) + '/' +
               QByteArray::number(contents.value(QStringLiteral("objects")).toInt());
    };
    QByteArray all;
    for (const QJsonValue month : part.value(QStringLiteral("months")).toArray())
        all += month.toObject().value(QStringLiteral("month")).toString().toLatin1() + text(month.toObject()) + ' ';
    for (const char* name : {"withoutTime", "farFuture"})
        all += name + text(part.value(QLatin1String(name)).toObject()) + ' ';
    return all.chopped(1);
}

QTEST_GUILESS_MAIN(TestHousekeeping)
#include "tst_housekeeping.moc"
