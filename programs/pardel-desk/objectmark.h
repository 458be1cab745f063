#pragma once

#include <QColor>
#include <QIcon>
#include <QPointF>

QT_BEGIN_NAMESPACE
class QPainter;
QT_END_NAMESPACE

/** Whether an object's last state is one of now. */
enum class Presence
{
    NeverHeard,
    Silent,
    Online
};

// Of Okabe and Ito's palette, which colour-blind people can tell apart.
constexpr QRgb onlineColor = 0xFF009E73;  ///< Bluish green.
constexpr QRgb silentColor = 0xFFE69F00;  ///< Orange.
constexpr QRgb unheardColor = 0xFF999999; ///< Grey.
constexpr QRgb alarmColor = 0xFFD55E00;   ///< Vermilion; black text on it has a contrast of 5 to 1.

/** How an object looks on map, tree and table: its state is told by the shape, the colour comes beside it. */
struct ObjectMark
{
    Presence presence = Presence::Online;
    bool alarm = false; ///< One that nobody has acknowledged.
    bool selected = false;

    /**
     * Draws it about @p at: a disc, a hollow diamond for a silent object, a cross for one that was never heard; a
     * triangle around it for an alarm, with edges in black and white so that it is seen on every ground.
     */
    void paint(QPainter& painter, const QPointF& at, double radius, const QColor& color) const;

    /** A small square, hollow unless it is online: where there are so many that drawing them takes long. */
    void paintQuickly(QPainter& painter, const QPointF& at, double radius, const QColor& color) const;

    /** As paint(), in the colour of the state. */
    QIcon icon() const;
    QColor stateColor() const;
};
