#include <Pardel/treeobjcheckablee.h>

#include "checkabletree_p.h"

#include <QCheckBox>
#include <QVBoxLayout>

#include <unordered_map>

using namespace CheckableTree;

namespace {

constexpr int lowestObjectId = 1;

/// One change on its way through the tree. The order of the steps decides where it ends: a group that is ticked from
/// below does not tick its other children, and has changed by the time it would have been ticked by its own id.
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

TreeObjCheckableE::TreeObjCheckableE(QWidget* parent)
    : QWidget(parent),
      m_model(new QStandardItemModel(this)),
      m_treeView(new View(this)),
      m_checkBox(new QCheckBox(tr("Select/Deselect all"), this)),
      m_objects(new ObjectIndex(m_model, lowestObjectId)),
      m_changes(new StateChanges(m_model))
{
    connect(m_model, &QStandardItemModel::itemChanged, this, &TreeObjCheckableE::itemChangedX);

    auto* layout = new QVBoxLayout(this);
    m_treeView->setModel(m_model);
    layout->addWidget(m_treeView);

    m_checkBox->setObjectName(QStringLiteral("checkBox"));
    connect(m_checkBox, &QCheckBox::stateChanged, this, &TreeObjCheckableE::selectAllChecked);
    layout->addWidget(m_checkBox);
}

TreeObjCheckableE::~TreeObjCheckableE() = default;

void TreeObjCheckableE::setModelAndCheckedO(QStandardItemModel* source, QList<int>* checked)
{
    if (!source)
        return;
    m_model->clear();
    appendCopy(m_model, source, checked, lowestObjectId, GroupState::Cloned);
    m_treeView->expandGroups();
    uncheckBox();
}

void TreeObjCheckableE::getCheckedObjs(QList<int>* out)
{
    if (!out)
        return;
    out->clear();
    QSet<int> held;
    visitTree(m_model->invisibleRootItem(), [&](const QStandardItem* item) {
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
    if (!isOwn(item))
        return;
    spread(state, [&](Spreading& spreading) {
        for (QStandardItem* object : m_objects->items(id)) {
            if (isUnder(object, item))
                spreading.change(object);
        }
    });
}

void TreeObjCheckableE::setStateAll(QStandardItem* item, Qt::CheckState state)
{
    if (!isOwn(item))
        return;
    spread(state, [&](Spreading& spreading) {
        visitTree(item, [&](QStandardItem* below) {
            if (below != m_model->invisibleRootItem())
                spreading.change(below);
        });
    });
}

void TreeObjCheckableE::setCheckedSelectAll(int state)
{
    m_checkBox->setChecked(state != Qt::Unchecked);
}

QTreeView* TreeObjCheckableE::getTreeView() const
{
    return m_treeView;
}

void TreeObjCheckableE::itemChangedX(QStandardItem* item)
{
    if (!isOwn(item) || m_changes->isAnnounced(item))
        return;
    m_objects->noticeChange(item);
    spread(checkState(item), [item](Spreading& spreading) { spreading.spread(item); });
}

void TreeObjCheckableE::selectAllChecked(int state)
{
    m_changes->begin();
    visitTree(m_model->invisibleRootItem(), [&](QStandardItem* item) {
        if (item != m_model->invisibleRootItem())
            m_changes->write(item, state);
    });
    m_changes->announce(m_changes->end());
    Q_EMIT checkedSelectAll(state);
}

template <typename ChangeItems>
void TreeObjCheckableE::spread(int state, ChangeItems changeItems)
{
    Spreading spreading(m_objects, m_changes, state);
    m_changes->begin();
    changeItems(spreading);
    const StateChanges::Runs runs = m_changes->end();
    if (spreading.hasSpread() && (state == Qt::Unchecked || state == Qt::Checked))
        uncheckBox();
    m_changes->announce(runs);
}

bool TreeObjCheckableE::isOwn(const QStandardItem* item) const
{
    return item && item->model() == m_model;
}

void TreeObjCheckableE::uncheckBox()
{
    disconnect(m_checkBox, &QCheckBox::stateChanged, this, &TreeObjCheckableE::selectAllChecked);
    m_checkBox->setCheckState(Qt::Unchecked);
    connect(m_checkBox, &QCheckBox::stateChanged, this, &TreeObjCheckableE::selectAllChecked);
}
