#include "newestreports.h"

#include "archiveschema.h"
#include "numberlist.h"
#include "transaction.h"

#include <QHash>
#include <QSet>
#include <QSqlQuery>
#include <QStringList>
#include <QVariant>

#include <algorithm>
#include <set>

using NewestReports::Late;

namespace {

constexpr qint64 windows[] = {3600, 86400}; // seconds of an object's reports that are looked at, one after the other
constexpr qint64 mostNewer = 9'000; // below the number of newer reports behind which a late one counts for nothing

/// Of an object's reports in the window.
struct Newest
{
    qint64 count = 0;
    QHash<int, qint64> withItem; // by type, the time of the newest that has it
    QSet<qint64> shared;         // times of late items at which there are several reports
};

QString newestWith(int type)
{
    const QString has = type == LastState::positionType
                            ? QStringLiteral("sens_1 <> 0 OR sens_2 <> 0")
                            : QStringLiteral("status_%1 IS NOT NULL OR sens_%1 IS NOT NULL").arg(type);
    return QStringLiteral("max(time_unix) FILTER (WHERE %1)").arg(has);
}

QHash<quint32, Newest> read(Transaction& transaction, std::vector<Late>::const_iterator first,
                            std::vector<Late>::const_iterator end, qint64 from, qint64 to)
{
    std::set<quint32> objects;
    std::set<int> types;
    std::set<quint32> times;
    for (auto late = first; late != end; ++late) {
        objects.insert(late->item->from->object);
        types.insert(late->item->type);
        if (late->item->from->time >= from)
            times.insert(late->item->from->time);
    }
    QStringList columns;
    for (const int type : types)
        columns += newestWith(type);
    const QString reports = QStringLiteral("FROM archive.master_table WHERE id_object IN (%1) AND time_unix >= %2 AND "
                                           "time_unix <= %3")
                                .arg(NumberList::text(objects), QString::number(from), QString::number(to));
    QSqlQuery query(transaction.database());
    transaction.run(query, QStringLiteral("SELECT id_object, count(*), %1 %2 GROUP BY id_object")
                               .arg(columns.join(QLatin1String(", ")), reports));
    QHash<quint32, Newest> all;
    while (transaction.next(query)) {
        Newest& newest = all[query.value(0).toUInt()];
        newest.count = query.value(1).toLongLong();
        int column = 2;
        for (const int type : types) {
            if (!query.isNull(column))
                newest.withItem.insert(type, query.value(column).toLongLong());
            ++column;
        }
    }
    if (times.empty())
        return all;
    QSqlQuery several(transaction.database());
    transaction.run(several, QStringLiteral("SELECT id_object, time_unix %1 AND time_unix IN (%2) GROUP BY id_object, "
                                            "time_unix HAVING count(*) > 1")
                                 .arg(reports, NumberList::text(times)));
    while (transaction.next(several))
        all[several.value(0).toUInt()].shared += several.value(1).toLongLong();
    return all;
}

/// By the reports of the window before each last state. Returns those of which it does not know.
std::vector<Late> settleWithin(Transaction& transaction, const std::vector<Late>& late, qint64 window,
                               const std::function<void(LastState::Item*, qint64)>& beaten)
{
    std::vector<Late> unknown;
    for (auto first = late.cbegin(); first != late.cend() && !transaction.failed();) {
        const qint64 from = first->last - window;
        const auto end =
            std::find_if(first, late.cend(), [&](const Late& one) { return one.last > from + 2 * window; });
        const QHash<quint32, Newest> all = read(transaction, first, end, from, std::prev(end)->last);
        for (; first != end; ++first) {
            const Newest newest = all.value(first->item->from->object);
            const qint64 time = newest.withItem.value(first->item->type, -1);
            const qint64 own = first->item->from->time;
            if (time > own && time <= first->last)
                beaten(first->item, time);
            else if (time != own || newest.count >= mostNewer || newest.shared.contains(own))
                unknown.push_back(*first);
        }
    }
    return unknown;
}

} // namespace

std::vector<LastState::Item*> NewestReports::settle(Transaction& transaction, std::vector<Late> late,
                                                    const std::function<void(LastState::Item*, qint64)>& beaten)
{
    // Else the shards would send the reports themselves.
    transaction.run(QStringLiteral("SET LOCAL enable_partitionwise_aggregate = on"));
    std::sort(late.begin(), late.end(), [](const Late& a, const Late& b) { return a.last < b.last; });
    for (const qint64 window : windows)
        late = settleWithin(transaction, late, window, beaten);
    std::vector<LastState::Item*> unknown;
    unknown.reserve(late.size());
    for (const Late& one : late)
        unknown.push_back(one.item);
    return unknown;
}
