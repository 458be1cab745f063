#pragma once

#include <QByteArray>
#include <QString>

QT_BEGIN_NAMESPACE
class QProcess;
QT_END_NAMESPACE

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

/** Whether a text has these parts in their order, "..." between them; of no parts, whether it is empty. */
bool hasParts(const QByteArray& text, const QByteArray& parts);

/**
 * Starts such a command, whose process is that of the program behind "exec", and does not wait for it.
 */
void startShell(QProcess& process, const QString& command, const QString& iniFile = QString());

/**
 * Runs a program as the current row says:
 *
 * arguments  $db among them is as above
 * input      hex of raw bytes behind x, otherwise the text itself
 * status     its exit status; of 2, a single line on standard error tells why if that cell is without "..."
 * output     parts of it, as hasParts() has them
 * errors     likewise
 */
void runRow(const char* program, const QString& iniFile = QString());
