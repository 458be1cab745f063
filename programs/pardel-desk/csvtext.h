#pragma once

#include <QString>
#include <QStringList>

/**
 * A line of comma-separated values as RFC 4180 has it, with its line end: fields with a comma, a quote or a line break
 * go in quotes, and quotes in them are doubled.
 */
QString csvLine(const QStringList& fields);
