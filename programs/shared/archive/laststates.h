#pragma once

#include "archivestore.h"

#include <QHash>

/**
 * Keeps archive.lastdata what is known of every object: the time of its newest report, the position of the newest
 * report that had one, every sensor from the newest report that had it.
 *
 * Of two reports of one time that with the greater fingerprint counts as the newer, so that it makes no difference in
 * which order reports come. Reports without time or with one that is too far in the future count for nothing.
 *
 * What a late report brings is compared with archive.master_table: it counts if fewer than 10,000 reports of the object
 * are newer (up to its last state) and none of them has that position or sensor. Where nothing is known it always
 * counts.
 */
class LastStates
{
public:
    /**
     * Takes rows that are in archive.master_table now. Rows of archive.lastdata are locked until the transaction ends;
     * those whose time lies behind @p horizon count as if they were not there.
     */
    void update(Transaction& transaction, ArchiveStore& store, const ArchiveBatch& batch, qint64 horizon);

private:
    void markBeaten(Transaction& transaction, std::vector<LastState>& states, const std::vector<qint64>& times,
                    bool spread);
    void compare(Transaction& transaction, const std::vector<LastState::Item*>& late);

    // By object and type, the time of a report that is newer than any that could still count. It only ever grows, and
    // saves all but the first search where many old reports come.
    QHash<quint64, qint64> m_newer;
};
