#include "checkablemodel_p.h"

#include "checkabletree_p.h"
#include "treewalk_p.h"

#include <QSignalBlocker>

#include <algorithm>
#include <typeinfo>
#include <utility>

namespace CheckableTree {

namespace {

constexpr std::size_t mostOthers = 5000;

} // namespace

bool hasState(const QStandardItem* item, int state)
{
    const QVariant own = item ? item->data(Qt::CheckStateRole) : QVariant();
    return own.userType() == QMetaType::Int && own.toInt() == state;
}

void Item::setData(const QVariant& value, int role)
{
    if (role == Qt::CheckStateRole)
        forgetAgreement();
    QStandardItem::setData(value, role);
}

void Item::read(QDataStream& stream)
{
    forgetAgreement();
    QStandardItem::read(stream);
}

void Item::forgetAgreement() const
{
    // An application may have put the item into a model of its own.
    if (auto* own = dynamic_cast<Model*>(model()))
        own->forgetAgreement(parent() ? parent() : own->invisibleRootItem());
}

bool isItem(const QStandardItem* item)
{
    return item && typeid(*item) == typeid(Item);
}

Model::Model(QObject* parent) : QStandardItemModel(parent)
{
    const auto forget = [this] { m_agreements.clear(); };
    connect(this, &QAbstractItemModel::rowsInserted, this, &Model::noticeInserted);
    connect(this, &QAbstractItemModel::rowsRemoved, this, forget);
    connect(this, &QAbstractItemModel::columnsInserted, this, forget);
    connect(this, &QAbstractItemModel::columnsRemoved, this, forget);
    connect(this, &QAbstractItemModel::layoutChanged, this, forget);
    connect(this, &QAbstractItemModel::modelReset, this, forget);
    connect(this, &QAbstractItemModel::dataChanged, this,
            [forget](const QModelIndex& /*topLeft*/, const QModelIndex& /*bottomRight*/, const QVector<int>& roles) {
                if (roles.isEmpty())
                    forget();
            });
}

Model::~Model()
{
    takeApart();
}

bool Model::hasChildren(const QModelIndex& parent) const
{
    if (!QStandardItemModel::hasChildren(parent))
        return false;
    int level = 0;
    for (const QStandardItem* item = itemFromIndex(parent); item; item = item->parent()) {
        if (++level == deepestLevelShown)
            return false;
    }
    return true;
}

/// Which sets a state without the item's setData().
bool Model::setItemData(const QModelIndex& index, const QMap<int, QVariant>& roles)
{
    if (QStandardItem* item = itemFromIndex(index))
        forgetAgreement(item->parent() ? item->parent() : invisibleRootItem());
    return QStandardItemModel::setItemData(index, roles);
}

void Model::removeAll()
{
    takeApart();
    clear();
}

std::optional<int> Model::agreement(const QStandardItem* group, const QStandardItem* child) const
{
    const auto known = m_agreements.constFind(group);
    if (known == m_agreements.cend() || known->rows != group->rowCount() || !hasState(child, known->state))
        return std::nullopt;
    const auto agrees = [group, state = known->state](int row) { return hasState(group->child(row), state); };
    return std::all_of(known->others.cbegin(), known->others.cend(), agrees) ? std::optional<int>(known->state)
                                                                             : std::nullopt;
}

/// One row after the other is put in where terminals appear, and to look at all of a group each time would be quadratic.
void Model::noticeInserted(const QModelIndex& parent, int first, int last)
{
    if (m_agreements.isEmpty())
        return;
    const QStandardItem* group = parent.isValid() ? itemFromIndex(parent) : invisibleRootItem();
    const auto forgetGroup = [this](const QStandardItem* item) {
        if (item->hasChildren())
            m_agreements.remove(item);
    };
    for (int row = first; row <= last; ++row) {
        // takeChild tells nobody of a group that goes, whose address may be that of one that comes.
        if (QStandardItem* top = group->child(row))
            visitTree(top, forgetGroup);
    }
    const auto known = m_agreements.find(group);
    if (known == m_agreements.end())
        return;
    const int count = last - first + 1;
    known->rows += count;
    for (int& row : known->others)
        row += row >= first ? count : 0;
    for (int row = first; row <= last && known->others.size() <= mostOthers; ++row)
        known->others.push_back(row);
    if (known->others.size() > mostOthers)
        m_agreements.erase(known);
}

void Model::setAgreement(const QStandardItem* group, int state, std::vector<int> others)
{
    if (group->hasChildren() && others.size() <= mostOthers)
        m_agreements.insert(group, {state, group->rowCount(), std::move(others)});
}

void Model::forgetAgreement(const QStandardItem* group)
{
    if (!m_agreements.isEmpty())
        m_agreements.remove(group);
}

/// Takes out what is deep, from below: Qt deletes an item's children by recursion.
void Model::takeApart()
{
    constexpr int levelsOfPiece = 1000;
    std::vector<QStandardItem*> pieces;
    int level = 0;
    TreeWalk::walk(
        invisibleRootItem(), [](const QStandardItem* item) { return childCount(item); },
        [](const QStandardItem* item, int row) { return item->child(row); },
        [&](QStandardItem* item) {
            if (++level % levelsOfPiece == 0)
                pieces.push_back(item);
        },
        [&](const QStandardItem* /*item*/, int /*rows*/) { --level; });
    if (pieces.empty())
        return;
    // With each piece, Qt 6 would go up from every index that a view remembers.
    const QModelIndexList remembered = persistentIndexList();
    QModelIndexList nothing;
    for (int index = 0; index < remembered.size(); ++index)
        nothing.append(QModelIndex());
    changePersistentIndexList(remembered, nothing);
    const QSignalBlocker blocker(this);
    for (auto piece = pieces.crbegin(); piece != pieces.crend(); ++piece)
        delete (*piece)->parent()->takeChild((*piece)->row());
}

} // namespace CheckableTree
