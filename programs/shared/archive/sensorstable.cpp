#include "sensorstable.h"

#include "archiveschema.h"
#include "databasetrouble.h"
#include "transaction.h"

#include <QMap>
#include <QSqlQuery>
#include <QStringList>
#include <QVariant>

#include <algorithm>
#include <array>
#include <vector>

namespace {

constexpr int mostRemembered = 500'000; // objects

QString listOf(const QSet<quint32>& objects)
{
    QStringList texts;
    for (const quint32 object : objects)
        texts += QString::number(object);
    return texts.join(QLatin1Char(','));
}

/// Takes away the objects that have rows.
void removeEntered(Transaction& transaction, QSet<quint32>& objects)
{
    QSqlQuery query(transaction.database());
    transaction.run(query,
                    QStringLiteral("SELECT DISTINCT \"Id_objects\" FROM \"Sensors\" WHERE \"Id_objects\" IN (%1)")
                        .arg(listOf(objects)));
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
    QStringList rows;
    for (auto object = counts.cbegin(); object != counts.cend(); ++object) {
        for (const int type : typesInOrder(object.value()))
            rows += QStringLiteral("(%1,%2,%3)").arg(rows.size() + 1).arg(object.key()).arg(type);
    }
    if (rows.isEmpty())
        return;
    // A table that counts by itself goes on with its own numbers.
    const QString id = postgres ? QStringLiteral("coalesce(nextval(pg_get_serial_sequence('\"Sensors\"', 'Id')), "
                                                 "(SELECT coalesce(max(\"Id\"), 0) FROM \"Sensors\") + place)")
                                : QStringLiteral("(SELECT coalesce(max(\"Id\"), 0) FROM \"Sensors\") + place");
    transaction.run(
        QStringLiteral("WITH fitted (place, object, type) AS (VALUES %1) "
                       "INSERT INTO \"Sensors\" (\"Id\", \"Id_objects\", \"Type\")%2 "
                       "SELECT %3, object, type FROM fitted ORDER BY place")
            .arg(rows.join(QLatin1Char(',')), postgres ? QStringLiteral(" OVERRIDING SYSTEM VALUE") : QString(), id));
}
