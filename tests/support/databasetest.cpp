#include "databasetest.h"

#include "testfiles.h"

#include <Pardel/connection.h>

#include <QProcess>
#include <QSettings>
#include <QSqlQuery>
#include <QTest>

namespace {

QByteArray printed;
QtMessageHandler handlerBefore = nullptr;

void collect(QtMsgType /*type*/, const QMessageLogContext& /*context*/, const QString& message)
{
    printed += message.toUtf8() + '\n';
}

const QString stopServer = qEnvironmentVariable("PARDEL_POSTGRES_STOP");

} // namespace

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
        QSettings settings(iniFile, QSettings::IniFormat);
        settings.setValue(QStringLiteral("Db/DBType"), type);
        settings.setValue(QStringLiteral("Db/BaseName"), sqlite ? m_folder.filePath(QStringLiteral("main.db")) : type);
        settings.setValue(QStringLiteral("Db/SqlHostName"), qEnvironmentVariable("PGHOST"));
        settings.setValue(QStringLiteral("Db/SqlPort"), qEnvironmentVariable("PGPORT"));
        const QSqlError error = openDataBaseBySettings(type, settings, QStringLiteral("Db"), QString());
        QVERIFY2(error.type() == QSqlError::NoError, qPrintable(error.text()));
        db = QSqlDatabase::database(type);
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

void DatabaseTest::execute(const QString& statement)
{
    QSqlQuery query(db);
    QVERIFY2(query.exec(statement), qPrintable(query.lastError().text()));
}

void DatabaseTest::loseDatabase()
{
    if (db.driverName() == QLatin1String("QSQLITE"))
        db.close();
    else
        QCOMPARE(QProcess::execute(stopServer, {}), 0);
}
