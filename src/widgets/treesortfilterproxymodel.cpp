#include <Pardel/treesortfilterproxymodel.h>

#include "treesortfilterproxymodel_p.h"
#include "treewalk_p.h"

#include <QHash>
#include <QRegularExpression>

#include <algorithm>
#include <utility>

class Q_DECL_HIDDEN TreeSortFilterProxyModel::Private
{
public:
    explicit Private(TreeSortFilterProxyModel* filter) : proxy(filter) {}

    void testGroupsBelow(const QModelIndex& top);
    bool cellMatches(int sourceRow, const QModelIndex& sourceParent, int column) const;

    TreeSortFilterProxyModel* const proxy;
    QList<int> keyColumns;
    int nesting = 0; ///< Groups whose children are being tested.
    QHash<QModelIndex, bool> deepVerdicts;
};

TreeSortFilterProxyModel::TreeSortFilterProxyModel(QObject* parent)
    : QSortFilterProxyModel(parent), d(std::make_unique<Private>(this))
{
    setFilterCaseSensitivity(Qt::CaseInsensitive);
}

TreeSortFilterProxyModel::~TreeSortFilterProxyModel() = default;

void TreeSortFilterProxyModel::setFilterKeyColumns(QList<int> columns)
{
    d->keyColumns = std::move(columns);
}

QList<int> TreeSortFilterProxyModel::filterKeyColumns() const
{
    return d->keyColumns;
}

bool TreeSortFilterProxyModel::filterAcceptsRow(int sourceRow, const QModelIndex& sourceParent) const
{
    // An empty pattern is found in every text, so that it needs no test of its own.
    if (d->keyColumns.isEmpty())
        return filterKeyColumn() == -1 || resultAcceptsRow(sourceRow, sourceParent, filterKeyColumn());
    return std::any_of(d->keyColumns.cbegin(), d->keyColumns.cend(),
                       [&](int column) { return resultAcceptsRow(sourceRow, sourceParent, column); });
}

bool TreeSortFilterProxyModel::resultAcceptsRow(int sourceRow, const QModelIndex& sourceParent, int column) const
{
    if (!sourceModel())
        return false;
    if (d->cellMatches(sourceRow, sourceParent, column))
        return true;
    const QModelIndex first = sourceModel()->index(sourceRow, 0, sourceParent);
    // An invalid index would stand for the whole source.
    const int children = first.isValid() ? sourceModel()->rowCount(first) : 0;
    if (children == 0)
        return false;
    if (++d->nesting == TreeFilter::deepNesting)
        d->testGroupsBelow(first);
    bool accepts = false;
    for (int row = 0; row < children && !accepts; ++row) {
        const auto verdict = d->deepVerdicts.constFind(sourceModel()->index(row, 0, first));
        accepts = verdict == d->deepVerdicts.constEnd() ? filterAcceptsRow(row, first) : *verdict;
    }
    if (--d->nesting == 0)
        d->deepVerdicts.clear();
    return accepts;
}

Qt::ItemFlags TreeSortFilterProxyModel::flags(const QModelIndex& index) const
{
    return QSortFilterProxyModel::flags(index) | Qt::ItemIsUserCheckable;
}

#if QT_VERSION >= QT_VERSION_CHECK(6, 0, 0)
void TreeSortFilterProxyModel::setFilterWildcard(const QString& pattern)
{
    setFilterRegularExpression(
        QRegularExpression::wildcardToRegularExpression(pattern, QRegularExpression::UnanchoredWildcardConversion));
}

void TreeSortFilterProxyModel::setFilterRegExp(const QString& pattern)
{
    setFilterRegularExpression(pattern);
}
#endif

/// Deepest first, so that no test goes down further than to the next level: thousands of levels would fill the stack.
void TreeSortFilterProxyModel::Private::testGroupsBelow(const QModelIndex& top)
{
    const QAbstractItemModel* source = proxy->sourceModel();
    TreeWalk::walk(
        top, [source](const QModelIndex& index) { return source->rowCount(index); },
        [source](const QModelIndex& index, int row) { return source->index(row, 0, index); }, [](const QModelIndex&) {},
        [this, &top](const QModelIndex& index, int rows) {
            if (rows > 0 && index != top)
                deepVerdicts.insert(index, proxy->filterAcceptsRow(index.row(), index.parent()));
        });
}

bool TreeSortFilterProxyModel::Private::cellMatches(int sourceRow, const QModelIndex& sourceParent, int column) const
{
    // The base class has its pattern at hand, while the copies below cost more than the match. It accepts every row
    // that does not have its column, though.
    const bool isKeyColumn = column >= 0 && column == proxy->filterKeyColumn();
    if (isKeyColumn && !proxy->QSortFilterProxyModel::filterAcceptsRow(sourceRow, sourceParent))
        return false;
    const QModelIndex cell = proxy->sourceModel()->index(sourceRow, column, sourceParent);
    if (isKeyColumn && cell.isValid())
        return true;
    const QString text = cell.data(proxy->filterRole()).toString();
    const QRegularExpression expression = proxy->filterRegularExpression();
#if QT_VERSION < QT_VERSION_CHECK(6, 0, 0)
    // All other ways to set the pattern fill this one.
    if (expression.pattern().isEmpty())
        return text.contains(proxy->filterRegExp());
#endif
    return text.contains(expression);
}
