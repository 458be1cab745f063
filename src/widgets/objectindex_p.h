#pragma once

#include <QObject>
#include <QStandardItemModel>
#include <QVector>

#include <map>
#include <utility>
#include <vector>

namespace CheckableTree {

/**
 * Where the items with an id stand in a model, so that one tick does not cost a walk over the whole tree.
 *
 * It is built when it is first asked, and what is put in later is added. Not all that is taken out is told (takeChild
 * and takeItem are silent), so every place is looked at again before it is believed: an item may be gone, and its
 * address may be another one's by now. A place that holds no more is passed over from then on. Within one use, in which
 * the tree does not change, a place is looked at once, as are those of the groups above it.
 */
class ObjectIndex : public QObject
{
public:
    ObjectIndex(QStandardItemModel* model, int lowestId);

    /** To be called before items() when the tree may have changed: in one use every place is looked at once. */
    void startUse();

    /** The items that have this id, groups too, in the order of the tree. */
    QVector<QStandardItem*> items(int id);

    /** To be told that an item has changed, as itemChanged comes before the model's other signals. */
    void noticeChange(QStandardItem* item);

private:
    using Key = std::pair<int, QStandardItem*>;

    /// Where an item was found.
    struct Place
    {
        QStandardItem* item;
        int parent; ///< Of m_places; -1 at top level.
        int row;    ///< When it was last looked at; -1 once the item is gone.
        int id;
        unsigned use; ///< In which it was last looked at.
    };

    void build();
    void clear();
    void addRows(const QModelIndex& parent, int first, int last);
    void noticeShift(const QModelIndex& parent, int end, int rows);
    void noticeRows(const QModelIndex& first, const QModelIndex& last);
    void appendTree(QStandardItem* top, int parent);
    int append(QStandardItem* item, int parent);
    int placeOf(QStandardItem* group);
    void makeKnown(int place);
    std::vector<int>::iterator findBuilt(const Key& key);
    bool isThere(int place);
    const Place& at(int place) const { return m_places[static_cast<std::size_t>(place)]; }
    Place& at(int place) { return m_places[static_cast<std::size_t>(place)]; }
    Key keyOf(int place) const { return {at(place).id, at(place).item}; }

    QStandardItemModel* m_model;
    int m_lowestId;
    bool m_isBuilt = false;
    unsigned m_use = 0;
    int m_lastGroup = -1;        ///< Place of the group into which rows were put last.
    int m_limit = 0;             ///< Of m_places: with more that came later it is built again, which puts all in order.
    int m_shift = 0;             ///< Rows by which others have moved up or down since it was built.
    std::vector<Place> m_places; ///< In the order of the tree, then those that came later.
    std::vector<int> m_byId;     ///< Those of m_places that were built and have an id, by their keys.
    std::map<Key, int> m_later;  ///< Those that came later and have an id.
};

} // namespace CheckableTree
