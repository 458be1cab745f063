#include "mapview.h"

#include "objectcatalog.h"
#include "objectstates.h"

#include <Pardel/interfaces.h>

#include <QDateTime>
#include <QMouseEvent>
#include <QPainter>
#include <QToolTip>

#include <algorithm>
#include <cmath>

namespace {

constexpr int repaintInterval = 150;  // milliseconds
constexpr int longestLiveTrack = 500; // points
constexpr int mostNames = 40;         // with more marks than that, names would only cover each other
constexpr int mostSmooth = 200;       // tracks; drawing smoothly costs several times as much
constexpr double reach = 9;           // pixels around a mark that still are the mark
constexpr double markRadius = 5;
constexpr double nearPoints = 2; // pixels: points of a track that are nearer to each other are drawn as one
constexpr double gridPixels = 90;
constexpr double longestScaleBar = 150; // pixels
constexpr double metresPerDot = 0.0254 / 96;
constexpr double zoomStep = 1.25;
constexpr QRgb background = 0xFFF7F5EE;
constexpr QRgb gridColor = 0xFFDCD8CA;
constexpr QRgb textColor = 0xFF5C584C;

GeoPoint placeOf(const TrackPoint& point)
{
    return {point.latitude * 1e-7, point.longitude * 1e-7};
}

/// Degrees with as many decimals as a grid of this step needs, and the letter of the half of the earth.
QString degreesText(double degrees, double step, QChar positive, QChar negative)
{
    const int decimals = std::max(0, -static_cast<int>(std::floor(std::log10(step) + 1e-9)));
    return QString::number(std::abs(degrees), 'f', decimals) + QStringLiteral("° ") +
           (degrees < 0 ? negative : positive);
}

} // namespace

MapView::MapView(Notifyer& map, KernelNotifyer& kernel, DataPumpNotifyer& reports, const ObjectCatalog& catalog,
                 QWidget* parent)
    : QWidget(parent), m_map(map), m_catalog(catalog)
{
    setMouseTracking(true);
    setFocusPolicy(Qt::StrongFocus);
    setMinimumSize(200, 120);
    m_repaint.setSingleShot(true);
    m_repaint.setInterval(repaintInterval);
    connect(&m_repaint, &QTimer::timeout, this, qOverload<>(&QWidget::update));
    connect(&reports, &DataPumpNotifyer::OnDataRecievedSignal, this,
            [this](MobData& report) { take(TrackPoint::of(report), report.idObject); });
    connect(&kernel, &KernelNotifyer::OnSelectIdObjectSignal, this, [this](unsigned int id) {
        m_selected = static_cast<qint32>(id);
        const auto mark = markOf(m_selected);
        if (mark && !rect().contains(mark->toPoint()))
            centreOn(m_selected);
        update();
    });
    connect(&kernel, &KernelNotifyer::OnTimeSelectedByReportSignal, this, [this](unsigned int time) {
        m_replayTime = time;
        update();
    });
}

void MapView::setTicked(const QList<int>& ids)
{
    m_ticked = QSet<qint32>(ids.cbegin(), ids.cend());
    changeLater();
}

void MapView::setStates(const ObjectStates& states)
{
    m_states = &states;
    connect(&states, &ObjectStates::changed, this, &MapView::changeLater);
}

bool MapView::hasAlarm(qint32 id) const
{
    return m_states && !m_replay && m_states->hasAlarm(id);
}

void MapView::addHistory(qint32 id, const Track& track)
{
    m_history.insert(id);
    for (const TrackPoint& point : track)
        take(point, id);
}

void MapView::take(const TrackPoint& point, qint32 id)
{
    if (!point.isComplete() || !isCredible(point.time))
        return;
    Track& track = m_live[id];
    insertInTime(track, point);
    if (track.size() > longestLiveTrack)
        track.removeFirst();
    changeLater();
}

void MapView::changeLater()
{
    if (!m_repaint.isActive())
        m_repaint.start();
}

void MapView::startReplay(const Tracks& tracks)
{
    m_replay = tracks;
    showAll();
}

void MapView::stopReplay()
{
    m_replay.reset();
    showAll();
}

int MapView::passed(const Track& track) const
{
    return m_replay ? indexAt(track, m_replayTime) + 1 : static_cast<int>(track.size());
}

QPointF MapView::place(const TrackPoint& point) const
{
    return m_projection.toCanvas(placeOf(point));
}

const TrackPoint* MapView::lastPoint(qint32 id) const
{
    const auto shown = shownTracks().find(id);
    const int count = shown == shownTracks().end() ? 0 : passed(shown->second);
    return count == 0 ? nullptr : &shown->second.at(count - 1);
}

void MapView::showAll()
{
    std::optional<GeoPoint> southWest;
    GeoPoint northEast;
    for (const auto& [id, track] : shownTracks()) {
        if (!m_replay && !m_ticked.contains(id))
            continue;
        for (const TrackPoint& point : track) {
            const GeoPoint at = placeOf(point);
            if (!southWest)
                southWest = northEast = at;
            southWest = {std::min(southWest->latitude, at.latitude), std::min(southWest->longitude, at.longitude)};
            northEast = {std::max(northEast.latitude, at.latitude), std::max(northEast.longitude, at.longitude)};
        }
    }
    if (southWest)
        m_projection.fit(*southWest, northEast);
    m_fitted = true;
    m_map.OnMapScaleChanged(scale());
    update();
}

void MapView::showWhatCame()
{
    if (m_fitted && !m_replay)
        showAll();
}

void MapView::centreOn(qint32 id)
{
    const TrackPoint* point = lastPoint(id);
    if (!point)
        return;
    m_projection.centreOn(placeOf(*point));
    m_fitted = false;
    m_map.OnMapMoved();
    update();
}

std::optional<QPointF> MapView::markOf(qint32 id) const
{
    if (!m_replay && !m_ticked.contains(id))
        return {};
    const TrackPoint* point = lastPoint(id);
    return point ? std::optional<QPointF>(place(*point)) : std::nullopt;
}

QList<qint64> MapView::objectsAt(const QPointF& pixel) const
{
    QMultiMap<double, qint64> near;
    for (const auto& shown : shownTracks()) {
        const auto mark = markOf(shown.first);
        const double distance = mark ? std::hypot(mark->x() - pixel.x(), mark->y() - pixel.y()) : reach;
        if (distance < reach)
            near.insert(distance, shown.first);
    }
    return near.values();
}

int MapView::scale() const
{
    return static_cast<int>(m_projection.metresPerPixel() / metresPerDot);
}

void MapView::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    painter.fillRect(rect(), QColor(background));
    drawGrid(painter);
    QList<qint32> drawn;
    for (const auto& shown : shownTracks()) {
        if (m_replay || m_ticked.contains(shown.first))
            drawn.append(shown.first);
    }
    if (drawn.removeOne(m_selected)) // over the others
        drawn.append(m_selected);
    painter.setRenderHint(QPainter::Antialiasing, drawn.size() <= mostSmooth);
    for (const qint32 id : drawn) {
        const Track& track = shownTracks().at(id);
        QColor color = ObjectCatalog::color(id);
        if (m_replay) { // what is still to come, faint
            color.setAlpha(60);
            painter.setPen(QPen(color, 1.5));
            drawTrack(painter, track, static_cast<int>(track.size()));
            color.setAlpha(255);
        }
        painter.setPen(QPen(color, id == m_selected ? 3 : 1.5));
        drawTrack(painter, track, passed(track));
    }
    for (const qint32 id : drawn) {
        if (const TrackPoint* point = lastPoint(id))
            drawMark(painter, id, *point);
    }
    painter.setRenderHint(QPainter::Antialiasing, true);
    if (drawn.size() <= mostNames)
        drawNames(painter, drawn);
    else
        drawNames(painter, importantOf(drawn));
    drawScaleBar(painter);
}

QList<qint32> MapView::importantOf(const QList<qint32>& ids) const
{
    QList<qint32> important;
    for (const qint32 id : ids) {
        if (id == m_selected || (important.size() < mostNames && hasAlarm(id)))
            important.append(id);
    }
    return important;
}

void MapView::drawGrid(QPainter& painter) const
{
    const GeoPoint northWest = m_projection.toEarth({0, 0});
    const GeoPoint southEast = m_projection.toEarth({double(width()), double(height())});
    const double step = roundStep((southEast.longitude - northWest.longitude) * gridPixels / width() * 2);
    QPen line{QColor(gridColor)};
    const int ascent = painter.fontMetrics().ascent();
    for (double n = std::ceil(northWest.longitude / step); n * step <= southEast.longitude; ++n) {
        const double x = m_projection.toCanvas({0, n * step}).x();
        painter.setPen(line);
        painter.drawLine(QPointF(x, 0), QPointF(x, height()));
        painter.setPen(QColor(textColor));
        painter.drawText(QPointF(x + 3, ascent + 2), degreesText(n * step, step, QLatin1Char('E'), QLatin1Char('W')));
    }
    const double north = step / 2; // a degree north is longer on this map than one east
    for (double n = std::ceil(southEast.latitude / north); n * north <= northWest.latitude; ++n) {
        const double y = m_projection.toCanvas({n * north, 0}).y();
        painter.setPen(line);
        painter.drawLine(QPointF(0, y), QPointF(width(), y));
        painter.setPen(QColor(textColor));
        painter.drawText(QPointF(3, y - 3), degreesText(n * north, north, QLatin1Char('N'), QLatin1Char('S')));
    }
}

void MapView::drawTrack(QPainter& painter, const Track& track, int count) const
{
    const QRectF visible = QRectF(rect()).adjusted(-10, -10, 10, 10);
    QPolygonF line;
    QPointF before;
    const QPen pen = painter.pen();
    const auto finish = [&](qint32 end) {
        if (line.size() > 1) {
            if (m_states && !m_replay) { // what is old, faint
                QColor color = pen.color();
                color.setAlphaF(static_cast<float>(m_states->opacity(end)));
                painter.setPen(QPen(color, pen.widthF()));
            }
            painter.drawPolyline(line);
        }
        line.clear();
    };
    for (int i = 0; i < count; ++i) {
        const QPointF point = place(track.at(i));
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
}

void MapView::drawMark(QPainter& painter, qint32 id, const TrackPoint& point) const
{
    const QPointF at = place(point);
    if (!rect().adjusted(-50, -20, 50, 20).contains(at.toPoint()))
        return;
    ObjectMark mark = m_states && !m_replay ? m_states->mark(id) : ObjectMark{Presence::Online, point.alarm, false};
    mark.selected = id == m_selected;
    if (point.alarm && !mark.alarm) { // acknowledged, and still on
        painter.setPen(QPen(QColor(alarmColor), 2));
        painter.setBrush(Qt::NoBrush);
        painter.drawEllipse(at, markRadius + 5, markRadius + 5);
    }
    if (!painter.testRenderHint(QPainter::Antialiasing) && !mark.alarm && !mark.selected) {
        mark.paintQuickly(painter, at, markRadius, ObjectCatalog::color(id));
        return;
    }
    mark.paint(painter, at, markRadius, ObjectCatalog::color(id));
    if (point.speed > 0 && mark.presence == Presence::Online) { // the way it goes
        const double course = point.course * 3.14159265358979323846 / 180;
        const QPointF ahead(std::sin(course), -std::cos(course));
        painter.setPen(QPen(ObjectCatalog::color(id), 2));
        painter.drawLine(at + ahead * markRadius, at + ahead * (markRadius + 7));
    }
}

void MapView::drawNames(QPainter& painter, QList<qint32> ids) const
{
    // Whatever others would cover, the names of these are there.
    std::stable_partition(ids.begin(), ids.end(), [this](qint32 id) { return hasAlarm(id); });
    if (ids.removeOne(m_selected))
        ids.prepend(m_selected);
    QVector<QRectF> taken;
    for (const qint32 id : qAsConst(ids)) {
        const auto mark = markOf(id);
        if (!mark)
            continue;
        QString name = m_catalog.name(id);
        if (m_states && !m_replay && m_states->presence(id) != Presence::Online)
            name += QStringLiteral(" · ") + m_states->shortText(id);
        QRectF box = painter.fontMetrics().boundingRect(name);
        box.moveTopLeft(*mark + QPointF(markRadius + (hasAlarm(id) ? 11 : 6), -box.height() / 2));
        if (std::any_of(taken.cbegin(), taken.cend(), [&](const QRectF& other) { return other.intersects(box); }))
            continue;
        taken.append(box);
        painter.setPen(Qt::black);
        painter.drawText(box, Qt::AlignLeft | Qt::AlignVCenter | Qt::TextDontClip, name);
    }
}

void MapView::drawScaleBar(QPainter& painter) const
{
    const double metres = roundStep(longestScaleBar * m_projection.metresPerPixel());
    const double pixels = metres / m_projection.metresPerPixel();
    const QPointF right(width() - 12, height() - 12);
    const QPointF left = right - QPointF(pixels, 0);
    const QPointF up(0, -6);
    painter.setPen(QPen(Qt::black, 1.5));
    painter.drawPolyline(QPolygonF({left + up, left, right, right + up}));
    const QString text = metres >= 1000 ? tr("%1 km").arg(metres / 1000) : tr("%1 m").arg(metres);
    painter.drawText(QRectF(left + QPointF(0, -26), right + up), Qt::AlignCenter | Qt::TextDontClip, text);
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
    m_map.OnMapMouseDown(event->x(), event->y(), event);
}

void MapView::mouseMoveEvent(QMouseEvent* event)
{
    m_map.OnMapMouseMove(event->x(), event->y(), event);
    if (event->buttons().testFlag(Qt::LeftButton)) {
        m_dragging = m_dragging || (event->pos() - m_pressed).manhattanLength() > 3;
        if (m_dragging) {
            m_projection.pan(event->pos() - std::exchange(m_dragged, event->pos()));
            m_fitted = false;
            m_map.OnMapMoved();
            update();
        }
        return;
    }
    QList<qint64> hinted = objectsAt(event->localPos());
    QStringList lines;
    for (const qint64 id : qAsConst(hinted)) {
        const TrackPoint& point = *lastPoint(static_cast<qint32>(id));
        lines +=
            tr("%1: %2 km/h, %3%4")
                .arg(m_catalog.name(static_cast<qint32>(id)))
                .arg(point.speed)
                .arg(QDateTime::fromSecsSinceEpoch(point.time).toString(QStringLiteral("yyyy-MM-dd hh:mm:ss")),
                     (point.alarm ? tr(", alarm") : QString()) +
                         (m_states && !m_replay ? QStringLiteral(", ") + m_states->shortText(static_cast<qint32>(id))
                                                : QString()));
    }
    QToolTip::showText(event->globalPos(), lines.join(QLatin1Char('\n')), this);
    if (!hinted.isEmpty())
        m_map.OnObjectsHinted(&hinted);
}

void MapView::mouseReleaseEvent(QMouseEvent* event)
{
    m_map.OnMapMouseUp(event->x(), event->y(), event);
    QList<qint64> clicked = objectsAt(event->localPos());
    if (!m_dragging && !clicked.isEmpty())
        m_map.OnObjectsClicked(&clicked);
}

void MapView::wheelEvent(QWheelEvent* event)
{
    constexpr double notch = 120; // eighths of a degree
    m_projection.zoom(std::pow(zoomStep, event->angleDelta().y() / notch), event->position());
    m_fitted = false;
    m_map.OnMapScaleChanged(scale());
    update();
}

void MapView::keyPressEvent(QKeyEvent* event)
{
    if (event->key() == Qt::Key_Escape)
        m_map.OnKeyPressEsc();
    else
        m_map.OnMapKeyPress(event->key());
    QWidget::keyPressEvent(event);
}
