#pragma once

#include <QList>
#include <QPointF>
#include <QRectF>
#include <QSizeF>

#include <optional>

/** A name that is to stand beside a mark. */
struct Label
{
    QPointF mark;
    QSizeF size;      ///< Of the text.
    double extra = 0; ///< Pixels by which it is farther from the mark than others, as there is a sign around that.
};

/**
 * Where names stand, in the order of @p labels; the first ones take what they like. A name is beside its mark, at the
 * right if it can be, within @p canvas as a whole, over no other name, over no mark of another and over nothing of
 * @p taken; nothing where none of eight places will do.
 *
 * @param distance pixels from the middle of a mark to its name; a mark takes 0.6 of it around its middle
 */
QList<std::optional<QRectF>> placeLabels(const QList<Label>& labels, const QRectF& canvas, double distance,
                                         const QList<QRectF>& taken = {});
