#include "mappainter.h"

#include <QCoreApplication>
#include <QFontMetricsF>
#include <QPainter>

#include <algorithm>
#include <cmath>
#include <utility>

namespace {

constexpr double nearPoints = 2; // pixels: points of a track that are nearer to each other are drawn as one
constexpr double gridLines = 5;  // lines of text between two of the grid, at least
constexpr double scaleBarLines = 10;
constexpr double pi = 3.14159265358979323846;

/// Degrees with as many decimals as a grid of this step needs, and the letter of the half of the earth.
QString degreesText(double degrees, double step, QChar positive, QChar negative)
{
    const int decimals = std::max(0, -static_cast<int>(std::floor(std::log10(step) + 1e-9)));
    return QString::number(std::abs(degrees), 'f', decimals) + QStringLiteral("° ") +
           (degrees < 0 ? negative : positive);
}

} // namespace

GeoPoint placeOf(const TrackPoint& point)
{
    return {point.latitude * 1e-7, point.longitude * 1e-7};
}

MapPainter::MapPainter(QPainter& painter, const MapProjection& projection, const MapColors& colors,
                       const QRectF& canvas)
    : m_painter(painter),
      m_projection(projection),
      m_colors(colors),
      m_canvas(canvas),
      m_line(QFontMetricsF(painter.font()).height()),
      m_radius(m_line * 0.32)
{}

void MapPainter::drawGrid()
{
    const GeoPoint northWest = m_projection.toEarth(m_canvas.topLeft());
    const GeoPoint southEast = m_projection.toEarth(m_canvas.bottomRight());
    const double shownDegrees = southEast.longitude - northWest.longitude;
    const double step = roundStep(shownDegrees * gridLines * m_line / m_canvas.width() * 2);
    const double ascent = QFontMetricsF(m_painter.font()).ascent();
    for (double n = std::ceil(northWest.longitude / step); n * step <= southEast.longitude; ++n) {
        const double x = m_projection.toCanvas({0, n * step}).x();
        m_painter.setPen(m_colors.grid);
        m_painter.drawLine(QPointF(x, 0), QPointF(x, m_canvas.height()));
        m_painter.setPen(m_colors.text);
        m_painter.drawText(QPointF(x + 3, ascent + 2), degreesText(n * step, step, QLatin1Char('E'), QLatin1Char('W')));
    }
    const double north = step / 2; // a degree north is longer on this map than one east
    for (double n = std::ceil(southEast.latitude / north); n * north <= northWest.latitude; ++n) {
        const double y = m_projection.toCanvas({n * north, 0}).y();
        m_painter.setPen(m_colors.grid);
        m_painter.drawLine(QPointF(0, y), QPointF(m_canvas.width(), y));
        m_painter.setPen(m_colors.text);
        if (y > 2 * m_line) // below those of the meridians
            m_painter.drawText(QPointF(3, y - 3), degreesText(n * north, north, QLatin1Char('N'), QLatin1Char('S')));
    }
}

void MapPainter::drawTrack(const Track& track, int count, const std::function<double(qint64)>& opacity)
{
    const QRectF visible = m_canvas.adjusted(-10, -10, 10, 10);
    QPolygonF line;
    QPointF before;
    const double full = m_painter.opacity();
    const auto finish = [&](qint64 end) {
        if (line.size() > 1) {
            if (opacity)
                m_painter.setOpacity(full * opacity(end));
            m_painter.drawPolyline(line);
        }
        line.clear();
    };
    for (int i = 0; i < count; ++i) {
        const QPointF point = m_projection.toCanvas(placeOf(track.at(i)));
        if (i > 0 && i + 1 < count && (point - before).manhattanLength() < nearPoints)
            continue;
        const bool silent = i > 0 && qint64(track.at(i).time) - track.at(i - 1).time > TrackSummary::longestInterval;
        if (i > 0 && !silent && QRectF(before, point).normalized().adjusted(-1, -1, 1, 1).intersects(visible)) {
            if (line.isEmpty())
                line.append(before);
            line.append(point);
        } else if (i > 0) {
            finish(track.at(i - 1).time);
        }
        before = point;
    }
    if (count > 0)
        finish(track.at(count - 1).time);
    m_painter.setOpacity(full);
}

void MapPainter::drawMark(const MapMark& mark)
{
    if (!m_canvas.adjusted(-m_line, -m_line, m_line, m_line).contains(mark.at))
        return;
    if (!m_painter.testRenderHint(QPainter::Antialiasing) && !mark.state.alarm && !mark.state.selected) {
        mark.state.paintQuickly(m_painter, mark.at, m_radius, mark.color);
        return;
    }
    m_painter.setBrush(Qt::NoBrush);
    if (mark.ringed) { // a ring that is seen on every ground, as tiles are one too
        for (const auto& [color, width] : {std::pair{m_colors.edge, 5.0}, std::pair{m_colors.alarm, 3.0}}) {
            m_painter.setPen(QPen(color, width));
            m_painter.drawEllipse(mark.at, m_radius * 2, m_radius * 2);
        }
    }
    if (mark.course) { // the way it goes
        const double angle = *mark.course * pi / 180;
        const QPointF ahead(std::sin(angle), -std::cos(angle));
        m_painter.setPen(QPen(m_colors.edge, 4));
        m_painter.drawLine(mark.at, mark.at + ahead * m_radius * 2.4);
        m_painter.setPen(QPen(mark.color, 2));
        m_painter.drawLine(mark.at, mark.at + ahead * m_radius * 2.4);
    }
    ObjectMark state = mark.state;
    if (std::exchange(state.selected, false)) { // a ring in the color that the ground asks for
        m_painter.setPen(QPen(m_colors.name, 2.5));
        m_painter.setBrush(m_colors.edge);
        m_painter.drawEllipse(mark.at, m_radius * 1.5, m_radius * 1.5);
    }
    state.paint(m_painter, mark.at, m_radius, mark.color);
}

void MapPainter::drawNames(const QList<MapName>& names)
{
    const QFontMetricsF font(m_painter.font());
    QList<Label> labels;
    for (const MapName& name : names)
        labels.append(
            {name.mark, QSizeF(font.horizontalAdvance(name.text) + 4, font.height()), name.alarm ? m_radius : 0});
    const auto places = placeLabels(labels, m_canvas.adjusted(2, 2, -2, -2), m_radius * 1.8, m_taken);
    QColor ground = m_colors.ground;
    ground.setAlpha(190);
    for (int i = 0; i < names.size(); ++i) {
        const auto& place = places.at(i);
        if (!place)
            continue;
        m_painter.fillRect(*place, ground); // readable on tracks and tiles
        m_painter.setPen(m_colors.name);
        m_painter.drawText(*place, Qt::AlignCenter, names.at(i).text);
    }
}

void MapPainter::drawScaleBar()
{
    const double metres = roundStep(scaleBarLines * m_line * m_projection.metresPerPixel());
    const double pixels = metres / m_projection.metresPerPixel();
    const QPointF right = m_canvas.bottomRight() - QPointF(m_line, m_line) * 0.8;
    const QPointF left = right - QPointF(pixels, 0);
    const QPointF up(0, -m_line * 0.4);
    const QString text = metres >= 1000 ? QCoreApplication::translate("MapView", "%1 km").arg(metres / 1000)
                                        : QCoreApplication::translate("MapView", "%1 m").arg(metres);
    QColor ground = m_colors.ground;
    ground.setAlpha(190);
    m_taken.append(QRectF(left - QPointF(4, m_line * 1.5), right + QPointF(4, 4)));
    m_painter.fillRect(m_taken.constLast(), ground);
    m_painter.setPen(QPen(m_colors.name, 1.5));
    m_painter.drawPolyline(QPolygonF({left + up, left, right, right + up}));
    m_painter.drawText(QRectF(left - QPointF(0, m_line * 1.5), right),
                       Qt::AlignHCenter | Qt::AlignTop | Qt::TextDontClip, text);
}

void MapPainter::drawSource(const QString& text)
{
    if (text.isEmpty())
        return;
    const QFontMetricsF font(m_painter.font());
    const QString shown = font.elidedText(text, Qt::ElideRight, m_canvas.width() * 0.6);
    QRectF box(0, m_canvas.height() - m_line - 2, font.horizontalAdvance(shown) + 10, m_line + 2);
    QColor ground = m_colors.ground;
    ground.setAlpha(210);
    m_taken.append(box);
    m_painter.fillRect(box, ground);
    m_painter.setPen(m_colors.name);
    m_painter.drawText(box, Qt::AlignCenter, shown);
}

void MapPainter::drawSign(const QString& text, bool framed)
{
    m_painter.setBrush(Qt::NoBrush);
    m_painter.setPen(QPen(m_colors.sign, m_line * 0.4));
    if (framed)
        m_painter.drawRect(m_canvas);
    QRectF box = QFontMetricsF(m_painter.font()).boundingRect(m_canvas, Qt::AlignCenter | Qt::TextWordWrap, text);
    box.adjust(-m_line, -m_line * 0.2, m_line, m_line * 0.2);
    box.moveCenter({m_canvas.center().x(), m_line * 1.6 + box.height() / 2}); // below the grid's numbers
    m_taken.append(box);
    m_painter.fillRect(box, m_colors.sign);
    m_painter.setPen(Qt::black);
    m_painter.drawText(box, Qt::AlignCenter | Qt::TextWordWrap, text);
}

void MapPainter::drawFocus()
{
    m_painter.setBrush(Qt::NoBrush);
    m_painter.setPen(QPen(m_colors.focus, 3));
    m_painter.drawRect(m_canvas.adjusted(1.5, 1.5, -1.5, -1.5));
}
