#pragma once

#include <QtGlobal>

QT_BEGIN_NAMESPACE
class QDataStream;
class QVariant;
QT_END_NAMESPACE

/**
 * Reads a value from a stream as QVariant does, but of the types only that applications keep: numbers, texts, bytes,
 * dates and times, addresses (QUrl), points, sizes, lines, rectangles, polygons, transformations, colors, fonts, pens,
 * brushes, images, and lists and maps of these, no deeper than 64 within each other. QVariant would reserve memory for
 * any count, recurse to any depth, and make objects that need an application. Here memory is taken for what has come.
 *
 * Anything else sets QDataStream::ReadCorruptData, as do streams before QDataStream::Qt_4_0, whose types have other
 * numbers, and images of more than 67,108,864 pixels. Pixmaps are read in the thread of a QGuiApplication only.
 *
 * @param value left alone where the result is false
 * @return whether a whole value has come, on a stream that had not failed before
 */
bool readKnownValue(QDataStream& stream, QVariant& value);
