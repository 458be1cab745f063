#include "labelplacing.h"

#include <algorithm>

namespace {

/// The places around a mark from the best to the worst, as shares of the way from the middle to the side.
constexpr QPointF directions[] = {{1, 0}, {-1, 0}, {0, -1}, {0, 1}, {1, -1}, {1, 1}, {-1, -1}, {-1, 1}};

QRectF boxAt(const Label& label, const QPointF& direction, double distance)
{
    const QPointF away(direction.x() * (distance + label.size.width() / 2),
                       direction.y() * (distance + label.size.height() / 2));
    QRectF box(QPointF(), label.size);
    box.moveCenter(label.mark + away);
    return box;
}

} // namespace

QList<std::optional<QRectF>> placeLabels(const QList<Label>& labels, const QRectF& canvas, double distance,
                                         const QList<QRectF>& taken)
{
    const double markRoom = distance * 0.6; // so that a name does not push another from the side of its own mark
    QList<std::optional<QRectF>> placed;
    for (const Label& label : labels) {
        const auto isFree = [&](const QRectF& box) {
            const QRectF room = box.adjusted(-markRoom, -markRoom, markRoom, markRoom);
            return canvas.contains(box) &&
                   std::none_of(taken.cbegin(), taken.cend(),
                                [&](const QRectF& other) { return other.intersects(box); }) &&
                   std::none_of(placed.cbegin(), placed.cend(),
                                [&](const auto& other) { return other && other->intersects(box); }) &&
                   std::none_of(labels.cbegin(), labels.cend(), [&](const Label& other) {
                       return other.mark != label.mark && room.contains(other.mark);
                   });
        };
        std::optional<QRectF> place;
        for (const QPointF& direction : directions) {
            const QRectF box = boxAt(label, direction, distance + label.extra);
            if (!place && isFree(box))
                place = box;
        }
        placed.append(place);
    }
    return placed;
}
