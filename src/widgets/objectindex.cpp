#include "objectindex_p.h"

#include "checkabletree_p.h"

#include <algorithm>

namespace CheckableTree {

namespace {

int levelOf(const QStandardItem* item)
{
    int level = 0;
    while ((item = item->parent()))
        ++level;
    return level;
}

/// Whether the first of two items of one model comes before the other one in the order of the tree.
bool isBefore(const QStandardItem* left, const QStandardItem* right)
{
    const int leftLevel = levelOf(left);
    const int rightLevel = levelOf(right);
    for (int level = leftLevel; level > rightLevel; --level)
        left = left->parent();
    for (int level = rightLevel; level > leftLevel; --level)
        right = right->parent();
    if (left == right)
        return leftLevel < rightLevel;
    while (left->parent() != right->parent()) {
        left = left->parent();
        right = right->parent();
    }
    return left->row() < right->row();
}

/// The row of a group in which an item is, looked for on both sides of where it was; -1 if it is not there. Only the
/// group needs to exist.
int rowOf(const QStandardItem* item, const QStandardItem* group, int before)
{
    const int rows = group->rowCount();
    for (int distance = 0; before - distance >= 0 || before + distance < rows; ++distance) {
        for (const int row : {before - distance, before + distance}) {
            if (row >= 0 && row < rows && group->child(row) == item)
                return row;
        }
    }
    return -1;
}

} // namespace

ObjectIndex::ObjectIndex(QStandardItemModel* model, int lowestId) : QObject(model), m_model(model), m_lowestId(lowestId)
{
    connect(model, &QAbstractItemModel::rowsInserted, this, [this](const QModelIndex& parent, int first, int last) {
        addRows(parent, first, last);
        noticeShift(parent, last + 1, last - first + 1);
    });
    connect(model, &QAbstractItemModel::rowsRemoved, this,
            [this](const QModelIndex& parent, int first, int last) { noticeShift(parent, first, last - first + 1); });
    connect(model, &QAbstractItemModel::rowsMoved, this, &ObjectIndex::clear);
    connect(model, &QAbstractItemModel::columnsInserted, this, [this](const QModelIndex& parent, int first) {
        if (first == 0 && m_model->rowCount(parent) > 0)
            clear();
    });
    connect(model, &QAbstractItemModel::columnsRemoved, this, &ObjectIndex::clear);
    connect(model, &QAbstractItemModel::layoutChanged, this, &ObjectIndex::clear);
    connect(model, &QAbstractItemModel::modelReset, this, &ObjectIndex::clear);
    connect(model, &QAbstractItemModel::dataChanged, this,
            [this](const QModelIndex& topLeft, const QModelIndex& bottomRight, const QVector<int>& roles) {
                if (roles.isEmpty()) // perhaps other items
                    addRows(topLeft.parent(), topLeft.row(), bottomRight.row());
                else if (roles.contains(ObjectIdRole))
                    noticeRows(topLeft, bottomRight);
            });
}

void ObjectIndex::startUse()
{
    ++m_use;
}

QVector<QStandardItem*> ObjectIndex::items(int id)
{
    QVector<QStandardItem*> found;
    if (id < m_lowestId)
        return found;
    if (!m_isBuilt)
        build();
    const auto holds = [this, id](int place) { return isThere(place) && objectId(at(place).item) == id; };
    std::vector<int> places;
    for (auto place = findBuilt({id, nullptr}); place != m_byId.end() && at(*place).id == id; ++place) {
        if (holds(*place))
            places.push_back(*place);
    }
    std::sort(places.begin(), places.end());
    found.reserve(static_cast<int>(places.size()));
    for (const int place : places)
        found.append(at(place).item);
    for (auto later = m_later.lower_bound({id, nullptr}); later != m_later.end() && later->first.first == id; ++later) {
        QStandardItem* item = later->first.second;
        if (holds(later->second))
            found.insert(std::upper_bound(found.begin(), found.end(), item, isBefore), item);
    }
    return found;
}

void ObjectIndex::noticeChange(QStandardItem* item)
{
    const Key key(objectId(item), item);
    if (!m_isBuilt || key.first < m_lowestId)
        return;
    startUse();
    const auto built = findBuilt(key);
    const auto later = m_later.find(key);
    const bool isKnown = (later != m_later.end() && isThere(later->second)) ||
                         (built != m_byId.end() && keyOf(*built) == key && isThere(*built));
    if (!isKnown)
        makeKnown(append(item, placeOf(item->parent())));
}

void ObjectIndex::noticeRows(const QModelIndex& first, const QModelIndex& last)
{
    for (int row = first.row(); row <= last.row(); ++row) {
        if (QStandardItem* item = m_model->itemFromIndex(first.sibling(row, 0)))
            noticeChange(item);
    }
}

void ObjectIndex::build()
{
    clear();
    m_isBuilt = true;
    appendTree(m_model->invisibleRootItem(), -1);
    const int places = static_cast<int>(m_places.size());
    for (int place = 0; place < places; ++place) {
        if (at(place).id >= m_lowestId)
            m_byId.push_back(place);
    }
    std::sort(m_byId.begin(), m_byId.end(), [this](int left, int right) { return keyOf(left) < keyOf(right); });
    m_limit = places + places / 16 + 1000;
}

void ObjectIndex::clear()
{
    m_isBuilt = false;
    m_lastGroup = -1;
    m_shift = 0;
    m_places.clear();
    m_byId.clear();
    m_later.clear();
}

void ObjectIndex::addRows(const QModelIndex& parent, int first, int last)
{
    if (!m_isBuilt)
        return;
    if (static_cast<int>(m_places.size()) > m_limit)
        return clear();
    const QStandardItem* group = parent.isValid() ? m_model->itemFromIndex(parent) : m_model->invisibleRootItem();
    const int groupPlace = placeOf(m_model->itemFromIndex(parent));
    const int known = static_cast<int>(m_places.size());
    for (int row = first; row <= last; ++row) {
        if (QStandardItem* top = group->child(row))
            appendTree(top, groupPlace);
    }
    for (int place = known; place < static_cast<int>(m_places.size()); ++place)
        makeKnown(place);
}

/// Rows from @p end on have moved by so many. An item that has moved is looked for row by row, so that to build the index
/// again is less work from some such rows on.
void ObjectIndex::noticeShift(const QModelIndex& parent, int end, int rows)
{
    constexpr int mostShift = 250;
    if (end < m_model->rowCount(parent))
        m_shift += rows;
    if (m_shift > mostShift)
        clear();
}

void ObjectIndex::appendTree(QStandardItem* top, int parent)
{
    std::vector<int> path; // of the item that was visited last
    visitTree(top, [&](QStandardItem* item) {
        if (item == m_model->invisibleRootItem())
            return;
        while (!path.empty() && at(path.back()).item != item->parent())
            path.pop_back();
        path.push_back(append(item, path.empty() ? parent : path.back()));
    });
}

int ObjectIndex::append(QStandardItem* item, int parent)
{
    m_places.push_back({item, parent, item->row(), objectId(item), m_use});
    return static_cast<int>(m_places.size()) - 1;
}

/// Of a group, anew with all that are above it, as there is no way from an item to the place that it has already.
int ObjectIndex::placeOf(QStandardItem* group)
{
    startUse();
    if (m_lastGroup >= 0 && at(m_lastGroup).item == group && isThere(m_lastGroup))
        return m_lastGroup;
    std::vector<QStandardItem*> path;
    for (QStandardItem* item = group; item; item = item->parent())
        path.push_back(item);
    m_lastGroup = -1;
    for (auto item = path.crbegin(); item != path.crend(); ++item)
        m_lastGroup = append(*item, m_lastGroup);
    return m_lastGroup;
}

/// Instead of a place that the same item may have had before.
void ObjectIndex::makeKnown(int place)
{
    const Key key = keyOf(place);
    if (key.first < m_lowestId)
        return;
    const auto built = findBuilt(key);
    if (built != m_byId.end() && keyOf(*built) == key)
        at(*built).row = -1;
    m_later[key] = place;
}

std::vector<int>::iterator ObjectIndex::findBuilt(const Key& key)
{
    return std::lower_bound(m_byId.begin(), m_byId.end(), key,
                            [this](int place, const Key& value) { return keyOf(place) < value; });
}

bool ObjectIndex::isThere(int place)
{
    std::vector<int> path;
    for (int step = place; step >= 0 && at(step).use != m_use; step = at(step).parent)
        path.push_back(step);
    for (auto step = path.crbegin(); step != path.crend(); ++step) {
        Place& current = at(*step);
        const QStandardItem* group = current.parent < 0 ? m_model->invisibleRootItem() : at(current.parent).item;
        if (current.row >= 0)
            current.row = rowOf(current.item, group, current.row);
        if (current.row < 0)
            return false;
        current.use = m_use;
    }
    return at(place).row >= 0;
}

} // namespace CheckableTree
