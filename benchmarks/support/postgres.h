#pragma once

#include <QString>

/** Whether scripts/with-postgres has started a server for this process. */
bool hasPostgres();

/** Makes a database on that server and writes the settings group that describes it. @return whether it is there */
bool makePostgresDatabase(const QString& name, const QString& iniFile, const QString& group);

/** Writes the settings group that describes this SQLite file. */
void describeSqliteFile(const QString& path, const QString& iniFile, const QString& group);
