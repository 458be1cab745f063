#include "archivewriter.h"

#include "archiveschema.h"

#include <QDateTime>
#include <QSqlError>
#include <QVariant>

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>

namespace {

constexpr std::size_t rowsInTransaction = 10'000;
constexpr std::size_t mostPreparedInserts = 200; // captures with ever new sets of sensors must not pile statements up
constexpr qint64 firstPartitionedSecond =
    946'684'800; // 2000-01-01 UTC; what is older, or of the future, is no real time

qint64 objectKey(const MobData& report)
{
    return static_cast<quint32>(report.idObject); // as the archive's readers ask for it
}

/// The report with one sensor of each type that has columns, the last, in the order of types.
MobData withStorableSensors(const MobData& report)
{
    std::array<const Sensor*, 256> last{};
    for (const Sensor& sensor : report.sensors) {
        if (ArchiveSchema::hasColumns(sensor.type))
            last[static_cast<std::size_t>(sensor.type)] = &sensor;
    }
    MobData storable = report;
    storable.sensors.clear();
    storable.sensors.reserve(report.sensors.size());
    for (const Sensor* sensor : last) {
        if (sensor)
            storable.sensors.append(*sensor);
    }
    return storable;
}

QByteArray columnsOf(const std::vector<qint16>& types, bool fingerprint)
{
    QByteArray columns = "id_object, time_unix, sens_1, sens_2, sens_3, sens_4";
    if (fingerprint)
        columns += ", fingerprint";
    for (const qint16 type : types)
        columns += ", " + ArchiveSchema::valueColumn(type) + ", " + ArchiveSchema::statusColumn(type);
    return columns;
}

/// A PostgreSQL array of numbers, as text.
class ArrayText
{
public:
    template <typename Number>
    void append(Number number)
    {
        char text[32];
        const auto end = std::to_chars(text, text + sizeof text, number).ptr;
        m_text.append(text, static_cast<int>(end - text)).append(',');
    }
    void appendNull() { m_text.append("NULL,"); }
    void appendBytes(const QByteArray& bytes) { m_text.append("\"\\\\x" + bytes.toHex() + "\","); }

    QByteArray as(const char* type) const { return "'{" + m_text.chopped(1) + "}'::" + type + "[]"; }

private:
    QByteArray m_text;
};

} // namespace

ArchiveWriter::ArchiveWriter(const QSqlDatabase& db) : m_db(db), m_postgres(ArchiveSchema::isPostgres(db))
{
    m_rows.reserve(rowsInTransaction);
}

void ArchiveWriter::add(const MobData& report)
{
    if (failed())
        return;
    m_rows.push_back({withStorableSensors(report), report.hash()});
    if (m_rows.size() == rowsInTransaction)
        flush();
}

void ArchiveWriter::flush()
{
    if (failed() || m_rows.empty())
        return;
    const qint64 storedBefore = m_stored;
    if (!m_db.transaction() || !store() || !m_db.commit()) {
        if (m_error.isEmpty())
            m_error = m_db.lastError().text().simplified();
        m_stored = storedBefore;
        m_inserts.clear();
        m_db.rollback();
    } else {
        m_repeated += static_cast<qint64>(m_rows.size()) - (m_stored - storedBefore);
    }
    m_rows.clear();
}

bool ArchiveWriter::store()
{
    const Rows newest = newestOfObjects();
    return m_postgres ? storeInPostgres(newest) : storeInSqlite(newest);
}

ArchiveWriter::Rows ArchiveWriter::newestOfObjects() const
{
    QHash<qint32, const Row*> newest;
    for (const Row& row : m_rows) {
        const Row*& known = newest[row.report.idObject];
        if (!known || known->report.timeUnix < row.report.timeUnix)
            known = &row;
    }
    Rows rows;
    rows.reserve(static_cast<std::size_t>(newest.size()));
    for (const Row* row : qAsConst(newest))
        rows.push_back(*row);
    return rows;
}

bool ArchiveWriter::storeInPostgres(const Rows& newest)
{
    int inserted = 0;
    if (!makePartitions() || !insertIntoPostgres(QStringLiteral("archive.master_table"), m_rows, true, &inserted))
        return false;
    m_stored += inserted;

    ArrayText objects;
    ArrayText times;
    for (const Row& row : newest) {
        objects.append(objectKey(row.report));
        times.append(row.report.timeUnix);
    }
    QSqlQuery query(m_db);
    return execute(query, QStringLiteral("DELETE FROM archive.lastdata AS old USING unnest(%1, %2) AS new (id, time) "
                                         "WHERE old.id_object = new.id AND old.time_unix < new.time")
                              .arg(QLatin1String(objects.as("bigint")), QLatin1String(times.as("bigint")))) &&
           insertIntoPostgres(QStringLiteral("archive.lastdata"), newest, false, &inserted);
}

/// One statement for all rows: the columns travel as arrays, which costs a fraction of a statement a row.
bool ArchiveWriter::insertIntoPostgres(const QString& table, const Rows& rows, bool fingerprints, int* inserted)
{
    std::array<bool, 256> present{};
    for (const Row& row : rows) {
        for (const Sensor& sensor : row.report.sensors)
            present[static_cast<std::size_t>(sensor.type)] = true;
    }
    std::vector<qint16> types;
    for (std::size_t type = 0; type < present.size(); ++type) {
        if (present[type])
            types.push_back(static_cast<qint16>(type));
    }

    ArrayText objects, times, latitudes, longitudes, speeds, courses, prints;
    std::vector<ArrayText> values(types.size());
    std::vector<ArrayText> statuses(types.size());
    for (const Row& row : rows) {
        objects.append(objectKey(row.report));
        times.append(row.report.timeUnix);
        latitudes.append(row.report.latitude);
        longitudes.append(row.report.longitude);
        speeds.append(row.report.speed);
        courses.append(row.report.course);
        prints.appendBytes(row.fingerprint);
        auto sensor = row.report.sensors.cbegin();
        for (std::size_t i = 0; i < types.size(); ++i) {
            if (sensor != row.report.sensors.cend() && sensor->type == types[i]) {
                values[i].append(sensor->value);
                statuses[i].append(static_cast<int>(sensor->status));
                ++sensor;
            } else {
                values[i].appendNull();
                statuses[i].appendNull();
            }
        }
    }
    QByteArray arrays = objects.as("bigint") + ',' + times.as("bigint") + ',' + latitudes.as("integer") + ',' +
                        longitudes.as("integer") + ',' + speeds.as("integer") + ',' + courses.as("integer");
    if (fingerprints)
        arrays += ',' + prints.as("bytea");
    for (std::size_t i = 0; i < types.size(); ++i)
        arrays += ',' + values[i].as("real") + ',' + statuses[i].as("smallint");

    QSqlQuery query(m_db);
    if (!execute(query, QLatin1String("INSERT INTO ") + table + QLatin1String(" (") +
                            QLatin1String(columnsOf(types, fingerprints)) + QLatin1String(") SELECT * FROM unnest(") +
                            QLatin1String(arrays) + QLatin1String(") ON CONFLICT DO NOTHING")))
        return false;
    *inserted = query.numRowsAffected();
    return true;
}

/// A partition a month, from 2000 to the present one; all other times lie in the default partition.
bool ArchiveWriter::makePartitions()
{
    const qint64 now = QDateTime::currentSecsSinceEpoch();
    for (const Row& row : m_rows) {
        const qint64 time = row.report.timeUnix;
        if (time < firstPartitionedSecond || time > now)
            continue;
        const auto next = m_months.upper_bound(time);
        if (next != m_months.begin()) {
            const QDate known = QDateTime::fromSecsSinceEpoch(*std::prev(next), Qt::UTC).date();
            if (time < QDateTime(known.addMonths(1), QTime(0, 0), Qt::UTC).toSecsSinceEpoch())
                continue;
        }
        const QDate day = QDateTime::fromSecsSinceEpoch(time, Qt::UTC).date();
        const QDateTime month(QDate(day.year(), day.month(), 1), QTime(0, 0), Qt::UTC);
        QSqlQuery query(m_db);
        if (!execute(query, QStringLiteral("CREATE TABLE IF NOT EXISTS archive.master_table_%1 PARTITION OF "
                                           "archive.master_table FOR VALUES FROM (%2) TO (%3)")
                                .arg(month.toString(QStringLiteral("yyyy_MM")))
                                .arg(month.toSecsSinceEpoch())
                                .arg(month.addMonths(1).toSecsSinceEpoch())))
            return false;
        m_months.insert(month.toSecsSinceEpoch());
    }
    return true;
}

bool ArchiveWriter::storeInSqlite(const Rows& newest)
{
    int inserted = 0;
    for (const Row& row : m_rows) {
        if (!insertIntoSqlite(QStringLiteral("archive.master_table"), row, true, &inserted))
            return false;
        m_stored += inserted;
    }
    QSqlQuery remove(m_db);
    if (!remove.prepare(QStringLiteral("DELETE FROM archive.lastdata WHERE id_object = ? AND time_unix < ?"))) {
        m_error = remove.lastError().text().simplified();
        return false;
    }
    for (const Row& row : newest) {
        remove.bindValue(0, objectKey(row.report));
        remove.bindValue(1, row.report.timeUnix);
        if (!execute(remove) || !insertIntoSqlite(QStringLiteral("archive.lastdata"), row, false, &inserted))
            return false;
    }
    return true;
}

bool ArchiveWriter::insertIntoSqlite(const QString& table, const Row& row, bool fingerprint, int* inserted)
{
    QByteArray key(1, fingerprint ? 'm' : 'l');
    for (const Sensor& sensor : row.report.sensors)
        key.append(static_cast<char>(sensor.type));
    if (m_inserts.size() == mostPreparedInserts)
        m_inserts.clear();
    const auto [place, isNew] = m_inserts.try_emplace(key, m_db);
    QSqlQuery& query = place->second;
    if (isNew) {
        std::vector<qint16> types;
        for (const Sensor& sensor : row.report.sensors)
            types.push_back(sensor.type);
        const QByteArray columns = columnsOf(types, fingerprint);
        const QByteArray marks = QByteArray("?, ").repeated(columns.count(',')) + '?';
        if (!query.prepare(QStringLiteral("INSERT INTO %1 (%2) VALUES (%3) ON CONFLICT DO NOTHING")
                               .arg(table, QLatin1String(columns), QLatin1String(marks)))) {
            m_error = query.lastError().text().simplified();
            return false;
        }
    }
    int position = 0;
    const auto bind = [&](const QVariant& value) { query.bindValue(position++, value); };
    bind(objectKey(row.report));
    bind(row.report.timeUnix);
    bind(row.report.latitude);
    bind(row.report.longitude);
    bind(row.report.speed);
    bind(row.report.course);
    if (fingerprint)
        bind(row.fingerprint);
    for (const Sensor& sensor : row.report.sensors) {
        bind(static_cast<double>(sensor.value));
        bind(static_cast<int>(sensor.status));
    }
    if (!execute(query))
        return false;
    *inserted = query.numRowsAffected();
    return true;
}

bool ArchiveWriter::execute(QSqlQuery& query, const QString& statement)
{
    if (query.exec(statement))
        return true;
    m_error = query.lastError().text().simplified();
    return false;
}

bool ArchiveWriter::execute(QSqlQuery& query)
{
    if (query.exec())
        return true;
    m_error = query.lastError().text().simplified();
    return false;
}
