#pragma once

#include "testfiles.h"

#include <QSqlDatabase>
#include <QTemporaryDir>

/**
 * Makes an INI file whose group Db names a database: of the server that scripts/with-postgres started, or an SQLite
 * file.
 */
void writeDatabaseIni(const QString& iniFile, const QString& type, const QString& baseName);

/** Opens the database of such a file under this name, or ends the test. */
QSqlDatabase openDatabase(const QString& iniFile, QString name);

/** Runs a statement; fails the function if that fails. */
void execute(const QSqlDatabase& db, const QString& statement);

/** All values that a query gives, row by row, with spaces between; "nothing" if there are none, or it fails. */
QByteArray valuesOf(const QSqlDatabase& db, const QString& query);

/**
 * Base of tests whose rules hold on both kinds of database: runs every test function on "SQLite" and on "PostgreSQL",
 * and fails those during which Qt would print anything on standard error.
 *
 * Both databases have a schema named archive and what the script made, once for all functions. The connections are
 * opened through an INI file. PostgreSQL is the server that scripts/with-postgres started, no other.
 */
class DatabaseTest : public QObject
{
    Q_OBJECT

public:
    /** @p script is a file of tests/data; each of its statements ends with a semicolon at the end of a line. */
    explicit DatabaseTest(const char* script = "import.sql") : m_script(script) {}

protected:
    QSqlDatabase db; ///< The open connection of the current row.
    QString iniFile; ///< Describes it in the group Db.

    /** The functions above, with db. */
    void execute(const QString& statement) { ::execute(db, statement); }
    void execute(const char* statement) { ::execute(db, QLatin1String(statement)); }
    QByteArray valuesOf(const QString& query) const { return ::valuesOf(db, query); }
    QByteArray valuesOf(const char* query) const { return ::valuesOf(db, QLatin1String(query)); }

    /** Opens another connection to the database of the current row. */
    QSqlDatabase openAnother(const QString& name) const { return openDatabase(iniFile, name); }

    /** Puts bare reports into archive.master_table: one each second from @p time on, of @p objects in turn. */
    void insertReports(qint64 time, int count = 1, int object = 1, int objects = 1);

    /** Makes the archive's tables anew, without anything in them. */
    void makeArchiveAnew();

    /** What runShell() gives for the database of the current row, as one text: output, errors, "status N". */
    QByteArray run(const QByteArray& command, const QByteArray& input = QByteArray()) const;

    /** Fails the function if run() does not give these parts, as hasParts() has them. */
    void tells(const QByteArray& command, const QByteArray& parts, const QByteArray& input = QByteArray()) const;

    /** Stops PostgreSQL's server for good, or closes SQLite's file: for the last function of a test. */
    void loseDatabase();

private Q_SLOTS:
    void initTestCase_data();
    void init();
    void cleanup();

private:
    const char* m_script;
    QTemporaryDir m_folder;
};
