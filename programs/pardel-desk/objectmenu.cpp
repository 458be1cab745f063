#include "objectmenu.h"

#include "mappainter.h"
#include "mapview.h"
#include "objectcatalog.h"

#include <Pardel/interfaces.h>

#include <QAbstractItemView>
#include <QAction>
#include <QClipboard>
#include <QGuiApplication>
#include <QMenu>

#include <functional>

namespace {

/// In the order of the menus.
enum ObjectAction
{
    Centre,
    Zoom,
    Follow,
    Today,
    Report,
    CopyPosition
};

} // namespace

ObjectMenu::ObjectMenu(KernelNotifyer& kernel, MapView& map, const ObjectCatalog& catalog, QObject* parent)
    : QObject(parent), m_kernel(kernel), m_map(map), m_catalog(catalog)
{}

void ObjectMenu::copy(const QString& text)
{
    QGuiApplication::clipboard()->setText(text);
}

QList<QAction*> ObjectMenu::actionsFor(qint32 id, QObject* parent)
{
    // Those of the menu bar are for the object that is selected when they are chosen.
    const auto chosen = [this, id] { return id == 0 ? m_map.selected() : id; };
    QList<QAction*> actions;
    const auto add = [&](const QString& text, const std::function<void(qint32)>& act) {
        auto* action = new QAction(text, parent);
        connect(action, &QAction::triggered, this, [chosen, act] { act(chosen()); });
        actions.append(action);
    };
    add(tr("&Centre on it"), [this](qint32 object) {
        m_map.follow(0);
        m_map.centreOn(object);
    });
    add(tr("&Zoom to it"), [this](qint32 object) { m_map.zoomTo(object); });
    add(tr("&Follow it"), [this](qint32 object) { m_map.follow(m_map.followed() == object ? 0 : object); });
    add(tr("&Today's track"), [this](qint32 object) { Q_EMIT todayWanted(object); });
    add(tr("&Report…"), [this](qint32 object) { Q_EMIT reportWanted(object); });
    add(tr("Copy &position"), [this](qint32 object) {
        if (const TrackPoint* point = m_map.lastPoint(object))
            copy(positionText(placeOf(*point)));
    });
    actions.at(Follow)->setCheckable(true);
    enable(actions, chosen());
    return actions;
}

void ObjectMenu::enable(const QList<QAction*>& actions, qint32 id) const
{
    const bool isKnown = m_catalog.contains(id);
    const bool isPlaced = m_map.lastPoint(id) != nullptr;
    for (const ObjectAction action : {Centre, Zoom, Follow, CopyPosition})
        actions.at(action)->setEnabled(isPlaced);
    actions.at(Today)->setEnabled(isKnown && !m_map.isReplay());
    actions.at(Report)->setEnabled(isKnown);
    actions.at(Follow)->setChecked(id != 0 && m_map.followed() == id);
}

void ObjectMenu::addTo(QMenu& menu)
{
    const QList<QAction*> actions = actionsFor(0, &menu);
    const QKeySequence keys[] = {QKeySequence(QStringLiteral("Ctrl+M")), QKeySequence(QStringLiteral("Ctrl+E")),
                                 QKeySequence(QStringLiteral("Ctrl+G")), QKeySequence(QStringLiteral("Ctrl+T"))};
    for (int i = 0; i <= Today; ++i)
        actions.at(i)->setShortcut(keys[i]);
    menu.addActions(actions);
    const auto update = [this, actions] { enable(actions, m_map.selected()); };
    connect(&m_kernel, &KernelNotifyer::OnSelectIdObjectSignal, &menu, update);
    connect(&m_map, &MapView::followedChanged, &menu, update);
    connect(&m_map, &MapView::replayChanged, &menu, update);
    connect(&menu, &QMenu::aboutToShow, &menu, update);
}

void ObjectMenu::addTo(QAbstractItemView& view, int idRole)
{
    view.setContextMenuPolicy(Qt::CustomContextMenu);
    connect(&view, &QWidget::customContextMenuRequested, this, [this, &view, idRole](const QPoint& pixel) {
        const qint32 id = view.indexAt(pixel).siblingAtColumn(0).data(idRole).toInt();
        if (id != 0)
            showFor(id, view.viewport()->mapToGlobal(pixel));
    });
}

void ObjectMenu::addToMap()
{
    m_map.setContextMenuPolicy(Qt::CustomContextMenu);
    connect(&m_map, &QWidget::customContextMenuRequested, this, &ObjectMenu::showForPlace);
}

void ObjectMenu::showFor(qint32 id, const QPoint& globalPlace)
{
    auto* menu = new QMenu(&m_map);
    menu->setAttribute(Qt::WA_DeleteOnClose);
    menu->addSection(m_catalog.name(id));
    menu->addActions(actionsFor(id, menu));
    menu->popup(globalPlace);
}

void ObjectMenu::showForPlace(const QPoint& pixel)
{
    const QList<qint64> ids = m_map.objectsAt(pixel);
    if (!ids.isEmpty())
        return showFor(static_cast<qint32>(ids.constFirst()), m_map.mapToGlobal(pixel));
    const GeoPoint place = m_map.placeAt(pixel);
    auto* menu = new QMenu(&m_map);
    menu->setAttribute(Qt::WA_DeleteOnClose);
    menu->addAction(tr("&Centre here"), &m_map, [this, place] { m_map.centreAt(place); });
    menu->addAction(tr("Copy &position"), this, [place] { copy(positionText(place)); });
    menu->addAction(tr("Show &all"), &m_map, &MapView::showAll);
    menu->popup(m_map.mapToGlobal(pixel));
}
