// The part of the tour that is on the map.

#include "deskwindow.h"
#include "mappainter.h"
#include "maptiles.h"
#include "mapview.h"
#include "objectmenu.h"
#include "tour.h"

#include <QAction>
#include <QApplication>
#include <QCoreApplication>
#include <QKeyEvent>
#include <QPainter>
#include <QPalette>
#include <QPixmap>
#include <QTabWidget>
#include <QTemporaryDir>

#include <algorithm>

namespace {

constexpr QRgb land = 0xFFDCE8D0;

/// Tiles of where the simulated objects are, each with its number and something like roads.
void drawTiles(const QTemporaryDir& folder)
{
    for (int zoom = 0; zoom <= 9; ++zoom) {
        const QRectF world(0, 0, 256 << zoom, 256 << zoom);
        MapProjection map;
        map.resize(world.size());
        map.zoom(1 << zoom, world.center());
        const QRectF area(map.toCanvas({58, 33}), map.toCanvas({53, 41}));
        const QList<TileKey> tiles = tilesOn(area, world, zoom);
        for (const TileKey& tile : tiles) {
            QImage image(256, 256, QImage::Format_RGB32);
            image.fill(land);
            QPainter painter(&image);
            painter.setPen(QPen(QColor(0xFFFFFF), 6));
            painter.drawLine(0, 100, 256, 100);
            painter.drawLine(180, 0, 180, 256);
            painter.setPen(QColor(0x809070));
            painter.drawRect(0, 0, 256, 256);
            painter.drawText(10, 246, QStringLiteral("%1/%2/%3").arg(tile.zoom).arg(tile.column).arg(tile.row));
            painter.end();
            image.save(folder.filePath(QStringLiteral("%1-%2-%3.png").arg(tile.zoom).arg(tile.column).arg(tile.row)));
        }
    }
}

/// Of a picture's pixels, in percent.
template <typename Condition>
int share(const QImage& image, Condition holds)
{
    int pixels = 0;
    for (int y = 0; y < image.height(); y += 4) {
        for (int x = 0; x < image.width(); x += 4)
            pixels += holds(image.pixel(x, y)) ? 1 : 0;
    }
    return pixels * 16 * 100 / (image.width() * image.height());
}

} // namespace

int Tour::darkShare(const QImage& picture)
{
    return share(picture, [](QRgb pixel) { return qGray(pixel) < 128; });
}

void Tour::showMap()
{
    MapView& map = *m_desk.map;
    const auto landShare = [&] { return share(map.grab().toImage(), [](QRgb pixel) { return pixel == land; }); };
    const auto dark = [&] { return darkShare(map.grab().toImage()); };

    map.follow(clickedObject);
    const auto away = *map.markOf(clickedObject) - QRectF(map.rect()).center();
    expect(away.manhattanLength() < 1 && !map.sign().isEmpty(), "the followed object in the middle, and that it is");
    QObject parent;
    const QList<QAction*> actions = m_desk.objectMenu->actionsFor(clickedObject, &parent);
    expect(std::all_of(actions.cbegin(), actions.cend(), [](const QAction* action) { return action->isEnabled(); }),
           "all that can be done with the object");
    QStringList keys;
    const auto all = m_desk.findChildren<QAction*>();
    for (const QAction* action : all)
        keys += QKeySequence::listToString(action->shortcuts(), QKeySequence::PortableText).split(QStringLiteral("; "));
    keys.removeAll(QString());
    expect(keys.removeDuplicates() == 0, "every key in one menu only"); // else it would do nothing in either
    QKeyEvent home(QEvent::KeyPress, Qt::Key_Home, Qt::NoModifier);
    QCoreApplication::sendEvent(&map, &home);
    expect(map.followed() == 0, "no followed object after Home");

    expect(landShare() == 0, "no tiles unless they are wanted");
    const QTemporaryDir folder;
    drawTiles(folder);
    TileSettings settings;
    settings.address = QUrl::fromLocalFile(folder.path()).toString() + QStringLiteral("/{z}-{x}-{y}.png");
    settings.attribution = QStringLiteral("© the tour");
    settings.folder = folder.filePath(QStringLiteral("copies"));
    MapTiles tiles(settings);
    MapTiles* const before = map.setTiles(&tiles);
    await([&] { return m_isDark || landShare() > 30; }, "tiles on the map");
    map.setFocus();
    save(m_desk, "tiles");
    const QPalette light = QApplication::palette();
    QApplication::setPalette(darkPalette());
    await([&] { return landShare() == 0 && dark() > 50; }, "dark tiles in a dark window");
    save(m_desk, "tiles-dark");
    map.setTiles(before);
    await([&] { return dark() > 50; }, "a dark map");
    save(m_desk, "dark");
    QApplication::setPalette(light);

    const QSize size = m_desk.size();
    m_desk.resize(smallScreen);
    expect(m_desk.size() == smallScreen && map.height() >= map.fontMetrics().height() * 7 &&
               m_desk.tabs->height() >= map.fontMetrics().height() * 4,
           "map and table on a small screen");
    save(m_desk, "small");
    m_desk.resize(size);
}
