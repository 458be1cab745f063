#include "laststates.h"

#include "archiveschema.h"
#include "newestreports.h"
#include "numberlist.h"
#include "transaction.h"

#include <QSqlQuery>
#include <QStringList>
#include <QVariant>

#include <algorithm>
#include <iterator>
#include <set>

using Row = ArchiveBatch::Row;

namespace {

constexpr int positionType = LastState::positionType;
constexpr int mostNewerReports = 10'000; // that a late one is compared with
constexpr int lateAtOnce = 2'000;        // in one statement
constexpr int mostRemembered = 500'000;  // of objects' sensors, some 20 MiB

/// Puts an item of a report that is newer than all before it where its type belongs, from @p place on.
std::vector<LastState::Item>::iterator take(std::vector<LastState::Item>& items,
                                            std::vector<LastState::Item>::iterator place, const LastState::Item& item)
{
    place = std::find_if(place, items.end(), [&](const LastState::Item& other) { return other.type >= item.type; });
    if (place == items.end() || place->type != item.type)
        return items.insert(place, item);
    *place = item;
    return place;
}

/// What the rows of one object, in the order of their times, say of its last state.
LastState stateOf(const ArchiveBatch& batch, std::vector<const Row*>::const_iterator first,
                  std::vector<const Row*>::const_iterator last)
{
    LastState state{(*first)->object, (*std::prev(last))->time, {}};
    for (; first != last; ++first) {
        const Row* const row = *first;
        if (row->hasPosition())
            take(state.items, state.items.begin(), {positionType, row, nullptr});
        auto place = state.items.begin();
        for (const Sensor* sensor = batch.begin(*row); sensor != batch.end(*row); ++sensor)
            place = take(state.items, place, {sensor->type, row, sensor});
    }
    return state;
}

std::vector<LastState> statesOf(const ArchiveBatch& batch)
{
    std::vector<const Row*> rows;
    for (const Row& row : batch.rows()) {
        if (row.hasTime() && !row.ahead)
            rows.push_back(&row);
    }
    std::vector<LastState> states;
    for (auto first = rows.cbegin(); first != rows.cend();) {
        const auto last =
            std::find_if(first, rows.cend(), [&](const Row* row) { return row->object != (*first)->object; });
        states.push_back(stateOf(batch, first, last));
        first = last;
    }
    return states;
}

/// The times of the objects' rows, which are locked; -1 where there is none.
std::vector<qint64> timesOf(Transaction& transaction, const std::vector<quint32>& objects)
{
    std::vector<qint64> times(objects.size(), -1);
    QSqlQuery query(transaction.database());
    // Locked in the order of objects, so that two who store wait for each other and not in a circle.
    transaction.run(
        query,
        QStringLiteral("SELECT id_object, time_unix FROM archive.lastdata WHERE id_object IN (%1) ORDER BY id_object%2")
            .arg(NumberList::text(objects),
                 ArchiveSchema::isPostgres(transaction.database()) ? QStringLiteral(" FOR UPDATE") : QString()));
    while (transaction.next(query)) {
        const auto place = std::lower_bound(objects.begin(), objects.end(), query.value(0).toLongLong());
        times[static_cast<std::size_t>(place - objects.begin())] = std::max(query.value(1).toLongLong(), qint64(0));
    }
    return times;
}

/// The same after objects without a row, or with one of too far in the future, have got one of time 0.
std::vector<qint64> lockRows(Transaction& transaction, const std::vector<LastState>& states, qint64 horizon)
{
    std::vector<quint32> objects;
    objects.reserve(states.size());
    for (const LastState& state : states)
        objects.push_back(state.object);
    std::vector<qint64> times = timesOf(transaction, objects);
    std::vector<quint32> missing;
    for (std::size_t i = 0; i < objects.size(); ++i) {
        if (times[i] < 0 || times[i] > horizon)
            missing.push_back(objects[i]);
    }
    if (missing.empty() || transaction.failed())
        return times;
    transaction.run(QStringLiteral("DELETE FROM archive.lastdata WHERE id_object IN (%1) AND time_unix > %2")
                        .arg(NumberList::text(missing))
                        .arg(horizon));
    transaction.run(
        QStringLiteral("INSERT INTO archive.lastdata (id_object, time_unix) SELECT number, 0 FROM %1 "
                       "WHERE true ON CONFLICT (id_object) DO NOTHING") // else SQLite reads a join's ON
            .arg(NumberList::table(NumberList::text(missing), ArchiveSchema::isPostgres(transaction.database()))));
    return timesOf(transaction, objects);
}

/// A condition on a row of either table: whether it has what a late report brings.
QString hasItem(const char* table, const std::set<int>& types)
{
    QString cases;
    for (const int type : types) {
        cases += (type == positionType ? QStringLiteral(" WHEN %2 THEN %1.sens_1 <> 0 OR %1.sens_2 <> 0")
                                       : QStringLiteral(" WHEN %2 THEN coalesce(%1.status_%2, %1.sens_%2) IS NOT NULL"))
                     .arg(QLatin1String(table))
                     .arg(type);
    }
    return QStringLiteral("CASE late.type%1 END").arg(cases);
}

/// For late items (by their place) of which something is known, the time of a report that beats them, or null.
QString comparison(const std::vector<LastState::Item*>& late, bool postgres)
{
    QStringList rows;
    std::set<int> types;
    for (const LastState::Item* item : late) {
        types.insert(item->type);
        const auto* const print = reinterpret_cast<const char*>(item->from->print.data());
        const QByteArray hex = QByteArray::fromRawData(print, sizeof item->from->print).toHex();
        rows +=
            QStringLiteral("(%1,%2,%3,%4,%5)")
                .arg(rows.size())
                .arg(item->from->object)
                .arg(item->type)
                .arg(item->from->time)
                .arg((postgres ? QStringLiteral("'\\x%1'::bytea") : QStringLiteral("x'%1'")).arg(QLatin1String(hex)));
    }
    const QString newer = QStringLiteral(
        "FROM archive.master_table AS report WHERE report.id_object = late.object AND report.time_unix >= late.time "
        "AND report.time_unix <= last.time_unix AND (report.time_unix > late.time OR report.fingerprint > late.print) "
        "ORDER BY report.time_unix DESC");
    return QStringLiteral("WITH late (place, object, type, time, print) AS (VALUES %1) SELECT place, "
                          "coalesce((SELECT time_unix FROM (SELECT report.time_unix, %2 AS has %3 LIMIT %4) AS newest "
                          "WHERE has LIMIT 1), (SELECT report.time_unix %3 LIMIT 1 OFFSET %5)) "
                          "FROM late JOIN archive.lastdata AS last ON last.id_object = late.object WHERE %6")
        .arg(rows.join(QLatin1Char(',')), hasItem("report", types), newer)
        .arg(mostNewerReports)
        .arg(mostNewerReports - 1)
        .arg(hasItem("last", types));
}

quint64 keyOf(const LastState::Item& item)
{
    return quint64(item.from->object) << 8 | static_cast<quint64>(item.type);
}

} // namespace

void LastStates::update(Transaction& transaction, ArchiveStore& store, const ArchiveBatch& batch, qint64 horizon)
{
    std::vector<LastState> states = statesOf(batch);
    if (states.empty() || transaction.failed())
        return;
    const std::vector<qint64> times = lockRows(transaction, states, horizon);
    markBeaten(transaction, states, times, store.isSpread());
    if (transaction.failed())
        return;
    std::vector<LastState> changed;
    for (std::size_t i = 0; i < states.size(); ++i) {
        LastState& state = states[i];
        state.items.erase(std::remove_if(state.items.begin(), state.items.end(),
                                         [](const LastState::Item& item) { return item.beaten; }),
                          state.items.end());
        if (state.time <= times[i] && state.items.empty())
            continue;
        state.time = static_cast<quint32>(std::max<qint64>(state.time, times[i]));
        changed.push_back(std::move(state));
    }
    if (!changed.empty())
        store.write(transaction, changed);
}

void LastStates::markBeaten(Transaction& transaction, std::vector<LastState>& states, const std::vector<qint64>& times,
                            bool spread)
{
    std::vector<LastState::Item*> late;
    std::vector<NewestReports::Late> afar;
    for (std::size_t i = 0; i < states.size(); ++i) {
        for (LastState::Item& item : states[i].items) {
            item.beaten = item.from->time <= times[i] && m_newer.value(keyOf(item), -1) > item.from->time;
            if (item.from->time > times[i] || item.beaten)
                continue;
            if (spread)
                afar.push_back({&item, times[i]});
            else
                late.push_back(&item);
        }
    }
    if (!afar.empty()) {
        late = NewestReports::settle(transaction, std::move(afar), [this](LastState::Item* item, qint64 time) {
            item->beaten = true;
            m_newer.insert(keyOf(*item), time);
        });
    }
    for (auto first = late.begin(); first != late.end();) {
        const auto last = first + std::min<std::ptrdiff_t>(late.end() - first, lateAtOnce);
        compare(transaction, {first, last});
        first = last;
    }
}

void LastStates::compare(Transaction& transaction, const std::vector<LastState::Item*>& late)
{
    if (m_newer.size() > mostRemembered)
        m_newer.clear();
    QSqlQuery query(transaction.database());
    transaction.run(query, comparison(late, ArchiveSchema::isPostgres(transaction.database())));
    while (transaction.next(query)) {
        if (query.isNull(1))
            continue;
        LastState::Item& item = *late[static_cast<std::size_t>(query.value(0).toInt())];
        item.beaten = true;
        m_newer.insert(keyOf(item), query.value(1).toLongLong());
    }
}
