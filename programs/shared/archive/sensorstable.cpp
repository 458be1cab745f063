#include "sensorstable.h"

#include "archiveschema.h"
#include "databasetrouble.h"
#include "numberlist.h"
#include "transaction.h"

#include <QMap>
#include <QSqlQuery>
#include <QVariant>

#include <algorithm>
#include <array>
#include <vector>

namespace {

constexpr int mostRemembered = 500'000; // objects

/// Takes away the objects that have rows.
void removeEntered(Transaction& transaction, QSet<quint32>& objects)
{
    QSqlQuery query(transaction.database());
    transaction.run(query,
                    QStringLiteral("SELECT DISTINCT \"Id_objects\" FROM \"Sensors\" WHERE \"Id_objects\" IN (%1)")
                        .arg(NumberList::text(objects)));
    while (transaction.next(query))
        objects.remove(query.value(0).toUInt());
}

/// The types that an object's reports have, the most frequent first.
std::vector<int> typesInOrder(const std::array<int, ArchiveBatch::typeCount>& counts)
{
    std::vector<int> types;
    for (int type = 0; type < ArchiveBatch::typeCount; ++type) {
        if (counts[static_cast<std::size_t>(type)] > 0)
            types.push_back(type);
    }
    std::stable_sort(types.begin(), types.end(), [&](int a, int b) {
        return counts[static_cast<std::size_t>(a)] > counts[static_cast<std::size_t>(b)];
    });
    return types;
}

} // namespace

void SensorsTable::enter(Transaction& transaction, const ArchiveBatch& batch)
{
    if (!m_usable || transaction.failed())
        return;
    QSet<quint32> objects;
    for (const ArchiveBatch::Row& row : batch.rows()) {
        if (row.sensorCount > 0 && !m_known.contains(row.object))
            objects.insert(row.object);
    }
    if (objects.isEmpty())
        return;
    QSet<quint32> missing = objects;
    const Transaction::Failure failure = transaction.attempt([&] {
        removeEntered(transaction, missing);
        if (!missing.isEmpty())
            insert(transaction, batch, missing);
    });
    m_error = failure.text;
    // A table that is not there or not to be written will not be so a moment later; another writer's row may be gone.
    m_usable = !failure || DatabaseTrouble::passes(failure.code) || failure.code.startsWith(QLatin1String("23"));
    if (m_known.size() > mostRemembered)
        m_known.clear();
    m_known += objects - missing;
}

void SensorsTable::insert(Transaction& transaction, const ArchiveBatch& batch, const QSet<quint32>& objects)
{
    const bool postgres = ArchiveSchema::isPostgres(transaction.database());
    QSet<quint32> missing = objects;
    if (postgres) { // two at once would else enter them twice, or under the same Id
        transaction.run(QStringLiteral("SELECT pg_advisory_xact_lock(hashtext('\"Sensors\"'))"));
        removeEntered(transaction, missing);
    }
    QMap<quint32, std::array<int, ArchiveBatch::typeCount>> counts;
    for (const ArchiveBatch::Row& row : batch.rows()) {
        if (!missing.contains(row.object))
            continue;
        auto& ofObject = counts[row.object];
        for (const Sensor* sensor = batch.begin(row); sensor != batch.end(row); ++sensor)
            ++ofObject[static_cast<std::size_t>(sensor->type)];
    }
    std::vector<qint64> rows; // object and type in one number
    for (auto object = counts.cbegin(); object != counts.cend(); ++object) {
        for (const int type : typesInOrder(object.value()))
            rows.push_back(qint64(object.key()) << 8 | type);
    }
    if (rows.empty())
        return;
    // A table that counts by itself goes on with its own numbers.
    const QString next = QStringLiteral("(SELECT coalesce(max(\"Id\"), 0) FROM \"Sensors\") + place");
    const QString own = QStringLiteral(
        "nextval((SELECT pg_get_serial_sequence('\"Sensors\"', 'Id'))::regclass)"); // the sequence is found once
    transaction.run(QStringLiteral("INSERT INTO \"Sensors\" (\"Id\", \"Id_objects\", \"Type\")%1 "
                                   "SELECT %2, number >> 8, number & 255 FROM %3 ORDER BY place")
                        .arg(postgres ? QStringLiteral(" OVERRIDING SYSTEM VALUE") : QString(),
                             postgres ? QStringLiteral("coalesce(%1, %2)").arg(own, next) : next,
                             NumberList::table(NumberList::text(rows), postgres)));
}
