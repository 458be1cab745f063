#pragma once

#include <Pardel/pardel_export.h>

#include <QSqlError>
#include <QString>

QT_BEGIN_NAMESPACE
class QSettings;
QT_END_NAMESPACE

/** @file
 * The connection to the database that an application's settings name.
 */

/**
 * Registers and opens the database connection that a group of settings describes.
 *
 * | Key           | Type    | Default     | Meaning                                                              |
 * |---------------|---------|-------------|----------------------------------------------------------------------|
 * | "BaseIni"     | string  | empty       | a second INI file from which all other keys of the group are read    |
 * | "BaseName"    | string  | "Telvar"    | PostgreSQL database or SQLite file; only where @p baseName is empty  |
 * | "SqlHostName" | string  | "localhost" | PostgreSQL host                                                      |
 * | "SqlLogin"    | string  | "postgres"  | PostgreSQL user                                                      |
 * | "SqlPassword" | string  | empty       | PostgreSQL password                                                  |
 * | "SqlPort"     | integer | -1          | PostgreSQL port; -1 is the driver's, text that is no number is 0     |
 * | "DBType"      | string  | "postgres"  | "postgres" (driver "QPSQL7") or "sqlite3" (driver "QSQLITE"), exactly |
 *
 * A "BaseIni" that names no existing file is ignored; in the second file "BaseIni" is not read again, and a key that it
 * lacks has its default, whatever the first file says. It is read as UTF-8 where that is valid, else as Latin-1,
 * whatever codec the settings have. An INI file needs quotes around values with a comma or semicolon, such as a
 * password. An SQLite file whose name does not begin with "/" lies in the executable's directory. The settings keep the
 * group that they had.
 *
 * Qt 6 knows PostgreSQL's driver as "QPSQL" only. There the library answers for "QPSQL7" with that driver from its
 * loading on, also where an application calls QSqlDatabase::addDatabase itself.
 *
 * @param connectionName the name under which the connection is registered (a connection of that name is replaced, as
 *        QSqlDatabase::addDatabase does); an empty one receives the database name first, even when opening fails
 * @param settings the file that is searched first, which an application that opens it in QSettings::IniFormat has to
 *        trust (see pardelIniFormat)
 * @param group the group of the keys in it
 * @param baseName the database; an empty one is read from "BaseName"
 * @return the connection's last error after the attempt; of type QSqlError::NoError when it is open. An unknown
 *         "DBType" registers nothing and gives the error of an invalid connection ("Driver not loaded").
 */
PARDEL_EXPORT QSqlError openDataBaseBySettings(QString& connectionName, QSettings& settings, QString const& group,
                                               QString baseName);
