#include "mapview.h"

#include "desktime.h"
#include "mappainter.h"
#include "maptiles.h"
#include "objectcatalog.h"
#include "objectstates.h"

#include <Pardel/interfaces.h>

#include <QPainter>

#include <algorithm>
#include <cmath>
#include <utility>

namespace {

constexpr int repaintInterval = 150;       // milliseconds
constexpr int longestLiveTrack = 500;      // points
constexpr int longestDayTrack = 24 * 3600; // points
constexpr int mostNames = 150;             // with more marks in view only those that matter keep their names
constexpr int mostSmooth = 200;            // tracks; drawing smoothly costs several times as much
constexpr double nearMetresPerPixel = 2;   // what "zoom to" shows
constexpr double metresPerDot = 0.0254 / 96;
constexpr double stopMargin = 0.002;      // degrees around a stretch, which may be a single point
constexpr QRgb stretchColor = 0xFFF0E442; // Okabe and Ito's yellow, under the track's own colour

} // namespace

MapView::MapView(Notifyer& map, KernelNotifyer& kernel, DataPumpNotifyer& reports, const ObjectCatalog& catalog,
                 QWidget* parent)
    : QWidget(parent), m_map(map), m_catalog(catalog)
{
    setMouseTracking(true);
    setFocusPolicy(Qt::StrongFocus);
    setAccessibleName(tr("Map"));
    m_repaint.setSingleShot(true);
    m_repaint.setInterval(repaintInterval);
    connect(&m_repaint, &QTimer::timeout, this, qOverload<>(&QWidget::update));
    connect(&reports, &DataPumpNotifyer::OnDataRecievedSignal, this,
            [this](MobData& report) { take(TrackPoint::of(report), report.idObject); });
    connect(&kernel, &KernelNotifyer::OnSelectIdObjectSignal, this,
            [this](unsigned int id) { select(static_cast<qint32>(id)); });
    connect(&kernel, &KernelNotifyer::OnDataToReportSignal, this, [this](unsigned int from, unsigned int to) {
        m_replayFrom = from;
        m_replayTo = to;
        update();
    });
    connect(&kernel, &KernelNotifyer::OnTimeSelectedByReportSignal, this, [this](unsigned int time) {
        m_replayTime = time;
        if (m_replay && m_followed != 0)
            centreOn(m_followed);
        update();
    });
}

MapTiles* MapView::setTiles(MapTiles* tiles)
{
    connect(tiles, &MapTiles::changed, this, &MapView::changeLater, Qt::UniqueConnection);
    changeLater();
    return std::exchange(m_tiles, tiles);
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

void MapView::showDay(qint32 id, const Track& track)
{
    m_wholeDay.insert(id);
    addHistory(id, track);
    follow(0);
    fit({id});
    m_fitted = false;
}

void MapView::take(const TrackPoint& point, qint32 id)
{
    if (!point.isComplete() || !isCredible(point.time))
        return;
    Track& track = m_live[id];
    insertInTime(track, point);
    if (track.size() > (m_wholeDay.contains(id) ? longestDayTrack : longestLiveTrack))
        track.removeFirst();
    if (id == m_followed && !m_replay)
        centreOn(id);
    changeLater();
}

qint64 MapView::lastTime(qint32 id) const
{
    const auto live = m_live.find(id);
    return live == m_live.cend() ? 0 : live->second.constLast().time;
}

void MapView::changeLater()
{
    if (!m_repaint.isActive())
        m_repaint.start();
}

void MapView::startReplay(const Tracks& tracks)
{
    m_replay = tracks;
    m_stretch.clear();
    showAll();
    Q_EMIT replayChanged(true);
}

void MapView::stopReplay()
{
    m_replay.reset();
    m_stretch.clear();
    showAll();
    Q_EMIT replayChanged(false);
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

void MapView::select(qint32 id)
{
    m_selected = id;
    const auto mark = markOf(id);
    if (mark && !rect().contains(mark->toPoint()) && (m_followed == 0 || m_followed == id))
        centreOn(id);
    update();
}

void MapView::fit(const QList<qint32>& ids)
{
    std::optional<GeoPoint> southWest;
    GeoPoint northEast;
    for (const qint32 id : ids) {
        const auto shown = shownTracks().find(id);
        if (shown == shownTracks().end())
            continue;
        for (const TrackPoint& point : shown->second) {
            const GeoPoint at = placeOf(point);
            if (!southWest)
                southWest = northEast = at;
            southWest = {std::min(southWest->latitude, at.latitude), std::min(southWest->longitude, at.longitude)};
            northEast = {std::max(northEast.latitude, at.latitude), std::max(northEast.longitude, at.longitude)};
        }
    }
    if (southWest)
        m_projection.fit(*southWest, northEast);
    m_map.OnMapScaleChanged(scale());
    update();
}

void MapView::showAll()
{
    follow(0);
    QList<qint32> ids;
    for (const auto& shown : shownTracks()) {
        if (isShown(shown.first))
            ids.append(shown.first);
    }
    fit(ids);
    m_fitted = true;
}

void MapView::showWhatCame()
{
    if (m_fitted && !m_replay)
        showAll();
}

void MapView::centreOn(qint32 id)
{
    if (const TrackPoint* point = lastPoint(id)) {
        m_projection.centreOn(placeOf(*point));
        m_fitted = false;
        m_map.OnMapMoved();
        changeLater();
    }
}

void MapView::centreAt(const GeoPoint& place)
{
    follow(0);
    m_projection.centreOn(place);
    m_fitted = false;
    m_map.OnMapMoved();
    update();
}

void MapView::showStretch(qint32 id, qint64 from, qint64 to)
{
    const auto shown = shownTracks().find(id);
    m_stretch.clear();
    if (shown != shownTracks().end()) {
        const int first = std::max(0, indexAt(shown->second, from));
        m_stretch = shown->second.mid(first, indexAt(shown->second, to) - first + 1);
    }
    if (m_stretch.isEmpty())
        return;
    const auto [south, north] = std::minmax_element(
        m_stretch.cbegin(), m_stretch.cend(), [](auto& left, auto& right) { return left.latitude < right.latitude; });
    const auto [west, east] = std::minmax_element(
        m_stretch.cbegin(), m_stretch.cend(), [](auto& left, auto& right) { return left.longitude < right.longitude; });
    m_projection.fit({south->latitude * 1e-7 - stopMargin, west->longitude * 1e-7 - stopMargin},
                     {north->latitude * 1e-7 + stopMargin, east->longitude * 1e-7 + stopMargin});
    m_fitted = false;
    m_map.OnMapScaleChanged(scale());
    update();
}

void MapView::zoomTo(qint32 id)
{
    if (!lastPoint(id))
        return;
    if (id != m_followed)
        follow(0);
    centreOn(id);
    zoomBy(std::max(1.0, m_projection.metresPerPixel() / nearMetresPerPixel), QRectF(rect()).center());
}

void MapView::follow(qint32 id)
{
    if (id == m_followed)
        return;
    m_followed = id;
    if (id != 0) {
        m_fitted = false;
        centreOn(id);
    }
    update();
    Q_EMIT followedChanged(id);
}

void MapView::moveBy(const QPointF& pixels)
{
    follow(0);
    m_projection.pan(pixels);
    m_fitted = false;
    m_map.OnMapMoved();
    update();
}

void MapView::zoomBy(double factor, const QPointF& fixed)
{
    m_projection.zoom(factor, m_followed != 0 ? QRectF(rect()).center() : fixed);
    m_fitted = false;
    m_map.OnMapScaleChanged(scale());
    update();
}

std::optional<QPointF> MapView::markOf(qint32 id) const
{
    const TrackPoint* point = isShown(id) ? lastPoint(id) : nullptr;
    return point ? std::optional<QPointF>(place(*point)) : std::nullopt;
}

int MapView::scale() const
{
    return static_cast<int>(m_projection.metresPerPixel() / metresPerDot);
}

QString MapView::sign() const
{
    QStringList lines;
    if (m_replay)
        lines.append(tr("Replay, not now: %1").arg(DeskTime::period(m_replayFrom, m_replayTo)));
    if (m_followed != 0)
        lines.append(tr("Follows %1").arg(m_catalog.name(m_followed)));
    return lines.join(QLatin1Char('\n'));
}

void MapView::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    const MapColors colors = MapColors::of(palette());
    MapPainter drawing(painter, m_projection, colors, rect());
    painter.fillRect(rect(), colors.ground);
    drawing.drawGrid();
    if (m_tiles)
        m_tiles->draw(painter, m_projection, rect(), colors.shade);
    drawObjects(drawing, painter, colors);
    drawing.drawScaleBar();
    if (m_tiles && m_tiles->isOn())
        drawing.drawSource(m_tiles->trouble().isEmpty() ? m_tiles->attribution()
                                                        : tr("No new tiles: %1").arg(m_tiles->trouble()));
    if (m_replay || m_followed != 0)
        drawing.drawSign(sign(), m_replay.has_value());
    drawNames(drawing);
    if (hasFocus())
        drawing.drawFocus();
}

void MapView::drawObjects(MapPainter& drawing, QPainter& painter, const MapColors& colors) const
{
    QList<qint32> drawn;
    for (const auto& shown : shownTracks()) {
        if (isShown(shown.first))
            drawn.append(shown.first);
    }
    if (drawn.removeOne(m_selected)) // over the others
        drawn.append(m_selected);
    painter.setRenderHint(QPainter::Antialiasing, drawn.size() <= mostSmooth);
    painter.setPen(QPen(QColor(stretchColor), 9, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
    drawing.drawTrack(m_stretch, static_cast<int>(m_stretch.size()));
    std::function<double(qint64)> fading;
    if (m_states && !m_replay) // what is old, faint
        fading = [this](qint64 time) { return m_states->opacity(time); };
    for (const qint32 id : qAsConst(drawn)) {
        const Track& track = shownTracks().at(id);
        QColor color = colors.ofObject(id);
        if (m_replay) { // what is still to come, faint
            color.setAlpha(60);
            painter.setPen(QPen(color, 1.5));
            drawing.drawTrack(track, static_cast<int>(track.size()));
            color.setAlpha(255);
        }
        painter.setPen(QPen(color, id == m_selected ? 3 : 1.5));
        drawing.drawTrack(track, passed(track), fading);
    }
    for (const qint32 id : qAsConst(drawn)) {
        const TrackPoint* point = lastPoint(id);
        if (!point)
            continue;
        MapMark mark;
        mark.at = place(*point);
        mark.color = colors.ofObject(id);
        mark.state = m_states && !m_replay ? m_states->mark(id) : ObjectMark{Presence::Online, point->alarm, false};
        mark.state.selected = id == m_selected;
        mark.ringed = point->alarm && !mark.state.alarm; // acknowledged, and still on
        if (point->speed > 0 && mark.state.presence == Presence::Online)
            mark.course = point->course;
        drawing.drawMark(mark);
    }
    painter.setRenderHint(QPainter::Antialiasing, true);
}

void MapView::drawNames(MapPainter& drawing) const
{
    QList<MapName> first; // the selected one and those with an alarm
    QList<MapName> others;
    for (const auto& shown : shownTracks()) {
        const qint32 id = shown.first;
        if (others.size() > mostNames && id != m_selected && !hasAlarm(id))
            continue; // thousands of names that are not drawn would take longer than all marks
        const auto mark = markOf(id);
        if (!mark || !rect().contains(mark->toPoint()))
            continue;
        MapName name{*mark, m_catalog.name(id), hasAlarm(id)};
        if (m_states && !m_replay && m_states->presence(id) != Presence::Online)
            name.text += QStringLiteral(" · ") + m_states->shortText(id);
        if (id == m_selected)
            first.prepend(name);
        else
            (name.alarm || lastPoint(id)->alarm ? first : others).append(name);
    }
    if (first.size() + others.size() <= mostNames)
        first += others;
    drawing.drawNames(first.mid(0, mostNames));
}
