#include "statetable.h"

#include "desktime.h"
#include "namesorder.h"
#include "objectcatalog.h"
#include "objectstates.h"
#include "track.h"

#include <Pardel/interfaces.h>
#include <Pardel/tutils.h>

#include <QColor>
#include <QHeaderView>
#include <QMap>

#include <algorithm>
#include <numeric>
#include <utility>

namespace {

constexpr int flushInterval = 200; // milliseconds
constexpr qint16 supplyType = 65;

} // namespace

StateTableModel::StateTableModel(const ObjectCatalog& catalog, QObject* parent)
    : QAbstractTableModel(parent), m_catalog(catalog), m_namesOrder(NamesOrder::collator())
{
    m_flushTimer.setSingleShot(true);
    m_flushTimer.setInterval(flushInterval);
    connect(&m_flushTimer, &QTimer::timeout, this, &StateTableModel::flush);
}

void StateTableModel::take(const MobData& report)
{
    if (!isCredible(report.timeUnix))
        return;
    const int row = m_rows.value(report.idObject, -1);
    ObjectState state = row < 0 ? ObjectState() : m_states[static_cast<std::size_t>(row)];
    state = m_pending.value(report.idObject, state);
    if (report.timeUnix < state.time)
        return;
    state.id = report.idObject;
    setName(state);
    state.time = report.timeUnix;
    state.speed = report.speed;
    state.course = report.course;
    state.alarm = TUtils::isAlarm(report);
    for (const Sensor& sensor : report.sensors) {
        if (sensor.type == supplyType) // volts: the parser has put the terminal's code through GetExternalSupplyValue
            state.supply = qRound(sensor.value);
    }
    m_pending.insert(state.id, state);
    if (!m_flushTimer.isActive())
        m_flushTimer.start();
}

void StateTableModel::add(qint32 id)
{
    if (m_rows.contains(id) || m_pending.contains(id))
        return;
    ObjectState state;
    state.id = id;
    setName(state);
    m_pending.insert(id, state);
    if (!m_flushTimer.isActive())
        m_flushTimer.start();
}

/// A name seldom changes, and to find its place takes longer than all else.
void StateTableModel::setName(ObjectState& state) const
{
    const QString name = m_catalog.name(state.id);
    if (state.order && state.name == name)
        return;
    state.name = name;
    state.order = m_namesOrder.sortKey(name);
}

void StateTableModel::flush()
{
    m_flushTimer.stop();
    std::vector<ObjectState> added;
    int first = rowCount();
    int last = -1;
    for (const ObjectState& state : qAsConst(m_pending)) {
        const int row = m_rows.value(state.id, -1);
        if (row < 0) {
            added.push_back(state);
            continue;
        }
        m_states[static_cast<std::size_t>(row)] = state;
        first = std::min(first, row);
        last = std::max(last, row);
    }
    m_pending.clear();
    if (last >= 0) // as one: a signal for each would have the sorted view sort as often
        Q_EMIT dataChanged(index(first, 0), index(last, ColumnCount - 1));
    if (added.empty())
        return sortAgain();
    beginInsertRows(QModelIndex(), rowCount(), rowCount() + static_cast<int>(added.size()) - 1);
    for (const ObjectState& state : added) {
        m_rows.insert(state.id, rowCount());
        m_states.push_back(state);
    }
    endInsertRows();
    sortAgain();
}

void StateTableModel::sort(int column, Qt::SortOrder order)
{
    m_sortColumn = column;
    m_sortOrder = order;
    sortAgain();
}

void StateTableModel::sortAgain()
{
    const auto isBefore = [this](const ObjectState& a, const ObjectState& b) { return this->isBefore(a, b); };
    const auto unsorted = std::is_sorted_until(m_states.begin(), m_states.end(), isBefore);
    if (m_sortColumn < 0 || unsorted == m_states.end())
        return;
    Q_EMIT layoutAboutToBeChanged({}, VerticalSortHint);
    std::vector<std::size_t> order(m_states.size());
    std::iota(order.begin(), order.end(), 0);
    const auto isRowBefore = [this](std::size_t a, std::size_t b) { return this->isBefore(m_states[a], m_states[b]); };
    const auto middle = order.begin() + (unsorted - m_states.begin());
    std::stable_sort(middle, order.end(), isRowBefore);
    std::inplace_merge(order.begin(), middle, order.end(), isRowBefore);

    std::vector<ObjectState> sorted;
    sorted.reserve(order.size());
    std::vector<int> newRows(order.size());
    for (const std::size_t row : order) {
        const int newRow = static_cast<int>(sorted.size());
        newRows[row] = newRow;
        m_rows[m_states[row].id] = newRow;
        sorted.push_back(std::move(m_states[row]));
    }
    m_states = std::move(sorted);
    const QModelIndexList before = persistentIndexList();
    QModelIndexList after;
    for (const QModelIndex& moved : before)
        after.append(index(newRows[static_cast<std::size_t>(moved.row())], moved.column()));
    changePersistentIndexList(before, after);
    Q_EMIT layoutChanged({}, VerticalSortHint);
}

bool StateTableModel::isBefore(const ObjectState& a, const ObjectState& b) const
{
    const auto compare = [this](const auto& left, const auto& right) {
        return m_sortOrder == Qt::AscendingOrder ? left < right : right < left;
    };
    switch (m_sortColumn) {
    case Object: return compare(*a.order, *b.order);
    case State:
    case Time: return compare(a.time, b.time);
    case Age: return compare(b.time, a.time);
    case Speed: return compare(a.speed, b.speed);
    case Course: return compare(a.course, b.course);
    case Supply: return compare(a.supply, b.supply);
    case Alarm: return compare(sortKey(a, Alarm).toInt(), sortKey(b, Alarm).toInt());
    default: return false;
    }
}

int StateTableModel::rowCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : static_cast<int>(m_states.size());
}

int StateTableModel::columnCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : ColumnCount;
}

QVariant StateTableModel::data(const QModelIndex& index, int role) const
{
    if (!checkIndex(index, CheckIndexOption::IndexIsValid))
        return {};
    const ObjectState& state = m_states[static_cast<std::size_t>(index.row())];
    switch (role) {
    case Qt::DisplayRole: return text(state, index.column());
    case Qt::BackgroundRole: return isMarked(state) ? QVariant(QColor(alarmColor)) : QVariant();
    case Qt::ForegroundRole: return isMarked(state) ? QVariant(QColor(Qt::black)) : QVariant();
    case Qt::DecorationRole:
        if (index.column() == State && m_presence)
            return m_presence->mark(state.id).icon();
        return index.column() == Object ? QVariant(ObjectCatalog::color(state.id)) : QVariant();
    case Qt::TextAlignmentRole:
        return int(Qt::AlignVCenter |
                   (index.column() == Age || (index.column() >= Speed && index.column() <= Supply) ? Qt::AlignRight
                                                                                                   : Qt::AlignLeft));
    case Qt::ToolTipRole: return m_presence ? m_presence->text(state.id) : QString();
    case sortRole: return sortKey(state, index.column());
    case idRole: return state.id;
    default: return {};
    }
}

QVariant StateTableModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (orientation != Qt::Horizontal || role != Qt::DisplayRole)
        return {};
    switch (section) {
    case Object: return tr("Object");
    case State: return tr("State");
    case Age: return tr("Age");
    case Time: return tr("Time");
    case Speed: return tr("Speed, km/h");
    case Course: return tr("Course, °");
    case Supply: return tr("Supply, V");
    case Alarm: return tr("Alarm");
    default: return {};
    }
}

QString StateTableModel::text(const ObjectState& state, int column) const
{
    if (state.time == 0 && column >= Time && column < Alarm)
        return {};
    switch (column) {
    case Object: return state.name;
    case State: return m_presence ? m_presence->word(state.id) : QString();
    case Age: return m_presence ? ObjectStates::ageText(m_presence->age(state.id)) : QString();
    case Time: return DeskTime::text(state.time);
    case Speed: return QString::number(state.speed);
    case Course: return QString::number(state.course);
    case Supply: return state.supply ? QString::number(*state.supply) : QString();
    case Alarm: return isMarked(state) ? tr("new alarm") : state.alarm ? tr("alarm") : QString();
    default: return {};
    }
}

/// An alarm that nobody has acknowledged, on or not.
bool StateTableModel::isMarked(const ObjectState& state) const
{
    return m_presence && m_presence->hasAlarm(state.id);
}

QVariant StateTableModel::sortKey(const ObjectState& state, int column) const
{
    switch (column) {
    case State:
    case Time: return state.time;
    case Age: return -state.time;
    case Speed: return state.speed;
    case Course: return state.course;
    case Supply: return state.supply.value_or(-1);
    case Alarm: return isMarked(state) ? 2 : state.alarm ? 1 : 0;
    default: return text(state, column);
    }
}

StateTable::StateTable(KernelNotifyer& kernel, DataPumpNotifyer& reports, const ObjectCatalog& catalog, QWidget* parent)
    : QTableView(parent), m_states(catalog)
{
    setModel(&m_states);
    setSortingEnabled(true);
    sortByColumn(StateTableModel::Object, Qt::AscendingOrder);
    setSelectionBehavior(SelectRows);
    setSelectionMode(SingleSelection);
    setWordWrap(false);
    setTabKeyNavigation(false);
    verticalHeader()->hide();
    verticalHeader()->setSectionResizeMode(QHeaderView::Fixed);
    verticalHeader()->setDefaultSectionSize(fontMetrics().height() + 6);
    horizontalHeader()->setStretchLastSection(true);
    fitColumns();

    connect(&reports, &DataPumpNotifyer::OnDataRecievedSignal, this,
            [this](MobData& report) { m_states.take(report); });
    connect(&kernel, &KernelNotifyer::OnSelectIdObjectSignal, this, &StateTable::select);
    connect(selectionModel(), &QItemSelectionModel::currentRowChanged, this,
            [this, &kernel](const QModelIndex& current) {
                const unsigned int id = current.data(StateTableModel::idRole).toUInt();
                if (current.isValid() && id != m_selected)
                    kernel.OnSelectIdObject(id);
            });
}

/// Narrow, so that the alarm is in sight on a small screen.
void StateTable::fitColumns()
{
    constexpr int margin = 12;
    constexpr int image = 22;
    const auto width = [this](const QString& text) { return fontMetrics().horizontalAdvance(text) + margin; };
    const int state = std::min(width(ObjectStates::tr("never heard")), fontMetrics().averageCharWidth() * 14) + image;
    const QMap<int, int> contents = {
        {StateTableModel::Object, width(QStringLiteral("Object 000")) + image},
        {StateTableModel::State, state},
        {StateTableModel::Age, width(ObjectStates::tr("%1 min").arg(QStringLiteral("00")))},
        {StateTableModel::Time, width(QStringLiteral("0000-00-00 00:00:00 +00:00"))}};
    for (int column = 0; column < StateTableModel::ColumnCount; ++column)
        setColumnWidth(column, std::max(contents.value(column), horizontalHeader()->sectionSizeHint(column)));
}

void StateTable::select(unsigned int id)
{
    m_selected = id;
    if (currentIndex().isValid() && currentIndex().data(StateTableModel::idRole).toUInt() == id)
        return;
    const QModelIndex found = m_states.index(m_states.rowOf(static_cast<qint32>(id)), 0);
    if (found.isValid()) {
        setCurrentIndex(found);
        scrollTo(found);
    }
}

void StateTable::setPresence(const ObjectStates& presence)
{
    m_states.setPresence(presence);
    // The ages of all rows change every second; only those that are seen are asked for.
    connect(&presence, &ObjectStates::changed, viewport(), qOverload<>(&QWidget::update));
}
