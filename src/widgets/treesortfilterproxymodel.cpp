#include <Pardel/treesortfilterproxymodel.h>

#include "treesortfilterproxymodel_p.h"
#include "treewalk_p.h"

#include <QHash>
#include <QRegularExpression>

#include <algorithm>
#include <optional>
#include <utility>

namespace {

struct Row
{
    const QAbstractItemModel* source;
    int number;
    const QModelIndex& parent;
};

/// A model of one level may tell its rows for any parent and say by hasChildren alone that there are none below.
int childCount(const QAbstractItemModel* model, const QModelIndex& parent)
{
    return parent.isValid() && model->hasChildren(parent) ? model->rowCount(parent) : 0;
}

/// The text that a pattern stands for if it has nothing but letters, digits and escaped characters, as Qt 6 makes it of
/// a fixed one: looking for that takes half of the time of an expression. Both fold letters one by one, as Unicode has
/// it.
std::optional<QString> literalOf(const QRegularExpression& expression)
{
    if ((expression.patternOptions() | QRegularExpression::CaseInsensitiveOption) !=
        QRegularExpression::CaseInsensitiveOption)
        return std::nullopt;
    const QString pattern = expression.pattern();
    QString text;
    for (int at = 0; at < pattern.size(); ++at) {
        const bool isEscaped = pattern.at(at) == QLatin1Char('\\') && at + 1 < pattern.size();
        const QChar character = pattern.at(isEscaped ? ++at : at);
        const bool isWord = character.isLetterOrNumber() || character == QLatin1Char('_');
        const bool isAscii = character.unicode() < 128;
        if (isEscaped ? isWord && isAscii : !isWord) // a class, an assertion, or a sign with a meaning
            return std::nullopt;
        text += character;
    }
    return text;
}

} // namespace

class Q_DECL_HIDDEN TreeSortFilterProxyModel::Private
{
public:
    explicit Private(TreeSortFilterProxyModel* filter) : proxy(filter) {}

    bool cellMatches(const Row& row, int column);
    bool acceptsChild(const Row& row);
    void testGroupsBelow(const QModelIndex& top);

    TreeSortFilterProxyModel* const proxy;
    QList<int> keyColumns;
    QRegularExpression known;
    std::optional<QString> literal = QString(); ///< What the known expression matches if that is one text.
    bool patternWasEmpty = true;                ///< When it was last looked at; only a hint.
    int nesting = 0;                            ///< Groups whose children are being tested.
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
    const Row row{sourceModel(), sourceRow, sourceParent};
    if (d->keyColumns.isEmpty()) {
        const int column = filterKeyColumn();
        return column == -1 || (row.source && (d->cellMatches(row, column) || d->acceptsChild(row)));
    }
    // All cells come before the rows below, as a way down for each column would multiply at every level.
    const auto matches = [&](int column) { return d->cellMatches(row, column); };
    return row.source && (std::any_of(d->keyColumns.cbegin(), d->keyColumns.cend(), matches) || d->acceptsChild(row));
}

bool TreeSortFilterProxyModel::resultAcceptsRow(int sourceRow, const QModelIndex& sourceParent, int column) const
{
    const Row row{sourceModel(), sourceRow, sourceParent};
    return row.source && (d->cellMatches(row, column) || d->acceptsChild(row));
}

Qt::ItemFlags TreeSortFilterProxyModel::flags(const QModelIndex& index) const
{
    return QSortFilterProxyModel::flags(index) | Qt::ItemIsUserCheckable;
}

bool TreeSortFilterProxyModel::Private::cellMatches(const Row& row, int column)
{
    // The base class alone can tell that there is no pattern without copying it, which costs as much as a match. It
    // lets rows pass that have no such cell, though.
    if (patternWasEmpty && column == proxy->filterKeyColumn() &&
        row.source->index(row.number, column, row.parent).isValid()) {
        patternWasEmpty = proxy->QSortFilterProxyModel::filterAcceptsRow(row.number, row.parent);
        return patternWasEmpty;
    }
    const auto text = [&] {
        return row.source->index(row.number, column, row.parent).data(proxy->filterRole()).toString();
    };
#if QT_VERSION < QT_VERSION_CHECK(6, 0, 0)
    // All ways to set the pattern but setFilterRegularExpression fill this one.
    const QRegExp old = proxy->filterRegExp();
    if (!old.isEmpty()) {
        return old.patternSyntax() == QRegExp::FixedString ? text().contains(old.pattern(), old.caseSensitivity())
                                                           : text().contains(old);
    }
#endif
    const QRegularExpression expression = proxy->filterRegularExpression();
    if (expression != known) {
        known = expression;
        literal = literalOf(expression);
    }
    patternWasEmpty = literal && literal->isEmpty();
    if (!literal)
        return text().contains(expression);
    const bool isInsensitive = expression.patternOptions().testFlag(QRegularExpression::CaseInsensitiveOption);
    return patternWasEmpty || text().contains(*literal, isInsensitive ? Qt::CaseInsensitive : Qt::CaseSensitive);
}

bool TreeSortFilterProxyModel::Private::acceptsChild(const Row& row)
{
    const QModelIndex group = row.source->index(row.number, 0, row.parent);
    const int children = childCount(row.source, group);
    if (children == 0)
        return false;
    if (++nesting == TreeFilter::deepNesting)
        testGroupsBelow(group);
    bool accepts = false;
    for (int child = 0; child < children && !accepts; ++child) {
        const auto verdict =
            deepVerdicts.isEmpty() ? deepVerdicts.cend() : deepVerdicts.constFind(row.source->index(child, 0, group));
        accepts = verdict == deepVerdicts.cend() ? proxy->filterAcceptsRow(child, group) : *verdict;
    }
    if (--nesting == 0)
        deepVerdicts.clear();
    return accepts;
}

/// Deepest first, so that no test goes down further than to the next level: thousands of levels would fill the stack.
void TreeSortFilterProxyModel::Private::testGroupsBelow(const QModelIndex& top)
{
    const QAbstractItemModel* source = proxy->sourceModel();
    TreeWalk::walk(
        top, [source](const QModelIndex& index) { return childCount(source, index); },
        [source](const QModelIndex& index, int row) { return source->index(row, 0, index); }, [](const QModelIndex&) {},
        [this, &top](const QModelIndex& index, int rows) {
            if (rows > 0 && index != top)
                deepVerdicts.insert(index, proxy->filterAcceptsRow(index.row(), index.parent()));
        });
}

#if QT_VERSION >= QT_VERSION_CHECK(6, 0, 0)

namespace {

/// QRegularExpression's own translation lets no wildcard match a "/".
QString expressionOf(const QString& wildcards)
{
    static const QRegularExpression parts(QStringLiteral(R"(\*|\?|\[\^?.?[^\]]*\]?|[^*?[]+)"),
                                          QRegularExpression::DotMatchesEverythingOption);
    QString expression;
    for (auto part = parts.globalMatch(wildcards); part.hasNext();) {
        QString text = part.next().captured();
        if (text == QLatin1Char('*'))
            expression += QLatin1String(".*");
        else if (text == QLatin1Char('?'))
            expression += QLatin1Char('.');
        else if (text.startsWith(QLatin1Char('['))) // a set of characters, in which "\\" and "[" have no meaning
            expression += text.replace(QLatin1Char('\\'), QLatin1String("\\\\"))
                              .replace(QLatin1Char('['), QLatin1String("\\["))
                              .mid(1);
        else
            expression += QRegularExpression::escape(text);
    }
    return expression;
}

/// With letters of all alphabets for \w and \b, and any character for "."; one that is faulty matches nothing.
QString asInQt5(const QString& pattern)
{
    if (pattern.isEmpty())
        return pattern;
    const QString expression = QStringLiteral("(*UCP)(?s)") + pattern;
    return QRegularExpression(expression).isValid() ? expression : QStringLiteral("(?!)");
}

} // namespace

void TreeSortFilterProxyModel::setFilterWildcard(const QString& pattern)
{
    setFilterRegularExpression(asInQt5(expressionOf(pattern)));
}

void TreeSortFilterProxyModel::setFilterRegExp(const QString& pattern)
{
    setFilterRegularExpression(asInQt5(pattern));
}

#endif
