// What an archive costs whose history lies on shards, beside one on a single server: filling it with pardel-import, and
// look-ups in it. Run through scripts/with-postgres --servers 4: the first server has both, the others are the shards;
// all share this machine's processors.

#include "postgres.h"
#include "toolruns.h"

#include <Pardel/archive.h>
#include <Pardel/connection.h>

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QProcess>
#include <QSettings>
#include <QSqlDatabase>
#include <QSqlQuery>
#include <QTemporaryDir>

#include <cstdio>
#include <vector>

namespace {

constexpr int rounds = 3;
constexpr int terminals = 1000; // of simulateTo()
constexpr int minutes = 150;
constexpr quint32 simulationStart = 1767225600;

const QStringList ports = qEnvironmentVariable("PARDEL_POSTGRES_PORTS").split(QLatin1Char(' '));

/// Times in seconds.
struct Times
{
    std::vector<double> imported;
    std::vector<double> importedAgain;
    std::vector<double> lookUp; // of one
    std::vector<double> history;
};

double secondsOf(const QString& program, const QStringList& arguments)
{
    QElapsedTimer timer;
    timer.start();
    if (QProcess::execute(program, arguments) != 0)
        qFatal("%s fails", qPrintable(program));
    return static_cast<double>(timer.nsecsElapsed()) / 1e9;
}

/// Makes a database of this name on the first server, and with shards on all.
void makeArchive(const QString& name, const QString& ini, bool spread)
{
    if (!makePostgresDatabase(name, ini, name))
        qFatal("cannot make a database");
    QStringList arguments = {QStringLiteral("--ini"), ini, QStringLiteral("--group"), name, QStringLiteral("create")};
    for (int i = 1; spread && i < ports.size(); ++i) {
        secondsOf(QStringLiteral("createdb"), {QStringLiteral("-p"), ports[i], name});
        arguments += QStringLiteral("--shard");
        arguments += QStringLiteral("host=127.0.0.1 port=%1 dbname=%2").arg(ports[i], name);
    }
    secondsOf(QStringLiteral(PARDEL_ARCHIVE), arguments);
}

void checkpoint()
{
    for (const QString& port : ports)
        secondsOf(QStringLiteral("psql"),
                  {QStringLiteral("-qp"), port, QStringLiteral("-d"), QStringLiteral("postgres"), QStringLiteral("-c"),
                   QStringLiteral("CHECKPOINT")});
}

void measureImport(const QString& name, const QString& ini, const QString& capture, Times* times)
{
    const QStringList arguments = {QStringLiteral("--ini"), ini, QStringLiteral("--group"), name, capture};
    for (std::vector<double>* seconds : {&times->imported, &times->importedAgain}) {
        checkpoint();
        seconds->push_back(secondsOf(QStringLiteral(PARDEL_IMPORT), arguments));
    }
}

void measureReading(const QString& name, const QString& ini, Times* times)
{
    QSettings settings(ini, QSettings::IniFormat);
    QString connection = name;
    if (openDataBaseBySettings(connection, settings, name, QString()).type() != QSqlError::NoError)
        qFatal("cannot open %s", qPrintable(name));
    const QSqlDatabase db = QSqlDatabase::database(connection);
    for (int pass = 0; pass < rounds; ++pass) {
        QElapsedTimer timer;
        timer.start();
        for (qint32 object = 1; object <= terminals; ++object) {
            MobData state;
            state.idObject = object;
            constexpr qint16 types[] = {0, 15, 56, 65, 66, 67, 0, 0, 0, 0, 0, 0};
            for (const qint16 type : types) {
                Sensor sensor;
                sensor.type = type;
                state.sensors += sensor;
            }
            if (!readPrevData(state, simulationStart + 60 * minutes / 2 + static_cast<quint32>(object), 86400, db))
                qFatal("object %d has no state", object);
        }
        times->lookUp.push_back(static_cast<double>(timer.nsecsElapsed()) / 1e9 / terminals);
        timer.start();
        int read = 0;
        for (qint32 object = 1; object <= terminals / 10; ++object) {
            const QSqlError error =
                readHistory(object, simulationStart, simulationStart + 60 * minutes, {0, 15, 56, 65, 66, 67}, db,
                            [&read](const MobData&) { return ++read > 0; });
            if (error.type() != QSqlError::NoError)
                qFatal("%s", qPrintable(error.text()));
        }
        times->history.push_back(static_cast<double>(timer.nsecsElapsed()) / 1e9 / terminals * 10);
    }
}

} // namespace

int main(int argc, char* argv[])
{
    const QCoreApplication application(argc, argv);
    if (ports.size() < 2) {
        std::fprintf(stderr, "run this through scripts/with-postgres --servers 4\n");
        return 1;
    }
    const QTemporaryDir folder;
    const QString capture = folder.filePath(QStringLiteral("capture.bin"));
    const QString ini = folder.filePath(QStringLiteral("benchmark.ini"));
    if (!simulateTo(capture, minutes)) {
        std::fprintf(stderr, "cannot write the capture under %s\n", qPrintable(folder.path()));
        return 1;
    }
    Times one;
    Times spread;
    for (int round = 0; round < rounds; ++round) {
        for (Times* times : {&one, &spread}) {
            const QString name =
                QStringLiteral("%1%2").arg(times == &one ? QStringLiteral("one") : QStringLiteral("spread")).arg(round);
            makeArchive(name, ini, times == &spread);
            measureImport(name, ini, capture, times);
            measureReading(name, ini, times);
        }
    }
    const auto print = [&](const char* what, std::vector<double> Times::*seconds, double unit, const char* unitName) {
        std::printf("%s: one server %.2f %s, %d shards %.2f %s\n", what, fastest(one.*seconds) * unit, unitName,
                    static_cast<int>(ports.size()) - 1, fastest(spread.*seconds) * unit, unitName);
    };
    print("import", &Times::imported, 1, "s");
    print("the same import again", &Times::importedAgain, 1, "s");
    print("look-up (readPrevData)", &Times::lookUp, 1e3, "ms");
    print("an object's history (readHistory)", &Times::history, 1e3, "ms");
    std::printf("ratio import one server / shards: %.2f (target: at least 0.50)\n",
                fastest(one.imported) / fastest(spread.imported));
    std::printf("ratio look-up shards / one server: %.2f (target: at most 3.00)\n",
                fastest(spread.lookUp) / fastest(one.lookUp));
    return 0;
}
