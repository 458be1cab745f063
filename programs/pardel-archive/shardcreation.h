#pragma once

#include <QStringList>

QT_BEGIN_NAMESPACE
class QSqlDatabase;
QT_END_NAMESPACE

/**
 * Makes the tables of an archive whose history shards share (ArchiveShards), those that are missing: first
 * archive.master_table on each shard, then everything on the first server. Ended in the middle, it can be run again
 * with the same shards; where all is there, it does nothing.
 *
 * @param shards how to connect to each, as libpq takes it: host is needed; the database and the user are by default
 *               those of the first server
 * @param made receives the names of the tables that have been made on the first server
 * @param lacking as ArchiveSchema::create
 * @return what went wrong, with nothing made on the first server, or nothing
 */
QString createWithShards(QSqlDatabase& db, const QStringList& shards, QStringList* made, QString* lacking);
