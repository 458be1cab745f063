#include "changedstates.h"

#include "archiveschema.h"
#include "numberlist.h"

#include <Pardel/archive.h>

#include <QSqlError>
#include <QSqlQuery>
#include <QVariant>

#include <algorithm>
#include <limits>

namespace {

constexpr std::size_t pageSize = 256;

/// The first columns of a page.
enum Column
{
    Object,
    Changed,
    Time,
    Latitude,
    Longitude,
    Speed,
    Course,
    FirstSensor,
};

bool run(QSqlQuery& query, const QString& statement)
{
    query.setForwardOnly(true);
    return query.exec(statement);
}

QString errorOf(const QSqlQuery& query)
{
    return query.lastError().type() == QSqlError::NoError ? QString() : ArchiveSchema::errorText(query.lastError());
}

/// Two numbers: where the next reading has to begin, and the first that is too great to be committed yet.
QString snapshotStatement(bool postgres)
{
    return postgres ? QStringLiteral("SELECT pg_snapshot_xmin(now)::text::bigint, pg_snapshot_xmax(now)::text::bigint "
                                     "FROM pg_current_snapshot() AS now")
                    : QStringLiteral("SELECT greatest, greatest FROM (SELECT coalesce(max(changed), 0) + 1 AS greatest "
                                     "FROM archive.lastdata)");
}

Sensor sensorOf(const QSqlQuery& query, qint16 type, int column)
{
    Sensor sensor;
    sensor.type = type;
    sensor.value = query.isNull(column) ? std::numeric_limits<float>::quiet_NaN() // as SQLite stores it
                                        : static_cast<float>(query.value(column).toDouble());
    sensor.status = static_cast<qint8>(query.value(column + 1).toInt());
    return sensor;
}

MobData stateOf(const QSqlQuery& query, const QList<qint16>& types)
{
    const auto low32Bits = [&](Column column) {
        return static_cast<qint32>(static_cast<quint32>(query.value(column).toLongLong()));
    };
    MobData state{low32Bits(Object),
                  query.value(Latitude).toInt(),
                  query.value(Longitude).toInt(),
                  query.value(Speed).toInt(),
                  query.value(Course).toInt(),
                  low32Bits(Time),
                  {}};
    int column = FirstSensor;
    for (const qint16 type : types) {
        if (!query.isNull(column) || !query.isNull(column + 1))
            state.sensors += sensorOf(query, type, column);
        column += 2;
    }
    return state;
}

} // namespace

qint64 ChangedStates::present(const QSqlDatabase& db)
{
    QSqlQuery query(db);
    return db.isOpen() && run(query, ArchiveSchema::tellsChangesStatement(db)) && query.next() &&
                   run(query, snapshotStatement(ArchiveSchema::isPostgres(db))) && query.next()
               ? query.value(0).toLongLong()
               : 0;
}

QString ChangedStates::use(const QSqlDatabase& db)
{
    m_db = db;
    m_found.clear();
    m_types.clear();
    QSqlQuery query(m_db);
    m_hasColumn = run(query, ArchiveSchema::tellsChangesStatement(m_db)) && query.next();
    if (!errorOf(query).isEmpty())
        return errorOf(query);
    const QSqlError error = readSensorTypes(m_types, m_db);
    if (error.type() != QSqlError::NoError)
        return ArchiveSchema::errorText(error);
    m_columns = QStringLiteral("id_object, changed, time_unix, sens_1, sens_2, sens_3, sens_4");
    for (const qint16 type : qAsConst(m_types))
        m_columns += QStringLiteral(", sens_%1, status_%1").arg(type);
    return {};
}

QString ChangedStates::find()
{
    m_found.clear();
    QSqlQuery query(m_db);
    if (!run(query, snapshotStatement(ArchiveSchema::isPostgres(m_db))) || !query.next())
        return errorOf(query);
    m_next = query.value(0).toLongLong();
    const qint64 below = query.value(1).toLongLong();
    if (m_from > below) // another database, as one that has been put back from a backup: its numbers begin anew
        m_from = 0;
    // Rows that become visible after the snapshot, and are not found here, have numbers from m_next on. No number is
    // as great as the snapshot's end but in an archive that has come from another server; there it says nothing.
    if (!run(query, QStringLiteral("SELECT id_object, changed FROM archive.lastdata WHERE changed >= %1 AND changed < "
                                   "%2 AND id_object BETWEEN 0 AND 4294967295")
                        .arg(m_from)
                        .arg(below)))
        return errorOf(query);
    while (query.next()) {
        const auto object = static_cast<quint32>(query.value(0).toLongLong());
        if (m_read.value(object, -1) != query.value(1).toLongLong())
            m_found.push_back(object);
    }
    const QString error = errorOf(query);
    if (!error.isEmpty())
        m_found.clear();
    else if (m_found.empty())
        endReading();
    return error;
}

QString ChangedStates::read(QVector<MobData>* page)
{
    page->clear();
    const std::size_t size = std::min(pageSize, m_found.size());
    const std::vector<quint32> objects(m_found.end() - static_cast<std::ptrdiff_t>(size), m_found.end());
    QSqlQuery query(m_db);
    if (!run(query, QStringLiteral("SELECT %1 FROM archive.lastdata WHERE id_object IN (%2)")
                        .arg(m_columns, NumberList::text(objects))))
        return errorOf(query);
    QVector<qint64> numbers;
    while (query.next()) {
        page->append(stateOf(query, m_types));
        numbers += query.value(Changed).toLongLong();
    }
    const QString error = errorOf(query);
    if (!error.isEmpty()) {
        page->clear();
        return error;
    }
    for (int i = 0; i < numbers.size(); ++i)
        m_read.insert(static_cast<quint32>((*page)[i].idObject), numbers[i]);
    m_found.resize(m_found.size() - size);
    if (m_found.empty())
        endReading();
    return {};
}

void ChangedStates::endReading()
{
    m_from = m_next;
    for (auto row = m_read.begin(); row != m_read.end();)
        row = row.value() < m_from ? m_read.erase(row) : std::next(row);
}
