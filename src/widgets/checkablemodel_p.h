#pragma once

#include <QStandardItemModel>

namespace CheckableTree {

/**
 * The copy that a checkable tree shows.
 *
 * Views and filter proxies go down by recursion, one call or more a level. So groups on the deepest level that these
 * survive tell them that they have no children; the items themselves keep theirs, at any depth.
 */
class Model : public QStandardItemModel
{
public:
    using QStandardItemModel::QStandardItemModel;
    ~Model() override;

    /** Half of what Qt survives with the 8 MB that the main thread's stack has. */
    static constexpr int deepestLevelShown = 10'000;

    bool hasChildren(const QModelIndex& parent = QModelIndex()) const override;

    /** What clear() does, at any depth. */
    void removeAll();

private:
    void takeApart();
};

} // namespace CheckableTree
