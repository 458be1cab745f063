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
class Notifyer;
class ObjectCatalog;

/**
 * A plain canvas with a grid of degrees and a scale bar, on which the ticked objects stand with the tracks behind them.
 *
 * It follows the reports of the hub, and while tracks are replayed, these instead, up to the time that the kernel's hub
 * tells. The wheel zooms about the mouse, dragging moves the map, a tool tip names what is under the mouse, a click
 * announces it. Reports are drawn together, a few times a second.
 */
class MapView : public QWidget
{
    Q_OBJECT

public:
    /** All have to outlive this. */
    MapView(Notifyer& map, KernelNotifyer& kernel, DataPumpNotifyer& reports, const ObjectCatalog& catalog,
            QWidget* parent = nullptr);

    void setTicked(const QList<int>& ids);
    /** What an object has driven before the reports of the hub; put in among them. */
    void addHistory(qint32 id, const Track& track);
    bool hasHistory(qint32 id) const { return m_history.contains(id); }

    /** Shows only these tracks, at the time that OnTimeSelectedByReport tells, until stopReplay. */
    void startReplay(const Tracks& tracks);
    void stopReplay();

    /** Shows all ticked objects and their tracks. */
    void showAll();
    /** The same unless the map has been moved or zoomed since. */
    void showWhatCame();
    void centreOn(qint32 id);
    /** Shows and highlights what an object drove from @p from to @p to, in Unix seconds, until the tracks change. */
    void showStretch(qint32 id, qint64 from, qint64 to);

    /** The objects whose marks are at this pixel, the nearest first. */
    QList<qint64> objectsAt(const QPointF& pixel) const;
    /** Where the object's mark stands; nothing for one that is not drawn. */
    std::optional<QPointF> markOf(qint32 id) const;
    /** The scale as people write it, 1 : this. */
    int scale() const;

    QSize sizeHint() const override { return {700, 420}; }

protected:
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void wheelEvent(QWheelEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;

private:
    const Tracks& shownTracks() const { return m_replay ? *m_replay : m_live; }
    /// How many of a track's points have been passed.
    int passed(const Track& track) const;
    /// Where the object is; null if that is not known.
    const TrackPoint* lastPoint(qint32 id) const;
    QPointF place(const TrackPoint& point) const;
    void take(const TrackPoint& point, qint32 id);
    void changeLater();
    void drawGrid(QPainter& painter) const;
    void drawTrack(QPainter& painter, const Track& track, int count) const;
    void drawMark(QPainter& painter, qint32 id, const TrackPoint& point) const;
    /// As far as they do not cover each other.
    void drawNames(QPainter& painter, QList<qint32> ids) const;
    void drawScaleBar(QPainter& painter) const;

    Notifyer& m_map;
    const ObjectCatalog& m_catalog;
    MapProjection m_projection;
    Tracks m_live;
    std::optional<Tracks> m_replay;
    qint64 m_replayTime = 0;
    QSet<qint32> m_ticked;
    QSet<qint32> m_history; // objects whose past is there
    qint32 m_selected = 0;
    Track m_stretch;
    bool m_fitted = true; // until the user or a selection moves the map, it shows all
    QPoint m_pressed;
    QPoint m_dragged;
    bool m_dragging = false;
    QTimer m_repaint;
};
