#pragma once

#include <Pardel/pardel_export.h>

#include <QByteArray>
#include <QSqlDatabase>
#include <QString>

QT_BEGIN_NAMESPACE
class QSqlError;
QT_END_NAMESPACE

/** @file
 * What applications ask of the system's database: users of "Connections", commands of "Commands".
 *
 * Each runs one query on an open connection. A row found returns its first column and leaves @p error alone (a NULL is
 * an empty text, or false). Without one a null text or false is returned and @p error, which may be null, receives the
 * cause; when the query itself succeeded that is an error of type QSqlError::NoError, which is how "not found" is told
 * from "failed". A connection that is not open is told as QSqlError::ConnectionError.
 */

/** The login of the user with this "Id". */
PARDEL_EXPORT QString userNameByID(unsigned int id, QSqlDatabase db, QSqlError* error);

/** The description of the user with this "Id". */
PARDEL_EXPORT QString userDescByID(unsigned int id, QSqlDatabase db, QSqlError* error);

/** Whether the user with this "Id" is an administrator. */
PARDEL_EXPORT bool userIsAdminByID(unsigned int id, QSqlDatabase db, QSqlError* error);

/**
 * The description of a terminal command of an object.
 *
 * @p name is UTF-8 and ends at its first zero byte. It is matched with SQL's like and not escaped, so that % and _ work
 * as wildcards, by which callers find a command; of several matching rows the first that the database returns wins.
 */
PARDEL_EXPORT QString descCommandByName(unsigned int objectId, QByteArray name, QSqlDatabase db, QSqlError* error);
