#pragma once

#include <Pardel/pardel_export.h>

#include <QList>
#include <QModelIndex>
#include <QSortFilterProxyModel>

#include <memory>

/**
 * A filter for trees: a row stays visible while any row below it matches, so that the path down to every match is kept.
 *
 * @code
 * TreeSortFilterProxyModel proxy;
 * proxy.setSourceModel(&objects);
 * proxy.setFilterKeyColumns({0, 2});
 * proxy.setFilterFixedString(QStringLiteral("truck"));
 * @endcode
 *
 * The pattern is the inherited one, set in any of the inherited ways (fixed string, wildcard, QRegExp or
 * QRegularExpression), with the inherited case sensitivity, which is Qt::CaseInsensitive after construction, and the
 * inherited role. It is looked for anywhere in a cell's text. A QRegularExpression brings its own case sensitivity.
 *
 * A group that matches does not make its children visible: each of them is tested by itself. A group is not tested
 * again when only rows below it change; rows that are put in with all that is below them are tested with it.
 */
class PARDEL_EXPORT TreeSortFilterProxyModel : public QSortFilterProxyModel
{
    Q_OBJECT

public:
    /** A filter without a source, which lets all rows pass; @p parent may be null and owns it otherwise. */
    explicit TreeSortFilterProxyModel(QObject* parent = nullptr);
    ~TreeSortFilterProxyModel() override;

    /**
     * Sets the source columns that are tested; a row is kept when one of them matches.
     *
     * The list is kept as it is; a column that the source does not have counts as an empty text. An empty list, as at
     * first, leaves the test to filterKeyColumn(). Does not filter again: set the pattern afterwards.
     */
    void setFilterKeyColumns(QList<int> columns);

    /** The columns that setFilterKeyColumns set. */
    QList<int> filterKeyColumns() const;

    /**
     * Whether a row of the source stays visible.
     *
     * Every row does while the pattern is empty. Otherwise those do for which resultAcceptsRow accepts one of
     * filterKeyColumns(), or filterKeyColumn() if that list is empty. With an empty list and filterKeyColumn() -1 every
     * row stays, whatever the pattern: the base class's search through all columns is not used.
     */
    bool filterAcceptsRow(int sourceRow, const QModelIndex& sourceParent) const override;

    /**
     * Whether the row's cell in @p column matches, or filterAcceptsRow accepts a child of its column 0.
     *
     * A row or column that the source does not have counts as a cell with an empty text and without children.
     */
    bool resultAcceptsRow(int sourceRow, const QModelIndex& sourceParent, int column) const;

#if QT_VERSION >= QT_VERSION_CHECK(6, 0, 0)
public Q_SLOTS:
    /**
     * Sets a wildcard pattern as Qt 5's base class does: "*" stands for any characters, "/" among them, at which Qt 6's
     * own wildcards stop.
     */
    void setFilterWildcard(const QString& pattern);

    /** Sets a regular expression, as the base class of Qt 5 does; that of Qt 6 has no such function. */
    void setFilterRegExp(const QString& pattern);

public:
#endif
    /** The base class's flags with Qt::ItemIsUserCheckable, for every index, the invalid one too. */
    Qt::ItemFlags flags(const QModelIndex& index) const override;

private:
    class Q_DECL_HIDDEN Private;
    const std::unique_ptr<Private> d;
};
