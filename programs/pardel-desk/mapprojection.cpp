#include "mapprojection.h"

#include <algorithm>
#include <cmath>

namespace {

constexpr double earthRadius = 6'378'137; // metres, at the equator
constexpr double pi = 3.14159265358979323846;
constexpr double radian = pi / 180;
constexpr double northernmost = 85.0511287798066; // as far from the equator as 180 degrees east
constexpr double fewestPixels = 256 / (2 * pi);
constexpr double mostPixels = 20 * earthRadius;
constexpr double margin = 1.15;
constexpr double smallestExtent = 0.002; // radians, about 10 km

QPointF flattened(const GeoPoint& place)
{
    const double latitude = std::clamp(place.latitude, -northernmost, northernmost);
    return {place.longitude * radian, std::asinh(std::tan(latitude * radian))};
}

} // namespace

QPointF MapProjection::toCanvas(const GeoPoint& place) const
{
    const QPointF away = (flattened(place) - m_centre) * m_pixels;
    return {m_canvas.width() / 2 + away.x(), m_canvas.height() / 2 - away.y()};
}

GeoPoint MapProjection::toEarth(const QPointF& pixel) const
{
    const double east = (pixel.x() - m_canvas.width() / 2) / m_pixels + m_centre.x();
    const double north = (m_canvas.height() / 2 - pixel.y()) / m_pixels + m_centre.y();
    return {std::atan(std::sinh(north)) / radian, east / radian};
}

void MapProjection::pan(const QPointF& pixels)
{
    const double mostNorth = flattened({northernmost, 0}).y();
    m_centre.setX(std::clamp(m_centre.x() - pixels.x() / m_pixels, -180 * radian, 180 * radian));
    m_centre.setY(std::clamp(m_centre.y() + pixels.y() / m_pixels, -mostNorth, mostNorth));
}

void MapProjection::zoom(double factor, const QPointF& fixed)
{
    const double pixels = std::clamp(m_pixels * factor, fewestPixels, mostPixels);
    const QPointF middle(m_canvas.width() / 2, m_canvas.height() / 2);
    const QPointF moved = (fixed - middle) * (1 - pixels / m_pixels);
    m_pixels = pixels;
    pan(moved);
}

void MapProjection::fit(const GeoPoint& southWest, const GeoPoint& northEast)
{
    const QPointF from = flattened(southWest);
    const QPointF to = flattened(northEast);
    m_centre = (from + to) / 2;
    const double width = std::max(to.x() - from.x(), smallestExtent) * margin;
    const double height = std::max(to.y() - from.y(), smallestExtent) * margin;
    m_pixels = std::clamp(std::min(m_canvas.width() / width, m_canvas.height() / height), fewestPixels, mostPixels);
}

void MapProjection::centreOn(const GeoPoint& place)
{
    m_centre = flattened(place);
}

double MapProjection::metresPerPixel() const
{
    return earthRadius / std::cosh(m_centre.y()) / m_pixels;
}

QRectF MapProjection::world() const
{
    const QPointF northWest(m_canvas.width() / 2 - (pi + m_centre.x()) * m_pixels,
                            m_canvas.height() / 2 - (pi - m_centre.y()) * m_pixels);
    return {northWest, QSizeF(2 * pi * m_pixels, 2 * pi * m_pixels)};
}

double roundStep(double most)
{
    const double power = std::pow(10, std::floor(std::log10(most)));
    for (const double step : {5.0, 2.0}) {
        if (step * power <= most)
            return step * power;
    }
    return power;
}

QString positionText(const GeoPoint& place)
{
    return QString::number(place.latitude, 'f', 6) + QLatin1String(", ") + QString::number(place.longitude, 'f', 6);
}
