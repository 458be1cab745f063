#pragma once

#include <QByteArrayList>
#include <QString>
#include <QTest>

/** The content of a file, by its path or its name in tests/data; "cannot read PATH" where that fails. */
QByteArray contentOf(const QString& path);

/** Makes a file of this content, or lets the test fail. */
void writeFile(const QString& path, const QByteArray& content);

/** The lines of a file in tests/data. */
QByteArrayList linesOf(const char* fileName);

/**
 * Adds a data row for every line "name | cell | cell" of a table in tests/data, whose first line names the columns:
 * "name" and those that cell() is to give.
 *
 * Cells are trimmed; \n, \r, \t and \0 in them stand for the characters that C++ means by these. Empty lines and lines
 * that begin with # are passed over.
 */
void addTableRows(const char* fileName);

/** The current row's cell in a column; empty where the line has no such cell. Without such a column the test aborts. */
QByteArray cell(const char* column);
QByteArray cell(int) = delete;
