#include "checkablemodel_p.h"

#include "treewalk_p.h"

#include <QSignalBlocker>

namespace CheckableTree {

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

void Model::removeAll()
{
    takeApart();
    clear();
}

/// Takes out what is deep, from below: Qt deletes an item's children by recursion.
void Model::takeApart()
{
    constexpr int levelsOfPiece = 1000;
    std::vector<QStandardItem*> pieces;
    int level = 0;
    TreeWalk::walk(
        invisibleRootItem(), [](const QStandardItem* item) { return item->hasChildren() ? item->rowCount() : 0; },
        [](const QStandardItem* item, int row) { return item->child(row); },
        [&](QStandardItem* item) {
            if (++level % levelsOfPiece == 0)
                pieces.push_back(item);
        },
        [&](const QStandardItem* /*item*/, int /*rows*/) { --level; });
    const QSignalBlocker blocker(this);
    for (auto piece = pieces.crbegin(); piece != pieces.crend(); ++piece)
        delete (*piece)->parent()->takeChild((*piece)->row());
}

} // namespace CheckableTree
