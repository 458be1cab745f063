#include "treetext.h"

#include <QRegularExpression>
#include <QTreeView>

namespace {

constexpr int idRole = Qt::UserRole + 10;
const QString stateMarks = QStringLiteral("-~+");

/// Of a whole model, or of what a view shows of it.
QString rowsText(const QAbstractItemModel* model, const QModelIndex& parent, const QTreeView* view)
{
    QStringList texts;
    for (int row = 0; row < model->rowCount(parent); ++row) {
        const QModelIndex index = model->index(row, 0, parent);
        QString text = index.data().toString();
        if (view) {
            text.prepend(QLatin1String(view->selectionModel()->isSelected(index) ? "!" : ""));
            text.prepend(QLatin1String(view->currentIndex() == index ? "*" : ""));
            text += QLatin1String(index.data(Qt::CheckStateRole).toInt() == Qt::Checked ? "+" : "");
        } else {
            if (index.data(idRole).isValid())
                text += QLatin1Char(':') + index.data(idRole).toString();
            if (index.data(Qt::CheckStateRole).isValid())
                text += stateMarks.at(index.data(Qt::CheckStateRole).toInt());
        }
        if (model->hasChildren(index) && (!view || view->isExpanded(index)))
            text += QLatin1Char('(') + rowsText(model, index, view) + QLatin1Char(')');
        texts += text;
    }
    return texts.join(QLatin1Char(' '));
}

} // namespace

void readTree(QStandardItemModel* model, const QByteArray& text)
{
    static const QRegularExpression token(QStringLiteral("[()]|([^ ():]+?)(?::(-?\\d+))?([-~+]?)(?=[ ()]|$)"));
    model->clear();
    QStandardItem* parent = model->invisibleRootItem();
    for (auto tokens = token.globalMatch(QString::fromUtf8(text)); tokens.hasNext();) {
        const QRegularExpressionMatch match = tokens.next();
        if (match.captured() == QLatin1Char('(')) {
            parent = parent->child(parent->rowCount() - 1);
        } else if (match.captured() == QLatin1Char(')')) {
            parent = parent->parent() ? parent->parent() : model->invisibleRootItem();
        } else {
            auto* item = new QStandardItem(match.captured(1));
            if (match.capturedLength(2) > 0)
                item->setData(match.captured(2).toInt(), idRole);
            if (match.capturedLength(3) > 0)
                item->setData(static_cast<int>(stateMarks.indexOf(match.captured(3))), Qt::CheckStateRole);
            parent->appendRow(item);
        }
    }
}

QByteArray treeText(const QStandardItemModel* model)
{
    return rowsText(model, QModelIndex(), nullptr).toUtf8();
}

QByteArray viewText(const QTreeView* view)
{
    return rowsText(view->model(), QModelIndex(), view).toUtf8();
}

QStandardItem* itemNamed(const QStandardItemModel* model, const QByteArray& name)
{
    return model->findItems(QString::fromUtf8(name), Qt::MatchExactly | Qt::MatchRecursive).value(0);
}

QStandardItem* nestedGroups(int levels, int id)
{
    auto* item = new QStandardItem(QStringLiteral("object"));
    item->setData(id, Qt::UserRole + 10);
    for (int level = 1; level < levels; ++level) {
        auto* group = new QStandardItem(QStringLiteral("group"));
        group->appendRows({item}); // appendRow goes through all that is below
        item = group;
    }
    return item;
}
