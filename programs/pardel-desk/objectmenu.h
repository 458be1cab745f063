#pragma once

#include <QList>
#include <QObject>

class MapView;
class ObjectCatalog;
class KernelNotifyer;

QT_BEGIN_NAMESPACE
class QAbstractItemView;
class QAction;
class QMenu;
QT_END_NAMESPACE

/**
 * What can be done with an object: centre the map on it, zoom to it, follow it, show its track of today, a report,
 * copy its position. As the context menu of a row in tree or table or of a mark on the map, and for the selected object
 * in the menu bar. What would do nothing is disabled.
 */
class ObjectMenu : public QObject
{
    Q_OBJECT

public:
    /** All have to outlive this. */
    ObjectMenu(KernelNotifyer& kernel, MapView& map, const ObjectCatalog& catalog, QObject* parent = nullptr);

    /** The context menu of a view's rows that have an object's number as this role. */
    void addTo(QAbstractItemView& view, int idRole);
    /** The context menu of the map: of the object at the mouse, and of the place. */
    void addToMap();
    /** Fills a menu for the selected object, with shortcuts. */
    void addTo(QMenu& menu);

    /** The actions of one object. */
    QList<QAction*> actionsFor(qint32 id, QObject* parent);

Q_SIGNALS:
    void todayWanted(qint32 id);
    void reportWanted(qint32 id);

private:
    void showFor(qint32 id, const QPoint& globalPlace);
    void showForPlace(const QPoint& pixel);
    void enable(const QList<QAction*>& actions, qint32 id) const;
    static void copy(const QString& text);

    KernelNotifyer& m_kernel;
    MapView& m_map;
    const ObjectCatalog& m_catalog;
};
