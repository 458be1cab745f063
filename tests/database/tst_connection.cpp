#include "testfiles.h"

#include <Pardel/connection.h>

#include <QCoreApplication>
#include <QFile>
#include <QSettings>
#include <QSqlDatabase>
#include <QTemporaryDir>

namespace {

/// "name: driver database host user password port" as registered, then whether that is open or was refused.
QString outcome(const QString& name, const QSqlError& error)
{
    const QSqlDatabase db = QSqlDatabase::database(name, false);
    const bool refused = !db.isOpen() && error.type() == QSqlError::ConnectionError;
    QStringList parts = {name + QLatin1Char(':'), db.driverName(), db.databaseName(), db.hostName(), db.userName()};
    const QString state = refused ? QStringLiteral("refused") : db.isOpen() ? QStringLiteral("open") : error.text();
    parts << db.password() << QString::number(db.port()) << state;
    return parts.join(QLatin1Char(' '));
}

} // namespace

class TestConnection : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void opensByTheKeys_data() { addTableRows("connection.txt"); }

    void opensByTheKeys()
    {
        const QTemporaryDir folder;
        const auto write = [&folder](const char* name, const QByteArray& begin, const char* prefix, QByteArray keys) {
            QByteArrayList lines = keys.replace("%1", folder.path().toUtf8()).split(' ');
            writeFile(folder.filePath(QLatin1String(name)),
                      begin + prefix + lines.join(QByteArray("\n") + prefix) + '\n');
        };
        write("first.ini", "[Outer]\n", "Db\\", cell("first"));
        write("second.ini", "[Db]\n", "", cell("second"));
        QSettings settings(folder.filePath(QStringLiteral("first.ini")), QSettings::IniFormat);
        settings.beginGroup(QStringLiteral("Outer"));

        QString name = QString::fromUtf8(cell("connection"));
        const QSqlError error =
            openDataBaseBySettings(name, settings, QStringLiteral("Db"), QString::fromUtf8(cell("base")));
        QCOMPARE(settings.group(), QStringLiteral("Outer"));
        QString expected = QString::fromUtf8(cell("outcome")).replace(QLatin1String("%1"), folder.path());
        expected.replace(QLatin1String("%2"), QCoreApplication::applicationDirPath());
        QCOMPARE(outcome(name, error), expected);
        QSqlDatabase::removeDatabase(name);
        QFile::remove(QCoreApplication::applicationDirPath() + QStringLiteral("/tst.db"));
    }
};

QTEST_GUILESS_MAIN(TestConnection)
#include "tst_connection.moc"
