#pragma once

#include "archivecontents.h"

#include <QByteArray>
#include <QDate>
#include <QString>

#include <vector>

/** What an archive holds. */
struct ArchiveStatus
{
    bool postgres = false;
    QString file; ///< Of an SQLite archive.
    std::vector<Part> parts;
    Contents months;       ///< Of all parts, without the reports without time and of the future; objects is not set.
    qint64 reports = 0;    ///< All; an estimate where months is.
    qint64 lastStates = 0; ///< Rows of archive.lastdata: an object each.
    qint64 bytes = 0;      ///< On PostgreSQL of the reports and last states; on SQLite of the file.
    qint64 freeBytes = 0;  ///< SQLite: in the file, for new reports.
};

/**
 * @param db the archive's own database
 * @param places all that hold reports
 * @return what went wrong, or nothing
 */
QString readStatus(const QSqlDatabase& db, const std::vector<Place>& places, const QString& file, const QDate& today,
                   ArchiveStatus* status);

/** What is free in the file of an SQLite archive; 0 on PostgreSQL. */
qint64 freeBytes(const QSqlDatabase& db);

/** Lines for people. */
QString statusText(const ArchiveStatus& status, const QDate& today);

/** One JSON object, as the man page describes it, with a line end. */
QByteArray statusJson(const ArchiveStatus& status);

/** How a table is called: by its name, that of a shard with the server before it. */
QString partText(const Part& part);
/** A number with its thousands apart, an estimate with "~" before it. */
QString numberText(qint64 number, bool counted = true);
/** "1 report", "1,234 reports" */
QString reportsText(const Contents& contents);
/** "12.30 MiB" */
QString sizeText(qint64 bytes);
/** "2026-01" */
QString monthText(const QDate& month);
/** How a span is called: "2026-01", "no time", "far future". */
QString spanText(const Span& span);
