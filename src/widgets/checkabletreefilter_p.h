#pragma once

#include <Pardel/treesortfilterproxymodel.h>

#include <QHash>
#include <QModelIndex>

#include <functional>

QT_BEGIN_NAMESPACE
class QTreeView;
QT_END_NAMESPACE

namespace CheckableTree {

/** The filter of a checkable tree: a new text is told to the view as one change of layout instead of row by row. */
class Filter : public TreeSortFilterProxyModel
{
public:
    using TreeSortFilterProxyModel::TreeSortFilterProxyModel;

    /** What setFilterFixedString does; @p expand then asks for what is below the top level. */
    void replaceText(const QString& text, const std::function<void()>& expand);

    bool filterAcceptsRow(int sourceRow, const QModelIndex& sourceParent) const override;

private:
    bool m_keepsRows = false;
    bool m_keepsVerdicts = false;
    mutable int m_nesting = 0; ///< Rows that are being tested, each for the sake of the one above it.
    mutable QHash<QModelIndex, bool> m_deepVerdicts;
};

/** The current item, and where it goes when a filter hides it: to the neighbour that it would have gone to if its row
 * had been taken out of the view. */
class CurrentItem
{
public:
    CurrentItem(QTreeView* view, QSortFilterProxyModel* proxy);

    void moveOn() const;

private:
    bool isVisible(const QModelIndex& index) const;
    QModelIndex neighbour(int step) const;

    QTreeView* m_view;
    QSortFilterProxyModel* m_proxy;
    QModelIndexList m_siblings; ///< Of the model: those that were visible before, in the view's order.
    int m_row = -1;
};

} // namespace CheckableTree
