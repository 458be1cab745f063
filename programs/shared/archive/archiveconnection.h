#pragma once

#include <QSqlDatabase>
#include <QString>

/**
 * The archive that a group of an INI file names, opened for a program: the file and the group have to be there, and an
 * SQLite database gets its archive attached. Closed with the object.
 */
class ArchiveConnection
{
public:
    /** @p baseName the database; empty: the one that the group names. */
    ArchiveConnection(const QString& iniFile, const QString& group, const QString& baseName = QString());
    ~ArchiveConnection();
    Q_DISABLE_COPY_MOVE(ArchiveConnection)

    /** What kept it from being opened, as one sentence with what to do; empty when it is open. */
    QString error() const { return m_error; }
    const QSqlDatabase& database() const { return m_db; }
    /** The file of an SQLite archive; empty on PostgreSQL. */
    QString file() const { return m_file; }

private:
    void open(const QString& iniFile, const QString& group, const QString& baseName);

    QString m_error;
    QString m_name; // of the connection
    QString m_file;
    QSqlDatabase m_db;
};
