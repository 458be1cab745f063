#include "objectmark.h"

#include <QPainter>
#include <QPixmap>
#include <QPolygonF>

#include <utility>

void ObjectMark::paint(QPainter& painter, const QPointF& at, double radius, const QColor& color) const
{
    if (alarm) {
        const double r = radius * 2.6;
        const QPolygonF triangle(QVector<QPointF>{at + QPointF(0, -r), at + QPointF(r * 0.87, r / 2),
                                                  at + QPointF(-r * 0.87, r / 2), at + QPointF(0, -r)});
        painter.setBrush(Qt::NoBrush);
        for (const auto& [width, edge] :
             {std::pair{5.5, QColor(Qt::black)}, {4.0, QColor(Qt::white)}, {2.5, QColor(alarmColor)}}) {
            painter.setPen(QPen(edge, width, Qt::SolidLine, Qt::SquareCap, Qt::MiterJoin));
            painter.drawPolyline(triangle);
        }
    }
    const QColor edge = selected ? QColor(Qt::black) : QColor(Qt::white);
    switch (presence) {
    case Presence::Online:
        painter.setPen(QPen(edge, selected ? 2 : 1));
        painter.setBrush(color);
        painter.drawEllipse(at, radius, radius);
        break;
    case Presence::Silent: {
        const double r = radius * 1.2;
        const QPolygonF diamond(
            QVector<QPointF>{at + QPointF(0, -r), at + QPointF(r, 0), at + QPointF(0, r), at + QPointF(-r, 0)});
        painter.setBrush(selected ? Qt::black : Qt::white);
        painter.setPen(QPen(color, 2));
        painter.drawPolygon(diamond);
        break;
    }
    case Presence::NeverHeard:
        painter.setPen(QPen(color, 2));
        painter.drawLine(at - QPointF(radius, radius) * 0.7, at + QPointF(radius, radius) * 0.7);
        painter.drawLine(at - QPointF(radius, -radius) * 0.7, at + QPointF(radius, -radius) * 0.7);
        break;
    }
}

void ObjectMark::paintQuickly(QPainter& painter, const QPointF& at, double radius, const QColor& color) const
{
    const int side = static_cast<int>(radius * 1.4);
    const QRect square(qRound(at.x()) - side / 2, qRound(at.y()) - side / 2, side, side);
    painter.fillRect(square, color);
    if (presence != Presence::Online)
        painter.fillRect(square.adjusted(1, 1, -1, -1), Qt::white);
}

QColor ObjectMark::stateColor() const
{
    switch (presence) {
    case Presence::Online: return QColor(onlineColor);
    case Presence::Silent: return QColor(silentColor);
    case Presence::NeverHeard: break;
    }
    return QColor(unheardColor);
}

QIcon ObjectMark::icon() const
{
    QIcon icon;
    for (const int size : {16, 32}) {
        QPixmap pixmap(size, size);
        pixmap.fill(Qt::transparent);
        QPainter painter(&pixmap);
        painter.setRenderHint(QPainter::Antialiasing);
        painter.scale(size / 16.0, size / 16.0);
        paint(painter, alarm ? QPointF(8, 9.5) : QPointF(8, 8), alarm ? 2.8 : 5, stateColor());
        painter.end();
        icon.addPixmap(pixmap);
    }
    return icon;
}
