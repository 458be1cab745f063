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
        QVERIFY(archive("create").startsWith("made archive.master_table, archive.lastdata, "));
        QVERIFY(archive("create").startsWith("all tables were there already\n"));
        if (!ArchiveSchema::isPostgres(db))
            QVERIFY(archive("create --shard host=a").contains("--shard needs PostgreSQL; group Db in "));
        QVERIFY(archive("status").contains(" 0 reports, last states of 0 objects, "));
        fill({0, 1, 2, 4}, 3);
        for (const qint64 time : {qint64(0), qint64(-1), ancient, farFuture, farFuture + 1})
            insertReports(time);
        execute("INSERT INTO archive.lastdata (id_object, time_unix) VALUES (1, 1)");
        const bool postgres = ArchiveSchema::isPostgres(db);
        const QString before = tables();

        const auto number = [](qint64 time) { return QByteArray::number(time); };
        const qint64 newest = firstSecond(month(0));
        QJsonObject status = QJsonDocument::fromJson(archive("status --json")).object();
        QCOMPARE(numbers(status, "reports objects oldest newest"),
                 "17 1 " + number(firstSecond(month(4))) + ' ' + number(newest + 2));
        const QJsonObject rest = postgres ? status.value(QStringLiteral("rest")).toObject() : status;
        QCOMPARE(spans(rest), monthText(4) + "=3 3, " + monthText(2) + "=3 3, " + monthText(1) + "=3 3, " +
                                  monthText(0) + "=3 3, withoutTime=3 1, farFuture=2 1");
        const QByteArray dry = archive("retain --months 2 --dry-run");
        QVERIFY2(dry.contains("would delete 3 reports of " + monthText(4)) && !dry.contains(monthText(1) + " from"),
                 dry);
        QCOMPARE(tables(), before);

        const QByteArray moved = archive("partition");
        QVERIFY2(moved.startsWith(postgres ? "moved 3 reports into archive.master_table_" : "nothing to do: "), moved);
        if (postgres) {
            QVERIFY2(moved.contains("stay in archive.master_table_rest: 3 reports without a time (0, -1 or before "),
                     moved);
            QCOMPARE(tables(), tablesOf({4, 2, 1, 0}) + QStringLiteral("archive.master_table_rest:5"));
            status = QJsonDocument::fromJson(archive("status --json")).object();
            QCOMPARE(spans(status.value(QStringLiteral("rest")).toObject()), "withoutTime=3 1, farFuture=2 1");
            const QJsonArray partitions = status.value(QStringLiteral("partitions")).toArray();
            QCOMPARE(numbers(partitions.last().toObject(), "from reports"), number(newest) + " 3");
            QVERIFY(archive("partition").startsWith("nothing to move\n"));
            insertReports(firstSecond(month(3))); // to the rest
        }
        const QByteArray dropped = archive("retain --months 2");
        QVERIFY2(dropped.contains(postgres ? "dropped archive.master_table_" : "deleted 3 reports of ") &&
                     dropped.contains(": 2 reports of the far future"),
                 dropped);
        QCOMPARE(tables(), postgres ? tablesOf({1, 0}) + QStringLiteral("archive.master_table_rest:5")
                                    : QStringLiteral("archive.master_table:11"));
        QVERIFY(archive("retain --months 2").startsWith("nothing is older than " + monthText(1)));
        QCOMPARE(valuesOf("SELECT count(*) FROM archive.lastdata"), "1");
    }

    void letsOlderArchivesTellOfChanges()
    {
        makeArchiveAnew();
        const auto fill = [&](char minutes) {
            tells(QByteArray("\"$simulate\" --terminals 3 --minutes ") + minutes + " | \"$import\" $db", "status 0");
        };
        const char* const changes = "SELECT count(*), count(changed), count(DISTINCT changed) FROM archive.lastdata";
        execute("DROP INDEX archive.lastdata_changed");
        fill('1');
        QCOMPARE(valuesOf(changes), "3 0 0");
        const QByteArray index = "the index archive.lastdata_changed\n";
        QVERIFY(archive("create").startsWith("made " + index));
        execute("DROP INDEX archive.lastdata_changed");
        execute("ALTER TABLE archive.lastdata DROP COLUMN changed");
        fill('2');
        QVERIFY(archive("create").startsWith("made the column changed of archive.lastdata, " + index));
        QVERIFY(archive("create").startsWith("all tables were there already\n"));
        fill('3');
        QCOMPARE(valuesOf(changes), "3 3 1");
        if (!ArchiveSchema::isPostgres(db))
            return;
        execute("ALTER TABLE archive.lastdata DROP COLUMN changed");
        QSqlDatabase other = openAnother(QStringLiteral("busy"));
        other.transaction();
        QSqlQuery(other).exec(QStringLiteral("SELECT FROM archive.lastdata")); // as a backup does
        tells("\"$archive\" $db create", "cannot add the column changed and its index...status 2");
        other.close();
    }

    void givesSpaceBack()
    {
        if (ArchiveSchema::isPostgres(db))
            return; // a dropped table's files are gone
        for (const char* mode : {"NONE", "INCREMENTAL"}) {
            makeArchiveAnew();
            execute(QStringLiteral("PRAGMA archive.auto_vacuum = ") + QLatin1String(mode));
            execute("VACUUM archive");
            fill({0, 2, 3}, 25'000); // more than are deleted in a transaction
            const int pages = valuesOf("PRAGMA archive.page_count").toInt();
            tells("\"$archive\" $db retain --months 2",
                  "deleted 25,000 reports of " + monthText(2) + "... has given back ...status 0");
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
        makeArchiveAnew();
        for (int ago = 0; ago < killedMonths; ++ago)
            fill({ago}, 2000); // one step
        if (!cell("before").isEmpty())
            archive(cell("before"));
        for (int round = 0; round <= kills; ++round) {
            QProcess program;
            startShell(program, QStringLiteral("exec \"$archive\" $db ") + QLatin1String(command), iniFile);
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
        makeArchiveAnew();
        const int ago = (month(0).year() - january.year()) * 12 + month(0).month() - january.month();
        fill({ago, ago + 2, ago + 3}, 2000);
        QProcess import;
        const QByteArray command = "\"$simulate\" --terminals 400 --minutes 60 | \"$import\" $db 2>&1";
        startShell(import, QString::fromLatin1(command), iniFile);
        for (bool last = false; !last;) {
            last = import.waitForFinished(10);
            archive("partition");
            archive("retain --months " + QByteArray::number(ago + 2)); // from December 2025 on
            archive("status");
        }
        QVERIFY2(import.exitCode() == 0, import.readAll());
        tells(command, " stored 0, ");
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
    QByteArray archive(const QByteArray& command) const
    {
        const Outcome outcome = runShell(QStringLiteral("\"$archive\" $db ") + QLatin1String(command), {}, iniFile);
        return outcome.status == 0 && outcome.errors.isEmpty() ? outcome.output : "failed: " + outcome.errors;
    }

    /// Reports in the first seconds of months, each of another object.
    void fill(const QVector<int>& monthsAgo, int rows)
    {
        for (const int ago : monthsAgo)
            insertReports(firstSecond(month(ago)), rows, 0, 50);
    }

    /// Where the reports lie: "TABLE:REPORTS" of each.
    QString tables() const
    {
        return QString::fromUtf8(
            valuesOf(ArchiveSchema::isPostgres(db)
                         ? "SELECT tableoid::regclass::text || ':' || count(*) FROM archive.master_table "
                           "GROUP BY tableoid ORDER BY 1"
                         : "SELECT 'archive.master_table:' || count(*) FROM archive.master_table"));
    }

    /// What tables() says of months' partitions with three reports each.
    QString tablesOf(const QVector<int>& monthsAgo) const
    {
        QString text;
        for (const int ago : monthsAgo)
            text += monthTable(month(ago)) + QLatin1String(":3 ");
        return text;
    }

    static QByteArray numbers(const QJsonObject& object, const char* names)
    {
        QByteArrayList numbers;
        for (const QByteArray& name : QByteArray(names).split(' '))
            numbers += QByteArray::number(static_cast<qint64>(object.value(QString::fromLatin1(name)).toDouble()));
        return numbers.join(' ');
    }

    /// "2026-01=REPORTS OBJECTS" of each month and of what is none.
    static QByteArray spans(const QJsonObject& part)
    {
        QByteArrayList all;
        const QJsonArray months = part.value(QStringLiteral("months")).toArray();
        for (const auto& month : months)
            all += month[QStringLiteral("month")].toString().toLatin1() + '=' +
                   numbers(month.toObject(), "reports objects");
        for (const char* name : {"withoutTime", "farFuture"})
            all += name + ('=' + numbers(part.value(QLatin1String(name)).toObject(), "reports objects"));
        return all.join(", ");
    }
};

QTEST_GUILESS_MAIN(TestHousekeeping)
#include "tst_housekeeping.moc"
