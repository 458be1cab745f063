#include "mapcolors.h"

#include "objectcatalog.h"

#include <QPalette>

namespace {

constexpr int darkest = 110; // lightness of an object's color on a dark ground

} // namespace

MapColors MapColors::of(const QPalette& palette)
{
    const QColor orange(0xE69F00);
    const QColor focus = palette.color(QPalette::Highlight);
    if (palette.color(QPalette::Window).lightness() < 128)
        return {QColor(0x23262A),
                QColor(0x3C4147),
                QColor(0xA8ADB4),
                QColor(Qt::white),
                QColor(Qt::black),
                QColor(0xFF8A3C),
                orange,
                focus,
                0.55,
                true};
    return {QColor(0xF7F5EE),
            QColor(0xDCD8CA),
            QColor(0x5C584C),
            QColor(Qt::black),
            QColor(Qt::white),
            QColor(0xC8320A),
            orange,
            focus,
            1,
            false};
}

QColor MapColors::ofObject(qint32 id) const
{
    const QColor color = ObjectCatalog::color(id);
    if (!isDark || color.lightness() >= darkest)
        return color;
    return QColor::fromHsl(color.hslHue(), color.hslSaturation(), darkest);
}
