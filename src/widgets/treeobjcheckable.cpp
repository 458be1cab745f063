#include <Pardel/treeobjcheckable.h>

#include "checkabletree_p.h"

#include <Pardel/treesortfilterproxymodel.h>

#include <QCheckBox>
#include <QScrollBar>
#include <QVBoxLayout>

using namespace CheckableTree;

namespace {

constexpr int lowestObjectId = 0;

/// The current item, and where it goes when a filter hides it: to the neighbour that it would have gone to if its row
/// had been taken out of the view.
class CurrentItem
{
public:
    CurrentItem(QTreeView* view, QSortFilterProxyModel* proxy) : m_view(view), m_proxy(proxy)
    {
        const QModelIndex current = view->currentIndex();
        if (!current.isValid() || current.model() != proxy)
            return;
        m_row = current.row();
        const int rows = proxy->rowCount(current.parent());
        m_siblings.reserve(rows);
        for (int row = 0; row < rows; ++row)
            m_siblings.append(proxy->mapToSource(current.siblingAtRow(row)));
    }

    void moveOn() const
    {
        if (m_siblings.isEmpty() || isVisible(m_siblings.at(m_row)))
            return;
        const QModelIndex group = m_siblings.at(m_row).parent();
        if (m_view->selectionMode() == QAbstractItemView::SingleSelection) {
            QModelIndex next = neighbour(1);
            if (!next.isValid())
                next = neighbour(-1);
            if (!next.isValid())
                next = m_proxy->mapFromSource(group);
            if (next.isValid())
                m_view->setCurrentIndex(next);
        } else {
            QModelIndex next = neighbour(-1);
            if (!next.isValid())
                next = neighbour(1);
            m_view->selectionModel()->setCurrentIndex(next, QItemSelectionModel::NoUpdate);
        }
    }

private:
    bool isVisible(const QModelIndex& index) const { return m_proxy->mapFromSource(index).isValid(); }

    QModelIndex neighbour(int step) const
    {
        for (int row = m_row + step; row >= 0 && row < m_siblings.size(); row += step) {
            const QModelIndex index = m_proxy->mapFromSource(m_siblings.at(row));
            if (index.isValid() && index.flags().testFlag(Qt::ItemIsEnabled))
                return index;
        }
        return {};
    }

    QTreeView* m_view;
    QSortFilterProxyModel* m_proxy;
    QModelIndexList m_siblings; ///< Of the model: those that were visible before, in the view's order.
    int m_row = -1;
};

} // namespace

TreeObjCheckable::TreeObjCheckable(QWidget* parent)
    : QWidget(parent),
      m_model(new QStandardItemModel(this)),
      m_proxy(new TreeSortFilterProxyModel(this)),
      m_treeView(new View(this)),
      m_checkBox(new QCheckBox(tr("Select/Deselect all"), this)),
      m_objects(new ObjectIndex(m_model, lowestObjectId)),
      m_changes(new StateChanges(m_model))
{
    m_proxy->setSourceModel(m_model);
    connect(m_model, &QStandardItemModel::itemChanged, this, &TreeObjCheckable::itemChangedGen);

    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(1);

    m_treeView->setModel(m_proxy);
    m_treeView->setSelectionBehavior(QAbstractItemView::SelectRows);
    m_treeView->setEditTriggers(QAbstractItemView::NoEditTriggers);
    layout->addWidget(m_treeView);

    m_checkBox->setObjectName(QStringLiteral("checkBox"));
    connect(m_checkBox, &QCheckBox::stateChanged, this, &TreeObjCheckable::selectAllChecked);
    layout->addWidget(m_checkBox);
}

TreeObjCheckable::~TreeObjCheckable() = default;

void TreeObjCheckable::setModelAndCheckedO(QStandardItemModel* source, QList<int>* checked)
{
    if (!source)
        return;
    m_checkedList = checked;
    m_differingRows.clear();
    m_model->clear();
    // With the proxy in between, every appended row would cost as much as all rows before it.
    m_proxy->setSourceModel(nullptr);
    appendCopy(m_model, source, checked, lowestObjectId, GroupState::SummaryOfChildren);
    m_proxy->setSourceModel(m_model);
    if (m_model->rowCount() > 0)
        setBoxState(stateOfChildren(m_model->invisibleRootItem()));
}

void TreeObjCheckable::getCheckedObjs(QList<int>* out, const QModelIndex& start)
{
    m_checkedList = out;
    if (m_checkedList)
        m_checkedList->clear();
    collect(start);
}

void TreeObjCheckable::getCheckedObjs(QMap<int, QString>* out, const QModelIndex& start)
{
    m_checkedMap = out;
    if (m_checkedMap)
        m_checkedMap->clear();
    collect(start);
    m_checkedMap = nullptr;
}

int TreeObjCheckable::getCurrentObj() const
{
    return m_treeView->currentIndex().data(ObjectIdRole).toInt();
}

void TreeObjCheckable::changeStateObject(QStandardItem* item, Qt::CheckState state, int id)
{
    if (!isOwn(item))
        return;
    m_changes->begin();
    for (QStandardItem* object : m_objects->items(id)) {
        if (!object->hasChildren() && isUnder(object, item) && m_changes->write(object, state))
            sumUp(object);
    }
    announceChanges();
}

void TreeObjCheckable::setCheckedSelectAll(int state)
{
    setBoxState(state);
    selectAllChecked(state);
}

void TreeObjCheckable::OnSearchTree(QString text)
{
    m_treeView->collapseAll();
    m_treeView->clearSelection();
    m_foundIndexes.clear();
    if (text.isEmpty())
        return;
    // Without Qt::MatchFixedString, which Qt 5 takes for "contains" when it stands beside Qt::MatchStartsWith.
    const QModelIndexList found = m_proxy->match(m_proxy->index(0, 0), Qt::DisplayRole, text, -1,
                                                 Qt::MatchStartsWith | Qt::MatchWrap | Qt::MatchRecursive);
    m_foundIndexes.reserve(found.size());
    for (const QModelIndex& index : found)
        m_foundIndexes.append(m_proxy->mapToSource(index));
    if (!found.isEmpty())
        showIndex(found.first());
}

int TreeObjCheckable::Get_index_size() const
{
    return m_foundIndexes.size();
}

QTreeView* TreeObjCheckable::getTreeView() const
{
    return m_treeView;
}

void TreeObjCheckable::go_right()
{
    showFound(1);
}

void TreeObjCheckable::go_left()
{
    showFound(-1);
}

void TreeObjCheckable::setFilterStr(QString str)
{
    // Rows that disappear one by one take the current item along to a neighbour; here they disappear at once.
    const CurrentItem current(m_treeView, m_proxy);
    const int scrollPosition = m_treeView->verticalScrollBar()->value();
    m_treeView->collapseAll();
    m_proxy->replaceFilter(str, [&] {
        current.moveOn();
        if (str.isEmpty())
            m_treeView->collapseAll();
        else
            m_treeView->expandGroups();
    });
    m_treeView->verticalScrollBar()->setValue(scrollPosition);
}

void TreeObjCheckable::selectAllChecked(int state)
{
    const int applied = state == Qt::Unchecked ? Qt::Unchecked : Qt::Checked;
    m_changes->begin();
    for (int row = 0; row < m_model->rowCount(); ++row) {
        QStandardItem* top = m_model->item(row);
        if (top && m_changes->write(top, applied)) {
            handDown(top);
            sumUp(top);
        }
    }
    announceChanges();
    Q_EMIT checkedSelectAll(applied);
}

void TreeObjCheckable::itemChangedGen(QStandardItem* item)
{
    if (!isOwn(item) || m_changes->isAnnounced(item))
        return;
    m_objects->noticeChange(item);
    m_changes->begin();
    handDown(item);
    sumUp(item);
    announceChanges();
}

void TreeObjCheckable::itemChangedRepeat(QStandardItem* item)
{
    if (!isOwn(item))
        return;
    m_changes->begin();
    handDown(item);
    announceChanges();
}

void TreeObjCheckable::itemChangedMark(QStandardItem* item)
{
    if (!isOwn(item))
        return;
    m_changes->begin();
    sumUp(item);
    announceChanges();
}

/// Only what changes hands the state on: a child that has it already is passed over with all that is under it.
void TreeObjCheckable::handDown(QStandardItem* item)
{
    const int state = checkState(item);
    std::vector<const QStandardItem*> open(1, item);
    while (!open.empty()) {
        const QStandardItem* group = open.back();
        open.pop_back();
        for (int row = 0, rows = childCount(group); row < rows; ++row) {
            QStandardItem* child = group->child(row);
            if (child && m_changes->write(child, state) && child->hasChildren())
                open.push_back(child);
        }
    }
}

/// Only what changes is summed up further: the box follows when a top-level item has changed.
void TreeObjCheckable::sumUp(QStandardItem* item)
{
    while (QStandardItem* group = item->parent()) {
        if (!m_changes->write(group, stateOfChildren(group)))
            return;
        item = group;
    }
    m_newBoxState = stateOfChildren(m_model->invisibleRootItem());
}

void TreeObjCheckable::announceChanges()
{
    const StateChanges::Runs runs = m_changes->end();
    // Set once, and only to the last state: passing through "partially checked" would leave a third state in the box.
    if (m_newBoxState)
        setBoxState(*std::exchange(m_newBoxState, std::nullopt));
    m_changes->announce(runs);
}

bool TreeObjCheckable::isOwn(const QStandardItem* item) const
{
    return item && item->model() == m_model;
}

int TreeObjCheckable::stateOfChildren(QStandardItem* group)
{
    const int rows = childCount(group);
    const int first = checkState(group->child(0));
    // Looking first where they differed last time keeps a loop over all children linear.
    const int start = m_differingRows.value(group);
    for (int step = 0; step < rows; ++step) {
        const int row = (start + step) % rows;
        if (checkState(group->child(row)) != first) {
            m_differingRows.insert(group, row);
            return Qt::PartiallyChecked;
        }
    }
    return first;
}

void TreeObjCheckable::setBoxState(int state)
{
    disconnect(m_checkBox, &QCheckBox::stateChanged, this, &TreeObjCheckable::selectAllChecked);
    m_checkBox->setCheckState(static_cast<Qt::CheckState>(state));
    connect(m_checkBox, &QCheckBox::stateChanged, this, &TreeObjCheckable::selectAllChecked);
}

void TreeObjCheckable::collect(const QModelIndex& start)
{
    QStandardItem* top = start.isValid() ? m_model->itemFromIndex(start) : m_model->invisibleRootItem();
    if (!top || (!m_checkedList && !m_checkedMap))
        return;
    QSet<int> held;
    if (m_checkedList)
        held = QSet<int>(m_checkedList->cbegin(), m_checkedList->cend());
    visitTree(top, [&](QStandardItem* item) {
        if (item->hasChildren() || checkState(item) != Qt::Checked)
            return;
        const int id = objectId(item);
        if (id < lowestObjectId)
            return;
        if (m_checkedList && !held.contains(id)) {
            held.insert(id);
            m_checkedList->append(id);
        }
        if (m_checkedMap)
            m_checkedMap->insert(m_checkedMap->cend(), id, item->parent() ? item->parent()->text() : QString());
    });
}

void TreeObjCheckable::showIndex(const QModelIndex& index)
{
    m_treeView->setCurrentIndex(index);
    // Expands also where the view is hidden or the index was current before.
    m_treeView->scrollTo(m_treeView->currentIndex());
}

void TreeObjCheckable::showFound(int step)
{
    const int count = m_foundIndexes.size();
    const QModelIndex current = m_proxy->mapToSource(m_treeView->currentIndex());
    const int from = current.isValid() ? m_foundIndexes.indexOf(current) : -1;
    if (from < 0)
        return;
    QModelIndex next;
    for (int i = from; !next.isValid();) {
        i = (i + step + count) % count;
        next = m_proxy->mapFromSource(m_foundIndexes.at(i));
    }
    m_treeView->collapseAll();
    m_treeView->clearSelection();
    showIndex(next);
}
