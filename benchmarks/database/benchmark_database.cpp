// The archive's readers beside the same statements run by hand, on archives of 10,000 and of 2,000,000 states, and of
// 500,000 states of one object.
// Run it through scripts/with-postgres to have PostgreSQL beside SQLite.

#include "archiveschema.h"
#include "postgres.h"

#include <Pardel/archive.h>
#include <Pardel/connection.h>

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QSettings>
#include <QSqlDatabase>
#include <QSqlQuery>
#include <QTemporaryDir>
#include <QVariant>

#include <algorithm>
#include <array>
#include <cstdio>
#include <fstream>
#include <functional>
#include <malloc.h>
#include <string>
#include <utility>
#include <vector>

namespace {

constexpr int objects = 1000;
constexpr int smallSize = 10'000;
constexpr int largeSize = 2'000'000;
constexpr int longHistory = 500'000; // states of one more object
constexpr unsigned firstTime = 1'767'225'600;
constexpr unsigned interval = 10; // seconds between two states of an object

QString connectionOf(const QString& kind, int size)
{
    return kind + QString::number(size);
}

const char filledColumns[] = "id_object, time_unix, sens_1, sens_2, sens_3, sens_4, sens_65, status_65, sens_112, "
                             "status_112";

/// Adds states numbered n, from 0; @p objectAndTime is made of n.
bool addStates(const QSqlDatabase& db, const QString& objectAndTime, int count)
{
    const bool postgres = ArchiveSchema::isPostgres(db);
    const QString numbers =
        postgres ? QStringLiteral("generate_series(0, %1)").arg(count - 1)
                 : QStringLiteral("(WITH RECURSIVE s(n) AS (SELECT 0 UNION ALL SELECT n + 1 FROM s WHERE n < %1) "
                                  "SELECT n FROM s)")
                       .arg(count - 1);
    const QString fingerprint =
        postgres ? QStringLiteral("decode(lpad(to_hex(n), 32, '0'), 'hex')") : QStringLiteral("zeroblob(16)");
    return QSqlQuery(db).exec(
        QStringLiteral("INSERT INTO archive.master_table (%1, fingerprint) SELECT %2, 554550000 + "
                       "n, 374000000 + n, 72, 184, 24, 0, 2226, 0, %3 FROM %4 AS t%5")
            .arg(QLatin1String(filledColumns), objectAndTime, fingerprint, numbers,
                 postgres ? QStringLiteral("(n)") : QString()));
}

/// An archive of @p size states, one after the other for every object, opened under connectionOf. False on failure.
bool makeArchive(const QTemporaryDir& folder, const QString& kind, int size)
{
    const QString name = connectionOf(kind, size);
    const QString ini = folder.filePath(QStringLiteral("benchmark.ini"));
    const bool postgres = kind == QLatin1String("postgres");
    if (!postgres)
        describeSqliteFile(folder.filePath(name + QStringLiteral(".db")), ini, name);
    else if (!makePostgresDatabase(name, ini, name))
        return false;
    QString connection = name;
    QSettings settings(ini, QSettings::IniFormat);
    if (openDataBaseBySettings(connection, settings, name, QString()).type() != QSqlError::NoError)
        return false;
    QSqlDatabase db = QSqlDatabase::database(connection);
    if ((!postgres && !ArchiveSchema::attachArchive(db).isEmpty()) || !ArchiveSchema::create(db).isEmpty())
        return false;

    QSqlQuery query(db);
    const bool filled =
        addStates(db, QStringLiteral("n % %1, %2 + n / %1 * %3").arg(objects).arg(firstTime).arg(interval), size) &&
        query.exec(
            QStringLiteral("INSERT INTO archive.lastdata (%1) SELECT %1 FROM archive.master_table WHERE time_unix = %2")
                .arg(QLatin1String(filledColumns))
                .arg(firstTime)) &&
        (size != largeSize ||
         addStates(db, QStringLiteral("%1, %2 + n * %3").arg(objects).arg(firstTime).arg(interval), longHistory));
    // As a server that has been up for a while has it, and nothing left to write while others are measured.
    return filled && query.exec(postgres ? QStringLiteral("VACUUM ANALYZE") : QStringLiteral("ANALYZE")) &&
           (!postgres || query.exec(QStringLiteral("CHECKPOINT")));
}

/// Objects in an order that jumps about.
quint32 nextObject(quint32& turn)
{
    turn = (turn + 617) % objects;
    return turn;
}

unsigned middleOf(int size)
{
    return firstTime + static_cast<unsigned>(size / objects / 2) * interval + 1;
}

MobData request(quint32 object)
{
    MobData data;
    data.idObject = static_cast<qint32>(object);
    for (const qint16 type : {qint16(65), qint16(112)}) {
        Sensor sensor;
        sensor.type = type;
        data.sensors.append(sensor);
    }
    return data;
}

bool runByHand(MobData& data, const QSqlDatabase& db, const QString& statement)
{
    QSqlQuery query(db);
    query.setForwardOnly(true);
    if (!query.exec(statement) || !query.next())
        return false;
    data.timeUnix = query.value(0).toInt();
    data.latitude = query.value(1).toInt();
    data.longitude = query.value(2).toInt();
    data.speed = query.value(3).toInt();
    data.course = query.value(4).toInt();
    data.sensors[0].value = query.value(5).toFloat();
    data.sensors[0].status = static_cast<qint8>(query.value(6).toInt());
    return true;
}

const char columnsByHand[] = "time_unix, sens_1, sens_2, sens_3, sens_4, sens_65, status_65, sens_112, status_112";

bool prev(MobData& data, const QSqlDatabase& db, int size)
{
    return readPrevData(data, middleOf(size), 86400, db);
}

bool prevByHand(MobData& data, const QSqlDatabase& db, int size)
{
    return runByHand(data, db,
                     QStringLiteral("SELECT %1 FROM archive.master_table WHERE id_object = %2 and time_unix < %3 and "
                                    "time_unix >= %4 ORDER by time_unix DESC LIMIT 1")
                         .arg(QLatin1String(columnsByHand))
                         .arg(data.idObject)
                         .arg(middleOf(size))
                         .arg(middleOf(size) - 86400));
}

bool last(MobData& data, const QSqlDatabase& db, int)
{
    return readLastData(data, db);
}

bool lastByHand(MobData& data, const QSqlDatabase& db, int)
{
    return runByHand(data, db,
                     QStringLiteral("SELECT %1 FROM archive.lastdata WHERE id_object = %2 ")
                         .arg(QLatin1String(columnsByHand))
                         .arg(data.idObject));
}

using Read = bool (*)(MobData& data, const QSqlDatabase& db, int size);

/// Median times of two ways to read, in microseconds. They take turns, as what else the machine does (and on which core
/// it puts the server) makes more of a difference than they do.
std::pair<double, double> measure(const QSqlDatabase& db, int size, Read first, Read second)
{
    constexpr std::size_t turns = 4000;
    std::array<std::vector<qint64>, 2> times;
    quint32 object = 0;
    QElapsedTimer timer;
    for (std::size_t turn = 0; turn < 2 * turns; ++turn) {
        MobData data = request(nextObject(object));
        timer.start();
        const bool found = (turn % 2 == 0 ? first : second)(data, db, size);
        times[turn % 2].push_back(timer.nsecsElapsed());
        if (!found || data.timeUnix == 0)
            qFatal("nothing was read");
    }
    const auto median = [](std::vector<qint64>& values) {
        std::nth_element(values.begin(), values.begin() + turns / 2, values.end());
        return static_cast<double>(values[turns / 2]) / 1000;
    };
    return {median(times[0]), median(times[1])};
}

/// A value of this process in /proc/self/status, in KiB.
long memoryNow(const std::string& name)
{
    std::ifstream status("/proc/self/status");
    for (std::string line; std::getline(status, line);) {
        if (line.rfind(name + ':', 0) == 0)
            return std::stol(line.substr(name.size() + 1));
    }
    return 0;
}

/// The most memory that @p work takes beyond what there is before it, in KiB.
template <typename Work>
long memoryOf(Work work)
{
    malloc_trim(0);                              // what others have given back is not to be had for nothing
    std::ofstream("/proc/self/clear_refs") << 5; // the peak begins anew
    const long before = memoryNow("VmRSS");
    work();
    return memoryNow("VmHWM") - before;
}

constexpr quint32 timeAfter(int states)
{
    return firstTime + static_cast<quint32>(states) * interval - 1;
}

/// The first @p states of the object with the long history; how many have come.
int history(const QSqlDatabase& db, int states)
{
    int count = 0;
    readHistory(objects, firstTime, timeAfter(states), {65, 112}, db, [&](const MobData& state) {
        count += state.sensors.size() == 2 ? 1 : 0;
        return true;
    });
    return count;
}

int historyByHand(const QSqlDatabase& db, int states, bool forwardOnly)
{
    int count = 0;
    const std::function<bool(const MobData&)> take = [&](const MobData& state) {
        count += state.sensors.size() == 2 ? 1 : 0;
        return true;
    };
    QSqlQuery query(db);
    query.setForwardOnly(forwardOnly);
    query.exec(QStringLiteral("SELECT %1 FROM archive.master_table WHERE id_object = %2 and time_unix >= %3 and "
                              "time_unix <= %4 ORDER BY time_unix")
                   .arg(QLatin1String(columnsByHand))
                   .arg(objects)
                   .arg(firstTime)
                   .arg(timeAfter(states)));
    while (query.next()) {
        MobData state{objects,
                      query.value(1).toInt(),
                      query.value(2).toInt(),
                      query.value(3).toInt(),
                      query.value(4).toInt(),
                      query.value(0).toInt(),
                      {}};
        for (const auto& [column, type] : {std::pair(5, qint16(65)), std::pair(7, qint16(112))}) {
            Sensor sensor;
            sensor.type = type;
            sensor.value = query.value(column).toFloat();
            sensor.status = static_cast<qint8>(query.value(column + 1).toInt());
            state.sensors.append(sensor);
        }
        if (!take(state))
            break;
    }
    return count;
}

int lastStates(const QSqlDatabase& db, int)
{
    int count = 0;
    readLastStates({65, 112}, db, [&](const MobData&) { return ++count > 0; });
    return count;
}

int lastStatesOneByOne(const QSqlDatabase& db, int states)
{
    for (int object = 0; object < states; ++object) {
        MobData data = request(static_cast<quint32>(object));
        readLastData(data, db);
    }
    return states;
}

/// Fastest times of two ways to read some states, in milliseconds.
template <typename First, typename Second>
std::pair<double, double> measureStates(const QSqlDatabase& db, int states, int turns, First first, Second second)
{
    double fastest[2] = {1e9, 1e9};
    QElapsedTimer timer;
    for (int turn = 0; turn < 2 * turns; ++turn) {
        timer.start();
        if ((turn % 2 == 0 ? first(db, states) : second(db, states)) != states)
            qFatal("not all states were read");
        fastest[turn % 2] = std::min(fastest[turn % 2], static_cast<double>(timer.nsecsElapsed()) / 1e6);
    }
    return {fastest[0], fastest[1]};
}

void measureManyStates(const char* name, const QSqlDatabase& db)
{
    const auto inMiB = [](long kib) { return static_cast<double>(kib) / 1024; };
    const double some = inMiB(memoryOf([&] { history(db, longHistory / 10); }));
    const double all = inMiB(memoryOf([&] { history(db, longHistory); }));
    const double byHand = inMiB(memoryOf([&] { historyByHand(db, longHistory, false); }));
    std::printf("memory %s readHistory of 500,000 states %.1f MiB, of 50,000 %.1f MiB (target: 1 MiB apart), by hand "
                "without setForwardOnly %.1f MiB\n",
                name, all, some, byHand);
    const auto forwardOnly = [](const QSqlDatabase& asked, int states) { return historyByHand(asked, states, true); };
    for (const auto& [states, turns] : {std::pair(longHistory, 7), std::pair(360, 300)}) {
        const auto [time, timeByHand] = measureStates(db, states, turns, history, forwardOnly);
        std::printf("ratio %s readHistory of %d states %.2f ms / by hand %.2f ms: %.2f (target: at most 1.15)\n", name,
                    states, time, timeByHand, time / timeByHand);
    }
    const auto [time, oneByOne] = measureStates(db, objects, 7, lastStates, lastStatesOneByOne);
    std::printf("ratio %s readLastData of 1,000 objects %.1f ms / readLastStates %.1f ms: %.1f (target: at least 5)\n",
                name, oneByOne, time, oneByOne / time);
}

void measureKind(const QString& kind)
{
    const char* const name = kind == QLatin1String("postgres") ? "PostgreSQL" : "SQLite";
    const QSqlDatabase small = QSqlDatabase::database(connectionOf(kind, smallSize));
    const QSqlDatabase large = QSqlDatabase::database(connectionOf(kind, largeSize));
    measureManyStates(name, large);
    const auto [lastTime, lastTimeByHand] = measure(large, largeSize, last, lastByHand);
    std::printf("ratio %s readLastData %.1f us / by hand %.1f us: %.2f (target: at most 1.15)\n", name, lastTime,
                lastTimeByHand, lastTime / lastTimeByHand);
    const auto [prevTime, prevTimeByHand] = measure(large, largeSize, prev, prevByHand);
    std::printf("ratio %s readPrevData %.1f us / by hand %.1f us: %.2f (target: at most 1.15)\n", name, prevTime,
                prevTimeByHand, prevTime / prevTimeByHand);
    const double smallTime = measure(small, smallSize, prev, prevByHand).first;
    std::printf(
        "ratio %s readPrevData of 2,000,000 states %.1f us / of 10,000 states %.1f us: %.2f (target: below 2)\n", name,
        prevTime, smallTime, prevTime / smallTime);
}

} // namespace

int main(int argc, char* argv[])
{
    const QCoreApplication application(argc, argv);
    const QTemporaryDir folder;
    QStringList kinds = {QStringLiteral("sqlite")};
    if (hasPostgres())
        kinds += QStringLiteral("postgres");
    for (const QString& kind : qAsConst(kinds)) {
        for (const int size : {smallSize, largeSize}) {
            if (!makeArchive(folder, kind, size)) {
                std::fprintf(stderr, "cannot make the archive of %d states on %s\n", size, qPrintable(kind));
                return 1;
            }
        }
        measureKind(kind);
    }
    return 0;
}
