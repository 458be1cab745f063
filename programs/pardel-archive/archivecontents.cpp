#include "archivecontents.h"

#include "archiveschema.h"
#include "partitions.h"

#include <QSqlDatabase>
#include <QSqlError>
#include <QSqlQuery>
#include <QStringList>
#include <QVariant>

#include <algorithm>
#include <limits>

namespace {

constexpr qint64 countedUpTo = qint64(1) << 30;                          // bytes; some seconds of counting
constexpr qint64 beginningOfTimes = -std::numeric_limits<qint64>::max(); // PostgreSQL has no literal of the least one
constexpr qint64 endOfTimes = std::numeric_limits<qint64>::max();

QString failureOf(const QSqlQuery& query)
{
    return ArchiveSchema::errorText(query.lastError());
}

/// Steps through the index from object to object, and in each from range to range that has something, and looks at the
/// ends of that: this costs by the objects and not by the reports, of which only the count takes all.
QString contentsStatement(const QString& table, const std::vector<Span>& spans, bool count)
{
    QStringList ranges;
    for (const Span& span : spans)
        ranges += QStringLiteral("(%1, %2)").arg(span.first).arg(span.next);
    const QString inRange =
        QStringLiteral("FROM %1 WHERE id_object = id AND time_unix >= oldest AND time_unix < high").arg(table);
    return QStringLiteral(
               "WITH RECURSIVE ranges(low, high) AS (VALUES %2), "
               "objects(id) AS (SELECT min(id_object) FROM %1 UNION ALL SELECT (SELECT min(id_object) FROM %1 "
               "WHERE id_object > id) FROM objects WHERE id IS NOT NULL), "
               "steps(id, oldest) AS (SELECT id, (SELECT min(time_unix) FROM %1 WHERE id_object = id) FROM objects "
               "WHERE id IS NOT NULL UNION ALL SELECT id, (SELECT min(time_unix) FROM %1 WHERE id_object = steps.id "
               "AND time_unix >= (SELECT high FROM ranges WHERE steps.oldest >= low AND steps.oldest < high)) "
               "FROM steps WHERE oldest IS NOT NULL) "
               "SELECT low, sum(reports), count(*), min(oldest), max(newest) FROM (SELECT low, oldest, %3 AS reports, "
               "(SELECT max(time_unix) %4) AS newest FROM steps JOIN ranges ON oldest >= low AND oldest < high) "
               "AS parts GROUP BY low")
        .arg(table, ranges.join(QLatin1String(", ")),
             count ? QStringLiteral("(SELECT count(*) %1)").arg(inRange) : QStringLiteral("0"), inRange);
}

/// The same by one pass over all of a PostgreSQL table. Where all is counted that costs little more, and does not grow by
/// the objects times the months.
QString contentsStatementOfOnePass(const QString& table, const std::vector<Span>& spans)
{
    QStringList firsts;
    for (const Span& span : spans)
        firsts += QString::number(span.first);
    const QString all = firsts.join(QLatin1String(", "));
    firsts.removeFirst();
    return QStringLiteral("SELECT (ARRAY[%2]::bigint[])[span + 1], sum(reports), count(*), min(oldest), max(newest) "
                          "FROM (SELECT width_bucket(time_unix, ARRAY[%3]::bigint[]) AS span, id_object, "
                          "count(*) AS reports, min(time_unix) AS oldest, max(time_unix) AS newest FROM %1 "
                          "GROUP BY 1, 2) AS parts GROUP BY span")
        .arg(table, all, firsts.join(QLatin1String(", ")));
}

QString readSpans(const QSqlDatabase& db, const QString& statement, std::vector<Span>* spans)
{
    QSqlQuery query(db);
    query.setForwardOnly(true);
    if (!query.exec(statement))
        return failureOf(query);
    while (query.next()) {
        const qint64 first = query.value(0).toLongLong();
        const auto span =
            std::find_if(spans->begin(), spans->end(), [first](const Span& one) { return one.first == first; });
        if (span == spans->end())
            continue;
        span->contents.reports = query.value(1).toLongLong();
        span->contents.objects = query.value(2).toLongLong();
        span->contents.oldest = query.value(3).toLongLong();
        span->contents.newest = query.value(4).toLongLong();
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

/// The reports and spans of a table of all times.
QString measureSpans(const QSqlDatabase& db, const QDate& today, Part* part)
{
    std::vector<Span> spans = allSpans(today);
    const QString error = readSpans(db,
                                    ArchiveSchema::isPostgres(db) ? contentsStatementOfOnePass(part->table, spans)
                                                                  : contentsStatement(part->table, spans, true),
                                    &spans);
    for (const Span& span : spans) {
        part->contents.reports += span.contents.reports;
        if (span.contents.objects > 0)
            part->spans.push_back(span);
    }
    return error;
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

QString readParts(const QSqlDatabase& db, std::vector<Part>* parts)
{
    std::vector<ArchivePartitions::Partition> partitions;
    if (ArchiveSchema::isPostgres(db)) {
        const QString error = ArchivePartitions::read(db, &partitions);
        if (!error.isEmpty())
            return error;
    }
    parts->assign(std::max<std::size_t>(partitions.size(), 1), Part());
    parts->front().table = QStringLiteral("archive.master_table"); // unless there are partitions
    for (std::size_t i = 0; i < partitions.size(); ++i) {
        const ArchivePartitions::Partition& partition = partitions[i];
        Part& part = (*parts)[i];
        part.kind = partition.rest ? Part::Rest : Part::Range;
        part.table = partition.table;
        part.foreign = partition.foreign;
        part.first = partition.first;
        part.next = partition.next;
    }
    return {};
}

QString measure(const QSqlDatabase& db, const QDate& today, Part* part)
{
    Contents& contents = part->contents;
    contents = Contents();
    part->spans.clear();
    qint64 estimate = -1;
    bool there = true;
    QString error = ArchiveSchema::isPostgres(db) ? readSize(db, part, &estimate, &there) : QString();
    if (!error.isEmpty() || !there)
        return error;
    contents.counted = part->kind != Part::Range || estimate < 0;

    const bool counted = contents.counted;
    std::vector<Span> whole{{Span::Month, QDate(), beginningOfTimes, endOfTimes, Contents()}};
    error = readSpans(db, contentsStatement(part->table, whole, counted && part->kind == Part::Range), &whole);
    contents = whole.front().contents;
    contents.counted = counted;
    if (!counted)
        contents.reports = estimate;
    if (part->kind != Part::Range && error.isEmpty())
        error = measureSpans(db, today, part);
    if (!error.isEmpty() && ArchiveSchema::isPostgres(db) && readSize(db, part, &estimate, &there).isEmpty() &&
        !there) {
        contents = Contents();
        part->spans.clear();
        return {};
    }
    return error;
}
