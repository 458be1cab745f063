#include "objectcatalog.h"

#include <QStandardItemModel>

#include <iterator>

QString ObjectCatalog::name(qint32 id) const
{
    const auto object = m_objects.constFind(id);
    return object == m_objects.cend() || object->name.isEmpty() ? QString::number(static_cast<quint32>(id))
                                                                : object->name;
}

QColor ObjectCatalog::color(qint32 id)
{
    // Blue, orange, bluish green, reddish purple, sky blue; vermilion is that of alarms.
    constexpr QRgb colors[] = {0xFF0072B2, 0xFFE69F00, 0xFF009E73, 0xFFCC79A7, 0xFF56B4E9};
    return QColor(colors[static_cast<quint32>(id) % std::size(colors)]);
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
    for (QStandardItem* group : std::as_const(groups)) // put in complete, so that a tree's filter sees them as they are
        model.appendRow(group);
}
