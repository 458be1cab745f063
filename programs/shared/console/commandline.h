#pragma once

#include <QString>
#include <QStringList>

#include <optional>

QT_BEGIN_NAMESPACE
class QCommandLineParser;
QT_END_NAMESPACE

/** How a tool ends. */
enum ExitStatus
{
    Done = 0,
    Incomplete = 1, ///< It ran, but not all of its input was good.
    Failed = 2,     ///< Wrong usage, unreadable input or unwritable output; a sentence on standard error says which.
};

/** Writes "NAME: @p sentence" and a line end to standard error, NAME being the application's name. */
void tellError(const QString& sentence);

/** Says what is wrong with the command line and where help is. @return Failed */
int wrongUsage(const QString& sentence);

/**
 * Parses @p arguments with @p parser, to which --help and --version (with the build identifier) are added.
 *
 * @return the exit status if the tool has to end at once: help or version were asked for and have been printed, or the
 *         usage is wrong and that has been told
 */
std::optional<int> parseCommandLine(QCommandLineParser& parser, const QStringList& arguments);
