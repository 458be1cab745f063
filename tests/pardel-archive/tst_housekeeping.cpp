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
#include <QTest>
#include <QVariant>

#include <limits>
#include <numeric>

using namespace ArchivePartitions;

class TestHousekeeping : public DatabaseTest
{
    Q_OBJECT

public:
    TestHousekeeping() : DatabaseTest("import.sql") {}

private Q_SLOTS:
    void saysWhatFails()
    {
        for (const auto& [arguments, error] : {
                 std::pair("", "One command is needed: create, status, partition or retain. (see pardel-archive"),
                 {"prune --ini \"$1\" --group Db", "One command is needed"},
                 {"status --group Db", "--ini and --group are needed."},
                 {"status --ini /nowhere --group Db", "cannot read the settings file /nowhere\n"},
                 {"retain --ini \"$1\" --group Db", "retain needs --months with a number from 1 to 1200."},
                 {"retain --ini \"$1\" --group Db --months 0", "retain needs --months"},
                 {"partition --ini \"$1\" --group Db --dry-run", "--dry-run is for retain only."},
                 {"retain --ini \"$1\" --group Db --months 3 --json", "--json is for status only."},
                 {"status --ini \"$1\" --group Db", "there is no archive.master_table; \"pardel-archive create\""},
             }) {
            const Outcome outcome = runShell(QStringLiteral("\"$archive\" ") + QLatin1String(arguments), {}, {iniFile});
            QVERIFY2(outcome.errors.contains(error), outcome.errors);
            QCOMPARE(outcome.errors.count('\n'), 1);
            QCOMPARE(outcome.status, 2);
        }
    }

    void keepsHouse()
    {
        QVERIFY(run("create").startsWith("made archive.master_table, archive.lastdata, "));
        QVERIFY(run("create").startsWith("all tables were there already\n"));
        QVERIFY(run("status").contains(" 0 reports, last states of 0 objects, "));
        fill({0, 1, 2, 4}, 3);
        for (const qint64 time : {qint64(0), qint64(-1), ancient, farFuture, farFuture + 1})
            insert(time);
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
            insert(firstSecond(month(3))); // to the rest
        }
        const QByteArray dropped = run("retain --months 2");
        QVERIFY2(dropped.contains(postgres ? "dropped archive.master_table_" : "deleted 3 reports of "), dropped);
        QVERIFY2(dropped.contains(": 2 reports of the far future"), dropped);
        QCOMPARE(tables(), postgres ? partitions({1, 0}) + QStringLiteral("archive.master_table_rest:5")
                                    : QStringLiteral("archive.master_table:11"));
        QVERIFY(run("retain --months 2").startsWith("nothing is older than " + monthText(1)));
        QCOMPARE(number("SELECT count(*) FROM archive.lastdata"), 1);
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
            const int pages = number("PRAGMA archive.page_count");
            const QByteArray told = run("retain --months 2");
            QVERIFY2(told.contains("deleted 25,000 reports of " + monthText(2)) && told.contains(" has given back "),
                     told);
            QVERIFY(number("PRAGMA archive.page_count") < pages / 2);
            QCOMPARE(number("PRAGMA archive.freelist_count"), 0);
            QCOMPARE(number("PRAGMA archive.auto_vacuum"), 2); // in steps from now on
        }
    }

    void sparesWhatIsNoMonth_data()
    {
        QTest::addColumn<qint64>("first");
        QTest::addColumn<qint64>("next");
        QTest::addColumn<bool>("foreign");
        QTest::addColumn<QString>("fate");
        const qint64 kept = firstSecond(QDate(2026, 3, 1));
        QTest::newRow("the month before") << kept - 100 << kept << false << "goes";
        QTest::newRow("on another server") << kept - 100 << kept << true
                                           << "stays: it lies on another server; detach "
                                              "it and drop it there";
        QTest::newRow("a year") << kept - 100 << kept + 1 << false << "stays: it holds later months too";
        QTest::newRow("all before") << std::numeric_limits<qint64>::min() << kept << false
                                    << "stays: reports without a time lie in it too";
        QTest::newRow("the first kept") << kept << kept + 1 << false << "stays: ";
    }

    void sparesWhatIsNoMonth()
    {
        QFETCH(qint64, first);
        QFETCH(qint64, next);
        QFETCH(bool, foreign);
        Part part;
        part.kind = Part::Range;
        part.first = first;
        part.next = next;
        part.foreign = foreign;
        const Fate fate = fateOf(part, QDate(2026, 3, 1));
        QTEST(fate.goes ? QStringLiteral("goes") : QLatin1String("stays: ") + fate.whyStays, "fate");
    }

    void goesOnAfterAKill_data()
    {
        QTest::addColumn<QString>("command");
        QTest::addColumn<int>("kept"); // months
        QTest::newRow("partition") << "partition" << killedMonths;
        QTest::newRow("retain from the rest") << "retain --months 3" << 3;
        QTest::newRow("retain from partitions") << "retain --months 3" << 3;
    }

    void goesOnAfterAKill()
    {
        QFETCH(QString, command);
        QFETCH(int, kept);
        if (command == QLatin1String("partition") && !ArchiveSchema::isPostgres(db))
            return;                // one table
        constexpr int rows = 2000; // a month; one step
        constexpr int kills = 8;
        constexpr int longest = 30;     // ms before a kill
        constexpr int patience = 60000; // ms
        int killed = 0;
        const quint32 seed = QRandomGenerator::global()->generate();
        QRandomGenerator random(seed);
        std::printf("seed %u\n", seed);
        makeNew();
        QVector<int> months(killedMonths);
        std::iota(months.begin(), months.end(), 0);
        fill(months, rows);
        if (qstrcmp(QTest::currentDataTag(), "retain from partitions") == 0)
            run("partition");
        for (int round = 0; round <= kills; ++round) {
            QProcess program;
            program.start(QStringLiteral(PARDEL_ARCHIVE), QStringList{QStringLiteral("--ini"), iniFile,
                                                                      QStringLiteral("--group"), QStringLiteral("Db")} +
                                                              command.split(QLatin1Char(' ')));
            if (round % 2 == 1) // has done a step
                program.waitForReadyRead(patience);
            if (!program.waitForFinished(round < kills ? random.bounded(1, longest) : patience)) {
                program.kill();
                program.waitForFinished();
                ++killed;
            }
            if (round == kills)
                QCOMPARE(program.readAllStandardError() + QByteArray::number(program.exitCode()), QByteArray("0"));
            for (const int ago : qAsConst(months)) {
                const qint64 first = firstSecond(month(ago));
                QSqlQuery query(QStringLiteral("SELECT count(*), count(DISTINCT time_unix) FROM archive.master_table "
                                               "WHERE time_unix >= %1 AND time_unix < %2")
                                    .arg(first)
                                    .arg(firstSecond(month(ago - 1))),
                                db);
                QVERIFY(query.next());
                const int there = query.value(0).toInt();
                const bool whole = there == rows && query.value(1).toInt() == rows;
                QVERIFY2(whole || (there == 0 && ago >= kept),
                         qPrintable(QStringLiteral("%1: %2").arg(ago).arg(there)));
                QVERIFY(round < kills || whole == (ago < kept));
            }
        }
        QVERIFY(killed > 2);
        if (command == QLatin1String("partition"))
            QCOMPARE(number("SELECT count(*) FROM archive.master_table_rest"), 0);
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
            runShell(QStringLiteral("\"$simulate\" --terminals 400 --minutes 60 | \"$import\" --ini \"$1\" --group Db"),
                     {}, {iniFile});
        QVERIFY2(again.errors.contains(" stored 0, "), again.errors);
        QCOMPARE(number("SELECT count(*) FROM archive.master_table WHERE length(fingerprint) = 1"), 2000);
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
    void insert(qint64 time);
    int number(const char* statement) const;
    QString tables() const;
    QString partitions(const QVector<int>& monthsAgo) const;
    static QByteArray spans(const QJsonObject& part);
};

QByteArray TestHousekeeping::run(const QByteArray& command) const
{
    const Outcome outcome =
        runShell(QStringLiteral("\"$archive\" --ini \"$1\" --group Db ") + QLatin1String(command), {}, {iniFile});
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
        execute(QStringLiteral("WITH RECURSIVE n(i) AS (SELECT 0 UNION ALL SELECT i + 1 FROM n WHERE i < %1) "
                               "INSERT INTO archive.master_table (id_object, time_unix, fingerprint) "
                               "SELECT i % 50, %2 + i, 'x' FROM n")
                    .arg(rows - 1)
                    .arg(firstSecond(month(ago))));
}

void TestHousekeeping::insert(qint64 time)
{
    execute(QStringLiteral("INSERT INTO archive.master_table (id_object, time_unix, fingerprint) VALUES (1, %1, 'x')")
                .arg(time));
}

int TestHousekeeping::number(const char* statement) const
{
    QSqlQuery query(QLatin1String(statement), db);
    return query.next() ? query.value(0).toInt() : -1;
}

/// Where the reports lie: "TABLE:REPORTS" of each.
QString TestHousekeeping::tables() const
{
    QSqlQuery query(ArchiveSchema::isPostgres(db)
                        ? QStringLiteral("SELECT string_agg(name || ':' || reports, ' ' ORDER BY name) FROM (SELECT "
                                         "tableoid::regclass::text AS name, count(*) AS reports "
                                         "FROM archive.master_table GROUP BY 1) AS parts")
                        : QStringLiteral("SELECT 'archive.master_table:' || count(*) FROM archive.master_table"),
                    db);
    return query.next() ? query.value(0).toString() : QString();
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
    for (const QJsonValue& month : part.value(QStringLiteral("months")).toArray())
        all += month.toObject().value(QStringLiteral("month")).toString().toLatin1() + text(month.toObject()) + ' ';
    for (const char* name : {"withoutTime", "farFuture"})
        all += name + text(part.value(QLatin1String(name)).toObject()) + ' ';
    return all.chopped(1);
}

QTEST_GUILESS_MAIN(TestHousekeeping)
#include "tst_housekeeping.moc"
