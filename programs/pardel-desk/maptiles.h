#pragma once

#include <QCache>
#include <QColor>
#include <QDeadlineTimer>
#include <QHash>
#include <QList>
#include <QNetworkAccessManager>
#include <QObject>
#include <QPixmap>
#include <QRectF>
#include <QString>
#include <QTimer>
#include <QUrl>

class MapProjection;

QT_BEGIN_NAMESPACE
class QNetworkReply;
class QPainter;
class QSettings;
QT_END_NAMESPACE

/** One of the 4^zoom squares of the earth: columns count from 180 degrees west, rows from the north. */
struct TileKey
{
    int zoom = 0;
    int column = 0;
    int row = 0;

    /** The tile of a lower zoom that holds this one. */
    TileKey ancestor(int levels) const { return {zoom - levels, column >> levels, row >> levels}; }

    /** Another number for every tile. */
    quint64 number() const { return quint64(zoom) << 56 | quint64(column) << 28 | quint64(row); }
    friend bool operator==(const TileKey& a, const TileKey& b) { return a.number() == b.number(); }
};

/** Where tiles come from; by default nowhere. */
struct TileSettings
{
    QString address;      ///< Of an https: or file: tile, with {z}, {x} and {y} for zoom, column and row; empty: none.
    QString attribution;  ///< Of those who made them; shown on the map.
    QString folder;       ///< Of the copies of what came through the network.
    qint64 mostBytes = 0; ///< Of these copies.
    int answerTime = 15'000; ///< Milliseconds without a byte after which a server does not answer.

    /** The group "Map"; copies lie in "tiles" in @p folder. */
    static TileSettings read(const QSettings& ini, const QString& folder);

    /** Why the address is none, for people; nothing if it is one or empty. */
    QString complaint() const;
    QUrl url(const TileKey& tile) const;
};

/** The zoom whose tiles are drawn most nearly in their own size where the earth is so many pixels wide. */
int tileZoom(double worldWidth);
/** Where a tile lies in the square of the earth. */
QRectF tilePlace(const TileKey& tile, const QRectF& world);
/** The tiles that @p canvas shows, from its middle outwards. */
QList<TileKey> tilesOn(const QRectF& canvas, const QRectF& world, int zoom);

/**
 * Raster tiles under the map, fetched as they are drawn, at most six at a time.
 *
 * Until a tile has come, the part of a larger one that is there already stands for it, else nothing. One that does not
 * exist is not asked for again within ten minutes, and a larger one is asked for instead. While nobody answers, the
 * network is left alone for half a minute at a time, and copies of an earlier time are shown.
 */
class MapTiles : public QObject
{
    Q_OBJECT

public:
    explicit MapTiles(const TileSettings& settings, QObject* parent = nullptr);

    bool isOn() const { return m_isOn; }
    QString attribution() const { return m_settings.attribution; }
    /** Why no tiles come, for people; nothing while they do. */
    QString trouble() const { return m_trouble; }

    /** Draws what is there, under a layer of @p shade, and fetches what is missing. */
    void draw(QPainter& painter, const MapProjection& projection, const QRectF& canvas, const QColor& shade);

Q_SIGNALS:
    /** There is more to draw. */
    void changed();
    /** trouble() is another one than before. */
    void troubleChanged();

private:
    bool drawPart(QPainter& painter, const TileKey& tile, const QRectF& place, const QColor& shade);
    TileKey firstThatMayExist(const TileKey& tile) const;
    void fetchSome();
    void fetch(const TileKey& tile);
    void take(QNetworkReply& reply, const TileKey& tile);
    void setTrouble(const QString& text);

    const TileSettings m_settings;
    const bool m_isOn;
    QNetworkAccessManager m_network;
    QCache<quint64, QPixmap> m_tiles;         // costs in KiB
    QHash<quint64, QDeadlineTimer> m_missing; // until when they are not asked for
    QList<TileKey> m_wanted;                  // by the last drawing
    QList<TileKey> m_fetched;                 // on their way
    QTimer m_pause;                           // while nobody answers
    QString m_trouble;
};
