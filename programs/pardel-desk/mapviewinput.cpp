// What the user does with the map.

#include "desktime.h"
#include "mappainter.h"
#include "mapview.h"
#include "objectcatalog.h"
#include "objectstates.h"

#include <Pardel/interfaces.h>

#include <QDateTime>
#include <QHelpEvent>
#include <QLineF>
#include <QMouseEvent>
#include <QToolTip>

#include <algorithm>
#include <cmath>
#include <utility>

namespace {

constexpr double reach = 9;   // pixels around a mark or a track that still are it
constexpr int mostHints = 12; // objects that a tool tip tells of
constexpr double zoomStep = 1.25;

/// Of a point to the line between two others.
double distanceTo(const QPointF& point, const QPointF& from, const QPointF& to)
{
    const QPointF way = to - from;
    const double square = QPointF::dotProduct(way, way);
    const double share = square > 0 ? std::clamp(QPointF::dotProduct(point - from, way) / square, 0.0, 1.0) : 0;
    return QLineF(point, from + way * share).length();
}

} // namespace

QList<qint64> MapView::objectsAt(const QPointF& pixel) const
{
    QMultiMap<double, qint64> near;
    for (const auto& shown : shownTracks()) {
        const auto mark = markOf(shown.first);
        const double distance = mark ? QLineF(*mark, pixel).length() : reach;
        if (distance < reach)
            near.insert(distance, shown.first);
    }
    return near.values();
}

std::optional<std::pair<qint32, TrackPoint>> MapView::trackAt(const QPointF& pixel) const
{
    // Compared in the points' own units, as projecting all of them would take longer than a tool tip may.
    const GeoPoint northWest = m_projection.toEarth(pixel - QPointF(reach, reach));
    const GeoPoint southEast = m_projection.toEarth(pixel + QPointF(reach, reach));
    const auto misses = [](double a, double b, double least, double most) {
        return std::max(a, b) < least * 1e7 || std::min(a, b) > most * 1e7;
    };
    double nearest = reach;
    std::optional<std::pair<qint32, TrackPoint>> found;
    for (const auto& [id, track] : shownTracks()) {
        const int count = isShown(id) ? passed(track) : 0;
        for (int i = 1; i < count; ++i) {
            const TrackPoint& from = track.at(i - 1);
            const TrackPoint& to = track.at(i);
            if (qint64(to.time) - from.time > TrackSummary::longestInterval || // no line is drawn there
                misses(from.latitude, to.latitude, southEast.latitude, northWest.latitude) ||
                misses(from.longitude, to.longitude, northWest.longitude, southEast.longitude))
                continue;
            const QPointF begin = place(from);
            const QPointF end = place(to);
            const double distance = distanceTo(pixel, begin, end);
            if (distance < nearest) {
                nearest = distance;
                found = {id, QLineF(pixel, begin).length() < QLineF(pixel, end).length() ? from : to};
            }
        }
    }
    return found;
}

QString MapView::hintOf(qint32 id, const TrackPoint& point) const
{
    const QString time = DeskTime::text(point.time);
    const QString state = point.speed > 0 ? tr("%1 km/h, course %2°").arg(point.speed).arg(point.course) : tr("stands");
    const bool isNow = m_states && !m_replay && lastPoint(id) && lastPoint(id)->time == point.time;
    return tr("%1: %2, %3, %4%5%6")
        .arg(m_catalog.name(id), time, positionText(placeOf(point)), state, point.alarm ? tr(", alarm") : QString(),
             isNow ? QStringLiteral(", ") + m_states->shortText(id) : QString());
}

QString MapView::hintAt(const QPointF& pixel) const
{
    const QList<qint64> ids = objectsAt(pixel);
    QStringList lines;
    const QList<qint64> hinted = ids.mid(0, mostHints);
    for (const qint64 id : hinted)
        lines.append(hintOf(static_cast<qint32>(id), *lastPoint(static_cast<qint32>(id))));
    if (ids.size() > mostHints)
        lines.append(tr("and %1 more").arg(ids.size() - mostHints));
    const auto passed = lines.isEmpty() ? trackAt(pixel) : std::nullopt;
    if (passed)
        lines.append(hintOf(passed->first, passed->second));
    return lines.join(QLatin1Char('\n'));
}

bool MapView::event(QEvent* event)
{
    if (event->type() != QEvent::ToolTip)
        return QWidget::event(event);
    const auto* help = static_cast<QHelpEvent*>(event);
    QToolTip::showText(help->globalPos(), hintAt(help->pos()), this);
    return true;
}

QSize MapView::sizeHint() const
{
    return {fontMetrics().averageCharWidth() * 90, fontMetrics().height() * 26};
}

QSize MapView::minimumSizeHint() const
{
    return {fontMetrics().averageCharWidth() * 24, fontMetrics().height() * 7};
}

void MapView::resizeEvent(QResizeEvent*)
{
    m_projection.resize(size());
    if (m_fitted)
        showAll();
}

void MapView::mousePressEvent(QMouseEvent* event)
{
    m_pressed = m_dragged = event->pos();
    m_dragging = false;
    m_map.OnMapMouseDown(event->pos().x(), event->pos().y(), event);
}

void MapView::mouseMoveEvent(QMouseEvent* event)
{
    m_map.OnMapMouseMove(event->pos().x(), event->pos().y(), event);
    if (event->buttons().testFlag(Qt::LeftButton)) {
        m_dragging = m_dragging || (event->pos() - m_pressed).manhattanLength() > 3;
        if (m_dragging)
            moveBy(event->pos() - std::exchange(m_dragged, event->pos()));
        return;
    }
    QList<qint64> hinted = objectsAt(event->pos());
    if (!hinted.isEmpty())
        m_map.OnObjectsHinted(&hinted);
}

void MapView::mouseReleaseEvent(QMouseEvent* event)
{
    m_map.OnMapMouseUp(event->pos().x(), event->pos().y(), event);
    QList<qint64> clicked = objectsAt(event->pos());
    if (!m_dragging && event->button() == Qt::LeftButton && !clicked.isEmpty())
        m_map.OnObjectsClicked(&clicked);
}

void MapView::wheelEvent(QWheelEvent* event)
{
    constexpr double notch = 120; // eighths of a degree
    zoomBy(std::pow(zoomStep, event->angleDelta().y() / notch), event->position());
}

bool MapView::moveByKey(int key)
{
    const QPointF middle = QRectF(rect()).center();
    switch (key) {
    case Qt::Key_Left: moveBy({width() / 8.0, 0}); return true;
    case Qt::Key_Right: moveBy({-width() / 8.0, 0}); return true;
    case Qt::Key_Up: moveBy({0, height() / 8.0}); return true;
    case Qt::Key_Down: moveBy({0, -height() / 8.0}); return true;
    case Qt::Key_Plus:
    case Qt::Key_Equal: zoomBy(zoomStep, middle); return true; // the same key without Shift, on many keyboards
    case Qt::Key_Minus: zoomBy(1 / zoomStep, middle); return true;
    case Qt::Key_Home: showAll(); return true;
    default: return false;
    }
}

void MapView::keyPressEvent(QKeyEvent* event)
{
    if (event->key() == Qt::Key_Escape) {
        follow(0);
        m_map.OnKeyPressEsc();
    } else {
        m_map.OnMapKeyPress(event->key());
    }
    if (!moveByKey(event->key()))
        QWidget::keyPressEvent(event);
}
