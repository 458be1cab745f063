#pragma once

#include <QColor>
#include <QPalette>

/** Colours of messages that can be read on light and on dark. */
namespace DeskColors {

/** A red that stands out from @p ground by at least 4.5 to 1 for the grounds of usual palettes. */
QColor error(const QColor& ground);

/** The palette with error() for its texts. */
QPalette withErrorText(QPalette palette);

/** A style sheet for a label that warns: black on @p ground, readable whatever the palette is. */
QString warningStyle(QRgb ground);

/** How far two colours stand apart in lightness, from 1 to 21, as WCAG 2 computes it. */
double contrast(const QColor& one, const QColor& other);

} // namespace DeskColors
