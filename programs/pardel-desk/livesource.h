#pragma once

#include <QString>

QT_BEGIN_NAMESPACE
class QSettings;
class QSqlDatabase;
QT_END_NAMESPACE

/** Where the desk's live data come from. */
enum class LiveSource
{
    Terminals, ///< They connect to the desk.
    Archive,   ///< Others store what they send; the desk hears of it.
};

/**
 * What the key "Source" of the group "Live" says: "terminals", "archive", or "auto", as without the key: the archive if
 * somebody fills it now (ArchiveFiller), else terminals.
 *
 * @param complaint receives a sentence if the key says something else, which counts as "auto"; stays as it is otherwise
 */
LiveSource chooseLiveSource(const QSettings& ini, const QSqlDatabase& archive, QString* complaint);
