#pragma once

#include <QByteArrayList>
#include <QString>

/** The content of a file, by its path or its name in tests/data; "cannot read PATH" where that fails. */
QByteArray contentOf(const QString& path);

/** The lines of a file in tests/data. */
QByteArrayList linesOf(const char* fileName);

/**
 * Adds a data row for every line "name | cell | cell" of a table in tests/data.
 *
 * Cells are trimmed; \n, \r, \t and \0 in them stand for the characters that C++ means by these. Empty lines and lines
 * that begin with # are passed over.
 */
void addTableRows(const char* fileName);

/** A cell of the current row, counted from 0 behind the name; empty where the line has no such cell. */
QByteArray cell(int index);
