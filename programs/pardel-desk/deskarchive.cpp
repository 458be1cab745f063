#include "deskarchive.h"

#include "archiveschema.h"
#include "archivewriter.h"
#include "decodedpacket.h"
#include "desksettings.h"
#include "login.h"
#include "simulation.h"

#include <Pardel/archive.h>
#include <Pardel/connection.h>

#include <QDir>
#include <QFileInfo>
#include <QSettings>
#include <QSqlError>
#include <QSqlQuery>
#include <QVariant>

#include <algorithm>
#include <limits>

namespace {

constexpr qint16 supplyType = 65;
constexpr qint16 alarmType = 15;
constexpr quint32 oneDay = 24 * 60 * 60;
const char* const connectionName = "desk";
const QString group = QStringLiteral("Database"); // of the settings

/// The file of an SQLite archive: without a path it lies with the settings, wherever the executable is. Else empty.
QString fileOf(const DeskSettings& settings)
{
    const QSettings& ini = settings.ini();
    if (ini.value(group + QStringLiteral("/DBType")).toString() != QLatin1String("sqlite3"))
        return {};
    const QString file = ini.value(group + QStringLiteral("/BaseName"), QStringLiteral("pardel-desk.db")).toString();
    return QDir(settings.folder()).absoluteFilePath(file);
}

/// One report to be read, with the alarm. Of more sensors only half would be.
MobData alarmRequest(qint32 id)
{
    MobData data;
    data.idObject = id;
    Sensor alarm;
    alarm.type = alarmType;
    data.sensors.append(alarm);
    return data;
}

/// As the archive counts seconds: without a sign, in 32 bits.
quint32 archiveTime(qint64 time)
{
    return static_cast<quint32>(std::clamp<qint64>(time, 0, std::numeric_limits<quint32>::max()));
}

QString textOf(const QSqlError& error)
{
    return error.type() == QSqlError::NoError ? QString() : ArchiveSchema::errorText(error);
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

} // namespace

DeskArchive::~DeskArchive()
{
    m_db = QSqlDatabase();
    QSqlDatabase::removeDatabase(QLatin1String(connectionName));
}

SpoolStoreSettings DeskArchive::storing(const DeskSettings& settings)
{
    SpoolStoreSettings storing;
    storing.iniFile = settings.ini().fileName();
    storing.group = group;
    storing.baseName = fileOf(settings);
    return storing;
}

QString DeskArchive::open(const DeskSettings& settings, const ProgressListener& progress)
{
    QString name = QLatin1String(connectionName);
    const QSqlError error = openDataBaseBySettings(name, settings.ini(), group, fileOf(settings));
    if (error.type() != QSqlError::NoError)
        return ArchiveSchema::errorText(error);
    m_db = QSqlDatabase::database(name);
    if (ArchiveSchema::isPostgres(m_db))
        return ArchiveSchema::check(m_db);
    const QString attached = ArchiveSchema::attachArchive(m_db);
    if (!attached.isEmpty())
        return attached;
    bool isNew = false;
    const QString unreadable = readWhetherNew(&isNew);
    if (!unreadable.isEmpty())
        return unreadable;
    return isNew ? makeSample(settings, progress) : ArchiveSchema::check(m_db);
}

/// New are files without tables, and those in which a sample was begun and not ended.
QString DeskArchive::readWhetherNew(bool* isNew) const
{
    QSqlQuery query(m_db);
    if (!query.exec(QStringLiteral("SELECT NOT EXISTS (SELECT 1 FROM main.sqlite_master) AND NOT EXISTS (SELECT 1 FROM "
                                   "archive.sqlite_master) OR EXISTS (SELECT 1 FROM main.sqlite_master WHERE name = "
                                   "'DeskSample')")) ||
        !query.next())
        return ArchiveSchema::errorText(query.lastError());
    *isNew = query.value(0).toBool();
    return {};
}

QString DeskArchive::makeSample(const DeskSettings& settings, const ProgressListener& progress)
{
    QString error = runAll(m_db, {QStringLiteral("CREATE TABLE IF NOT EXISTS \"DeskSample\" (\"Begun\" integer)")});
    if (error.isEmpty())
        error = ArchiveSchema::create(m_db);
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
    if (error.isEmpty())
        error = fillDay(settings, progress);
    return error.isEmpty() ? runAll(m_db, {QStringLiteral("DROP TABLE \"DeskSample\"")}) : error;
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
        object.addBindValue((truck ? tr("Truck %1") : tr("Van %1")).arg(id, 3, 10, QLatin1Char('0')));
        object.addBindValue(truck ? tr("Trucks") : tr("Vans"));
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
    readLastStates({}, m_db, [&](const MobData& state) {
        catalog.add(state.idObject, {QString(), tr("Objects")});
        return true;
    });
    QSqlQuery query(m_db);
    query.setForwardOnly(true);
    query.exec(QStringLiteral("SELECT \"Id\", \"Name\", \"Group\" FROM \"DeskObjects\""));
    while (query.next())
        catalog.add(static_cast<qint32>(query.value(0).toUInt()),
                    {query.value(1).toString(), query.value(2).toString()});
    return catalog;
}

QString DeskArchive::readStates(const std::function<void(const MobData&)>& take) const
{
    return textOf(readLastStates({supplyType, alarmType}, m_db, [&](const MobData& state) {
        take(state);
        return true;
    }));
}

qint64 DeskArchive::newestTime() const
{
    qint64 newest = 0;
    readLastStates({}, m_db, [&](const MobData& state) {
        newest = std::max<qint64>(newest, static_cast<quint32>(state.timeUnix));
        return true;
    });
    return newest;
}

Track DeskArchive::track(qint32 id, qint64 from, qint64 to, QString* error) const
{
    Track track;
    const quint32 begin = archiveTime(from);
    MobData before = alarmRequest(id);
    if (readPrevData(before, begin, oneDay, m_db)) {
        TrackPoint entered = TrackPoint::of(before);
        entered.time = static_cast<qint32>(begin);
        track.append(entered);
    }
    const QString failure =
        textOf(readHistory(id, begin, archiveTime(to), {alarmType}, m_db, [&](const MobData& state) {
            const TrackPoint point = TrackPoint::of(state);
            if (point.isComplete())
                track.append(point);
            return true;
        }));
    if (error && !failure.isEmpty())
        *error = failure;
    track.squeeze();
    return track;
}
