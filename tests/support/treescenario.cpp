#include "treescenario.h"

QList<int> idsOf(const QByteArray& text)
{
    QList<int> ids;
    for (const QByteArray& id : text.isEmpty() ? QByteArrayList() : text.split(','))
        ids.append(id.toInt());
    return ids;
}

QByteArray stateText(const QStandardItemModel* model, int box, const QList<int>& emitted)
{
    QByteArray text = treeText(model) + " box " + QByteArray::number(box);
    for (const int state : emitted)
        text += ' ' + QByteArray::number(state);
    return text.trimmed();
}

void fillAtRandom(QStandardItemModel* model, QRandomGenerator* random)
{
    QList<QStandardItem*> parents{model->invisibleRootItem()};
    for (int i = random->bounded(1, 13); i > 0; --i) {
        auto* item = new QStandardItem(QString(QLatin1Char(static_cast<char>('a' + i))));
        if (random->bounded(4) > 0)
            item->setData(random->bounded(-1, 5), Qt::UserRole + 10);
        if (const int state = random->bounded(4))
            item->setData(state - 1, Qt::CheckStateRole);
        parents.at(random->bounded(parents.size()))->appendRow(item);
        parents += item;
    }
}

QByteArray randomAction(const QByteArrayList& actions, const QStandardItemModel* model, QRandomGenerator* random)
{
    const auto items = model->findItems(QStringLiteral("*"), Qt::MatchWildcard | Qt::MatchRecursive);
    QByteArray action = actions.at(random->bounded(actions.size()));
    action.replace("NAME", items.at(random->bounded(items.size()))->text().toUtf8());
    action.replace("STATE", QByteArray::number(random->bounded(3)));
    return action.replace("ID", QByteArray::number(random->bounded(-1, 5)));
}

bool changeItem(QStandardItem* item, const QByteArray& verb, int number)
{
    if (verb == "set" || verb == "quiet" || verb == "unset") {
        const QSignalBlocker blocker(verb == "quiet" ? item->model() : nullptr);
        item->setData(verb == "unset" ? QVariant() : number, Qt::CheckStateRole);
    } else if (verb == "put") {
        item->model()->setItemData(item->index(), {{Qt::CheckStateRole, number}});
    } else if (verb == "touch") {
        item->setToolTip(item->toolTip() + QLatin1Char('.'));
    } else if (verb == "rename") {
        item->setData(number, Qt::UserRole + 10);
    } else if (verb == "insert") {
        auto* child = new QStandardItem(QStringLiteral("new"));
        child->setData(number, Qt::UserRole + 10);
        child->setCheckState(Qt::Checked);
        item->appendRow(child);
    } else if (verb == "remove") {
        item->removeRows(0, item->rowCount());
    } else if (verb == "move") {
        QStandardItem* top = item->model()->invisibleRootItem();
        QStandardItem* parent = item->parent() ? item->parent() : top;
        top->insertRow(0, parent->takeRow(item->row()));
    } else {
        return false;
    }
    return true;
}
