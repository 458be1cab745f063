#pragma once

#include "mapprojection.h"
#include "track.h"

#include <QHash>
#include <QPoint>
#include <QSet>
#include <QTimer>
#include <QWidget>

#include <optional>

class DataPumpNotifyer;
class KernelNotifyer;
class MapPainter;
class MapTiles;
class Notifyer;
class ObjectCatalog;
class ObjectStates;
struct MapColors;

/**
 * The map: a grid of degrees or tiles, a scale bar, and the ticked objects with the tracks behind them.
 *
 * It follows the reports of the hub, and while tracks are replayed, these instead, up to the time that the kernel's hub
 * tells; then it says so. The wheel zooms about the mouse, dragging and the arrows move the map, + and - zoom, Home
 * shows all. A tool tip tells of the object or the point of a track under the mouse, a click announces the object.
 * Reports are drawn together, a few times a second.
 */
class MapView : public QWidget
{
    Q_OBJECT

public:
    /** All have to outlive this. */
    MapView(Notifyer& map, KernelNotifyer& kernel, DataPumpNotifyer& reports, const ObjectCatalog& catalog,
            QWidget* parent = nullptr);

    /** Draws these under the objects; they belong to the caller and are drawn until others are. @return those before */
    MapTiles* setTiles(MapTiles* tiles);

    void setTicked(const QList<int>& ids);
    /** Marks and tracks show the objects' states from then on; @p states has to outlive this. */
    void setStates(const ObjectStates& states);
    /** A state of an object, as those of the hub. One that is incomplete or of a wrong clock is passed over. */
    void take(const TrackPoint& point, qint32 id);
    /** Unix seconds of an object's last state here; 0 without any. */
    qint64 lastTime(qint32 id) const;
    /** What an object has driven before the reports of the hub; put in among them. */
    void addHistory(qint32 id, const Track& track);
    bool hasHistory(qint32 id) const { return m_history.contains(id); }
    /** The same of a whole day, and goes there; from now on nothing of the object's track is left out. */
    void showDay(qint32 id, const Track& track);

    /** Shows only these tracks, at the time that OnTimeSelectedByReport tells, until stopReplay. */
    void startReplay(const Tracks& tracks);
    void stopReplay();
    bool isReplay() const { return m_replay.has_value(); }

    /** Shows all ticked objects and their tracks. */
    void showAll();
    /** The same unless the map has been moved or zoomed since. */
    void showWhatCame();
    void centreOn(qint32 id);
    void centreAt(const GeoPoint& place);
    /** Shows where the object is with some 500 metres around it, or less if that is shown already. */
    void zoomTo(qint32 id);
    /** Keeps the object in the middle until the map is moved; 0: none. */
    void follow(qint32 id);
    qint32 followed() const { return m_followed; }
    qint32 selected() const { return m_selected; }
    /** Shows and highlights what an object drove from @p from to @p to, in Unix seconds, until the tracks change. */
    void showStretch(qint32 id, qint64 from, qint64 to);

    /** The objects whose marks are at this pixel, the nearest first. */
    QList<qint64> objectsAt(const QPointF& pixel) const;
    /** Where the object's mark stands; nothing for one that is not drawn. */
    std::optional<QPointF> markOf(qint32 id) const;
    /** Where the object is now, or at the time of the replay, whether it is drawn or not; null if that is not known. */
    const TrackPoint* lastPoint(qint32 id) const;
    GeoPoint placeAt(const QPointF& pixel) const { return m_projection.toEarth(pixel); }
    /** What there is to tell of the objects, or else of the track, at this pixel; empty without any. */
    QString hintAt(const QPointF& pixel) const;
    /** What is said over the map: that it is not now, or whom it follows. */
    QString sign() const;
    /** The scale as people write it, 1 : this. */
    int scale() const;

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

Q_SIGNALS:
    void followedChanged(qint32 id);
    void replayChanged(bool replays);

protected:
    bool event(QEvent* event) override;
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void wheelEvent(QWheelEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;

private:
    const Tracks& shownTracks() const { return m_replay ? *m_replay : m_live; }
    bool isShown(qint32 id) const { return m_replay || m_ticked.contains(id); }
    /// How many of a track's points have been passed.
    int passed(const Track& track) const;
    QPointF place(const TrackPoint& point) const;
    void changeLater();
    void select(qint32 id);
    void fit(const QList<qint32>& ids);
    void moveBy(const QPointF& pixels);
    void zoomBy(double factor, const QPointF& fixed);
    bool moveByKey(int key);
    QString hintOf(qint32 id, const TrackPoint& point) const;
    /// The drawn point next to where a track passes this pixel.
    std::optional<std::pair<qint32, TrackPoint>> trackAt(const QPointF& pixel) const;
    void drawObjects(MapPainter& drawing, QPainter& painter, const MapColors& colors) const;
    bool hasAlarm(qint32 id) const;
    void drawNames(MapPainter& drawing) const;

    Notifyer& m_map;
    const ObjectCatalog& m_catalog;
    MapTiles* m_tiles = nullptr;
    const ObjectStates* m_states = nullptr;
    MapProjection m_projection;
    Tracks m_live;
    std::optional<Tracks> m_replay;
    qint64 m_replayTime = 0;
    qint64 m_replayFrom = 0;
    qint64 m_replayTo = 0;
    QSet<qint32> m_ticked;
    QSet<qint32> m_history;  // objects whose past is there
    QSet<qint32> m_wholeDay; // of which nothing is left out
    qint32 m_selected = 0;
    qint32 m_followed = 0;
    Track m_stretch;
    bool m_fitted = true; // until the user or a selection moves the map, it shows all
    QPoint m_pressed;
    QPoint m_dragged;
    bool m_dragging = false;
    QTimer m_repaint;
};
