#pragma once

#include <QColor>

QT_BEGIN_NAMESPACE
class QPalette;
QT_END_NAMESPACE

/** The map's colors on a light or a dark ground, as the palette of the window is. */
struct MapColors
{
    QColor ground;
    QColor grid;
    QColor text;  ///< Of the grid and the scale bar.
    QColor name;  ///< Of objects, and the edge of the selected mark.
    QColor edge;  ///< Of other marks.
    QColor alarm; ///< Readable on the ground.
    QColor sign;  ///< Behind what is said over the map, with black on it.
    QColor focus; ///< Of the frame.
    QColor shade; ///< Over tiles.
    bool isDark;

    static MapColors of(const QPalette& palette);

    /** Of an object's mark and track: lighter where the ground is dark. */
    QColor ofObject(qint32 id) const;
};
