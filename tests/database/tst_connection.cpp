#include <Pardel/connection.h>

#include <QCoreApplication>
#include <QFile>
#include <QSettings>
#include <QSqlDatabase>
#include <QTemporaryDir>
#include <QTest>

namespace {

/// "name: driver database host user password port" as registered, then whether that is open or was refused.
QString outcome(const QString& name, const QSqlError& error)
{
    const QSqlDatabase db = QSqlDatabase::database(name, false);
    const bool refused = !db.isOpen() && error.type() == QSqlError::ConnectionError;
    QStringList parts = {name + QLatin1Char(':'), db.driverName(), db.databaseName(), db.hostName(), db.userName()};
    parts << db.password() << QString::number(db.port());
    parts << (refused ? QStringLiteral("refused") : db.isOpen() ? QStringLiteral("open") : error.text());
    return parts.join(QLatin1Char(' '));
}

} // namespace

class TestConnection : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void opensByTheKeys_data();
    void opensByTheKeys();
};

void TestConnection::opensByTheKeys_data()
{
    // Keys of the group in the caller's file and in second.ini; %1 is their folder, %2 the executable's.
    for (const char* column : {"first", "second", "nameIn", "baseName", "expected"})
        QTest::addColumn<QString>(column);
    const auto row = [](const char* name, const char* first, const char* second, const char* nameIn,
                        const char* baseName, const char* expected) {
        QTest::newRow(name) << first << second << nameIn << baseName << expected;
    };
    const char* keys = "BaseName=Base SqlHostName=127.0.0.2 SqlLogin=me SqlPassword=\"a,b;c\" SqlPort=9";
    const QByteArray overruled = QByteArray("BaseIni=%1/second.ini DBType=sqlite3 ") + keys;
    row("no keys", "", "", "", "", "Telvar: QPSQL7 Telvar localhost postgres  -1 refused");
    row("the driver's port", "BaseName=postgres", "", "", "", "postgres: QPSQL7 postgres localhost postgres  -1 open");
    row("all keys", keys, "", "", "", "Base: QPSQL7 Base 127.0.0.2 me a,b;c 9 refused");
    row("port that is no number", "SqlPort=x", "", "", "", "Telvar: QPSQL7 Telvar localhost postgres  0 refused");
    row("base name given", keys, "", "", "Given", "Given: QPSQL7 Given 127.0.0.2 me a,b;c 9 refused");
    row("connection named", keys, "", "Mine", "", "Mine: QPSQL7 Base 127.0.0.2 me a,b;c 9 refused");
    row("second file", "BaseIni=%1/second.ini", keys, "", "", "Base: QPSQL7 Base 127.0.0.2 me a,b;c 9 refused");
    row("second file's defaults, not the first's keys", overruled, "", "", "",
        "Telvar: QPSQL7 Telvar localhost postgres  -1 refused");
    row("second file is missing", "BaseIni=%1/nowhere.ini SqlPort=8", "SqlPort=7", "", "",
        "Telvar: QPSQL7 Telvar localhost postgres  8 refused");
    row("no third file", "BaseIni=%1/second.ini SqlPort=8", "BaseIni=%1/first.ini SqlPort=7", "", "",
        "Telvar: QPSQL7 Telvar localhost postgres  7 refused");
    row("SQLite", "DBType=sqlite3 BaseName=%1/x.db SqlPort=5", "", "", "", "%1/x.db: QSQLITE %1/x.db    -1 open");
    row("beside the executable", "DBType=sqlite3 BaseName=tst.db", "", "", "", "tst.db: QSQLITE %2/tst.db    -1 open");
    row("SQLite in no folder", "DBType=sqlite3", "", "Mine", "/none/x.db", "Mine: QSQLITE /none/x.db    -1 refused");
    row("unknown kind", "DBType=Postgres BaseName=Base", "", "", "", "Base:      -1 refused");
}

void TestConnection::opensByTheKeys()
{
    QFETCH(QString, first);
    QFETCH(QString, second);
    QFETCH(QString, nameIn);
    QFETCH(QString, baseName);
    QFETCH(QString, expected);
    QTemporaryDir folder;
    const auto write = [&folder](const char* name, const char* section, const char* prefix, const QString& keys) {
        QFile file(folder.filePath(QLatin1String(name)));
        QVERIFY(file.open(QIODevice::WriteOnly) && file.write(section) > 0);
        for (QString key : keys.split(QLatin1Char(' '), Qt::SkipEmptyParts))
            file.write(prefix + key.replace(QLatin1String("%1"), folder.path()).toUtf8() + '\n');
    };
    write("first.ini", "[Outer]\n", "Db\\", first);
    write("second.ini", "[Db]\n", "", second);
    QSettings settings(folder.filePath(QStringLiteral("first.ini")), QSettings::IniFormat);
    settings.beginGroup(QStringLiteral("Outer"));

    const QSqlError error = openDataBaseBySettings(nameIn, settings, QStringLiteral("Db"), baseName);
    QCOMPARE(settings.group(), QStringLiteral("Outer"));
    expected.replace(QLatin1String("%1"), folder.path());
    QCOMPARE(outcome(nameIn, error), expected.replace(QLatin1String("%2"), QCoreApplication::applicationDirPath()));
    QSqlDatabase::removeDatabase(nameIn);
    QFile::remove(QCoreApplication::applicationDirPath() + QStringLiteral("/tst.db"));
}

QTEST_GUILESS_MAIN(TestConnection)
#include "tst_connection.moc"
