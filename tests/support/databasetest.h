#pragma once

#include <QObject>
#include <QSqlDatabase>
#include <QStringList>
#include <QTemporaryDir>

/**
 * Base of tests whose rules hold on both kinds of database: runs every test function on "SQLite" and on "PostgreSQL",
 * and fails those during which Qt would print anything on standard error.
 *
 * Both databases have a schema named archive and what the statements given have made, once for all functions. The
 * connections are opened through an INI file. PostgreSQL is the server that scripts/with-postgres started, no other.
 */
class DatabaseTest : public QObject
{
    Q_OBJECT

public:
    explicit DatabaseTest(const QStringList& statements) : m_statements(statements) {}

protected:
    QSqlDatabase db; ///< The open connection of the current row.

    /** Runs a statement; fails the function if that fails. */
    void execute(const QString& statement);

    /** Stops PostgreSQL's server for good, or closes SQLite's file: for the last function of a test. */
    void loseDatabase();

private Q_SLOTS:
    void initTestCase_data();
    void initTestCase();
    void init();
    void cleanup();

private:
    QStringList m_statements;
    QTemporaryDir m_folder;
};
