#include "treetext.h"

#include <QByteArrayList>
#include <QTreeView>

namespace {

constexpr int idRole = Qt::UserRole + 10;
const QByteArray stateMarks = "-~+";

void addItems(const QStandardItem* parent, QList<QStandardItem*>* items)
{
    for (int row = 0; row < parent->rowCount(); ++row) {
        if (QStandardItem* child = parent->child(row)) {
            items->append(child);
            addItems(child, items);
        }
    }
}

QByteArray itemsText(const QStandardItem* parent)
{
    QByteArrayList texts;
    for (int row = 0; row < parent->rowCount(); ++row) {
        const QStandardItem* item = parent->child(row);
        QByteArray text = item->text().toUtf8();
        if (item->data(idRole).isValid())
            text += ':' + QByteArray::number(item->data(idRole).toInt());
        if (item->data(Qt::CheckStateRole).isValid())
            text += stateMarks.mid(item->data(Qt::CheckStateRole).toInt(), 1);
        texts += item->hasChildren() ? text + '(' + itemsText(item) + ')' : text;
    }
    return texts.join(' ');
}

QByteArray rowsText(const QTreeView* view, const QModelIndex& parent)
{
    QByteArrayList texts;
    for (int row = 0; row < view->model()->rowCount(parent); ++row) {
        const QModelIndex index = view->model()->index(row, 0, parent);
        QByteArray text = index.data().toByteArray();
        if (view->selectionModel()->isSelected(index))
            text.prepend('!');
        if (view->currentIndex() == index)
            text.prepend('*');
        texts += view->isExpanded(index) && view->model()->hasChildren(index) ? text + '(' + rowsText(view, index) + ')'
                                                                              : text;
    }
    return texts.join(' ');
}

} // namespace

void readTree(QStandardItemModel* model, const QByteArray& text)
{
    model->clear();
    QStandardItem* parent = model->invisibleRootItem();
    QStandardItem* last = nullptr;
    for (int at = 0; at < text.size(); ++at) {
        if (text.at(at) == '(') {
            parent = last;
        } else if (text.at(at) == ')') {
            last = parent;
            parent = parent->parent() ? parent->parent() : model->invisibleRootItem();
        } else if (text.at(at) != ' ') {
            int end = at;
            while (end < text.size() && !QByteArray(" ()").contains(text.at(end)))
                ++end;
            QByteArray item = text.mid(at, end - at);
            const int state = item.size() > 1 ? stateMarks.indexOf(item.back()) : -1;
            if (state >= 0)
                item.chop(1);
            const QByteArrayList parts = item.split(':');
            last = new QStandardItem(QString::fromUtf8(parts.first()));
            if (parts.size() > 1)
                last->setData(parts.last().toInt(), idRole);
            if (state >= 0)
                last->setData(state, Qt::CheckStateRole);
            parent->appendRow(last);
            at = end - 1;
        }
    }
}

QByteArray treeText(const QStandardItemModel* model)
{
    return itemsText(model->invisibleRootItem());
}

QByteArray viewText(const QTreeView* view)
{
    return rowsText(view, QModelIndex());
}

QList<QStandardItem*> allItems(const QStandardItemModel* model)
{
    QList<QStandardItem*> items;
    addItems(model->invisibleRootItem(), &items);
    return items;
}

QStandardItem* itemNamed(const QStandardItemModel* model, const QByteArray& name)
{
    for (QStandardItem* item : allItems(model)) {
        if (item->text().toUtf8() == name)
            return item;
    }
    return nullptr;
}
