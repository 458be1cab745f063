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
 * The pattern is the inherited one, set in any of the ways that Qt 5's base class has (fixed string, wildcard, the text
 * of an expression, QRegularExpression, QRegExp; with Qt 6, which has no QRegExp, in all but the last), with the
 * inherited case sensitivity, which is Qt::CaseInsensitive after construction, and the inherited role. It is looked for
 * anywhere in a cell's text. A QRegularExpression brings its own case sensitivity.
 *
 * A group that matches does not make its children visible: each of them is tested by itself. A group is not tested
 * again when only rows below it change; rows that are put in with all that is below them are tested with it.
 *
 * The test itself goes down any number of levels, but the base class and QTreeView expand by recursion: more than some
 * 20,000 levels, all expanded, end the process. A row counts as one without children when the source's hasChildren says
 * so, whatever its rowCount tells.
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

    /** The base class's flags with Qt::ItemIsUserCheckable, for every index, the invalid one too. */
    Qt::ItemFlags flags(const QModelIndex& index) const override;

#if QT_VERSION >= QT_VERSION_CHECK(6, 0, 0)
public Q_SLOTS:
    /**
     * Sets the pattern as wildcards, as the base class does in Qt 5: "*" and "?" stand for a "/" too.
     *
     * "*" is any text, "?" any character, "[...]" one of a set of characters; all others are themselves. A set that
     * does not end matches nothing. With Qt 5 it is the base class's own.
     */
    void setFilterWildcard(const QString& pattern);

    /**
     * Sets the pattern as the text of an expression, as the base class does in Qt 5; that of Qt 6 has no such function.
     *
     * The syntax is QRegularExpression's, of which QRegExp's is a part but for rarities ("\x" has no 4 digits, "$" is
     * also before a last line break). Letters and digits are those of all alphabets, "." is any character. A faulty
     * expression matches nothing. With Qt 5 it is the base class's own.
     */
    void setFilterRegExp(const QString& pattern);
#endif

private:
    class Q_DECL_HIDDEN Private;
    const std::unique_ptr<Private> d;
};
