#include "archivewriter.h"

#include "archiveschema.h"
#include "copyrows.h"

#include <QDateTime>
#include <QSqlError>
#include <QVariant>

#include <algorithm>
#include <array>
#include <charconv>
#include <tuple>

namespace {

constexpr std::size_t rowsInTransaction = 20'000;
constexpr std::size_t mostPreparedInserts = 200; // captures with ever new sets of sensors must not pile statements up
constexpr qint64 firstPartitionedSecond =
    946'684'800; // 2000-01-01 UTC; what is older, or of the future, is no real time

QByteArray positionColumns(bool fingerprint)
{
    const QByteArray columns = "id_object, time_unix, sens_1, sens_2, sens_3, sens_4";
    return fingerprint ? columns + ", fingerprint" : columns;
}

template <typename Number>
void appendNumber(QByteArray& line, Number number)
{
    char text[32];
    const auto end = std::to_chars(text, text + sizeof text, number).ptr;
    line.append(text, static_cast<int>(end - text));
}

/// A PostgreSQL array of numbers, as text.
class ArrayText
{
public:
    template <typename Number>
    void append(Number number)
    {
        appendNumber(m_text, number);
        m_text.append(',');
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
    if (!m_postgres) {
        QSqlQuery query(m_db);
        execute(query,
                QStringLiteral("PRAGMA archive.cache_size = -65536")); // 64 MiB: the pages that a transaction meets
    }
}

void ArchiveWriter::add(const MobData& report)
{
    if (failed())
        return;
    m_rows.push_back(rowOf(report));
    if (m_rows.size() == rowsInTransaction)
        flush();
}

ArchiveWriter::Row ArchiveWriter::rowOf(const MobData& report)
{
    Row row{static_cast<quint32>(report.idObject),
            report.timeUnix,
            {report.latitude, report.longitude, report.speed, report.course},
            report.hash(),
            {}};
    row.sensors.reserve(static_cast<std::size_t>(report.sensors.size()));
    for (const Sensor& sensor : report.sensors) {
        if (ArchiveSchema::hasColumns(sensor.type))
            row.sensors.push_back(sensor);
    }
    // Of one type the last stays: it comes first in the order turned round, and unique keeps that.
    const auto byType = [](const Sensor& a, const Sensor& b) { return a.type < b.type; };
    const auto sameType = [](const Sensor& a, const Sensor& b) { return a.type == b.type; };
    std::reverse(row.sensors.begin(), row.sensors.end());
    std::stable_sort(row.sensors.begin(), row.sensors.end(), byType);
    row.sensors.erase(std::unique(row.sensors.begin(), row.sensors.end(), sameType), row.sensors.end());
    return row;
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
    // Neighbours in the index one after the other.
    std::stable_sort(m_rows.begin(), m_rows.end(), [](const Row& a, const Row& b) {
        return std::tie(a.object, a.time) < std::tie(b.object, b.time);
    });
    const Rows newest = newestOfObjects();
    return m_postgres ? storeInPostgres(newest) : storeInSqlite(newest);
}

std::set<qint16> ArchiveWriter::typesOf(const Rows& rows)
{
    std::set<qint16> types;
    for (const Row& row : rows) {
        for (const Sensor& sensor : row.sensors)
            types.insert(sensor.type);
    }
    return types;
}

ArchiveWriter::Rows ArchiveWriter::newestOfObjects() const
{
    Rows newest;
    for (const Row& row : m_rows) {
        if (newest.empty() || newest.back().object != row.object)
            newest.push_back(row);
        else if (newest.back().time < row.time)
            newest.back() = row;
    }
    return newest;
}

bool ArchiveWriter::storeInPostgres(const Rows& newest)
{
    // Nearly always all rows are new. Only when one is not, the slower way that passes over it is gone.
    bool copied = false;
    if (!makePartitions() || !copyIntoMasterTable(&copied))
        return false;
    int inserted = static_cast<int>(m_rows.size());
    if (!copied && !insertIntoPostgres(QStringLiteral("archive.master_table"), m_rows, true, &inserted))
        return false;
    m_stored += inserted;

    ArrayText objects;
    ArrayText times;
    for (const Row& row : newest) {
        objects.append(row.object);
        times.append(row.time);
    }
    QSqlQuery query(m_db);
    return execute(query, QStringLiteral("DELETE FROM archive.lastdata AS old USING unnest(%1, %2) AS new (id, time) "
                                         "WHERE old.id_object = new.id AND old.time_unix < new.time")
                              .arg(QLatin1String(objects.as("bigint")), QLatin1String(times.as("bigint")))) &&
           insertIntoPostgres(QStringLiteral("archive.lastdata"), newest, false, &inserted);
}

/// @param copied becomes true when all rows are in the table now; false when one was there before, and none is copied.
bool ArchiveWriter::copyIntoMasterTable(bool* copied)
{
    const std::set<qint16> types = typesOf(m_rows);
    QByteArray columns = positionColumns(true);
    for (const qint16 type : types)
        columns += ", " + ArchiveSchema::valueColumn(type) + ", " + ArchiveSchema::statusColumn(type);
    QByteArray text;
    for (const Row& row : m_rows) {
        appendNumber(text, row.object);
        appendNumber(text.append('\t'), row.time);
        for (const qint32 part : row.position)
            appendNumber(text.append('\t'), part);
        text.append("\t\\\\x").append(row.fingerprint.toHex());
        auto sensor = row.sensors.begin();
        for (const qint16 type : types) {
            if (sensor != row.sensors.end() && sensor->type == type) {
                appendNumber(text.append('\t'), sensor->value);
                appendNumber(text.append('\t'), static_cast<int>(sensor->status));
                ++sensor;
            } else {
                text.append("\t\\N\t\\N");
            }
        }
        text.append('\n');
    }
    QSqlQuery query(m_db);
    if (!execute(query, QStringLiteral("SAVEPOINT before_copy")))
        return false;
    const CopyResult result = copyRows(m_db, "archive.master_table", columns, text);
    if (result.outcome == CopyResult::Failed) {
        m_error = result.error;
        return false;
    }
    *copied = result.outcome == CopyResult::Copied;
    return *copied || execute(query, QStringLiteral("ROLLBACK TO SAVEPOINT before_copy"));
}

/// One statement for all rows: the columns travel as arrays, which costs a fraction of a statement a row.
bool ArchiveWriter::insertIntoPostgres(const QString& table, const Rows& rows, bool fingerprints, int* inserted)
{
    const std::set<qint16> types = typesOf(rows);
    ArrayText objects, times, prints;
    std::array<ArrayText, 4> positions;
    std::vector<ArrayText> values(types.size());
    std::vector<ArrayText> statuses(types.size());
    for (const Row& row : rows) {
        objects.append(row.object);
        times.append(row.time);
        for (std::size_t i = 0; i < positions.size(); ++i)
            positions[i].append(row.position[i]);
        prints.appendBytes(row.fingerprint);
        auto sensor = row.sensors.begin();
        std::size_t i = 0;
        for (const qint16 type : types) {
            if (sensor != row.sensors.end() && sensor->type == type) {
                values[i].append(sensor->value);
                statuses[i].append(static_cast<int>(sensor->status));
                ++sensor;
            } else {
                values[i].appendNull();
                statuses[i].appendNull();
            }
            ++i;
        }
    }
    QByteArray columns = positionColumns(fingerprints);
    QByteArray arrays = objects.as("bigint") + ',' + times.as("bigint");
    for (const ArrayText& position : positions)
        arrays += ',' + position.as("integer");
    if (fingerprints)
        arrays += ',' + prints.as("bytea");
    std::size_t i = 0;
    for (const qint16 type : types) {
        columns += ", " + ArchiveSchema::valueColumn(type) + ", " + ArchiveSchema::statusColumn(type);
        arrays += ',' + values[i].as("real") + ',' + statuses[i].as("smallint");
        ++i;
    }

    QSqlQuery query(m_db);
    if (!execute(query, QLatin1String("INSERT INTO ") + table + QLatin1String(" (") + QLatin1String(columns) +
                            QLatin1String(") SELECT * FROM unnest(") + QLatin1String(arrays) +
                            QLatin1String(") ON CONFLICT DO NOTHING")))
        return false;
    *inserted = query.numRowsAffected();
    return true;
}

/// A partition a month, from 2000 to the present one; all other times lie in the default partition.
bool ArchiveWriter::makePartitions()
{
    const qint64 now = QDateTime::currentSecsSinceEpoch();
    for (const Row& row : m_rows) {
        const qint64 time = row.time;
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
        remove.bindValue(0, row.object);
        remove.bindValue(1, row.time);
        if (!execute(remove) || !insertIntoSqlite(QStringLiteral("archive.lastdata"), row, false, &inserted))
            return false;
    }
    return true;
}

bool ArchiveWriter::insertIntoSqlite(const QString& table, const Row& row, bool fingerprint, int* inserted)
{
    QByteArray key(1, fingerprint ? 'm' : 'l');
    for (const Sensor& sensor : row.sensors)
        key.append(static_cast<char>(sensor.type)).append(static_cast<char>(sensor.status));
    if (m_inserts.size() == mostPreparedInserts)
        m_inserts.clear();
    const auto [place, isNew] = m_inserts.try_emplace(key, m_db);
    QSqlQuery& query = place->second;
    if (isNew) {
        QByteArray columns = positionColumns(fingerprint);
        QByteArray values = fingerprint ? "?, ?, ?, ?, ?, ?, ?" : "?, ?, ?, ?, ?, ?";
        for (const Sensor& sensor : row.sensors) {
            columns += ", " + ArchiveSchema::valueColumn(sensor.type) + ", " + ArchiveSchema::statusColumn(sensor.type);
            values += ", ?, " + QByteArray::number(sensor.status); // nearly always 0: not worth binding
        }
        if (!query.prepare(QStringLiteral("INSERT INTO %1 (%2) VALUES (%3) ON CONFLICT DO NOTHING")
                               .arg(table, QLatin1String(columns), QLatin1String(values)))) {
            m_error = query.lastError().text().simplified();
            return false;
        }
    }
    int at = 0;
    query.bindValue(at++, row.object);
    query.bindValue(at++, row.time);
    for (const qint32 part : row.position)
        query.bindValue(at++, part);
    if (fingerprint)
        query.bindValue(at++, row.fingerprint);
    for (const Sensor& sensor : row.sensors)
        query.bindValue(at++, static_cast<double>(sensor.value));
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
