#include "retention.h"

#include "archiveschema.h"
#include "archivestatus.h"
#include "partitions.h"
#include "transaction.h"

#include <QFileInfo>
#include <QSqlDatabase>
#include <QSqlError>
#include <QSqlQuery>
#include <QThread>
#include <QVariant>

namespace {

constexpr int rowsInStep = 20'000;
constexpr int pagesInStep = 1000; // 16 MiB; some tenths of a second
constexpr int pause = 120;        // ms; who waits for SQLite's lock looks for it every 100
constexpr int incremental = 2;    // of PRAGMA auto_vacuum

/// A step frees a page: the statement goes on with its next row, which Qt does not ask for, as it has no columns.
QString freeSomePages(const QSqlDatabase& db)
{
    Transaction transaction(db);
    for (int i = 0; i < pagesInStep && !transaction.failed(); ++i)
        transaction.run(QStringLiteral("PRAGMA archive.incremental_vacuum(1)"));
    transaction.commit();
    return transaction.error();
}

/// Finds the reports by object and time, as there is no index by time.
QString reportsOf(const QString& table, const Span& month)
{
    return QStringLiteral("FROM %1 WHERE id_object IN (WITH RECURSIVE objects(id) AS (SELECT min(id_object) FROM %1 "
                          "UNION ALL SELECT (SELECT min(id_object) FROM %1 WHERE id_object > id) FROM objects "
                          "WHERE id IS NOT NULL) SELECT id FROM objects) AND time_unix >= %2 AND time_unix < %3")
        .arg(table, QString::number(month.first), QString::number(month.next));
}

QString deleteOnce(const QSqlDatabase& db, const QString& statement, qint64* deleted)
{
    QSqlQuery query(db); // goes behind the transaction, as PostgreSQL forgets no statement in one that has failed
    Transaction transaction(db);
    if (ArchiveSchema::isPostgres(db))
        transaction.run(ArchivePartitions::storingLock()); // else the month may get its partition in this moment
    query.prepare(statement);
    transaction.run(query);
    const qint64 count = query.numRowsAffected();
    query.finish();
    *deleted = transaction.commit() ? count : 0;
    return transaction.error();
}

} // namespace

Fate fateOf(const Part& part, const QDate& oldestKept)
{
    const qint64 firstKept = ArchivePartitions::firstSecond(oldestKept);
    if (part.kind != Part::Range || part.first >= firstKept)
        return {};
    if (part.next > firstKept)
        return {false, QStringLiteral("it holds later months too")};
    if (part.first <= 0)
        return {false, QStringLiteral("reports without a time lie in it too")};
    if (part.foreign)
        return {false, QStringLiteral("it lies on another server; detach it and drop it there")};
    return {true, QString()};
}

QString deleteMonth(const QSqlDatabase& db, const QString& table, const Span& month, qint64* deleted)
{
    const QString reports = reportsOf(table, month);
    if (ArchiveSchema::isPostgres(db))
        return deleteOnce(db, QLatin1String("DELETE ") + reports, deleted);
    *deleted = 0;
    for (qint64 step = rowsInStep; step == rowsInStep;) {
        const QString error = deleteOnce(db,
                                         QStringLiteral("DELETE FROM %1 WHERE rowid IN (SELECT rowid %2 LIMIT %3)")
                                             .arg(table, reports, QString::number(rowsInStep)),
                                         &step);
        if (!error.isEmpty())
            return error;
        *deleted += step;
        QThread::msleep(pause);
    }
    return {};
}

QString giveSpaceBack(const QSqlDatabase& db, const QString& file)
{
    QSqlQuery query(db);
    if (!query.exec(QStringLiteral("PRAGMA archive.auto_vacuum")) || !query.next())
        return ArchiveSchema::errorText(query.lastError());
    const bool inSteps = query.value(0).toInt() == incremental;
    query.finish();
    qint64 left = freeBytes(db);
    if (!inSteps) {
        if (left < QFileInfo(file).size() / 20)
            return {};
        query.exec(QStringLiteral("PRAGMA archive.auto_vacuum = INCREMENTAL"));
        query.finish();
        return query.exec(QStringLiteral("VACUUM archive")) ? QString() : ArchiveSchema::errorText(query.lastError());
    }
    for (qint64 before = left + 1; left > 0 && left < before;) { // others may free or take pages meanwhile
        const QString error = freeSomePages(db);
        if (!error.isEmpty())
            return error;
        QThread::msleep(pause);
        before = left;
        left = freeBytes(db);
    }
    return {};
}
