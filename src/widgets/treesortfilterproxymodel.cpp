#include <Pardel/treesortfilterproxymodel.h>

#include <QRegExp>
#include <QRegularExpression>

#include <algorithm>
#include <utility>
#include <vector>

namespace {

constexpr int deepNesting = 50;

} // namespace

TreeSortFilterProxyModel::TreeSortFilterProxyModel(QObject* parent) : QSortFilterProxyModel(parent)
{
    setFilterCaseSensitivity(Qt::CaseInsensitive);
}

void TreeSortFilterProxyModel::setFilterKeyColumns(QList<int> columns)
{
    m_filterKeyColumns = std::move(columns);
}

QList<int> TreeSortFilterProxyModel::filterKeyColumns() const
{
    return m_filterKeyColumns;
}

bool TreeSortFilterProxyModel::filterAcceptsRow(int sourceRow, const QModelIndex& sourceParent) const
{
    if (m_keepsRows)
        return mapFromSource(sourceModel()->index(sourceRow, 0, sourceParent)).isValid();
    // An empty pattern is found in every text, so that it needs no test of its own.
    if (m_filterKeyColumns.isEmpty())
        return filterKeyColumn() == -1 || resultAcceptsRow(sourceRow, sourceParent, filterKeyColumn());
    return std::any_of(m_filterKeyColumns.begin(), m_filterKeyColumns.end(),
                       [&](int column) { return resultAcceptsRow(sourceRow, sourceParent, column); });
}

bool TreeSortFilterProxyModel::resultAcceptsRow(int sourceRow, const QModelIndex& sourceParent, int column) const
{
    if (!sourceModel())
        return false;
    if (cellMatches(sourceRow, sourceParent, column))
        return true;
    const QModelIndex first = sourceModel()->index(sourceRow, 0, sourceParent);
    // An invalid index would stand for the whole source.
    const int children = first.isValid() ? sourceModel()->rowCount(first) : 0;
    if (children == 0)
        return false;
    if (++m_nesting == deepNesting)
        testGroupsBelow(first);
    bool accepts = false;
    for (int row = 0; row < children && !accepts; ++row) {
        const auto verdict = m_deepVerdicts.constFind(sourceModel()->index(row, 0, first));
        accepts = verdict == m_deepVerdicts.constEnd() ? filterAcceptsRow(row, first) : *verdict;
    }
    if (--m_nesting == 0)
        m_deepVerdicts.clear();
    return accepts;
}

Qt::ItemFlags TreeSortFilterProxyModel::flags(const QModelIndex& index) const
{
    return QSortFilterProxyModel::flags(index) | Qt::ItemIsUserCheckable;
}

void TreeSortFilterProxyModel::replaceFilter(const QString& pattern, const std::function<void()>& expand)
{
    // Rows that go one by one cost as much as all rows together, each. So they all stay at first, and invalidate()
    // builds the visible rows once.
    m_keepsRows = true;
    setFilterFixedString(pattern);
    m_keepsRows = false;
    // Each level that is expanded would test all levels below it again, without the verdicts on deep ones.
    ++m_nesting;
    invalidate();
    expand();
    --m_nesting;
    m_deepVerdicts.clear();
}

/// Deepest first, so that no test goes down further than to the next level: thousands of levels would fill the stack.
void TreeSortFilterProxyModel::testGroupsBelow(const QModelIndex& top) const
{
    struct Open
    {
        QModelIndex group;
        int nextRow;
        int rows;
    };
    std::vector<Open> open{{top, 0, sourceModel()->rowCount(top)}};
    while (open.size() > 1 || open.back().nextRow < open.back().rows) {
        Open& current = open.back();
        if (current.nextRow == current.rows) {
            const QModelIndex group = current.group;
            m_deepVerdicts.insert(group, filterAcceptsRow(group.row(), group.parent()));
            open.pop_back();
        } else {
            const QModelIndex child = sourceModel()->index(current.nextRow++, 0, current.group);
            if (const int rows = sourceModel()->rowCount(child))
                open.push_back({child, 0, rows});
        }
    }
}

bool TreeSortFilterProxyModel::cellMatches(int sourceRow, const QModelIndex& sourceParent, int column) const
{
    // The base class has its pattern at hand, while the copies below cost more than the match. It accepts every row
    // that does not have its column, though.
    const bool isKeyColumn = column >= 0 && column == filterKeyColumn();
    if (isKeyColumn && !QSortFilterProxyModel::filterAcceptsRow(sourceRow, sourceParent))
        return false;
    const QModelIndex cell = sourceModel()->index(sourceRow, column, sourceParent);
    if (isKeyColumn && cell.isValid())
        return true;
    const QString text = cell.data(filterRole()).toString();
    const QRegularExpression expression = filterRegularExpression();
    return expression.pattern().isEmpty() ? text.contains(filterRegExp()) : text.contains(expression);
}
