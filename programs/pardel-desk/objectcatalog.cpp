#include "objectcatalog.h"

#include <QStandardItemModel>

QString ObjectCatalog::name(qint32 id) const
{
    const auto object = m_objects.constFind(id);
    return object == m_objects.cend() || object->name.isEmpty() ? QString::number(static_cast<quint32>(id))
                                                                : object->name;
}

QColor ObjectCatalog::color(qint32 id)
{
    constexpr quint32 goldenAngle = 137; // degrees of hue: neighbours end up far apart
    const auto number = static_cast<quint32>(id);
    return QColor::fromHsv(static_cast<int>(number % 360 * goldenAngle % 360), 230, number % 2 == 0 ? 190 : 140);
}

void ObjectCatalog::fillTreeModel(QStandardItemModel& model) const
{
    model.clear();
    QMap<QString, QStandardItem*> groups;
    for (auto object = m_objects.cbegin(); object != m_objects.cend(); ++object) {
        QStandardItem*& group = groups[object->group];
        if (!group)
            group = new QStandardItem(object->group);
        auto* item = new QStandardItem(name(object.key()));
        item->setData(object.key(), idRole);
        group->appendRow(item);
    }
    for (QStandardItem* group : groups) // put in complete, so that a tree's filter sees them as they are
        model.appendRow(group);
}
