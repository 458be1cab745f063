#include "maptiles.h"

#include "mapprojection.h"

#include <Pardel/pardelversion.h>

#include <QBuffer>
#include <QCoreApplication>
#include <QGuiApplication>
#include <QImageReader>
#include <QNetworkDiskCache>
#include <QNetworkReply>
#include <QPainter>
#include <QSettings>
#include <QSslError>

#include <algorithm>
#include <cmath>

namespace {

constexpr int tilePixels = 256;
constexpr int greatestZoom = 19; // of common tiles; beyond it they are enlarged
constexpr int mostLevels = 8;    // how much larger a tile may be that stands for another
constexpr int mostRequests = 6;  // at a time
constexpr int mostPixels = 2048; // of a tile's side, before it is made smaller
constexpr int mostTileBytes = 4 << 20;
constexpr int memoryForTiles = 96 << 10; // KiB: twice what a screen of 3840 x 2160 shows
constexpr int mostMissing = 10'000;      // remembered
const char sslError[] = "sslError";      // a reply's property
constexpr int pauseTime = 30'000;        // ms
constexpr int missingTime = 600'000;     // ms

/// Of a tile within its ancestor, as a share of that.
QRectF partOf(const TileKey& tile, int levels)
{
    const double share = 1.0 / (1 << levels);
    const int mask = (1 << levels) - 1;
    return {(tile.column & mask) * share, (tile.row & mask) * share, share, share};
}

QPixmap pixmapFrom(const QByteArray& bytes)
{
    QBuffer buffer;
    buffer.setData(bytes);
    buffer.open(QIODevice::ReadOnly);
    QImageReader reader(&buffer);
    const QSize size = reader.size(); // told before the picture takes any memory
    if (size.width() > mostPixels || size.height() > mostPixels)
        return {};
    const QImage image = reader.read();
    const int most = qRound(tilePixels * qGuiApp->devicePixelRatio());
    return QPixmap::fromImage(image.width() > most ? image.scaledToWidth(most, Qt::SmoothTransformation) : image);
}

} // namespace

TileSettings TileSettings::read(const QSettings& ini, const QString& folder)
{
    constexpr qint64 mebibyte = 1 << 20;
    TileSettings settings;
    settings.address = ini.value(QStringLiteral("Map/Tiles")).toString().trimmed();
    settings.attribution = ini.value(QStringLiteral("Map/Attribution")).toString();
    settings.folder = folder + QLatin1String("/tiles");
    settings.mostBytes = std::clamp(ini.value(QStringLiteral("Map/TileMegabytes"), 200).toInt(), 1, 100'000) * mebibyte;
    return settings;
}

QString TileSettings::complaint() const
{
    if (address.isEmpty())
        return {};
    for (const char* part : {"{z}", "{x}", "{y}"}) {
        if (!address.contains(QLatin1String(part)))
            return MapTiles::tr("Tiles=%1 is not used: it lacks %2").arg(address, QLatin1String(part));
    }
    const QUrl tile = url({});
    const bool isRemote = tile.scheme() == QLatin1String("https") && !tile.host().isEmpty();
    if (!tile.isValid() || !(isRemote || tile.isLocalFile()))
        return MapTiles::tr("Tiles=%1 is not used: it is no https: or file: address").arg(address);
    if (tile.authority() != url({1, 1, 1}).authority())
        return MapTiles::tr("Tiles=%1 is not used: each tile would come from another server").arg(address);
    return {};
}

QUrl TileSettings::url(const TileKey& tile) const
{
    QString text = address;
    text.replace(QLatin1String("{z}"), QString::number(tile.zoom));
    text.replace(QLatin1String("{x}"), QString::number(tile.column));
    text.replace(QLatin1String("{y}"), QString::number(tile.row));
    return QUrl(text);
}

int tileZoom(double worldWidth)
{
    return std::clamp(qRound(std::log2(worldWidth / tilePixels)), 0, greatestZoom);
}

QRectF tilePlace(const TileKey& tile, const QRectF& world)
{
    const double side = std::ldexp(world.width(), -tile.zoom);
    return {world.x() + tile.column * side, world.y() + tile.row * side, side, side};
}

QList<TileKey> tilesOn(const QRectF& canvas, const QRectF& world, int zoom)
{
    const QRectF shown = canvas & world;
    if (shown.isEmpty())
        return {};
    const double side = std::ldexp(world.width(), -zoom);
    const int last = (1 << zoom) - 1;
    const auto index = [&](double away) { return std::clamp(static_cast<int>(std::floor(away / side)), 0, last); };
    QList<TileKey> tiles;
    for (int row = index(shown.top() - world.y()); row <= index(shown.bottom() - world.y()); ++row) {
        for (int column = index(shown.left() - world.x()); column <= index(shown.right() - world.x()); ++column)
            tiles.append({zoom, column, row});
    }
    const auto away = [&](const TileKey& tile) {
        return (tilePlace(tile, world).center() - canvas.center()).manhattanLength();
    };
    std::stable_sort(tiles.begin(), tiles.end(), [&](const TileKey& a, const TileKey& b) { return away(a) < away(b); });
    return tiles;
}

MapTiles::MapTiles(const TileSettings& settings, QObject* parent)
    : QObject(parent), m_settings(settings), m_isOn(!settings.address.isEmpty() && settings.complaint().isEmpty())
{
    m_tiles.setMaxCost(memoryForTiles);
    m_pause.setSingleShot(true);
    m_pause.setInterval(pauseTime);
    connect(&m_pause, &QTimer::timeout, this, &MapTiles::changed);
    if (!m_isOn)
        return;
    auto* copies = new QNetworkDiskCache(&m_network);
    copies->setCacheDirectory(settings.folder);
    copies->setMaximumCacheSize(settings.mostBytes);
    m_network.setCache(copies);
    m_network.setTransferTimeout(settings.answerTime);
    m_network.setRedirectPolicy(QNetworkRequest::NoLessSafeRedirectPolicy);
}

void MapTiles::draw(QPainter& painter, const MapProjection& projection, const QRectF& canvas, const QColor& shade)
{
    m_wanted.clear();
    if (!m_isOn)
        return;
    const QRectF world = projection.world();
    painter.save();
    painter.setRenderHint(QPainter::SmoothPixmapTransform);
    const QList<TileKey> shown = tilesOn(canvas, world, tileZoom(world.width()));
    for (const TileKey& tile : shown) {
        const QRectF exact = tilePlace(tile, world);
        const QRect place(exact.topLeft().toPoint(), exact.bottomRight().toPoint() - QPoint(1, 1)); // no seams
        if (drawPart(painter, tile, place, shade))
            continue;
        const TileKey next = firstThatMayExist(tile);
        if (next.zoom >= 0 && !m_tiles.contains(next.number()) && !m_wanted.contains(next))
            m_wanted.append(next);
    }
    painter.restore();
    fetchSome();
}

/// Whether the tile itself is there.
bool MapTiles::drawPart(QPainter& painter, const TileKey& tile, const QRectF& place, const QColor& shade)
{
    for (int levels = 0; levels <= std::min(mostLevels, tile.zoom); ++levels) {
        const QPixmap* picture = m_tiles.object(tile.ancestor(levels).number());
        if (!picture)
            continue;
        const QRectF part = partOf(tile, levels);
        const double width = picture->width();
        const double height = picture->height();
        painter.drawPixmap(place, *picture,
                           {part.x() * width, part.y() * height, part.width() * width, part.height() * height});
        painter.fillRect(place, shade);
        return levels == 0;
    }
    return false;
}

TileKey MapTiles::firstThatMayExist(const TileKey& tile) const
{
    for (int levels = 0; levels <= std::min(mostLevels, tile.zoom); ++levels) {
        const TileKey larger = tile.ancestor(levels);
        const auto missing = m_missing.constFind(larger.number());
        if (missing == m_missing.cend() || missing->hasExpired())
            return larger;
    }
    return {-1, 0, 0};
}

void MapTiles::fetchSome()
{
    while (m_fetched.size() < mostRequests && !m_wanted.isEmpty()) {
        const TileKey tile = m_wanted.takeFirst();
        if (!m_fetched.contains(tile))
            fetch(tile);
    }
}

void MapTiles::fetch(const TileKey& tile)
{
    QNetworkRequest request(m_settings.url(tile));
    request.setHeader(QNetworkRequest::UserAgentHeader,
                      QCoreApplication::applicationName() + QLatin1Char('/') + getPardelVersion());
    if (m_pause.isActive())
        request.setAttribute(QNetworkRequest::CacheLoadControlAttribute, QNetworkRequest::AlwaysCache);
    m_fetched.append(tile);
    QNetworkReply* reply = m_network.get(request);
    connect(reply, &QNetworkReply::downloadProgress, this, [reply](qint64 received) {
        if (received > mostTileBytes)
            reply->abort();
    });
    connect(reply, &QNetworkReply::sslErrors, reply, [reply](const QList<QSslError>& errors) {
        reply->setProperty(sslError, errors.value(0).errorString()); // the reply's own does not say what is wrong
    });
    connect(reply, &QNetworkReply::finished, this, [this, reply, tile] {
        reply->deleteLater();
        m_fetched.removeOne(tile);
        take(*reply, tile);
        fetchSome();
    });
}

void MapTiles::take(QNetworkReply& reply, const TileKey& tile)
{
    const QNetworkReply::NetworkError error = reply.error();
    const QPixmap picture = error == QNetworkReply::NoError ? pixmapFrom(reply.readAll()) : QPixmap();
    if (!picture.isNull()) {
        m_tiles.insert(tile.number(), new QPixmap(picture),
                       std::max(1, picture.width() * picture.height() * picture.depth() / 8 / 1024));
        if (!m_pause.isActive())
            setTrouble(QString());
        Q_EMIT changed();
        return;
    }
    const bool isMissing = error == QNetworkReply::NoError || error == QNetworkReply::ContentNotFoundError ||
                           error == QNetworkReply::ContentGoneError;
    if (m_missing.size() >= mostMissing)
        m_missing.clear();
    const bool onlyCopies = m_pause.isActive();
    m_missing.insert(tile.number(), QDeadlineTimer(isMissing && !onlyCopies ? missingTime : pauseTime));
    if (!isMissing && !onlyCopies) {
        m_pause.start();
        const QString cause = reply.property(sslError).toString();
        setTrouble(cause.isEmpty() ? reply.errorString() : reply.errorString() + QStringLiteral(": ") + cause);
    }
    Q_EMIT changed();
}

void MapTiles::setTrouble(const QString& text)
{
    if (text == m_trouble)
        return;
    m_trouble = text;
    Q_EMIT troubleChanged();
}
