#include <Pardel/treeobjcheckablee.h>

#include "checkablemodel_p.h"
#include "checkabletree_p.h"
#include "objectindex_p.h"

#include <QCheckBox>
#include <QVBoxLayout>

#include <unordered_map>

using namespace CheckableTree;

namespace {

constexpr int lowestObjectId = 1;

/// One change on its way through the tree, depth first as recursion would have it: each item that it changes passes it
/// on before the next one is looked at. A tick of a child ticks the group without the group's other children, and that
/// group has changed by the time it would have been ticked by its own id, which would have ticked them.
class Spreading
{
public:
    Spreading(ObjectIndex* objects, StateChanges* changes, int state)
        : m_objects(objects), m_changes(changes), m_state(state)
    {}

    void change(QStandardItem* item)
    {
        if (m_changes->write(item, m_state))
            spread(item);
    }

    void spread(QStandardItem* item)
    {
        m_hasSpread = true;
        std::vector<Step> open{{item, 0}};
        while (!open.empty()) {
            if (QStandardItem* follower = changeNext(open.back())) {
                open.push_back({follower, 0});
            } else {
                if (m_state == Qt::Checked)
                    tickGroupsAbove(open.back().item);
                open.pop_back();
            }
        }
    }

    bool hasSpread() const { return m_hasSpread; }

private:
    struct Step
    {
        QStandardItem* item;
        int nextRow;
    };

    /// All with one id. They are gone through once, as each that was changed looks for the others in its turn.
    struct Namesakes
    {
        QVector<QStandardItem*> items;
        int next = 0;
        bool isKnown = false;
    };

    QStandardItem* changeNext(Step& step)
    {
        if (step.item->hasChildren()) {
            while (step.nextRow < step.item->rowCount()) {
                QStandardItem* child = step.item->child(step.nextRow++);
                if (child && m_changes->write(child, m_state))
                    return child;
            }
            return nullptr;
        }
        const int id = objectId(step.item);
        if (id < lowestObjectId)
            return nullptr;
        Namesakes& namesakes = m_namesakes[id];
        if (!namesakes.isKnown)
            namesakes = {m_objects->items(id), 0, true};
        while (namesakes.next < namesakes.items.size()) {
            QStandardItem* item = namesakes.items.at(namesakes.next++);
            if (m_changes->write(item, m_state))
                return item;
        }
        return nullptr;
    }

    void tickGroupsAbove(const QStandardItem* item)
    {
        QStandardItem* group = item->parent();
        while (group && m_changes->write(group, Qt::Checked))
            group = group->parent();
    }

    ObjectIndex* m_objects;
    StateChanges* m_changes;
    int m_state;
    std::unordered_map<int, Namesakes> m_namesakes;
    bool m_hasSpread = false;
};

} // namespace

class Q_DECL_HIDDEN TreeObjCheckableE::Private
{
public:
    explicit Private(TreeObjCheckableE* tree);

    template <typename ChangeItems>
    void spread(int state, ChangeItems changeItems);
    bool isOwn(const QStandardItem* item) const;
    void uncheckBox();

    TreeObjCheckableE* const widget;
    Model* const model;
    View* const treeView;
    QCheckBox* const checkBox;
    ObjectIndex* const objects;
    StateChanges* const changes;
};

TreeObjCheckableE::Private::Private(TreeObjCheckableE* tree)
    : widget(tree),
      model(new Model(tree)),
      treeView(new View(tree)),
      checkBox(new QCheckBox(TreeObjCheckableE::tr("Select/Deselect all"), tree)),
      objects(new ObjectIndex(model, lowestObjectId)),
      changes(new StateChanges(model, tellTicks(model, [tree] { Q_EMIT tree->checkedObjectsChanged(); })))
{}

TreeObjCheckableE::TreeObjCheckableE(QWidget* parent) : QWidget(parent), d(std::make_unique<Private>(this))
{
    connect(d->model, &QStandardItemModel::itemChanged, this, &TreeObjCheckableE::itemChangedX);

    auto* layout = new QVBoxLayout(this);
    d->treeView->setModel(d->model);
    layout->addWidget(d->treeView);

    d->checkBox->setObjectName(QStringLiteral("checkBox"));
    connect(d->checkBox, &QCheckBox::stateChanged, this, &TreeObjCheckableE::selectAllChecked);
    layout->addWidget(d->checkBox);
}

TreeObjCheckableE::~TreeObjCheckableE() = default;

void TreeObjCheckableE::setModelAndCheckedO(QStandardItemModel* source, QList<int>* checked)
{
    if (!source)
        return;
    d->model->removeAll();
    appendCopy(d->model, source, checked, lowestObjectId, GroupState::Cloned);
    d->treeView->expandGroups();
    d->uncheckBox();
}

void TreeObjCheckableE::getCheckedObjs(QList<int>* out)
{
    if (!out)
        return;
    out->clear();
    QSet<int> held;
    visitTree(d->model->invisibleRootItem(), [&](const QStandardItem* item) {
        if (checkState(item) != Qt::Checked)
            return;
        const int id = objectId(item);
        if (id >= lowestObjectId && !held.contains(id)) {
            held.insert(id);
            out->append(id);
        }
    });
}

void TreeObjCheckableE::changeStateObject(QStandardItem* item, Qt::CheckState state, int id)
{
    if (!d->isOwn(item))
        return;
    d->spread(state, [&](Spreading& spreading) {
        const QVector<QStandardItem*> objects = d->objects->items(id);
        for (QStandardItem* object : objects) {
            if (isUnder(object, item))
                spreading.change(object);
        }
    });
}

void TreeObjCheckableE::setStateAll(QStandardItem* item, Qt::CheckState state)
{
    if (!d->isOwn(item))
        return;
    d->spread(state, [&](Spreading& spreading) {
        visitTree(item, [&](QStandardItem* below) {
            if (below != d->model->invisibleRootItem())
                spreading.change(below);
        });
    });
}

void TreeObjCheckableE::setCheckedSelectAll(int state)
{
    d->checkBox->setChecked(state != Qt::Unchecked);
}

QTreeView* TreeObjCheckableE::getTreeView() const
{
    return d->treeView;
}

void TreeObjCheckableE::itemChangedX(QStandardItem* item)
{
    if (!d->isOwn(item) || d->changes->isAnnounced(item))
        return;
    d->objects->noticeChange(item);
    d->spread(checkState(item), [item](Spreading& spreading) { spreading.spread(item); });
}

void TreeObjCheckableE::selectAllChecked(int state)
{
    d->changes->begin();
    visitTree(d->model->invisibleRootItem(), [&](QStandardItem* item) {
        if (item != d->model->invisibleRootItem())
            d->changes->write(item, state);
    });
    d->changes->announce(d->changes->end());
    Q_EMIT checkedSelectAll(state);
}

template <typename ChangeItems>
void TreeObjCheckableE::Private::spread(int state, ChangeItems changeItems)
{
    Spreading spreading(objects, changes, state);
    changes->begin();
    objects->startUse();
    changeItems(spreading);
    const StateChanges::Runs runs = changes->end();
    if (spreading.hasSpread() && (state == Qt::Unchecked || state == Qt::Checked))
        uncheckBox();
    changes->announce(runs);
}

bool TreeObjCheckableE::Private::isOwn(const QStandardItem* item) const
{
    return item && item->model() == model;
}

void TreeObjCheckableE::Private::uncheckBox()
{
    disconnect(checkBox, &QCheckBox::stateChanged, widget, &TreeObjCheckableE::selectAllChecked);
    checkBox->setCheckState(Qt::Unchecked);
    connect(checkBox, &QCheckBox::stateChanged, widget, &TreeObjCheckableE::selectAllChecked);
}
