#pragma once

#include <QHash>
#include <QMap>
#include <QMultiHash>
#include <QMultiMap>
#include <QVariant>

QT_BEGIN_NAMESPACE
class QDataStream;
QT_END_NAMESPACE

/// Keep equal names where a map or a hash can hold them: in Qt 5, where those of many values are maps and hashes. In Qt 6
/// the last one stays.
#if QT_VERSION >= QT_VERSION_CHECK(6, 0, 0)
using ReadMap = QVariantMap;
using ReadHash = QVariantHash;
#else
using ReadMap = QMultiMap<QString, QVariant>;
using ReadHash = QMultiHash<QString, QVariant>;
#endif

/// What all images of one input may still take together: 4 bytes for a pixel, 8 where it has more than 8 bits of a color,
/// and their texts.
struct ImageRoom
{
    quint64 bytes = quint64{1} << 29;

    /// @return whether there was room for so much
    bool take(quint64 size)
    {
        const bool fits = size <= bytes;
        bytes -= fits ? size : 0;
        return fits;
    }
};

/**
 * Reads a value from a stream as QVariant does, but of the types only that applications keep: numbers, texts, bytes,
 * dates and times, addresses (QUrl), points, sizes, lines, rectangles, polygons, transformations, colors, fonts, pens,
 * brushes, images, and lists and maps of these, no deeper than 64 within each other. QVariant would reserve memory for
 * any count, recurse to any depth, open any file that a zone names, and make objects that need an application. Here
 * memory is taken for what has come, and for images what @p room has.
 *
 * Anything else sets QDataStream::ReadCorruptData, as do streams before QDataStream::Qt_4_0, whose types have other
 * numbers, images for which there is no room or whose packed texts may unpack to more than 64 MB, and gradients with
 * stops outside of 0 to 1, or with more than 4096 that do not ascend. Pixmaps are read in the thread of a
 * QGuiApplication only.
 *
 * @param value left alone where the result is false
 * @return whether a whole value has come, on a stream that had not failed before
 */
bool readKnownValue(QDataStream& stream, QVariant& value, ImageRoom& room);
