#pragma once

#include <QColor>
#include <QMap>
#include <QString>

QT_BEGIN_NAMESPACE
class QStandardItemModel;
QT_END_NAMESPACE

/** An object as people know it. */
struct DeskObject
{
    QString name;
    QString group;
};

/** The objects that the desk knows; its views only read it. KernelNotifyer::OnObjectsReceived tells that it grew. */
class ObjectCatalog
{
public:
    void add(qint32 id, const DeskObject& object) { m_objects.insert(id, object); }
    bool contains(qint32 id) const { return m_objects.contains(id); }
    QList<qint32> ids() const { return m_objects.keys(); }

    /** The group that it is in; empty for one that is not known. */
    QString group(qint32 id) const { return m_objects.value(id).group; }

    /** The number for an object without a name. */
    QString name(qint32 id) const;

    /** One of five of Okabe and Ito's palette, that colour-blind people can tell apart, for each number in turn. */
    static QColor color(qint32 id);

    /** Groups with their objects, as the trees want them; @p model is emptied first. */
    void fillTreeModel(QStandardItemModel& model) const;

    static constexpr int idRole = Qt::UserRole + 10;

private:
    QMap<qint32, DeskObject> m_objects;
};
