#include "archivecontents.h"

#include "archiveschema.h"
#include "partitions.h"

#include <QSqlError>
#include <QSqlQuery>
#include <QStringList>
#include <QVariant>

#include <algorithm>
#include <limits>
#include <map>

namespace {

constexpr qint64 countedUpTo = qint64(1) << 30;                          // bytes; some seconds of counting
constexpr qint64 beginningOfTimes = -std::numeric_limits<qint64>::max(); // PostgreSQL has no literal of the least one
constexpr qint64 endOfTimes = std::numeric_limits<qint64>::max();

QString failureOf(const QSqlQuery& query)
{
    return ArchiveSchema::errorText(query.lastError());
}

/// Steps through the index from object to object, and looks at the ends of each: this costs by the objects and not by
/// the reports, of which only the count takes all.
QString steppingStatement(const QString& table, bool count)
{
    const QString ofObject = QStringLiteral("FROM %1 WHERE id_object = id").arg(table);
    return QStringLiteral(
               "WITH RECURSIVE objects(id) AS (SELECT min(id_object) FROM %1 UNION ALL SELECT (SELECT min(id_object) "
               "FROM %1 WHERE id_object > id) FROM objects WHERE id IS NOT NULL) "
               "SELECT sum(reports), count(*), min(oldest), max(newest) FROM (SELECT (SELECT min(time_unix) %2) AS "
               "oldest, (SELECT max(time_unix) %2) AS newest, %3 AS reports FROM objects WHERE id IS NOT NULL) AS "
               "parts")
        .arg(table, ofObject, count ? QStringLiteral("(SELECT count(*) %1)").arg(ofObject) : QStringLiteral("0"));
}

/// What stands for a span in a statement: 202601 for a month.
int keyOf(const Span& span)
{
    constexpr int future = 1;
    return span.kind == Span::Month ? span.month.year() * 100 + span.month.month()
                                    : (span.kind == Span::Future ? future : 0);
}

/// The key of the span in which time_unix lies.
QString keyExpression(bool postgres, const std::vector<Span>& spans)
{
    if (!postgres) {
        return QStringLiteral("CASE WHEN time_unix < %1 THEN %2 WHEN time_unix >= %3 THEN %4 "
                              "ELSE CAST(strftime('%Y%m', time_unix, 'unixepoch') AS integer) END")
            .arg(QString::number(spans.front().next), QString::number(keyOf(spans.front())),
                 QString::number(spans.back().first), QString::number(keyOf(spans.back())));
    }
    QStringList keys;
    QStringList borders;
    for (const Span& span : spans) {
        keys += QString::number(keyOf(span));
        borders += QString::number(span.next);
    }
    borders.removeLast();
    return QStringLiteral("(ARRAY[%1])[1 + width_bucket(time_unix, ARRAY[%2]::bigint[])]")
        .arg(keys.join(QLatin1Char(',')), borders.join(QLatin1Char(',')));
}

/// Goes over all, as it has to count them.
QString spansStatement(const QString& table, const QString& key)
{
    return QStringLiteral("SELECT sum(reports), count(*), min(oldest), max(newest), span FROM (SELECT %2 AS span, "
                          "id_object, count(*) AS reports, min(time_unix) AS oldest, max(time_unix) AS newest FROM %1 "
                          "GROUP BY 1, 2) AS parts GROUP BY span ORDER BY span")
        .arg(table, key);
}

/// From a row of the statements above.
Contents contentsOf(const QSqlQuery& query)
{
    return {query.value(0).toLongLong(), true, query.value(1).toLongLong(), query.value(2).toLongLong(),
            query.value(3).toLongLong()};
}

/// The reports and spans of a table of all times.
QString measureSpans(const QSqlDatabase& db, const QDate& today, Part* part)
{
    const std::vector<Span> spans = allSpans(today);
    std::map<int, Contents> found;
    QSqlQuery query(db);
    if (!query.exec(spansStatement(part->table, keyExpression(ArchiveSchema::isPostgres(db), spans))))
        return failureOf(query);
    while (query.next())
        found[query.value(4).toInt()] = contentsOf(query);
    for (Span span : spans) {
        span.contents = found[keyOf(span)];
        part->contents.reports += span.contents.reports;
        if (span.contents.objects > 0)
            part->spans.push_back(span);
    }
    return {};
}

QString escaped(QString text)
{
    return text.replace(QLatin1Char('\''), QLatin1String("''"));
}

/// @param estimate of the reports, by those on a page when it was last analysed; -1 where it is small or was never
/// @param there becomes false when there is no such table
QString readSize(const QSqlDatabase& db, Part* part, qint64* estimate, bool* there)
{
    QSqlQuery query(db);
    if (!query.exec(QStringLiteral(
                        "SELECT pg_total_relation_size(oid), CASE WHEN relpages > 0 AND pg_relation_size(oid) > %2 "
                        "THEN reltuples / relpages * (pg_relation_size(oid) / current_setting('block_size')::integer) "
                        "ELSE -1 END FROM pg_class WHERE oid = to_regclass('%1')")
                        .arg(escaped(part->table), QString::number(countedUpTo))))
        return failureOf(query);
    *there = query.next();
    part->bytes = *there ? query.value(0).toLongLong() : 0;
    *estimate = *there ? query.value(1).toLongLong() : -1;
    return {};
}

} // namespace

std::vector<Span> allSpans(const QDate& today)
{
    const QDate oldest = ArchivePartitions::oldestDay(today);
    const QDate newest = ArchivePartitions::newestDay(today);
    std::vector<Span> spans{
        {Span::WithoutTime, QDate(), beginningOfTimes, ArchivePartitions::firstSecond(oldest), Contents()}};
    for (QDate month = oldest; month <= newest; month = month.addMonths(1)) {
        const qint64 next = ArchivePartitions::firstSecond(month.addMonths(1));
        spans.push_back({Span::Month, month, spans.back().next, next, Contents()});
    }
    spans.push_back({Span::Future, QDate(), spans.back().next, endOfTimes, Contents()});
    return spans;
}

QString readParts(const Place& place, std::vector<Part>* parts)
{
    std::vector<ArchivePartitions::Partition> partitions;
    if (ArchiveSchema::isPostgres(place.db)) {
        const QString error = ArchivePartitions::read(place.db, &partitions);
        if (!error.isEmpty())
            return error;
    }
    parts->assign(std::max<std::size_t>(partitions.size(), 1), Part());
    parts->front().server = place.server;
    parts->front().table = QStringLiteral("archive.master_table"); // unless there are partitions
    for (std::size_t i = 0; i < partitions.size(); ++i) {
        const ArchivePartitions::Partition& partition = partitions[i];
        Part& part = (*parts)[i];
        part.kind = partition.rest ? Part::Rest : Part::Range;
        part.server = place.server;
        part.table = partition.table;
        part.foreign = partition.foreign;
        part.first = partition.first;
        part.next = partition.next;
    }
    return {};
}

QString measure(const Place& place, const QDate& today, Part* part)
{
    const QSqlDatabase& db = place.db;
    Contents& contents = part->contents;
    contents = Contents();
    part->spans.clear();
    qint64 estimate = -1;
    bool there = true;
    QString error = ArchiveSchema::isPostgres(db) ? readSize(db, part, &estimate, &there) : QString();
    if (!error.isEmpty() || !there)
        return error;
    const bool counted = part->kind != Part::Range || estimate < 0;
    QSqlQuery query(db);
    if (!query.exec(steppingStatement(part->table, part->kind == Part::Range && counted)) || !query.next()) {
        error = failureOf(query);
    } else {
        contents = contentsOf(query);
        contents.counted = counted;
        if (!counted)
            contents.reports = estimate;
        if (part->kind != Part::Range)
            error = measureSpans(db, today, part);
    }
    if (!error.isEmpty() && ArchiveSchema::isPostgres(db) && readSize(db, part, &estimate, &there).isEmpty() &&
        !there) {
        contents = Contents();
        part->spans.clear();
        return {};
    }
    return error;
}
