#include "deskarchive.h"

#include "archiveschema.h"
#include "archivewriter.h"
#include "decodedpacket.h"
#include "desksettings.h"
#include "login.h"
#include "simulation.h"

#include <Pardel/archive.h>
#include <Pardel/connection.h>

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>
#include <QSettings>
#include <QSqlError>
#include <QSqlQuery>
#include <QVariant>

#include <algorithm>

namespace {

constexpr qint16 supplyType = 65;
constexpr qint16 alarmType = 15;
constexpr quint32 oneDay = 24 * 60 * 60;
const char* const connectionName = "desk";

/// Readers fill only the first half of the sensors asked for (rounded up), so that each is asked for twice.
MobData request(qint32 id, std::initializer_list<qint16> types)
{
    MobData data;
    data.idObject = id;
    for (int half = 0; half < 2; ++half) {
        for (const qint16 type : types) {
            Sensor sensor;
            sensor.type = type;
            data.sensors.append(sensor);
        }
    }
    return data;
}

MobData answered(MobData data)
{
    data.sensors = data.sensors.mid(0, data.sensors.size() / 2);
    return data;
}

/// Runs statements until one fails, and keeps why.
QString runAll(const QSqlDatabase& db, const QStringList& statements)
{
    QSqlQuery query(db);
    for (const QString& statement : statements) {
        if (!query.exec(statement))
            return ArchiveSchema::errorText(query.lastError());
    }
    return {};
}

qint64 numberFrom(const QSqlDatabase& db, const QString& statement)
{
    QSqlQuery query(db);
    return query.exec(statement) && query.next() ? query.value(0).toLongLong() : 0;
}

} // namespace

DeskArchive::~DeskArchive()
{
    m_db = QSqlDatabase();
    QSqlDatabase::removeDatabase(QLatin1String(connectionName));
}

QString DeskArchive::open(const DeskSettings& settings, const ProgressListener& progress)
{
    const QString group = QStringLiteral("Database");
    QSettings& ini = settings.ini();
    QString baseName;
    if (ini.value(group + QStringLiteral("/DBType")).toString() == QLatin1String("sqlite3")) {
        // A file without a path lies with the settings, wherever the executable is.
        const QString file =
            ini.value(group + QStringLiteral("/BaseName"), QStringLiteral("pardel-desk.db")).toString();
        baseName = QDir(settings.folder()).absoluteFilePath(file);
    }
    QString name = QLatin1String(connectionName);
    const QSqlError error = openDataBaseBySettings(name, ini, group, baseName);
    if (error.type() != QSqlError::NoError)
        return ArchiveSchema::errorText(error);
    m_db = QSqlDatabase::database(name);
    if (ArchiveSchema::isPostgres(m_db))
        return ArchiveSchema::check(m_db);
    const QString attached = ArchiveSchema::attachArchive(m_db);
    if (!attached.isEmpty() || newestTime() > 0)
        return attached;
    return makeSample(settings, progress);
}

QString DeskArchive::makeSample(const DeskSettings& settings, const ProgressListener& progress)
{
    QString error = ArchiveSchema::create(m_db);
    if (error.isEmpty()) {
        error =
            runAll(m_db, {
                             QStringLiteral("INSERT OR IGNORE INTO \"Connections\" VALUES "
                                            "(1, 'admin', 'Administrator', 1), "
                                            "(2, 'dispatcher', 'Dispatcher on duty', 0), "
                                            "(3, 'viewer', 'Reports only', 0), (11, 'berg', 'Berg Hanna Maria', 0)"),
                             QStringLiteral("INSERT OR IGNORE INTO \"Commands\" VALUES "
                                            "(1, 'position', 'Ask for the position'), "
                                            "(1, 'restart', 'Restart the terminal'), "
                                            "(2, 'position', 'Ask for the position')"),
                             QStringLiteral("CREATE TABLE IF NOT EXISTS \"DeskObjects\" (\"Id\" bigint PRIMARY "
                                            "KEY, \"Name\" text, \"Group\" text)"),
                         });
    }
    for (const char* user : {"admin", "dispatcher", "viewer", "berg"}) {
        if (error.isEmpty())
            error = setPassword(m_db, QLatin1String(user), QLatin1String(user));
    }
    return error.isEmpty() ? fillDay(settings, progress) : error;
}

QString DeskArchive::fillDay(const DeskSettings& settings, const ProgressListener& progress)
{
    const auto setting = [&](const char* key, int standard) {
        return settings.ini().value(QStringLiteral("Sample/") + QLatin1String(key), standard).toInt();
    };
    SimulationSettings day;
    day.terminals = std::clamp(setting("Terminals", 12), 1, SimulationSettings::maximumTerminals);
    day.minutes = std::clamp(setting("Minutes", 1440), 1, 1440);
    day.seed = static_cast<quint32>(setting("Seed", 47));

    QSqlQuery object(m_db);
    for (int id = 1; id <= day.terminals; ++id) {
        const bool truck = id % 2 == 0; // as the simulation fits them with supplies of 24 and 12 volts
        object.prepare(QStringLiteral("INSERT OR REPLACE INTO \"DeskObjects\" VALUES (?, ?, ?)"));
        object.addBindValue(id);
        object.addBindValue(
            (truck ? LoginFlow::tr("Truck %1") : LoginFlow::tr("Van %1")).arg(id, 3, 10, QLatin1Char('0')));
        object.addBindValue(truck ? LoginFlow::tr("Trucks") : LoginFlow::tr("Vans"));
        if (!object.exec())
            return ArchiveSchema::errorText(object.lastError());
    }

    ArchiveWriter writer(m_db);
    Simulation simulation(day);
    DecodeSettings packed;
    packed.convert = true;
    const qint64 packets = qint64(day.terminals) * day.minutes;
    qint64 done = 0;
    for (QByteArray bytes = simulation.next(); !bytes.isEmpty() && !writer.failed(); bytes = simulation.next()) {
        const DecodedPacket packet = decodePacket(frameOf(done, bytes, false), packed);
        writer.add(packet.report);
        for (const MobData& report : packet.reports)
            writer.add(report);
        ++done;
        if (progress && done * 100 / packets != (done - 1) * 100 / packets)
            progress(static_cast<int>(done * 100 / packets));
    }
    writer.flush();
    return writer.failed() ? writer.error() : QString();
}

ObjectCatalog DeskArchive::objects() const
{
    ObjectCatalog catalog;
    QSqlQuery query(m_db);
    query.setForwardOnly(true);
    query.exec(QStringLiteral("SELECT id_object FROM archive.lastdata"));
    while (query.next())
        catalog.add(static_cast<qint32>(query.value(0).toUInt()),
                    {QString(), QCoreApplication::translate("DeskArchive", "Objects")});
    query.exec(QStringLiteral("SELECT \"Id\", \"Name\", \"Group\" FROM \"DeskObjects\""));
    while (query.next())
        catalog.add(static_cast<qint32>(query.value(0).toUInt()),
                    {query.value(1).toString(), query.value(2).toString()});
    return catalog;
}

std::optional<MobData> DeskArchive::lastState(qint32 id) const
{
    MobData state = request(id, {supplyType, alarmType});
    readLastData(state, m_db);
    return state.timeUnix == 0 ? std::nullopt : std::optional<MobData>(answered(state));
}

qint64 DeskArchive::newestTime() const
{
    return numberFrom(m_db, QStringLiteral("SELECT max(time_unix) FROM archive.lastdata"));
}

Track DeskArchive::track(qint32 id, qint64 from, qint64 to, QString* error) const
{
    Track track;
    MobData before = request(id, {alarmType});
    if (readPrevData(before, static_cast<quint32>(from), oneDay, m_db)) {
        TrackPoint entered = TrackPoint::of(answered(before));
        entered.time = static_cast<qint32>(from);
        track.append(entered);
    }
    QSqlQuery query(m_db);
    query.setForwardOnly(true);
    query.prepare(QStringLiteral("SELECT time_unix, sens_1, sens_2, sens_3, sens_4, status_15 FROM "
                                 "archive.master_table WHERE id_object = ? AND time_unix >= ? AND time_unix <= ? "
                                 "ORDER BY time_unix"));
    for (const qint64 value : {qint64(static_cast<quint32>(id)), from, to})
        query.addBindValue(value);
    if (!query.exec() && error)
        *error = ArchiveSchema::errorText(query.lastError());
    while (query.next()) {
        const TrackPoint point = {query.value(0).toInt(), query.value(1).toInt(), query.value(2).toInt(),
                                  query.value(3).toInt(), query.value(4).toInt(), query.value(5).toInt() != 0};
        if (point.isComplete())
            track.append(point);
    }
    return track;
}
