#include "archiverun.h"

#include "archiveconnection.h"
#include "archiveschema.h"
#include "archivestatus.h"
#include "commandline.h"
#include "output.h"
#include "partitions.h"
#include "retention.h"
#include "shardcreation.h"
#include "shards.h"

#include <QDateTime>
#include <QFileInfo>
#include <QSqlDatabase>
#include <QSqlQuery>

#include <algorithm>
#include <memory>

#include <unistd.h>

namespace {

class Run
{
public:
    Run(const ArchiveConnection& archive, const ArchiveOptions& options)
        : m_options(options), m_file(archive.file()), m_db(archive.database()), m_output(STDOUT_FILENO)
    {}

    int run();

private:
    QString create();
    QString status();
    QString partition();
    QString retain();
    QString findPlaces();
    QString partition(Place& place);
    QString retain(Place& place, const QDate& oldestKept, std::vector<Part>* all);
    QString moveMonth(Place& place, const Span& month, bool* moved);
    QString retainPartition(Place& place, Part& part, const QDate& oldestKept);
    QString deleteFrom(const Place& place, Part& part, const QDate& oldestKept);
    /// Through which reports come to a place; null where they come to it themselves.
    const QSqlDatabase* firstOf(const Place& place) const { return place.server.isEmpty() ? nullptr : &m_db; }
    QString shrinkFile();
    void tellWhatStays(const Part& part, const Span& span);
    void say(const QString& sentence) { m_output.write((sentence + QLatin1Char('\n')).toLocal8Bit()); }

    const ArchiveOptions m_options;
    const QString m_file; // of an SQLite archive
    const QDate m_today = QDateTime::currentDateTimeUtc().date();
    QSqlDatabase m_db;
    std::vector<std::unique_ptr<ShardConnection>> m_connections;
    std::vector<Place> m_places; // that hold reports
    Output m_output;
    bool m_somethingGoes = false;
};

int Run::run()
{
    QString error;
    if (!m_file.isEmpty()) // an import goes from transaction to transaction with hardly a pause
        QSqlQuery(m_db).exec(QStringLiteral("PRAGMA busy_timeout = 60000"));
    if (m_options.command != ArchiveOptions::Create)
        error = ArchiveSchema::check(m_db);
    if (error.isEmpty() && m_options.command != ArchiveOptions::Create)
        error = findPlaces();
    if (error.isEmpty()) {
        switch (m_options.command) {
        case ArchiveOptions::Create: error = create(); break;
        case ArchiveOptions::Status: error = status(); break;
        case ArchiveOptions::Partition: error = partition(); break;
        case ArchiveOptions::Retain: error = retain(); break;
        }
    }
    if (error.isEmpty() && m_output.failed() && !m_output.readerGone())
        error = QStringLiteral("cannot write to standard output: %1").arg(m_output.errorString());
    if (error.isEmpty())
        return Done;
    tellError(error);
    return Failed;
}

QString Run::findPlaces()
{
    std::vector<ArchiveShards::Shard> shards;
    const QString error = m_file.isEmpty() ? ArchiveShards::read(m_db, &shards) : QString();
    for (const ArchiveShards::Shard& shard : shards) {
        m_connections.push_back(std::make_unique<ShardConnection>(m_db, shard));
        if (!m_connections.back()->error().isEmpty())
            return QStringLiteral("cannot connect to the shard %1: %2")
                .arg(shard.server, m_connections.back()->error());
        m_places.push_back({shard.server, m_connections.back()->database()});
    }
    if (shards.empty())
        m_places.push_back({QString(), m_db});
    return error;
}

QString Run::create()
{
    QStringList made;
    QString lacking;
    if (!m_options.shards.isEmpty() && !m_file.isEmpty())
        return QStringLiteral("--shard needs PostgreSQL; group %1 in %2 names the SQLite archive %3")
            .arg(m_options.group, m_options.iniFile, m_file);
    const QString error = m_options.shards.isEmpty() ? ArchiveSchema::create(m_db, &made, &lacking)
                                                     : createWithShards(m_db, m_options.shards, &made, &lacking);
    if (!error.isEmpty())
        return QStringLiteral("cannot make the tables, and has made none: %1").arg(error);
    say(made.isEmpty() ? QStringLiteral("all tables were there already")
                       : QStringLiteral("made %1").arg(made.join(QLatin1String(", "))));
    if (!m_file.isEmpty())
        say(QStringLiteral("the archive lies in %1").arg(m_file));
    if (!lacking.isEmpty())
        return QStringLiteral("cannot add the column changed and its index to archive.lastdata: %1 (reports are stored "
                              "without them, but no desk is told of them: run it as the owner of archive.lastdata)")
            .arg(lacking);
    return {};
}

QString Run::status()
{
    ArchiveStatus status;
    const QString error = readStatus(m_db, m_places, m_file, m_today, &status);
    if (!error.isEmpty())
        return QStringLiteral("cannot read the archive: %1").arg(error);
    m_output.write(m_options.json ? statusJson(status) : statusText(status, m_today).toLocal8Bit());
    return {};
}

QString Run::partition()
{
    QString error;
    for (Place& place : m_places) {
        if (error.isEmpty())
            error = partition(place);
    }
    return error;
}

QString Run::partition(Place& place)
{
    std::vector<Part> parts;
    QString error = readParts(place, &parts);
    if (!error.isEmpty())
        return QStringLiteral("cannot read the archive: %1").arg(error);
    Part& rest = parts.back();
    if (rest.kind == Part::Rest)
        error = measure(place, m_today, &rest);
    if (!error.isEmpty())
        return QStringLiteral("cannot read the archive: %1").arg(error);
    if (rest.kind == Part::Whole)
        say(QStringLiteral("nothing to do: archive.master_table is one table and has no partitions"));
    else if (rest.kind == Part::Range)
        say(QStringLiteral("nothing to do: archive.master_table has no default partition"));
    if (rest.kind != Part::Rest)
        return {};

    std::vector<Span> staying;
    for (const Span& span : rest.spans) {
        bool moved = false;
        if (span.kind == Span::Month)
            error = moveMonth(place, span, &moved);
        if (!error.isEmpty())
            return QStringLiteral("cannot move the reports of %1: %2 (what was moved before stays so)")
                .arg(spanText(span), error);
        if (!moved)
            staying.push_back(span);
    }
    if (staying.size() == rest.spans.size())
        say(place.server.isEmpty() ? QStringLiteral("nothing to move")
                                   : QStringLiteral("nothing to move on %1").arg(place.server));
    for (const Span& span : staying)
        tellWhatStays(rest, span);
    return {};
}

/// @param moved stays false where the month could not be made, as other tables are in the way
QString Run::moveMonth(Place& place, const Span& month, bool* moved)
{
    QString error = ArchivePartitions::makeMonth(place.db, month.month, firstOf(place));
    std::vector<Part> parts;
    if (error.isEmpty())
        error = readParts(place, &parts);
    const QString table = ArchivePartitions::monthTable(month.month);
    const auto made =
        std::find_if(parts.begin(), parts.end(), [&table](const Part& part) { return part.table == table; });
    *moved = made != parts.end();
    if (*moved)
        say(QStringLiteral("moved %1 into %2").arg(reportsText(month.contents), partText(*made)));
    return error;
}

void Run::tellWhatStays(const Part& part, const Span& span)
{
    QString why;
    switch (span.kind) {
    case Span::WithoutTime:
        why =
            QStringLiteral("without a time (0, -1 or before %1)").arg(monthText(ArchivePartitions::oldestDay(m_today)));
        break;
    case Span::Month:
        why = QStringLiteral("of %1, as %2 is no partition or another partition has a part of that month")
                  .arg(spanText(span), ArchivePartitions::monthTable(span.month));
        break;
    case Span::Future:
        why = QStringLiteral("of the far future (after %1)").arg(monthText(ArchivePartitions::newestDay(m_today)));
        break;
    }
    say(QStringLiteral("stay in %1: %2 %3").arg(partText(part), reportsText(span.contents), why));
}

QString Run::retain()
{
    const QDate oldestKept = ArchivePartitions::monthOf(m_today).addMonths(1 - m_options.months);
    std::vector<Part> parts;
    for (Place& place : m_places) {
        const QString error = retain(place, oldestKept, &parts);
        if (!error.isEmpty())
            return error;
    }
    say(m_somethingGoes
            ? QStringLiteral("%1: the months from %2 on")
                  .arg(m_options.dryRun ? QStringLiteral("would stay") : QStringLiteral("stay"), monthText(oldestKept))
            : QStringLiteral("nothing is older than %1").arg(monthText(oldestKept)));
    for (const Part& part : parts) {
        for (const Span& span : part.spans) {
            if (span.kind != Span::Month)
                tellWhatStays(part, span);
        }
    }
    return m_file.isEmpty() || m_options.dryRun ? QString() : shrinkFile();
}

QString Run::retain(Place& place, const QDate& oldestKept, std::vector<Part>* all)
{
    std::vector<Part> parts;
    QString error = readParts(place, &parts);
    if (!error.isEmpty())
        return QStringLiteral("cannot read the archive: %1").arg(error);
    for (Part& part : parts) {
        error =
            part.kind == Part::Range ? retainPartition(place, part, oldestKept) : deleteFrom(place, part, oldestKept);
        if (!error.isEmpty())
            return QStringLiteral("%1 (what went before is gone)").arg(error);
    }
    all->insert(all->end(), parts.begin(), parts.end());
    return {};
}

QString Run::retainPartition(Place& place, Part& part, const QDate& oldestKept)
{
    const Fate fate = fateOf(part, oldestKept);
    if (!fate.whyStays.isEmpty())
        say(QStringLiteral("%1 stays: %2").arg(partText(part), fate.whyStays));
    if (!fate.goes)
        return {};
    m_somethingGoes = true;
    QString error = measure(place, m_today, &part);
    if (error.isEmpty() && !m_options.dryRun)
        error = ArchivePartitions::drop(place.db, part.table, firstOf(place));
    if (!error.isEmpty())
        return QStringLiteral("cannot drop %1: %2").arg(partText(part), error);
    say(QStringLiteral("%1 %2: %3, %4")
            .arg(m_options.dryRun ? QStringLiteral("would drop") : QStringLiteral("dropped"), partText(part),
                 reportsText(part.contents), sizeText(part.bytes)));
    return {};
}

QString Run::deleteFrom(const Place& place, Part& part, const QDate& oldestKept)
{
    QString error = measure(place, m_today, &part);
    if (!error.isEmpty())
        return QStringLiteral("cannot read %1: %2").arg(partText(part), error);
    for (Span& span : part.spans) {
        if (span.kind != Span::Month || span.month >= oldestKept)
            continue;
        m_somethingGoes = true;
        if (!m_options.dryRun)
            error = deleteMonth(place.db, part.table, span, &span.contents.reports);
        if (!error.isEmpty())
            return QStringLiteral("cannot delete %1 from %2: %3").arg(spanText(span), partText(part), error);
        say(QStringLiteral("%1 %2 of %3 from %4")
                .arg(m_options.dryRun ? QStringLiteral("would delete") : QStringLiteral("deleted"),
                     reportsText(span.contents), spanText(span), partText(part)));
    }
    return {};
}

QString Run::shrinkFile()
{
    const qint64 before = QFileInfo(m_file).size();
    const QString error = giveSpaceBack(m_db, m_file);
    const qint64 after = QFileInfo(m_file).size();
    if (after < before)
        say(QStringLiteral("%1 has given back %2 and takes %3 now")
                .arg(m_file, sizeText(before - after), sizeText(after)));
    const qint64 left = freeBytes(m_db);
    if (left > 0)
        say(QStringLiteral("%1 of %2 are free for new reports").arg(sizeText(left), m_file));
    return error.isEmpty()
               ? QString()
               : QStringLiteral("cannot give back the space that is free in %1: %2 (new reports will use it)")
                     .arg(m_file, error);
}

} // namespace

int runArchive(const ArchiveOptions& options)
{
    const ArchiveConnection archive(options.iniFile, options.group);
    if (!archive.error().isEmpty()) {
        tellError(archive.error());
        return Failed;
    }
    Run run(archive, options);
    return run.run();
}
