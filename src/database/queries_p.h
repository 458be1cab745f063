#pragma once

#include <QSqlDatabase>
#include <QSqlError>

/** What a caller is told of a connection that is not open: a query on it would report no error, and print a warning. */
QSqlError notOpen(const QSqlDatabase& db);
