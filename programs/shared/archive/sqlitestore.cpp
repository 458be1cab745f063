#include "archiveschema.h"
#include "archivestore.h"
#include "transaction.h"

#include <QDateTime>
#include <QSqlQuery>
#include <QVariant>

#include <algorithm>
#include <map>
#include <utility>

using Row = ArchiveBatch::Row;

namespace {

constexpr std::size_t mostPrepared = 200; // captures with ever new sets of sensors must not pile statements up

class SqliteStore : public ArchiveStore
{
public:
    explicit SqliteStore(const QSqlDatabase& db);

    void prepare(const ArchiveBatch& /*batch*/) override {}
    void send(Transaction& transaction, const ArchiveBatch& batch) override;
    Added finish(Transaction& /*transaction*/) override { return m_added; }
    void write(Transaction& transaction, const std::vector<LastState>& states) override;
    void reset() override;

private:
    QSqlQuery& insertOf(const ArchiveBatch& batch, const Row& row);
    QSqlQuery& updateOf(const LastState& state);
    qint64 nextChange(Transaction& transaction);
    QSqlQuery& preparedAs(std::map<QByteArray, QSqlQuery>& queries, const QByteArray& key, const QByteArray& statement);

    QSqlDatabase m_db;
    std::map<QByteArray, QSqlQuery> m_inserts; // by types and statuses of the sensors
    std::map<QByteArray, QSqlQuery> m_updates; // by types of the items
    Added m_added;
    bool m_tellsChanges = false; // so do the prepared updates
};

SqliteStore::SqliteStore(const QSqlDatabase& db) : m_db(db)
{
    QSqlQuery(m_db).exec(QStringLiteral("PRAGMA archive.cache_size = -65536")); // 64 MiB: what a transaction meets
}

QSqlQuery& SqliteStore::insertOf(const ArchiveBatch& batch, const Row& row)
{
    QByteArray key;
    for (const Sensor* sensor = batch.begin(row); sensor != batch.end(row); ++sensor)
        key.append(static_cast<char>(sensor->type)).append(static_cast<char>(sensor->status));
    const auto place = m_inserts.find(key);
    if (place != m_inserts.end())
        return place->second;
    QByteArray columns = "id_object, time_unix, sens_1, sens_2, sens_3, sens_4, fingerprint";
    QByteArray values = "?, ?, ?, ?, ?, ?, ?";
    for (const Sensor* sensor = batch.begin(row); sensor != batch.end(row); ++sensor) {
        columns += ", " + ArchiveSchema::valueColumn(sensor->type) + ", " + ArchiveSchema::statusColumn(sensor->type);
        values += ", ?, " + QByteArray::number(sensor->status); // nearly always 0: not worth binding
    }
    return preparedAs(m_inserts, key,
                      "INSERT INTO archive.master_table (" + columns + ") VALUES (" + values +
                          ") ON CONFLICT DO NOTHING");
}

QSqlQuery& SqliteStore::updateOf(const LastState& state)
{
    QByteArray key;
    QByteArray changes = m_tellsChanges ? "time_unix = ?, changed = ?" : "time_unix = ?";
    for (const LastState::Item& item : state.items) {
        key.append(static_cast<char>(item.type));
        changes += item.sensor ? ", " + ArchiveSchema::valueColumn(item.type) + " = ?, " +
                                     ArchiveSchema::statusColumn(item.type) + " = ?"
                               : QByteArray(", sens_1 = ?, sens_2 = ?, sens_3 = ?, sens_4 = ?");
    }
    const auto place = m_updates.find(key);
    return place != m_updates.end()
               ? place->second
               : preparedAs(m_updates, key, "UPDATE archive.lastdata SET " + changes + " WHERE id_object = ?");
}

QSqlQuery& SqliteStore::preparedAs(std::map<QByteArray, QSqlQuery>& queries, const QByteArray& key,
                                   const QByteArray& statement)
{
    if (queries.size() == mostPrepared)
        queries.clear();
    QSqlQuery& query = queries.try_emplace(key, m_db).first->second;
    query.prepare(QString::fromLatin1(statement));
    return query;
}

void SqliteStore::send(Transaction& transaction, const ArchiveBatch& batch)
{
    m_added = {};
    for (const Row& row : batch.rows()) {
        if (transaction.failed())
            return;
        QSqlQuery& query = insertOf(batch, row);
        int place = 0;
        query.bindValue(place++, qint64(row.object));
        query.bindValue(place++, row.storedTime());
        for (const qint32 part : row.position)
            query.bindValue(place++, part);
        query.bindValue(
            place++, QByteArray(reinterpret_cast<const char*>(row.print.data()), static_cast<int>(row.print.size())));
        for (const Sensor* sensor = batch.begin(row); sensor != batch.end(row); ++sensor)
            query.bindValue(place++, static_cast<double>(sensor->value));
        if (transaction.run(query) && query.numRowsAffected() > 0) {
            ++m_added.rows;
            m_added.ahead += row.ahead ? 1 : 0;
        }
    }
}

/// What this transaction puts into the column `changed`.
qint64 SqliteStore::nextChange(Transaction& transaction)
{
    QSqlQuery query(m_db);
    qint64 change = QDateTime::currentMSecsSinceEpoch();
    if (transaction.run(query, QStringLiteral("SELECT max(changed) FROM archive.lastdata")) && transaction.next(query))
        change = std::max(change, query.value(0).toLongLong() + 1);
    return change;
}

void SqliteStore::write(Transaction& transaction, const std::vector<LastState>& states)
{
    // Asked each time, as the column may come while this is at work.
    const bool tellsChanges = transaction.hasRow(ArchiveSchema::tellsChangesStatement(m_db));
    if (tellsChanges != std::exchange(m_tellsChanges, tellsChanges))
        m_updates.clear();
    const qint64 change = tellsChanges ? nextChange(transaction) : 0;
    for (const LastState& state : states) {
        if (transaction.failed())
            return;
        QSqlQuery& query = updateOf(state);
        int place = 0;
        query.bindValue(place++, qint64(state.time));
        if (tellsChanges)
            query.bindValue(place++, change);
        for (const LastState::Item& item : state.items) {
            if (item.sensor) {
                query.bindValue(place++, static_cast<double>(item.sensor->value));
                query.bindValue(place++, int(item.sensor->status));
                continue;
            }
            for (const qint32 part : item.from->position)
                query.bindValue(place++, part);
        }
        query.bindValue(place++, qint64(state.object));
        transaction.run(query);
    }
}

void SqliteStore::reset()
{
    m_inserts.clear();
    m_updates.clear();
}

} // namespace

std::unique_ptr<ArchiveStore> makeSqliteStore(const QSqlDatabase& db)
{
    return std::make_unique<SqliteStore>(db);
}
