#include "databasetest.h"

#include "shell.h"

#include <Pardel/connection.h>

#include <QProcess>
#include <QSettings>
#include <QSqlQuery>
#include <QSqlRecord>

namespace {

QByteArray printed;
QtMessageHandler handlerBefore = nullptr;

void collect(QtMsgType /*type*/, const QMessageLogContext& /*context*/, const QString& message)
{
    printed += message.toUtf8() + '\n';
}

const QString stopServer = qEnvironmentVariable("PARDEL_POSTGRES_STOP");

} // namespace

void writeDatabaseIni(const QString& iniFile, const QString& type, const QString& baseName)
{
    const QString text = QStringLiteral("[Db]\nDBType=%1\nBaseName=%2\nSqlHostName=%3\nSqlPort=%4\n");
    const QString host = qEnvironmentVariable("PGHOST");
    writeFile(iniFile, text.arg(type, baseName, host, qEnvironmentVariable("PGPORT")).toUtf8());
}

QSqlDatabase openDatabase(const QString& iniFile, QString name)
{
    QSettings settings(iniFile, QSettings::IniFormat);
    const QSqlError error = openDataBaseBySettings(name, settings, QStringLiteral("Db"), QString());
    if (error.type() != QSqlError::NoError)
        qFatal("%s", qPrintable(error.text()));
    return QSqlDatabase::database(name);
}

void execute(const QSqlDatabase& db, const QString& statement)
{
    QSqlQuery query(db);
    QVERIFY2(query.exec(statement), qPrintable(query.lastError().text()));
}

QByteArray valuesOf(const QSqlDatabase& db, const QString& query)
{
    QByteArrayList values;
    for (QSqlQuery asked(query, db); asked.next();) {
        for (int column = 0; column < asked.record().count(); ++column)
            values += asked.value(column).toByteArray();
    }
    return values.isEmpty() ? "nothing" : values.join(' ');
}

void DatabaseTest::initTestCase_data()
{
    QVERIFY2(!stopServer.isEmpty(), "run this test through scripts/with-postgres");
    QTest::addColumn<QString>("type");
    QTest::newRow("SQLite") << "sqlite3";
    QTest::newRow("PostgreSQL") << "postgres"; // and so is its database named
}

void DatabaseTest::init()
{
    QFETCH_GLOBAL(QString, type);
    iniFile = m_folder.filePath(type + QStringLiteral(".ini"));
    if (!QSqlDatabase::contains(type)) {
        const bool sqlite = type == QLatin1String("sqlite3");
        writeDatabaseIni(iniFile, type, sqlite ? m_folder.filePath(QStringLiteral("main.db")) : type);
        db = openAnother(type);
        execute(sqlite ? QStringLiteral("ATTACH DATABASE '%1/main-archive.db' AS archive").arg(m_folder.path())
                       : QStringLiteral("CREATE SCHEMA archive"));
        const QString statements = QString::fromUtf8(contentOf(QLatin1String(m_script)));
        for (const QString& statement : statements.split(QStringLiteral(";\n"), Qt::SkipEmptyParts))
            execute(statement);
    }
    db = QSqlDatabase::database(type);
    printed.clear();
    handlerBefore = qInstallMessageHandler(collect);
}

void DatabaseTest::cleanup()
{
    qInstallMessageHandler(handlerBefore);
    QCOMPARE(printed, QByteArray());
}

void DatabaseTest::insertReports(qint64 time, int count, int object, int objects)
{
    execute(QStringLiteral("WITH RECURSIVE n(i) AS (SELECT 0 UNION ALL SELECT i + 1 FROM n WHERE i < %1) INSERT INTO "
                           "archive.master_table (id_object, time_unix, fingerprint) SELECT %2 + i % %3, %4 + i, 'x' "
                           "FROM n")
                .arg(count - 1)
                .arg(object)
                .arg(objects)
                .arg(time));
}

void DatabaseTest::makeArchiveAnew()
{
    execute("DROP TABLE IF EXISTS archive.master_table");
    execute("DROP TABLE IF EXISTS archive.lastdata");
    tells("\"$archive\" $db create", "status 0");
}

QByteArray DatabaseTest::run(const QByteArray& command, const QByteArray& input) const
{
    const Outcome outcome = runShell(QString::fromUtf8(command), input, iniFile);
    return outcome.output + outcome.errors + "status " + QByteArray::number(outcome.status);
}

void DatabaseTest::tells(const QByteArray& command, const QByteArray& parts, const QByteArray& input) const
{
    const QByteArray told = run(command, input);
    QVERIFY2(hasParts(told, parts), told);
}

void DatabaseTest::loseDatabase()
{
    if (db.driverName() == QLatin1String("QSQLITE"))
        db.close();
    else
        QCOMPARE(QProcess::execute(stopServer, {}), 0);
}
