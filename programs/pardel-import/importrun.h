#pragma once

#include <QString>
#include <QStringList>

/** What pardel-import has been asked to do. */
struct ImportOptions
{
    QString iniFile;
    QString group;
    bool create = false;
    bool hex = false;
    bool convert = true; ///< Coordinates are packed degrees and minutes; the archive holds decimal degrees.
    QStringList files;   ///< "-" is standard input, and so is an empty list.
};

/**
 * Decodes all files and stores their reports in the archive of the database that the settings name.
 *
 * @return an ExitStatus: Incomplete when a packet was rejected or something skipped, Failed when the database could not
 *         be opened or written or a file not read; what was committed stays, and running it again finishes the job
 */
int importFiles(const ImportOptions& options);
