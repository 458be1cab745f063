#pragma once

#include <QString>
#include <QStringList>

/** What pardel-archive has been asked to do. */
struct ArchiveOptions
{
    enum Command
    {
        Create,
        Status,
        Partition,
        Retain,
    };

    QString iniFile;
    QString group;
    Command command = Status;
    QStringList shards;  ///< Create: how to connect to each, as libpq takes it; empty for one server.
    bool json = false;   ///< Status: one JSON object instead of a table.
    int months = 0;      ///< Retain: how many stay, the present one counted; from 1.
    bool dryRun = false; ///< Retain: tells what would go, and changes nothing.
};

/**
 * Does it, and tells on standard output what has happened, each step when it has. A step is a transaction; ended in the
 * middle, the program can be run again and goes on.
 *
 * @return an ExitStatus: Done, or Failed with a sentence on standard error; steps done before stay done
 */
int runArchive(const ArchiveOptions& options);
