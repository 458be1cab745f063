#pragma once

#include "labelplacing.h"
#include "mapcolors.h"
#include "mapprojection.h"
#include "objectmark.h"
#include "track.h"

#include <QRectF>
#include <QString>

#include <functional>

QT_BEGIN_NAMESPACE
class QPainter;
QT_END_NAMESPACE

/** Where a point lies. */
GeoPoint placeOf(const TrackPoint& point);

/** What is drawn of an object where it is. */
struct MapMark
{
    QPointF at;
    QColor color;
    ObjectMark state;
    bool ringed = false;
    std::optional<double> course; ///< Degrees, while it drives.
};

/** A name to be drawn beside a mark. */
struct MapName
{
    QPointF mark;
    QString text;
    bool alarm = false; ///< The mark has the triangle of an alarm around it.
};

/** Draws the parts of the map on a canvas of so many pixels; all other sizes come from the painter's font. */
class MapPainter
{
public:
    /** All have to outlive this. */
    MapPainter(QPainter& painter, const MapProjection& projection, const MapColors& colors, const QRectF& canvas);

    void drawGrid();
    /**
     * The first @p count points, with the painter's pen; no line over a long silence.
     *
     * @param opacity of a stretch that ends with this time, in Unix seconds; without it nothing fades
     */
    void drawTrack(const Track& track, int count, const std::function<double(qint64)>& opacity = {});
    void drawMark(const MapMark& mark);
    /** As far as there is room beside each other and what was drawn of the texts below before; the first ones first. */
    void drawNames(const QList<MapName>& names);
    void drawScaleBar();
    /** A line of text in the lower left corner. */
    void drawSource(const QString& text);
    /** Says something over the middle of the upper edge, with a frame around all if it is to change how all is read. */
    void drawSign(const QString& text, bool framed);
    void drawFocus();

private:
    QPainter& m_painter;
    const MapProjection& m_projection;
    const MapColors& m_colors;
    const QRectF m_canvas;
    const double m_line;   // height of a line of text
    const double m_radius; // of a mark
    QList<QRectF> m_taken; // by texts
};
