#include "alarmlist.h"

#include "desktime.h"
#include "objectcatalog.h"
#include "objectmark.h"

#include <QColor>
#include <QDateTime>

#include <algorithm>

namespace {

QString timeText(qint64 time)
{
    return time == 0 ? QString() : DeskTime::text(time);
}

QString placeText(const DeskAlarm& alarm)
{
    if (alarm.latitude == 0 && alarm.longitude == 0)
        return {};
    const auto degrees = [](qint32 value) { return QString::number(value * 1e-7, 'f', 5); };
    return degrees(alarm.latitude) + QStringLiteral(", ") + degrees(alarm.longitude);
}

/// What the list would show otherwise.
bool differ(const DeskAlarm& a, const DeskAlarm& b)
{
    return a.ended != b.ended || a.acknowledged != b.acknowledged || a.by != b.by || a.remark != b.remark;
}

} // namespace

AlarmList::AlarmList(const ObjectCatalog& catalog, QObject* parent) : QAbstractTableModel(parent), m_catalog(catalog) {}

int AlarmList::rowOf(qint32 id, qint64 time) const
{
    const auto range = m_rows.equal_range(id);
    const auto found = std::find_if(range.first, range.second, [&](int row) { return at(row).time == time; });
    return found == range.second ? -1 : *found;
}

const DeskAlarm* AlarmList::current(qint32 id) const
{
    const DeskAlarm* newest = nullptr;
    const auto range = m_rows.equal_range(id);
    for (auto row = range.first; row != range.second; ++row) {
        if (at(*row).ended == 0 && (!newest || at(*row).time > newest->time))
            newest = &at(*row);
    }
    return newest;
}

void AlarmList::take(qint32 id, const TrackPoint& state, bool shared)
{
    // An alarm does not get lost because a terminal's clock is wrong.
    const qint64 time = isCredible(state.time) ? state.time : state.alarm ? QDateTime::currentSecsSinceEpoch() : 0;
    if (time == 0 || (!state.alarm && !m_rows.contains(id)))
        return;
    if (const DeskAlarm* on = current(id)) {
        if (state.alarm || time <= on->time || on->shared != shared)
            return;
        DeskAlarm over = *on;
        over.ended = time;
        update(rowOf(id, over.time), over);
        Q_EMIT ended(over);
        return;
    }
    const auto range = m_rows.equal_range(id);
    if (!state.alarm ||
        std::any_of(range.first, range.second, [&](int row) { return at(row).time <= time && time < at(row).ended; }))
        return;
    DeskAlarm alarm;
    alarm.object = id;
    alarm.time = time;
    alarm.latitude = state.latitude;
    alarm.longitude = state.longitude;
    alarm.speed = state.speed;
    alarm.shared = shared;
    if (rowOf(id, time) < 0)
        append(alarm);
    Q_EMIT raised(alarm, true);
}

void AlarmList::acknowledge(const QVector<int>& rows, const QString& by, qint64 time, const QString& remark)
{
    for (const int row : rows) {
        DeskAlarm alarm = at(row);
        if (!alarm.isNew())
            continue;
        alarm.acknowledged = time;
        alarm.by = by;
        alarm.remark = remark;
        update(row, alarm);
        Q_EMIT wasAcknowledged(alarm);
    }
}

void AlarmList::replaceStored(const QVector<DeskAlarm>& stored)
{
    QVector<bool> keeps(m_alarms.size(), false);
    QVector<DeskAlarm> others;
    for (const DeskAlarm& alarm : stored) {
        const int row = rowOf(alarm.object, alarm.time);
        if (row < 0) {
            others.append(alarm);
            continue;
        }
        keeps[row] = true;
        if (differ(at(row), alarm))
            update(row, alarm);
    }
    QVector<int> gone;
    QHash<qint32, bool> replaced; // another desk had raised the same one before
    for (int row = 0; row < m_alarms.size(); ++row) {
        if (keeps.at(row) || !at(row).shared)
            continue;
        gone.append(row);
        replaced.insert(at(row).object, true);
    }
    takeOut(gone);
    for (const DeskAlarm& alarm : qAsConst(others)) {
        append(alarm);
        if (alarm.isNew() && !replaced.contains(alarm.object))
            Q_EMIT raised(alarm, false);
    }
}

void AlarmList::append(const DeskAlarm& alarm)
{
    if (m_alarms.size() >= mostRows)
        return;
    const int row = rowCount();
    beginInsertRows(QModelIndex(), row, row);
    m_rows.insert(alarm.object, row);
    m_alarms.append(alarm);
    if (alarm.isNew())
        count(alarm.object, 1);
    endInsertRows();
}

void AlarmList::update(int row, const DeskAlarm& alarm)
{
    const bool wasNew = at(row).isNew();
    m_alarms[row] = alarm;
    if (wasNew != alarm.isNew())
        count(alarm.object, wasNew ? -1 : 1);
    Q_EMIT dataChanged(index(row, 0), index(row, ColumnCount - 1));
}

void AlarmList::takeOut(const QVector<int>& ascending)
{
    if (ascending.isEmpty())
        return;
    for (auto row = ascending.crbegin(); row != ascending.crend(); ++row) {
        const DeskAlarm alarm = at(*row);
        beginRemoveRows(QModelIndex(), *row, *row);
        m_alarms.removeAt(*row);
        if (alarm.isNew())
            count(alarm.object, -1);
        endRemoveRows();
    }
    m_rows.clear();
    for (int row = 0; row < m_alarms.size(); ++row)
        m_rows.insert(at(row).object, row);
}

void AlarmList::count(qint32 id, int change)
{
    m_newCount += change;
    int& ofObject = m_newOf[id];
    const bool before = ofObject > 0;
    ofObject += change;
    const bool now = ofObject > 0;
    if (!now)
        m_newOf.remove(id);
    if (before != now)
        Q_EMIT markChanged(id, now);
}

int AlarmList::rowCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : static_cast<int>(m_alarms.size());
}

int AlarmList::columnCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : ColumnCount;
}

QVariant AlarmList::data(const QModelIndex& index, int role) const
{
    if (!checkIndex(index, CheckIndexOption::IndexIsValid))
        return {};
    const DeskAlarm& alarm = at(index.row());
    switch (role) {
    case Qt::DisplayRole:
    case Qt::ToolTipRole: return text(alarm, index.column()); // a narrow column shows a part
    case Qt::BackgroundRole: return alarm.isNew() ? QVariant(QColor(alarmColor)) : QVariant();
    case Qt::ForegroundRole: return alarm.isNew() ? QVariant(QColor(Qt::black)) : QVariant();
    case Qt::TextAlignmentRole:
        return int(Qt::AlignVCenter | (index.column() == Speed ? Qt::AlignRight : Qt::AlignLeft));
    case sortRole: return sortKey(alarm, index.column());
    case idRole: return alarm.object;
    case newRole: return alarm.isNew();
    default: return {};
    }
}

QVariant AlarmList::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (orientation != Qt::Horizontal || role != Qt::DisplayRole)
        return {};
    switch (section) {
    case Time: return tr("Time");
    case Object: return tr("Object");
    case Place: return tr("Place");
    case Speed: return tr("Speed, km/h");
    case Until: return tr("Until");
    case State: return tr("State");
    case Remark: return tr("Remark");
    default: return {};
    }
}

QString AlarmList::text(const DeskAlarm& alarm, int column) const
{
    switch (column) {
    case Time: return timeText(alarm.time);
    case Object: return m_catalog.name(alarm.object);
    case Place: return placeText(alarm);
    case Speed: return QString::number(alarm.speed);
    case Until: return alarm.ended == 0 ? tr("still on") : timeText(alarm.ended);
    case State:
        return alarm.isNew() ? tr("new") : tr("acknowledged by %1, %2").arg(alarm.by, timeText(alarm.acknowledged));
    case Remark: return alarm.remark;
    default: return {};
    }
}

QVariant AlarmList::sortKey(const DeskAlarm& alarm, int column) const
{
    switch (column) {
    case Time: return alarm.time;
    case Speed: return alarm.speed;
    case Until: return alarm.ended;
    case State: return alarm.acknowledged;
    default: return text(alarm, column);
    }
}
