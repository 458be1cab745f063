#include <Pardel/archive.h>

#include "queries_p.h"

#include <Pardel/mobdata.h>

#include <QSet>
#include <QSqlQuery>
#include <QString>
#include <QStringList>
#include <QVariant>

#include <algorithm>
#include <limits>
#include <set>
#include <vector>

namespace {

constexpr qint16 firstPositionType = 1;
constexpr qint16 lastPositionType = 4;

constexpr int firstPage = 1024;      // rows; whoever wants only the first few waits for no more
constexpr int smallestPage = 256;    // however many sensors a row has
constexpr int valuesInPage = 32'768; // beyond it pages grow no more

/// The first columns of the statements.
enum Column
{
    Object,
    Time,
    Latitude,
    Longitude,
    Speed,
    Course,
    FirstSensor,
};

/// The rows of a table of the schema archive that match the condition, in the order of a key, which is the column of
/// that member, from first up to and with last; of the sensors those of these types.
struct Rows
{
    QString table;
    QString key;
    qint32 MobData::*keyMember;
    quint32 first;
    quint32 last;
    QString condition; // ends with "and", where there is one
    QList<qint16> types;

    quint32 keyOf(const MobData& report) const { return static_cast<quint32>(report.*keyMember); }
};

QSqlError run(QSqlQuery& query, const QSqlDatabase& db, const QString& statement)
{
    if (!db.isOpen())
        return notOpen(db);
    query.setForwardOnly(true); // else the driver keeps all rows
    query.exec(statement);
    return query.lastError();
}

bool isPostgres(const QSqlDatabase& db)
{
    return db.driverName().startsWith(QLatin1String("QPSQL"));
}

/// The names of a table's columns, among @p wanted if that names any. Asked of the catalogue: an empty result of the
/// table itself takes PostgreSQL the longer the more partitions there are. A table that is not there has no columns;
/// whoever reads it then is told so in the database's own words.
QSqlError findColumns(QSet<QString>& columns, const QSqlDatabase& db, const QString& table, const QStringList& wanted)
{
    const bool postgres = isPostgres(db);
    QString statement =
        (postgres ? QStringLiteral("SELECT attname FROM pg_attribute WHERE attrelid = to_regclass('archive.%1') and "
                                   "attnum > 0 and not attisdropped")
                  : QStringLiteral("SELECT name FROM pragma_table_info('%1', 'archive') WHERE 1 = 1"))
            .arg(table);
    if (!wanted.isEmpty())
        statement += QStringLiteral(" and %1 in ('%2')")
                         .arg(postgres ? QStringLiteral("attname") : QStringLiteral("name"),
                              wanted.join(QStringLiteral("', '")));
    QSqlQuery query(db);
    const QSqlError error = run(query, db, statement);
    if (error.type() != QSqlError::NoError)
        return error;
    while (query.next())
        columns.insert(query.value(0).toString());
    return query.lastError();
}

QString valueColumn(int type)
{
    return QStringLiteral("sens_%1").arg(type);
}

QString statusColumn(int type)
{
    return QStringLiteral("status_%1").arg(type);
}

bool canBeSensor(int type)
{
    return type >= 0 && !(type >= firstPositionType && type <= lastPositionType);
}

/// Those of @p asked that can be sensors, each once.
QList<qint16> sensorsOf(const QList<qint16>& asked)
{
    std::set<qint16> seen;
    QList<qint16> sensors;
    for (const qint16 type : asked) {
        if (canBeSensor(type) && seen.insert(type).second)
            sensors.append(type);
    }
    return sensors;
}

/// Takes those off the list that the table does not have.
QSqlError dropMissing(QList<qint16>& types, const QSqlDatabase& db, const QString& table)
{
    if (types.isEmpty())
        return {};
    QStringList wanted;
    for (const qint16 type : types)
        wanted << valueColumn(type) << statusColumn(type);
    QSet<QString> columns;
    const QSqlError error = findColumns(columns, db, table, wanted);
    const auto isMissing = [&](qint16 type) {
        return !columns.contains(valueColumn(type)) || !columns.contains(statusColumn(type));
    };
    types.erase(std::remove_if(types.begin(), types.end(), isMissing), types.end());
    return error;
}

QString columnsOf(const QList<qint16>& types)
{
    QString columns = QStringLiteral("id_object, time_unix, sens_1, sens_2, sens_3, sens_4");
    for (const qint16 type : types)
        columns += QLatin1String(", ") + valueColumn(type) + QLatin1String(", ") + statusColumn(type);
    return columns;
}

qint32 low32Bits(const QVariant& value)
{
    return static_cast<qint32>(static_cast<quint32>(value.toLongLong()));
}

MobData reportOf(const QSqlQuery& query, const QList<qint16>& types)
{
    MobData report{low32Bits(query.value(Object)),
                   query.value(Latitude).toInt(),
                   query.value(Longitude).toInt(),
                   query.value(Speed).toInt(),
                   query.value(Course).toInt(),
                   low32Bits(query.value(Time)),
                   {}};
    report.sensors.reserve(static_cast<int>(types.size()));
    int column = FirstSensor;
    for (const qint16 type : types) {
        const QVariant value = query.value(column++);
        const QVariant status = query.value(column++);
        if (value.isNull() && status.isNull())
            continue;
        Sensor sensor;
        sensor.type = type;
        sensor.value = value.isNull() ? std::numeric_limits<float>::quiet_NaN() : static_cast<float>(value.toDouble());
        sensor.status = static_cast<qint8>(status.toInt());
        report.sensors.append(sensor);
    }
    return report;
}

/// The first rows, at most @p size, with a key from @p first.
QSqlError readPage(std::vector<MobData>& page, const Rows& rows, quint32 first, int size, const QSqlDatabase& db)
{
    page.clear();
    QSqlQuery query(db);
    const QSqlError error =
        run(query, db,
            QStringLiteral("SELECT %1 FROM archive.%2 WHERE %3 %4 >= %5 and %4 <= %6 ORDER BY %4 LIMIT %7")
                .arg(columnsOf(rows.types), rows.table, rows.condition, rows.key, QString::number(first),
                     QString::number(rows.last), QString::number(size)));
    if (error.type() != QSqlError::NoError)
        return error;
    while (query.next())
        page.push_back(reportOf(query, rows.types));
    return query.lastError();
}

/// The first page, after which the types are those that the table has. PostgreSQL's catalogue is asked for them ahead, as
/// a statement that fails there ends the caller's transaction; with SQLite only when the statement has failed, as asking
/// takes half as long as reading an hour.
QSqlError readFirstPage(std::vector<MobData>& page, Rows& rows, int size, const QSqlDatabase& db)
{
    QSqlError error;
    if (!isPostgres(db)) {
        error = readPage(page, rows, rows.first, size, db);
        if (error.type() == QSqlError::NoError)
            return error;
    }
    const auto asked = rows.types.size();
    const QSqlError unknown = dropMissing(rows.types, db, rows.table);
    if (unknown.type() != QSqlError::NoError)
        return unknown;
    if (!isPostgres(db) && rows.types.size() == asked) // it failed for another reason
        return error;
    return readPage(page, rows, rows.first, size, db);
}

/// Page by page, so that no statement is under way while states are handed over, and the next page is found by the
/// index. The rows of the last key of a full page come again with the next page, as there may be more of them.
QSqlError readRows(Rows rows, const QSqlDatabase& db, const StateReceiver& take)
{
    const int fullPage = std::max(smallestPage, valuesInPage / (static_cast<int>(rows.types.size()) + 2));
    int size = std::min(firstPage, fullPage);
    std::vector<MobData> page;
    QSqlError error = readFirstPage(page, rows, size, db);
    while (error.type() == QSqlError::NoError) {
        quint32 first = 0;
        const bool isLast = static_cast<int>(page.size()) < size;
        auto end = page.cend();
        if (!isLast) {
            first = rows.keyOf(page.back());
            const auto ofLastKey = [&](const MobData& report) { return rows.keyOf(report) == first; };
            end = std::find_if(page.cbegin(), end, ofLastKey);
        }
        for (auto report = page.cbegin(); report != end; ++report) {
            if (!take || !take(*report))
                return {};
        }
        if (isLast)
            break;
        if (size < fullPage || end == page.cbegin()) // a page of one key has not been handed over: it was too small
            size *= 2;
        error = readPage(page, rows, first, size, db);
    }
    return error;
}

} // namespace

QSqlError readHistory(qint32 idObject, quint32 from, quint32 to, QList<qint16> const& types, QSqlDatabase const& db,
                      StateReceiver const& take)
{
    const QString object = QString::number(static_cast<quint32>(idObject));
    return readRows({QStringLiteral("master_table"), QStringLiteral("time_unix"), &MobData::timeUnix, from, to,
                     QStringLiteral("id_object = %1 and").arg(object), sensorsOf(types)},
                    db, take);
}

QSqlError readLastStates(QList<qint16> const& types, QSqlDatabase const& db, StateReceiver const& take)
{
    return readRows({QStringLiteral("lastdata"), QStringLiteral("id_object"), &MobData::idObject, 0,
                     std::numeric_limits<quint32>::max(), QString(), sensorsOf(types)},
                    db, take);
}

QSqlError readSensorTypes(QList<qint16>& types, QSqlDatabase const& db)
{
    QSet<QString> columns;
    const QString table = QStringLiteral("master_table");
    QSqlError error = findColumns(columns, db, table, {});
    if (error.type() == QSqlError::NoError && columns.isEmpty()) { // then there is no table
        QSqlQuery query(db);
        error = run(query, db, QStringLiteral("SELECT 1 FROM archive.%1 WHERE 1 = 0").arg(table));
    }
    if (error.type() != QSqlError::NoError)
        return error;
    types.clear();
    for (int type = 0; type <= std::numeric_limits<qint16>::max(); ++type) {
        if (canBeSensor(type) && columns.contains(valueColumn(type)) && columns.contains(statusColumn(type)))
            types.append(static_cast<qint16>(type));
    }
    return error;
}
