// Opens the database that a settings file names and reads the last known state of every object from its archive.
//
// 03-read-the-archive FILE.ini GROUP. Without arguments it makes itself a small SQLite archive to read.

#include <Pardel/pardel.h>

#include <QCoreApplication>
#include <QDateTime>
#include <QFileInfo>
#include <QSettings>
#include <QSqlDatabase>
#include <QSqlQuery>
#include <QTemporaryDir>
#include <QTextStream>
#include <QVariant>

namespace {

/// An archive with two states, where an application would find what the server side has stored.
void makeSample(QSettings& settings, const QString& folder)
{
    settings.setValue(QStringLiteral("Db/DBType"), QStringLiteral("sqlite3"));
    settings.setValue(QStringLiteral("Db/BaseName"), QString(folder + QStringLiteral("/sample.db")));
    QSqlDatabase db = QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"), QStringLiteral("sample"));
    db.setDatabaseName(folder + QStringLiteral("/sample-archive.db"));
    db.open();
    QSqlQuery query(db);
    query.exec(QStringLiteral("CREATE TABLE lastdata (id_object, time_unix, sens_1, sens_2, sens_3, sens_4, sens_65, "
                              "status_65)"));
    query.exec(QStringLiteral("INSERT INTO lastdata VALUES (1, 1767225626, 546403461, 362233821, 46, 258, 24.5, 0), "
                              "(2, 1767225613, 561923545, 362698338, 81, 68, NULL, NULL)"));
    query.exec(QStringLiteral("CREATE TABLE master_table AS SELECT * FROM lastdata")); // the history
}

void show(QTextStream& out, const MobData& state)
{
    const QDateTime time = QDateTime::fromSecsSinceEpoch(static_cast<quint32>(state.timeUnix), Qt::UTC);
    out << time.toString(QStringLiteral("yyyy-MM-dd hh:mm:ss")) << qSetFieldWidth(9) << state.idObject
        << qSetFieldWidth(13) << QString::number(state.latitude / 1e7, 'f', 7)
        << QString::number(state.longitude / 1e7, 'f', 7) << qSetFieldWidth(6) << state.speed << state.course
        << qSetFieldWidth(0);
    for (const Sensor& sensor : state.sensors)
        out << "  " << sensor.type << "=" << sensor.value;
    out << "\n";
}

/// Each object with what its last report held. An application asks for the sensors that it shows, here for all that the
/// archive keeps. readHistory does the same for one object and a period; readLastData fills a single report.
int showLastStates(const QSqlDatabase& db)
{
    QTextStream out(stdout);
    QList<qint16> types;
    QSqlError error = readSensorTypes(types, db);
    if (error.type() == QSqlError::NoError) {
        error = readLastStates(types, db, [&out](const MobData& state) {
            show(out, state);
            return true; // go on
        });
    }
    if (error.type() == QSqlError::NoError)
        return 0;
    QTextStream(stderr) << "the archive cannot be read: " << error.text() << "\n";
    return 1;
}

} // namespace

int main(int argc, char* argv[])
{
    const QCoreApplication application(argc, argv);
    const QStringList arguments = QCoreApplication::arguments();
    const QTemporaryDir folder;
    QSettings settings(arguments.value(1, folder.filePath(QStringLiteral("sample.ini"))), pardelIniFormat());
    if (arguments.size() < 3)
        makeSample(settings, folder.path());

    QString connectionName; // becomes the database's name
    const QSqlError error =
        openDataBaseBySettings(connectionName, settings, arguments.value(2, QStringLiteral("Db")), QString());
    QTextStream errors(stderr);
    if (error.type() != QSqlError::NoError) {
        errors << "cannot open the database: " << error.text() << "\n";
        return 1;
    }
    QSqlDatabase db = QSqlDatabase::database(connectionName);
    if (db.driverName() == QLatin1String("QSQLITE")) { // there the archive is a file of its own, beside the database's
        QSqlQuery attach(db);
        attach.prepare(QStringLiteral("ATTACH DATABASE ? AS archive"));
        const QFileInfo file(db.databaseName());
        attach.bindValue(0, QString(file.path() + QLatin1Char('/') + file.completeBaseName() +
                                    QStringLiteral("-archive.") + file.suffix()));
        if (!attach.exec()) {
            errors << "cannot attach the archive: " << attach.lastError().text() << "\n";
            return 1;
        }
    }
    return showLastStates(db);
}
