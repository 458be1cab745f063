// Months' partitions, made while the rest holds reports of them and while others store or make the same.

#include "archiveschema.h"
#include "databasetest.h"
#include "partitions.h"

#include <future>

class TestPartitions : public DatabaseTest
{
    Q_OBJECT

private Q_SLOTS:
    void range()
    {
        for (const auto& [day, has] : {std::pair(QDate(2026, 3, 31), true), // of tomorrow's month
                                       {{2026, 4, 1}, false},
                                       {{2016, 2, 1}, true}, // ten years ago
                                       {{2016, 1, 31}, false},
                                       {QDate(), false}})
            QCOMPARE(ArchivePartitions::hasPartition(day, QDate(2026, 2, 28)), has);
    }

    void movesWhatTheRestHolds()
    {
        QCOMPARE(ArchiveSchema::create(db), QString());
        for (const qint64 time : {january - 1, january, january + 5, february - 1, february, qint64(0), qint64(-1)})
            insertReports(time);
        for (int round = 0; round < 2; ++round)
            QCOMPARE(ArchivePartitions::makeMonth(db, QDate(2026, 1, 1)), QString());
        QCOMPARE(valuesOf("SELECT count(*) FROM archive.master_table"), "7");
        if (!ArchiveSchema::isPostgres(db))
            return;
        QCOMPARE(
            valuesOf("SELECT string_agg(time_unix::text, ' ' ORDER BY time_unix) FROM archive.master_table_2026_01"),
            "1767225600 1767225605 1769903999");
        insertReports(january + 6);
        QCOMPARE(valuesOf("SELECT count(*) FROM archive.master_table_2026_01"), "4");
        // As PARTITION OF makes it: with the unique index, nothing more to check.
        QCOMPARE(valuesOf("SELECT count(*) FROM pg_index i JOIN pg_inherits h ON h.inhrelid = i.indexrelid "
                          "WHERE i.indrelid = 'archive.master_table_2026_01'::regclass AND i.indisunique"),
                 "1");
        QCOMPARE(
            valuesOf("SELECT count(*) FROM pg_constraint WHERE conrelid = 'archive.master_table_2026_01'::regclass"),
            "0");
    }

    void twoAtOnceWaitForWhoStores()
    {
        if (!ArchiveSchema::isPostgres(db))
            return; // one table
        insertReports(february + 1);
        execute("BEGIN");
        execute(ArchivePartitions::storingLock());
        const auto make = [this](const QString& name) {
            QString error;
            {
                QSqlDatabase own = openAnother(name);
                error = ArchivePartitions::makeMonth(own, QDate(2026, 2, 1));
            }
            QSqlDatabase::removeDatabase(name);
            return error;
        };
        auto first = std::async(std::launch::async, make, QStringLiteral("first"));
        auto second = std::async(std::launch::async, make, QStringLiteral("second"));
        QTRY_COMPARE(valuesOf("SELECT count(*) FROM pg_locks WHERE locktype = 'advisory' AND NOT granted"), "2");
        insertReports(february + 2); // still to the rest
        execute("COMMIT");
        QCOMPARE(first.get(), QString());
        QCOMPARE(second.get(), QString());
        QCOMPARE(valuesOf("SELECT count(*) FROM archive.master_table_2026_02"), "3");
    }

    void leavesOtherArchivesAlone()
    {
        if (!ArchiveSchema::isPostgres(db))
            return; // one table
        execute(QStringLiteral("CREATE TABLE archive.years PARTITION OF archive.master_table "
                               "FOR VALUES FROM (%1) TO (MAXVALUE)")
                    .arg(february + 40 * 86400));
        for (const char* statements : {
                 "SELECT 1", // a partition of more than the month
                 "ALTER TABLE archive.master_table DETACH PARTITION archive.years;"
                 "CREATE TABLE archive.master_table_2026_03 ()", // the name is taken
                 "DROP TABLE archive.master_table_2026_03, archive.master_table;"
                 "CREATE TABLE archive.master_table (time_unix bigint)", // one table
                 "DROP TABLE archive.master_table",
             }) {
            execute(statements);
            QCOMPARE(ArchivePartitions::makeMonth(db, QDate(2026, 3, 1)), QString());
            QCOMPARE(valuesOf("SELECT count(*) FROM pg_inherits "
                              "WHERE inhrelid = to_regclass('archive.master_table_2026_03')"),
                     "0");
        }
        execute("CREATE TABLE archive.master_table (time_unix bigint) PARTITION BY RANGE (time_unix)");
        QCOMPARE(ArchivePartitions::makeMonth(db, QDate(2026, 3, 1)), QString()); // without a default partition
        execute(QStringLiteral("INSERT INTO archive.master_table_2026_03 VALUES (%1)").arg(february + 29 * 86400));
    }

private:
    static constexpr qint64 january = 1767225600; // 2026
    static constexpr qint64 february = 1769904000;
};

QTEST_GUILESS_MAIN(TestPartitions)
#include "tst_partitions.moc"
