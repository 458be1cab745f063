#pragma once

#include "objectcatalog.h"
#include "spoolstore.h"
#include "track.h"

#include <Pardel/mobdata.h>

#include <QCoreApplication>
#include <QSqlDatabase>
#include <QString>

#include <functional>

class DeskSettings;

/**
 * The archive that the group "Database" of the settings names.
 *
 * An SQLite one that is new, its files without tables, receives a simulated day of the terminals that the group
 * "Sample" describes, with names for them and users who may log in.
 */
class DeskArchive
{
    Q_DECLARE_TR_FUNCTIONS(DeskArchive)

public:
    /** Hears how much of the simulated day is done, in percent. */
    using ProgressListener = std::function<void(int)>;

    /** Closes the connection. */
    ~DeskArchive();

    /** Opens the archive, and makes the simulated day if it has to. @return what went wrong, or nothing */
    QString open(const DeskSettings& settings, const ProgressListener& progress);

    const QSqlDatabase& database() const { return m_db; }

    /** Where the settings' archive lies, for who stores reports in it over a connection of its own. */
    static SpoolStoreSettings storing(const DeskSettings& settings);

    /** The objects of "DeskObjects" (without that table, none with a name) and all that have a last state. */
    ObjectCatalog objects() const;

    /** Hands over the last states of all objects with their supply (sensor 65) and alarm (15). @return as open() */
    QString readStates(const std::function<void(const MobData&)>& take) const;

    /** The time of the newest last state; 0 without one. */
    qint64 newestTime() const;

    /**
     * An object's points from @p from up to and with @p to, in Unix seconds; before them the state in which it entered
     * the period, if there is one in the day before, as a point at @p from.
     */
    Track track(qint32 id, qint64 from, qint64 to, QString* error = nullptr) const;

private:
    QString readWhetherNew(bool* isNew) const;
    QString makeSample(const DeskSettings& settings, const ProgressListener& progress);
    QString fillDay(const DeskSettings& settings, const ProgressListener& progress);

    QSqlDatabase m_db;
};
