#include "deskcolors.h"

#include <algorithm>
#include <cmath>

namespace {

constexpr QRgb darkRed = 0xFFB00020;
constexpr QRgb lightRed = 0xFFFFA095;

double luminance(const QColor& color)
{
    const auto linear = [](double part) {
        return part <= 0.04045 ? part / 12.92 : std::pow((part + 0.055) / 1.055, 2.4);
    };
    return 0.2126 * linear(color.redF()) + 0.7152 * linear(color.greenF()) + 0.0722 * linear(color.blueF());
}

} // namespace

QColor DeskColors::error(const QColor& ground)
{
    return contrast(QColor(darkRed), ground) >= contrast(QColor(lightRed), ground) ? QColor(darkRed) : QColor(lightRed);
}

QPalette DeskColors::withErrorText(QPalette palette)
{
    for (const QPalette::ColorGroup group : {QPalette::Active, QPalette::Inactive, QPalette::Disabled})
        palette.setColor(group, QPalette::WindowText, error(palette.color(group, QPalette::Window)));
    return palette;
}

double DeskColors::contrast(const QColor& one, const QColor& other)
{
    const auto [darker, lighter] = std::minmax({luminance(one), luminance(other)});
    return (lighter + 0.05) / (darker + 0.05);
}

QString DeskColors::warningStyle(QRgb ground)
{
    return QStringLiteral("background: %1; color: black; font-weight: bold; padding: 0 4px").arg(QColor(ground).name());
}
