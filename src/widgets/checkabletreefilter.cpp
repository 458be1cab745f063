#include "checkabletreefilter_p.h"

#include "treesortfilterproxymodel_p.h"

#include <QTreeView>

namespace CheckableTree {

void Filter::replaceText(const QString& text, const std::function<void()>& expand)
{
    // Qt takes rows out one by one, each at the cost of a walk over all rows that stay: quadratic. So all stay at
    // first, and invalidate() builds the visible rows once. A new text makes Qt ask only about rows that it has mapped;
    // of others mapFromSource() would have to ask the filter again.
    m_keepsRows = true;
    setFilterFixedString(text);
    m_keepsRows = false;
    // Each level that is expanded would test all levels below it again, without the verdicts on deep ones.
    m_keepsVerdicts = true;
    invalidate();
    expand();
    m_keepsVerdicts = false;
    m_deepVerdicts.clear();
}

bool Filter::filterAcceptsRow(int sourceRow, const QModelIndex& sourceParent) const
{
    const auto index = [&] { return sourceModel()->index(sourceRow, 0, sourceParent); };
    if (m_keepsRows)
        return mapFromSource(index()).isValid();
    if (!m_keepsVerdicts)
        return TreeSortFilterProxyModel::filterAcceptsRow(sourceRow, sourceParent);
    if (m_nesting > 0) {
        const auto verdict = m_deepVerdicts.constFind(index());
        if (verdict != m_deepVerdicts.constEnd())
            return *verdict;
    }
    ++m_nesting;
    const bool accepts = TreeSortFilterProxyModel::filterAcceptsRow(sourceRow, sourceParent);
    --m_nesting;
    if (m_nesting >= TreeFilter::deepNesting)
        m_deepVerdicts.insert(index(), accepts);
    return accepts;
}

CurrentItem::CurrentItem(QTreeView* view, QSortFilterProxyModel* proxy) : m_view(view), m_proxy(proxy)
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

void CurrentItem::moveOn() const
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

bool CurrentItem::isVisible(const QModelIndex& index) const
{
    return m_proxy->mapFromSource(index).isValid();
}

QModelIndex CurrentItem::neighbour(int step) const
{
    for (int row = m_row + step; row >= 0 && row < m_siblings.size(); row += step) {
        const QModelIndex index = m_proxy->mapFromSource(m_siblings.at(row));
        if (index.isValid() && index.flags().testFlag(Qt::ItemIsEnabled))
            return index;
    }
    return {};
}

} // namespace CheckableTree
