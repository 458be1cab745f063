#include "statetable.h"

#include "desktime.h"
#include "objectcatalog.h"
#include "track.h"

#include <Pardel/interfaces.h>
#include <Pardel/tutils.h>

#include <QColor>
#include <QHeaderView>
#include <QSortFilterProxyModel>

#include <algorithm>

namespace {

constexpr int flushInterval = 200; // milliseconds
constexpr qint16 supplyType = 65;
constexpr QRgb alarmColor = 0xFFFFD0D0;

} // namespace

StateTableModel::StateTableModel(const ObjectCatalog& catalog, QObject* parent)
    : QAbstractTableModel(parent), m_catalog(catalog)
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
        return;
    beginInsertRows(QModelIndex(), rowCount(), rowCount() + static_cast<int>(added.size()) - 1);
    for (const ObjectState& state : added) {
        m_rows.insert(state.id, rowCount());
        m_states.push_back(state);
    }
    endInsertRows();
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
    case Qt::BackgroundRole: return state.alarm ? QVariant(QColor(alarmColor)) : QVariant();
    case Qt::ForegroundRole: return state.alarm ? QVariant(QColor(Qt::black)) : QVariant();
    case Qt::DecorationRole: return index.column() == Object ? QVariant(ObjectCatalog::color(state.id)) : QVariant();
    case Qt::TextAlignmentRole:
        return int(Qt::AlignVCenter |
                   (index.column() >= Speed && index.column() <= Supply ? Qt::AlignRight : Qt::AlignLeft));
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
    switch (column) {
    case Object: return m_catalog.name(state.id);
    case Time: return DeskTime::text(state.time);
    case Speed: return QString::number(state.speed);
    case Course: return QString::number(state.course);
    case Supply: return state.supply ? QString::number(*state.supply) : QString();
    case Alarm: return state.alarm ? tr("alarm") : QString();
    default: return {};
    }
}

QVariant StateTableModel::sortKey(const ObjectState& state, int column) const
{
    switch (column) {
    case Time: return state.time;
    case Speed: return state.speed;
    case Course: return state.course;
    case Supply: return state.supply.value_or(-1);
    case Alarm: return state.alarm ? 1 : 0;
    default: return text(state, column);
    }
}

StateTable::StateTable(KernelNotifyer& kernel, DataPumpNotifyer& reports, const ObjectCatalog& catalog, QWidget* parent)
    : QTableView(parent), m_states(catalog), m_sorted(new QSortFilterProxyModel(this))
{
    m_sorted->setSourceModel(&m_states);
    m_sorted->setSortRole(StateTableModel::sortRole);
    setModel(m_sorted);
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
    const auto fit = [this](int column, const QString& widest) {
        constexpr int margin = 38; // of a color or an arrow beside the text
        setColumnWidth(column, fontMetrics().horizontalAdvance(widest) + margin);
    };
    for (int column = StateTableModel::Speed; column < StateTableModel::ColumnCount; ++column)
        fit(column, m_states.headerData(column, Qt::Horizontal, Qt::DisplayRole).toString());
    fit(StateTableModel::Object, QStringLiteral("Object 00000"));
    fit(StateTableModel::Time, QStringLiteral("0000-00-00 00:00:00 +00:00"));

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

void StateTable::select(unsigned int id)
{
    m_selected = id;
    if (currentIndex().isValid() && currentIndex().data(StateTableModel::idRole).toUInt() == id)
        return;
    const QModelIndexList found =
        m_sorted->match(m_sorted->index(0, 0), StateTableModel::idRole, static_cast<int>(id), 1, Qt::MatchExactly);
    if (!found.isEmpty()) {
        setCurrentIndex(found.constFirst());
        scrollTo(found.constFirst());
    }
}
