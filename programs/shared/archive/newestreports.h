#pragma once

#include "archivestore.h"

#include <functional>
#include <vector>

/**
 * What becomes of late reports where archive.master_table lies on shards: a look-up for each of them would take a
 * question to another server, some milliseconds. Nearly all can be settled by what the newest reports of their objects
 * have, which one statement tells of many objects.
 */
namespace NewestReports {

/** A part of a last state that a report of the past would change. */
struct Late
{
    LastState::Item* item;
    qint64 last; ///< The time of its object's last state.
};

/**
 * Finds out which of these are beaten by a newer report, and which by none.
 *
 * @param beaten is called for each that is beaten, with the time of a report that does it
 * @return those of which it does not know
 */
std::vector<LastState::Item*> settle(Transaction& transaction, std::vector<Late> late,
                                     const std::function<void(LastState::Item*, qint64)>& beaten);

} // namespace NewestReports
