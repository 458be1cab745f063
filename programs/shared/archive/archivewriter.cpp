#include "archivewriter.h"

#include "archiveschema.h"
#include "copyrows.h"
#include "numbertext.h"

#include <QDateTime>
#include <QSqlError>
#include <QSqlRecord>
#include <QVariant>

#include <algorithm>
#include <array>
#include <charconv>
#include <tuple>

namespace {

constexpr std::size_t rowsInTransaction = 20'000;
constexpr std::size_t mostPreparedInserts = 200; // captures with ever new sets of sensors must not pile statements up
// Until now; terminals' clocks may say anything, and planning takes all partitions.
constexpr int partitionedYears = 10;

/// The columns of a state with sensors of these types, in the order in which rows hold their values.
template <typename Types>
QByteArray columnsOf(const Types& types, bool fingerprint)
{
    QByteArray columns = "id_object, time_unix, sens_1, sens_2, sens_3, sens_4";
    if (fingerprint)
        columns += ", fingerprint";
    for (const qint16 type : types)
        columns += ", " + ArchiveSchema::valueColumn(type) + ", " + ArchiveSchema::statusColumn(type);
    return columns;
}

void appendNumber(QByteArray& line, float number)
{
    const FloatText text(number);
    line.append(text.view().data(), static_cast<int>(text.view().size()));
}

template <typename Integer>
void appendNumber(QByteArray& line, Integer number)
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
    if (!m_postgres) // 64 MiB: the pages that a transaction meets
        QSqlQuery(m_db).exec(QStringLiteral("PRAGMA archive.cache_size = -65536"));
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
    if (m_postgres)
        makePartitions();
    const qint64 storedBefore = m_stored;
    if (!m_db.transaction() || !store() || !m_db.commit()) {
        m_failed = true;
        if (m_error.isEmpty())
            m_error = ArchiveSchema::errorText(m_db.lastError());
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
        if (row.time == MobData::noTime || row.time == 0)
            continue; // of no time, so not newer than anything
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
    if (!copyIntoMasterTable(&copied))
        return false;
    int inserted = static_cast<int>(m_rows.size());
    if (!copied && !insertIntoPostgres(QStringLiteral("archive.master_table"), m_rows, true,
                                       QStringLiteral("DO NOTHING"), &inserted))
        return false;
    m_stored += inserted;
    // In the order of objects, so that two imports at once wait for each other and not in a circle.
    return newest.empty() ||
           insertIntoPostgres(QStringLiteral("archive.lastdata"), newest, false, replaceOlder(), &inserted);
}

/// All columns that the table has, those too of which the new state has nothing.
QString ArchiveWriter::replaceOlder()
{
    if (!m_replaceOlder.isEmpty())
        return m_replaceOlder;
    QStringList columns;
    QStringList values;
    const QSqlRecord record = m_db.record(QStringLiteral("archive.lastdata"));
    for (int i = 0; i < record.count(); ++i) {
        columns += record.fieldName(i);
        values += QLatin1String("excluded.") + record.fieldName(i);
    }
    m_replaceOlder =
        QStringLiteral("(id_object) DO UPDATE SET (%1) = (%2) WHERE excluded.time_unix > lastdata.time_unix")
            .arg(columns.join(QLatin1String(", ")), values.join(QLatin1String(", ")));
    return m_replaceOlder;
}

/// @param copied becomes true when all rows are in the table now; false when one was there before, and none is copied.
bool ArchiveWriter::copyIntoMasterTable(bool* copied)
{
    const std::set<qint16> types = typesOf(m_rows);
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
    const CopyResult result = copyRows(m_db, "archive.master_table", columnsOf(types, true), text);
    if (result.outcome == CopyResult::Failed) {
        m_error = result.error;
        return false;
    }
    *copied = result.outcome == CopyResult::Copied;
    return *copied || execute(query, QStringLiteral("ROLLBACK TO SAVEPOINT before_copy"));
}

/// One statement for all rows: the columns travel as arrays, which costs a fraction of a statement a row.
bool ArchiveWriter::insertIntoPostgres(const QString& table, const Rows& rows, bool fingerprints,
                                       const QString& onConflict, int* inserted)
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
    QByteArray arrays = objects.as("bigint") + ',' + times.as("bigint");
    for (const ArrayText& position : positions)
        arrays += ',' + position.as("integer");
    if (fingerprints)
        arrays += ',' + prints.as("bytea");
    for (std::size_t i = 0; i < types.size(); ++i)
        arrays += ',' + values[i].as("real") + ',' + statuses[i].as("smallint");

    QSqlQuery query(m_db);
    if (!execute(query, QLatin1String("INSERT INTO ") + table + QLatin1String(" (") +
                            QLatin1String(columnsOf(types, fingerprints)) + QLatin1String(") SELECT * FROM unnest(") +
                            QLatin1String(arrays) + QLatin1String(") ON CONFLICT ") + onConflict))
        return false;
    *inserted = query.numRowsAffected();
    return true;
}

/// A partition a month, of the last years; all other times lie in the default partition. Each is made by itself, so
/// that readers wait no longer for it than that takes. Where it cannot be made (another import has just done so, or the
/// default partition holds states of that month already), the month's states go where PostgreSQL puts them.
void ArchiveWriter::makePartitions()
{
    const QDate today = QDateTime::currentDateTimeUtc().date();
    for (const Row& row : m_rows) {
        const QDate day = QDateTime::fromSecsSinceEpoch(row.time, Qt::UTC).date();
        const QDate month(day.year(), day.month(), 1);
        if (day > today || day < today.addYears(-partitionedYears) || !m_months.insert(month).second)
            continue;
        const QString table = QStringLiteral("archive.master_table_") + month.toString(QStringLiteral("yyyy_MM"));
        const auto firstSecond = [](const QDate& date) {
            return QString::number(QDateTime(date, QTime(0, 0), Qt::UTC).toSecsSinceEpoch());
        };
        QSqlQuery query(m_db);
        if (query.exec(QStringLiteral("SELECT to_regclass('%1') IS NULL").arg(table)) && query.next() &&
            query.value(0).toBool())
            query.exec(QStringLiteral("CREATE TABLE %1 PARTITION OF archive.master_table FOR VALUES FROM (%2) TO (%3)")
                           .arg(table, firstSecond(month), firstSecond(month.addMonths(1))));
    }
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
        m_error = ArchiveSchema::errorText(remove.lastError());
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
        std::vector<qint16> types;
        QByteArray values = fingerprint ? "?, ?, ?, ?, ?, ?, ?" : "?, ?, ?, ?, ?, ?";
        for (const Sensor& sensor : row.sensors) {
            types.push_back(sensor.type);
            values += ", ?, " + QByteArray::number(sensor.status); // nearly always 0: not worth binding
        }
        if (!query.prepare(QStringLiteral("INSERT INTO %1 (%2) VALUES (%3) ON CONFLICT DO NOTHING")
                               .arg(table, QLatin1String(columnsOf(types, fingerprint)), QLatin1String(values)))) {
            m_error = ArchiveSchema::errorText(query.lastError());
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
    m_error = ArchiveSchema::errorText(query.lastError());
    return false;
}

bool ArchiveWriter::execute(QSqlQuery& query)
{
    if (query.exec())
        return true;
    m_error = ArchiveSchema::errorText(query.lastError());
    return false;
}
