#pragma once

#include "captureframer.h"
#include "decodedpacket.h"

#include <QString>
#include <QStringList>

#include <chrono>

/** What pardel-import has been asked to do. */
struct ImportOptions
{
    QString iniFile;
    QString group;
    bool create = false;
    CaptureFramer::Form form = CaptureFramer::Raw;
    DecodeSettings decode{true};                         ///< The archive holds decimal degrees.
    std::chrono::seconds ahead = std::chrono::hours(24); ///< Of the clock here, up to which a report is believed.
    QStringList files;                                   ///< "-" is standard input, and so is an empty list.
};

/**
 * Decodes all files and stores their reports, within a second of their arrival, in the archive of the database that the
 * settings name. SIGTERM and SIGINT end it as the end of the input does. Says on standard error what was stored and
 * what was not.
 *
 * @return an ExitStatus: Incomplete when a packet was damaged or rejected or something skipped, or a signal came before
 *         the end of the files; Failed when the database could not be opened or written or a file not read; what was
 *         committed stays
 */
int importFiles(const ImportOptions& options);
