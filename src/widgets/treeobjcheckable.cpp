#include <Pardel/treeobjcheckable.h>

#include "checkablemodel_p.h"
#include "checkabletree_p.h"
#include "checkabletreefilter_p.h"
#include "objectindex_p.h"

#include <QCheckBox>
#include <QHash>
#include <QPersistentModelIndex>
#include <QScrollBar>
#include <QVBoxLayout>

#include <optional>
#include <utility>

using namespace CheckableTree;

namespace {

constexpr int lowestObjectId = 0;

} // namespace

class Q_DECL_HIDDEN TreeObjCheckable::Private
{
public:
    explicit Private(TreeObjCheckable* tree);

    // The private slots follow an item's change: both of the other two, down to its descendants, up to the box.
    void itemChangedGen(QStandardItem* item);
    void itemChangedRepeat(QStandardItem* item);
    void itemChangedMark(QStandardItem* item);

    void handDown(QStandardItem* item);
    void sumUp(QStandardItem* item);
    void announceChanges();
    bool isOwn(const QStandardItem* item) const;
    int stateOfChildren(QStandardItem* group, const QStandardItem* changed);
    void setBoxState(int state);
    void collect(const QModelIndex& start);
    void find(const QString& text);
    void showIndex(const QModelIndex& index);
    void showFound(int step);

    TreeObjCheckable* const widget;
    Model* const model;
    Filter* const proxy;
    View* const treeView;
    QCheckBox* const checkBox;
    ObjectIndex* const objects;
    StateChanges* const changes;
    QList<int>* checkedList = nullptr;
    QMap<int, QString>* checkedMap = nullptr;
    bool searchesAnywhere = false;
    QList<QPersistentModelIndex> foundIndexes; ///< Of the model, so that they outlive a filter.
    QHash<QStandardItem*, int> differingRows;  ///< Where a group's children were last seen to differ; only a hint.
    std::optional<int> newBoxState;
};

TreeObjCheckable::Private::Private(TreeObjCheckable* tree)
    : widget(tree),
      model(new Model(tree)),
      proxy(new Filter(tree)),
      treeView(new View(tree)),
      checkBox(new QCheckBox(TreeObjCheckable::tr("Select/Deselect all"), tree)),
      objects(new ObjectIndex(model, lowestObjectId)),
      changes(new StateChanges(model, tellTicks(model, [tree] { Q_EMIT tree->checkedObjectsChanged(); })))
{}

TreeObjCheckable::TreeObjCheckable(QWidget* parent) : QWidget(parent), d(std::make_unique<Private>(this))
{
    d->proxy->setSourceModel(d->model);
    connect(d->model, &QStandardItemModel::itemChanged, this, [this](QStandardItem* item) { d->itemChangedGen(item); });

    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(1);

    d->treeView->setModel(d->proxy);
    d->treeView->setSelectionBehavior(QAbstractItemView::SelectRows);
    d->treeView->setEditTriggers(QAbstractItemView::NoEditTriggers);
    layout->addWidget(d->treeView);

    d->checkBox->setObjectName(QStringLiteral("checkBox"));
    connect(d->checkBox, &QCheckBox::stateChanged, this, &TreeObjCheckable::selectAllChecked);
    layout->addWidget(d->checkBox);
}

TreeObjCheckable::~TreeObjCheckable() = default;

void TreeObjCheckable::setModelAndCheckedO(QStandardItemModel* source, QList<int>* checked)
{
    if (!source)
        return;
    d->checkedList = checked;
    d->differingRows.clear();
    d->model->removeAll();
    // With the proxy in between, every appended row would cost as much as all rows before it.
    d->proxy->setSourceModel(nullptr);
    appendCopy(d->model, source, checked, lowestObjectId, GroupState::SummaryOfChildren);
    d->proxy->setSourceModel(d->model);
    if (d->model->rowCount() > 0)
        d->setBoxState(d->stateOfChildren(d->model->invisibleRootItem(), d->model->item(0)));
}

void TreeObjCheckable::getCheckedObjs(QList<int>* out, const QModelIndex& start)
{
    d->checkedList = out;
    if (d->checkedList)
        d->checkedList->clear();
    d->collect(start);
}

void TreeObjCheckable::getCheckedObjs(QMap<int, QString>* out, const QModelIndex& start)
{
    d->checkedMap = out;
    if (d->checkedMap)
        d->checkedMap->clear();
    d->collect(start);
    d->checkedMap = nullptr;
}

int TreeObjCheckable::getCurrentObj() const
{
    return d->treeView->currentIndex().data(ObjectIdRole).toInt();
}

void TreeObjCheckable::changeStateObject(QStandardItem* item, Qt::CheckState state, int id)
{
    if (!d->isOwn(item))
        return;
    d->changes->begin();
    d->objects->startUse();
    const QVector<QStandardItem*> objects = d->objects->items(id);
    for (QStandardItem* object : objects) {
        if (!object->hasChildren() && isUnder(object, item) && d->changes->write(object, state))
            d->sumUp(object);
    }
    d->announceChanges();
}

void TreeObjCheckable::setCheckedSelectAll(int state)
{
    d->setBoxState(state);
    selectAllChecked(state);
}

void TreeObjCheckable::OnSearchTree(QString text)
{
    d->treeView->collapseAll();
    d->treeView->clearSelection();
    d->foundIndexes.clear();
    if (text.isEmpty())
        return;
    d->find(text);
    if (!d->foundIndexes.isEmpty())
        d->showIndex(d->proxy->mapFromSource(d->foundIndexes.constFirst()));
}

bool TreeObjCheckable::searchAnywhere() const
{
    return d->searchesAnywhere;
}

void TreeObjCheckable::setSearchAnywhere(bool anywhere)
{
    d->searchesAnywhere = anywhere;
}

int TreeObjCheckable::Get_index_size() const
{
    return static_cast<int>(d->foundIndexes.size());
}

QTreeView* TreeObjCheckable::getTreeView() const
{
    return d->treeView;
}

void TreeObjCheckable::go_right()
{
    d->showFound(1);
}

void TreeObjCheckable::go_left()
{
    d->showFound(-1);
}

void TreeObjCheckable::setFilterStr(QString str)
{
    // Rows that disappear one by one take the current item along to a neighbour; here they disappear at once.
    const CurrentItem current(d->treeView, d->proxy);
    const int scrollPosition = d->treeView->verticalScrollBar()->value();
    d->treeView->collapseAll();
    d->proxy->replaceText(str, [&] {
        current.moveOn();
        if (str.isEmpty())
            d->treeView->collapseAll();
        else
            d->treeView->expandGroups();
    });
    d->treeView->verticalScrollBar()->setValue(scrollPosition);
}

void TreeObjCheckable::selectAllChecked(int state)
{
    const int applied = state == Qt::Unchecked ? Qt::Unchecked : Qt::Checked;
    d->changes->begin();
    for (int row = 0; row < d->model->rowCount(); ++row) {
        QStandardItem* top = d->model->item(row);
        if (top && d->changes->write(top, applied)) {
            d->handDown(top);
            d->sumUp(top);
        }
    }
    d->announceChanges();
    Q_EMIT checkedSelectAll(applied);
}

void TreeObjCheckable::Private::itemChangedGen(QStandardItem* item)
{
    if (!isOwn(item) || changes->isAnnounced(item))
        return;
    objects->noticeChange(item);
    changes->begin();
    handDown(item);
    sumUp(item);
    announceChanges();
}

void TreeObjCheckable::Private::itemChangedRepeat(QStandardItem* item)
{
    if (!isOwn(item))
        return;
    changes->begin();
    handDown(item);
    announceChanges();
}

void TreeObjCheckable::Private::itemChangedMark(QStandardItem* item)
{
    if (!isOwn(item))
        return;
    changes->begin();
    sumUp(item);
    announceChanges();
}

/// Only what changes hands the state on: a child that has it already is passed over with all that is under it.
void TreeObjCheckable::Private::handDown(QStandardItem* item)
{
    const int state = checkState(item);
    std::vector<const QStandardItem*> open(1, item);
    while (!open.empty()) {
        const QStandardItem* group = open.back();
        open.pop_back();
        if (model->agreement(group, group->child(0)) == state)
            continue;
        std::vector<int> others;
        for (int row = 0, rows = childCount(group); row < rows; ++row) {
            QStandardItem* child = group->child(row);
            if (!isItem(child))
                others.push_back(row);
            if (child && changes->write(child, state) && child->hasChildren())
                open.push_back(child);
        }
        model->setAgreement(group, state, std::move(others));
    }
}

/// Only what changes is summed up further: the box follows when a top-level item has changed.
void TreeObjCheckable::Private::sumUp(QStandardItem* item)
{
    while (QStandardItem* group = item->parent()) {
        if (!changes->write(group, stateOfChildren(group, item)))
            return;
        item = group;
    }
    newBoxState = stateOfChildren(model->invisibleRootItem(), item);
}

void TreeObjCheckable::Private::announceChanges()
{
    const StateChanges::Runs runs = changes->end();
    // Set once, and only to the last state: passing through "partially checked" would leave a third state in the box.
    if (newBoxState)
        setBoxState(*std::exchange(newBoxState, std::nullopt));
    changes->announce(runs);
}

bool TreeObjCheckable::Private::isOwn(const QStandardItem* item) const
{
    return item && item->model() == model;
}

/// @param changed the child that may have another state than before
int TreeObjCheckable::Private::stateOfChildren(QStandardItem* group, const QStandardItem* changed)
{
    if (changed->column() != 0) // which counts for nothing
        changed = group->child(0);
    if (const auto state = model->agreement(group, changed))
        return *state;
    const int first = checkState(group->child(0));
    if (checkState(changed) != first)
        return Qt::PartiallyChecked;
    const int rows = childCount(group);
    std::vector<int> others;
    // Looking first where they differed last time keeps a loop over all children linear.
    const int start = differingRows.value(group);
    for (int step = 0; step < rows; ++step) {
        const int row = (start + step) % rows;
        const QStandardItem* child = group->child(row);
        if (!isItem(child) || !hasState(child, first)) {
            if (checkState(child) != first) {
                differingRows.insert(group, row);
                return Qt::PartiallyChecked;
            }
            others.push_back(row);
        }
    }
    model->setAgreement(group, first, std::move(others));
    return first;
}

void TreeObjCheckable::Private::setBoxState(int state)
{
    disconnect(checkBox, &QCheckBox::stateChanged, widget, &TreeObjCheckable::selectAllChecked);
    checkBox->setCheckState(static_cast<Qt::CheckState>(state));
    connect(checkBox, &QCheckBox::stateChanged, widget, &TreeObjCheckable::selectAllChecked);
}

void TreeObjCheckable::Private::collect(const QModelIndex& start)
{
    QStandardItem* top = start.isValid() ? model->itemFromIndex(start) : model->invisibleRootItem();
    if (!top || (!checkedList && !checkedMap))
        return;
    QSet<int> held;
    if (checkedList)
        held = QSet<int>(checkedList->cbegin(), checkedList->cend());
    visitTree(top, [&](QStandardItem* item) {
        if (item->hasChildren() || checkState(item) != Qt::Checked)
            return;
        const int id = objectId(item);
        if (id < lowestObjectId)
            return;
        if (checkedList && !held.contains(id)) {
            held.insert(id);
            checkedList->append(id);
        }
        if (checkedMap)
            checkedMap->insert(checkedMap->cend(), id, item->parent() ? item->parent()->text() : QString());
    });
}

/// Qt's own match copies what it has found once a level, and goes down by recursion.
void TreeObjCheckable::Private::find(const QString& text)
{
    TreeWalk::walk(
        QModelIndex(),
        [this](const QModelIndex& index) { return proxy->hasChildren(index) ? proxy->rowCount(index) : 0; },
        [this](const QModelIndex& index, int row) { return proxy->index(row, 0, index); },
        [this, &text](const QModelIndex& index) {
            const QString own = index.data().toString();
            if (index.isValid() && (searchesAnywhere ? own.contains(text, Qt::CaseInsensitive)
                                                     : own.startsWith(text, Qt::CaseInsensitive)))
                foundIndexes.append(proxy->mapToSource(index));
        },
        [](const QModelIndex& /*index*/, int /*rows*/) {});
}

void TreeObjCheckable::Private::showIndex(const QModelIndex& index)
{
    treeView->setCurrentIndex(index);
    // Expands also where the view is hidden or the index was current before.
    treeView->scrollTo(treeView->currentIndex());
}

void TreeObjCheckable::Private::showFound(int step)
{
    const auto count = static_cast<int>(foundIndexes.size());
    const QModelIndex current = proxy->mapToSource(treeView->currentIndex());
    const int from = current.isValid() ? static_cast<int>(foundIndexes.indexOf(current)) : -1;
    if (from < 0)
        return;
    QModelIndex next;
    for (int i = from; !next.isValid();) {
        i = (i + step + count) % count;
        next = proxy->mapFromSource(foundIndexes.at(i));
    }
    treeView->collapseAll();
    treeView->clearSelection();
    showIndex(next);
}

#include "Pardel/moc_treeobjcheckable.cpp"
