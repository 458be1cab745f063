#include "checkabletree_p.h"

#include "checkablemodel_p.h"

#include <QAccessible>
#include <QTimer>

#include <algorithm>
#include <cstring>
#include <typeinfo>
#include <utility>

namespace CheckableTree {

namespace {

/// Copies an item, not its children.
class Copier
{
public:
    Copier(const QList<int>* ticked, int lowestId, GroupState groupState)
        : m_lowestId(lowestId), m_groupState(groupState)
    {
        if (ticked)
            m_ticked = QSet<int>(ticked->begin(), ticked->end());
    }

    QStandardItem* copyTree(const QStandardItem* top) const
    {
        std::vector<Copy> open; // of the item that is looked at and those above it
        QStandardItem* finished = nullptr;
        TreeWalk::walk(
            top, [](const QStandardItem* item) { return childCount(item); },
            [](const QStandardItem* item, int row) -> const QStandardItem* { return item->child(row); },
            [&open](const QStandardItem* item) {
                // Only an item of Qt's own class can be replaced by one of another.
                open.push_back({typeid(*item) == typeid(QStandardItem) ? new Item(*item) : item->clone(), {}});
                open.back().item->setCheckable(true);
            },
            [this, &open, &finished](const QStandardItem*, int rows) {
                finish(open.back(), rows == 0);
                finished = open.back().item;
                open.pop_back();
                if (!open.empty())
                    open.back().children.append(finished);
            });
        return finished;
    }

private:
    struct Copy
    {
        QStandardItem* item;
        QList<QStandardItem*> children;
    };

    void finish(const Copy& copy, bool isLeaf) const
    {
        if (isLeaf) {
            const int id = leafId(copy.item);
            copy.item->setData(id, ObjectIdRole);
            copy.item->setCheckState(m_ticked.contains(id) ? Qt::Checked : Qt::Unchecked);
        } else if (!copy.children.isEmpty()) {
            copy.item->appendRows(copy.children);
            if (m_groupState == GroupState::SummaryOfChildren)
                copy.item->setCheckState(static_cast<Qt::CheckState>(summary(copy.children)));
        }
    }

    int leafId(const QStandardItem* leaf) const
    {
        if (const quintptr address = recordAddress(leaf->data(ObjectRecordRole))) {
            qint32 id = 0;
            // What applications keep in the role is an address as a number. NOLINTNEXTLINE(performance-no-int-to-ptr)
            std::memcpy(&id, reinterpret_cast<const void*>(address), sizeof id);
            return id;
        }
        const int id = objectId(leaf);
        return id < m_lowestId ? -1 : id;
    }

    /// 0 for whatever is no integer: a text of digits is no address.
    static quintptr recordAddress(const QVariant& value)
    {
        switch (value.userType()) {
        case QMetaType::LongLong:
        case QMetaType::ULongLong:
        case QMetaType::Long:
        case QMetaType::ULong:
        case QMetaType::Int:
        case QMetaType::UInt: return static_cast<quintptr>(value.toLongLong());
        default: return 0;
        }
    }

    static int summary(const QList<QStandardItem*>& children)
    {
        const int first = checkState(children.first());
        for (const QStandardItem* child : children) {
            if (checkState(child) != first)
                return Qt::PartiallyChecked;
        }
        return first;
    }

    QSet<int> m_ticked;
    int m_lowestId;
    GroupState m_groupState;
};

} // namespace

int checkState(const QStandardItem* item)
{
    return item ? item->data(Qt::CheckStateRole).toInt() : 0;
}

int objectId(const QStandardItem* item)
{
    return item->data(ObjectIdRole).toInt();
}

int childCount(const QStandardItem* item)
{
    return item->hasChildren() ? item->rowCount() : 0;
}

bool isUnder(const QStandardItem* item, const QStandardItem* top)
{
    if (item->model() && top == item->model()->invisibleRootItem())
        return true;
    while (item && item != top)
        item = item->parent();
    return item;
}

void appendCopy(QStandardItemModel* model, const QStandardItemModel* source, const QList<int>* ticked, int lowestId,
                GroupState groupState)
{
    const Copier copier(ticked, lowestId, groupState);
    for (int row = 0; row < source->rowCount(); ++row) {
        if (const QStandardItem* top = source->item(row))
            model->appendRow(copier.copyTree(top));
    }
}

QTimer* tellTicks(QStandardItemModel* model, const std::function<void()>& tell)
{
    auto* later = new QTimer(model);
    later->setSingleShot(true);
    QObject::connect(later, &QTimer::timeout, model, tell);
    const auto startLater = [later] {
        if (!later->isActive())
            later->start();
    };
    QObject::connect(
        model, &QAbstractItemModel::dataChanged, later,
        [startLater](const QModelIndex& /*topLeft*/, const QModelIndex& /*bottomRight*/, const QVector<int>& roles) {
            if (roles.isEmpty() || roles.contains(Qt::CheckStateRole) || roles.contains(ObjectIdRole))
                startLater();
        });
    QObject::connect(model, &QAbstractItemModel::rowsInserted, later, startLater);
    QObject::connect(model, &QAbstractItemModel::rowsRemoved, later, startLater);
    QObject::connect(model, &QAbstractItemModel::modelReset, later, startLater);
    return later;
}

View::View(QWidget* parent) : QTreeView(parent)
{
    setUniformRowHeights(true);
    setHeaderHidden(true);
    setAutoExpandDelay(1);
}

void View::expandGroups()
{
    // While a layout is pending, expand() only remembers the index.
    scheduleDelayedItemsLayout();
    std::vector<QModelIndex> open(1);
    while (!open.empty()) {
        const QModelIndex group = open.back();
        open.pop_back();
        for (int row = 0, rows = model()->rowCount(group); row < rows; ++row) {
            const QModelIndex child = model()->index(row, 0, group);
            if (model()->hasChildren(child)) {
                expand(child);
                open.push_back(child);
            }
        }
    }
    doItemsLayout();
}

void View::dataChanged(const QModelIndex& topLeft, const QModelIndex& bottomRight, const QVector<int>& roles)
{
    // QTreeView looks for the place of every changed row, through all rows that are expanded.
    if (roles == QVector<int>{Qt::CheckStateRole} && !QAccessible::isActive())
        viewport()->update();
    else
        QTreeView::dataChanged(topLeft, bottomRight, roles);
}

StateChanges::StateChanges(QStandardItemModel* model, QTimer* ticked) : QObject(model), m_model(model), m_ticked(ticked)
{}

void StateChanges::begin()
{
    m_wereBlocked = m_model->blockSignals(true);
}

bool StateChanges::write(QStandardItem* item, int state)
{
    const QVariant before = item->data(Qt::CheckStateRole);
    if (before.userType() == QMetaType::Int && before.toInt() == state)
        return false;
    item->setData(state, Qt::CheckStateRole);

    QStandardItem* parent = item->parent() ? item->parent() : m_model->invisibleRootItem();
    const int row = item->row();
    int run = static_cast<int>(m_runs.size()) - 1;
    if (run < 0 || m_runs.at(run).parent != parent)
        run = m_lastRunOfParent.value(parent, -1);
    if (run >= 0 && m_runs.at(run).last + 1 == row) {
        m_runs[run].last = row;
    } else {
        m_lastRunOfParent.insert(parent, static_cast<int>(m_runs.size()));
        m_runs.append({parent, row, row});
    }
    return true;
}

StateChanges::Runs StateChanges::end()
{
    m_model->blockSignals(m_wereBlocked);
    m_lastRunOfParent.clear();
    return std::exchange(m_runs, {});
}

void StateChanges::announce(const Runs& runs)
{
    const Run outer = m_announced;         // a receiver's own changes are announced within
    const QStandardItem* hidden = nullptr; // the last group of this kind: to find out goes up many levels
    for (const Run& run : runs) {
        m_announced = run;
        const QModelIndex parent = run.parent->index();
        const bool isHidden = (hidden && run.parent->parent() == hidden) || !m_model->hasChildren(parent);
        if (!isHidden) {
            Q_EMIT m_model->dataChanged(m_model->index(run.first, 0, parent), m_model->index(run.last, 0, parent),
                                        {Qt::CheckStateRole});
        } else {
            hidden = run.parent;
            for (int row = run.first; row <= run.last; ++row)
                Q_EMIT m_model->itemChanged(run.parent->child(row));
        }
    }
    m_announced = outer;
    if (!runs.isEmpty())
        m_ticked->start();
}

bool StateChanges::isAnnounced(const QStandardItem* item)
{
    // QStandardItemModel follows up its own dataChanged with itemChanged for each row in order.
    if (m_announced.first > m_announced.last || m_announced.parent->child(m_announced.first) != item)
        return false;
    ++m_announced.first;
    return true;
}

} // namespace CheckableTree
