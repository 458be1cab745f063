#include "archivestatus.h"

#include "archiveschema.h"
#include "partitions.h"

#include <QDateTime>
#include <QFileInfo>
#include <QLocale>
#include <QSqlDatabase>
#include <QSqlError>
#include <QSqlQuery>
#include <QStringList>
#include <QVariant>

#include <algorithm>

namespace {

const char* const columnNames[] = {"Reports", "Objects", "Oldest (UTC)", "Newest (UTC)"};

void add(const Contents& contents, Contents* sum)
{
    sum->reports += contents.reports;
    sum->counted = sum->counted && contents.counted;
    if (contents.objects == 0)
        return;
    const bool first = sum->objects == 0;
    sum->objects = 1; // some; which are the same in both is not known
    sum->oldest = first ? contents.oldest : std::min(sum->oldest, contents.oldest);
    sum->newest = first ? contents.newest : std::max(sum->newest, contents.newest);
}

QString firstNumber(const QSqlDatabase& db, const QString& statement, qint64* number)
{
    QSqlQuery query(db);
    if (!query.exec(statement) || !query.next())
        return ArchiveSchema::errorText(query.lastError());
    *number = query.value(0).toLongLong();
    return {};
}

QString timeText(qint64 time)
{
    const QDateTime moment = QDateTime::fromSecsSinceEpoch(time, Qt::UTC);
    return moment.isValid() ? moment.toString(QStringLiteral("yyyy-MM-dd HH:mm:ss")) : QString::number(time);
}

/// "1 report", "~1,234 reports"
QString countText(qint64 number, const char* what, bool counted = true)
{
    return numberText(number, counted) + QLatin1Char(' ') + QLatin1String(what) +
           (number == 1 ? QLatin1String("") : QLatin1String("s"));
}

QStringList contentsCells(const Contents& contents)
{
    const bool some = contents.objects > 0;
    return {numberText(contents.reports, contents.counted), numberText(contents.objects),
            some ? timeText(contents.oldest) : QString(), some ? timeText(contents.newest) : QString()};
}

QStringList header(const char* first)
{
    QStringList cells{QLatin1String(first)};
    for (const char* name : columnNames)
        cells += QLatin1String(name);
    return cells;
}

/// The first column to the left, the others to the right; a last one that is a remark stands as it is.
QString tableText(const std::vector<QStringList>& rows, int aligned)
{
    std::vector<int> widths(static_cast<std::size_t>(aligned), 0);
    for (const QStringList& row : rows) {
        for (int i = 0; i < aligned; ++i)
            widths[static_cast<std::size_t>(i)] =
                std::max(widths[static_cast<std::size_t>(i)], static_cast<int>(row[i].size()));
    }
    QString text;
    for (const QStringList& row : rows) {
        QString line = row.first().leftJustified(widths.front());
        for (int i = 1; i < aligned; ++i)
            line += QLatin1String("  ") + row[i].rightJustified(widths[static_cast<std::size_t>(i)]);
        for (int i = aligned; i < row.size(); ++i)
            line += QLatin1String("  ") + row[i];
        while (line.endsWith(QLatin1Char(' ')))
            line.chop(1);
        text += line + QLatin1Char('\n');
    }
    return text;
}

QString partitionsText(const ArchiveStatus& status)
{
    std::vector<QStringList> rows{header("Partition") + QStringList(QStringLiteral("Size"))};
    for (const Part& part : status.parts)
        rows.push_back(QStringList(partText(part)) + contentsCells(part.contents) + QStringList(sizeText(part.bytes)));
    return tableText(rows, 6);
}

QString spansText(const Part& part, const QDate& today)
{
    std::vector<QStringList> rows{header("Time")};
    for (const Span& span : part.spans) {
        QStringList row = QStringList(spanText(span)) + contentsCells(span.contents);
        if (part.kind == Part::Rest && span.kind == Span::Month)
            row += QStringLiteral("\"partition\" moves them");
        else if (span.kind == Span::WithoutTime)
            row += QStringLiteral("0, -1 or before %1").arg(monthText(ArchivePartitions::oldestDay(today)));
        else if (span.kind == Span::Future)
            row += QStringLiteral("after %1").arg(monthText(ArchivePartitions::newestDay(today)));
        rows.push_back(row);
    }
    return tableText(rows, 5);
}

} // namespace

qint64 freeBytes(const QSqlDatabase& db)
{
    qint64 pages = 0;
    qint64 pageSize = 0;
    if (ArchiveSchema::isPostgres(db) ||
        !firstNumber(db, QStringLiteral("PRAGMA archive.freelist_count"), &pages).isEmpty() ||
        !firstNumber(db, QStringLiteral("PRAGMA archive.page_size"), &pageSize).isEmpty())
        return 0;
    return pages * pageSize;
}

QString readStatus(const QSqlDatabase& db, const std::vector<Place>& places, const QString& file, const QDate& today,
                   ArchiveStatus* status)
{
    status->postgres = ArchiveSchema::isPostgres(db);
    status->file = file;
    QString error;
    for (const Place& place : places) {
        std::vector<Part> parts;
        if (error.isEmpty())
            error = readParts(place, &parts);
        for (Part& part : parts) {
            if (error.isEmpty())
                error = measure(place, today, &part);
        }
        status->parts.insert(status->parts.end(), parts.begin(), parts.end());
        if (!error.isEmpty())
            return place.server.isEmpty() ? error : QStringLiteral("%1: %2").arg(place.server, error);
    }
    for (const Part& part : status->parts) {
        status->reports += part.contents.reports;
        if (part.kind == Part::Range)
            add(part.contents, &status->months);
        for (const Span& span : part.spans) {
            if (span.kind == Span::Month)
                add(span.contents, &status->months);
        }
        status->bytes += part.bytes;
    }
    if (error.isEmpty())
        error = firstNumber(db, QStringLiteral("SELECT count(*) FROM archive.lastdata"), &status->lastStates);
    qint64 lastStateBytes = QFileInfo(file).size();
    if (error.isEmpty() && status->postgres)
        error = firstNumber(db, QStringLiteral("SELECT pg_total_relation_size('archive.lastdata')"), &lastStateBytes);
    status->bytes += lastStateBytes;
    status->freeBytes = freeBytes(db);
    return error;
}

QString statusText(const ArchiveStatus& status, const QDate& today)
{
    QString text = QStringLiteral("%1: %2, last states of %3, %4")
                       .arg(status.postgres ? QStringLiteral("The archive in PostgreSQL") : status.file,
                            countText(status.reports, "report", status.months.counted),
                            countText(status.lastStates, "object"), sizeText(status.bytes));
    if (status.freeBytes > 0)
        text += QStringLiteral(", of which %1 are free for new reports").arg(sizeText(status.freeBytes));
    text += QLatin1Char('\n');
    if (status.parts.front().kind != Part::Whole)
        text += QLatin1Char('\n') + partitionsText(status);
    for (const Part& part : status.parts) {
        if (part.spans.empty())
            continue;
        text += QLatin1Char('\n');
        if (part.kind == Part::Rest)
            text += QStringLiteral("In %1 lie\n").arg(partText(part));
        text += spansText(part, today);
    }
    if (!status.months.counted)
        text += QStringLiteral("\n~ is PostgreSQL's estimate, for partitions above 1 GiB; all else is counted.\n");
    return text;
}

QString partText(const Part& part)
{
    return part.server.isEmpty() ? part.table : QStringLiteral("%1: %2").arg(part.server, part.table);
}

QString numberText(qint64 number, bool counted)
{
    return (counted ? QString() : QStringLiteral("~")) + QLocale(QLocale::English).toString(number);
}

QString reportsText(const Contents& contents)
{
    return countText(contents.reports, "report", contents.counted);
}

QString sizeText(qint64 bytes)
{
    return QLocale(QLocale::English).formattedDataSize(bytes, 1);
}

QString monthText(const QDate& month)
{
    return month.toString(QStringLiteral("yyyy-MM"));
}

QString spanText(const Span& span)
{
    switch (span.kind) {
    case Span::WithoutTime: return QStringLiteral("no time");
    case Span::Month: return monthText(span.month);
    case Span::Future: break;
    }
    return QStringLiteral("far future");
}
