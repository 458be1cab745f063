#pragma once

#include <QPointF>
#include <QRectF>
#include <QSizeF>
#include <QString>

/** Degrees, north and east positive. */
struct GeoPoint
{
    double latitude = 0;
    double longitude = 0;
};

/**
 * Web Mercator (EPSG:3857) between the earth and a canvas: that of raster tiles, a sphere on a square, both ways exact.
 * Latitudes stop where the earth becomes a square, at 85.05 degrees, and the scale stays between a metre on 20 pixels
 * and the whole earth on 256.
 */
class MapProjection
{
public:
    void resize(const QSizeF& canvas) { m_canvas = canvas; }

    QPointF toCanvas(const GeoPoint& place) const;
    GeoPoint toEarth(const QPointF& pixel) const;

    /** Pulls the map along by so many pixels. */
    void pan(const QPointF& pixels);
    /** Makes everything @p factor times as large; what is at @p fixed stays there. */
    void zoom(double factor, const QPointF& fixed);
    /** Shows both corners and what is between them, with a margin. */
    void fit(const GeoPoint& southWest, const GeoPoint& northEast);
    void centreOn(const GeoPoint& place);

    /** At the middle of the canvas. */
    double metresPerPixel() const;

    /** Where the square of the whole earth lies; its middle is at 0, 0. */
    QRectF world() const;

private:
    QSizeF m_canvas{1, 1};
    QPointF m_centre;                          // radians east and stretched radians north
    double m_pixels = 256 / 6.283185307179586; // for a radian at the equator
};

/** The largest of 1, 2 and 5 times a power of ten that is not above @p most, which is above 0. */
double roundStep(double most);

/** Latitude and longitude to some decimetres, as other maps take them: "55.751244, 37.618423". */
QString positionText(const GeoPoint& place);
