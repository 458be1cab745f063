#pragma once

#include <QDate>
#include <QSqlDatabase>
#include <QString>
#include <QtGlobal>

#include <vector>

/** What a range of times holds. */
struct Contents
{
    qint64 reports = 0;
    bool counted = true; ///< Else @p reports is PostgreSQL's estimate; the rest is exact in either case.
    qint64 objects = 0;  ///< Different ones; 0 where there is nothing.
    qint64 oldest = 0;   ///< Unix seconds; of no meaning without objects.
    qint64 newest = 0;
};

/** Times that are treated alike. */
struct Span
{
    enum Kind
    {
        WithoutTime, ///< 0, -1, or before the oldest month that has a partition: a clock that was not set.
        Month,
        Future, ///< After the newest month that has a partition: a clock that is wrong.
    };

    Kind kind;
    QDate month; ///< Its first day; only of a Month.
    qint64 first;
    qint64 next; ///< Both in Unix seconds; the first after it.
    Contents contents;
};

/** A database that holds reports. */
struct Place
{
    QString server; ///< The shard; empty for the archive's own server.
    QSqlDatabase db;
};

/** A table that holds reports. */
struct Part
{
    enum Kind
    {
        Range, ///< A partition of a range of times, as a rule a month's.
        Rest,  ///< The default partition.
        Whole, ///< All of archive.master_table: on SQLite, and on PostgreSQL where it is not partitioned.
    };

    Kind kind = Whole;
    QString server;       ///< That of its place.
    QString table;        ///< As SQL takes it, with its schema.
    bool foreign = false; ///< It lies on another server.
    qint64 first = 0;     ///< Unix seconds: a Range's first, and the first after it.
    qint64 next = 0;
    qint64 bytes = 0; ///< With its indexes, on PostgreSQL; else 0.
    Contents contents;
    std::vector<Span> spans; ///< What lies in the Rest or the Whole, by times; those that hold something.
};

/** The spans of all times, in their order, on a given day (UTC). */
std::vector<Span> allSpans(const QDate& today);

/**
 * The tables of a place that hold reports, in the order of their times, the rest at the end. Only kind, server, table
 * and range are set.
 *
 * @return what went wrong, or nothing
 */
QString readParts(const Place& place, std::vector<Part>* parts);

/**
 * Looks at what a table holds. All of it is exact but the number of reports in a partition above 1 GiB, which is
 * PostgreSQL's estimate if it has one. Takes time by the reports that are counted, and by the objects. A table that is
 * gone is empty.
 *
 * @return what went wrong, or nothing
 */
QString measure(const Place& place, const QDate& today, Part* part);
