#pragma once

#include <QByteArray>
#include <QStringList>

/** How a command ended. */
struct Outcome
{
    int status = -1;
    QByteArray output;
    QByteArray errors;
};

/**
 * Runs a shell's command in tests/data, in which $archive, $decode, $import and $simulate are the programs, and
 * @p arguments $1 and so on.
 */
Outcome runShell(const QString& command, const QByteArray& input = QByteArray(), const QStringList& arguments = {});
