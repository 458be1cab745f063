#include "mapcolors.h"

#include "objectcatalog.h"

#include <QPalette>

namespace {

constexpr int darkest = 110; // lightness of an object's color on a dark ground

} // namespace

MapColors MapColors::of(const QPalette& palette)
{
    MapColors colors;
    colors.sign = QColor(0xE69F00);
    colors.focus = palette.color(QPalette::Highlight);
    colors.isDark = palette.color(QPalette::Window).lightness() < 128;
    colors.ground = QColor(colors.isDark ? 0x23262A : 0xF7F5EE);
    colors.grid = QColor(colors.isDark ? 0x3C4147 : 0xDCD8CA);
    colors.text = QColor(colors.isDark ? 0xA8ADB4 : 0x5C584C);
    colors.name = colors.isDark ? Qt::white : Qt::black;
    colors.edge = colors.isDark ? Qt::black : Qt::white;
    colors.alarm = QColor(colors.isDark ? 0xFF8A3C : 0xC8320A);
    colors.shade = colors.ground;
    colors.shade.setAlpha(colors.isDark ? 165 : 0); // tiles are made for light windows
    return colors;
}

QColor MapColors::ofObject(qint32 id) const
{
    const QColor color = ObjectCatalog::color(id);
    if (!isDark || color.lightness() >= darkest)
        return color;
    return QColor::fromHsl(color.hslHue(), color.hslSaturation(), darkest);
}
