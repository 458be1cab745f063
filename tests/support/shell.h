#pragma once

#include <QByteArray>
#include <QString>

/** How a command ended. */
struct Outcome
{
    int status = -1;
    QByteArray output;
    QByteArray errors;
};

/**
 * Runs a shell's command in tests/data, in which $archive, $decode, $import, $receive and $simulate are the programs,
 * and $db the options that name the database of @p iniFile.
 */
Outcome runShell(const QString& command, const QByteArray& input = QByteArray(), const QString& iniFile = QString());

/**
 * Runs a program as the current row says:
 *
 * arguments  $db among them is as above
 * input      hex of raw bytes behind x, otherwise the text itself
 * status     its exit status; of 2, a single line on standard error tells why if that cell is without "..."
 * output     parts of it in their order, "..." between them; nothing if it is empty
 * errors     likewise
 */
void runRow(const char* program, const QString& iniFile = QString());
