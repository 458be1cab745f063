#pragma once

#include <Pardel/pardel_export.h>

#include <QColor>
#include <QList>
#include <QMap>
#include <QPoint>
#include <QString>
#include <QVariant>

QT_BEGIN_NAMESPACE
class QDataStream;
class QModelIndex;
class QStandardItem;
class QTableView;
QT_END_NAMESPACE

namespace MapQt {
class MapPrimitive; // of the applications' map library
}

/** @file
 * Schemas: their graphic objects, the blocks that hold these, and the blocks' data streams.
 */

/**
 * A graphic object of a schema: a text, a line, a polygon and so on.
 *
 * The applications derive their drawing classes from it; the library itself makes plain objects when it reads a block,
 * and their type tells what they were. The order of the virtual functions and of the members is part of the binary
 * interface and must stay as it is.
 */
class PARDEL_EXPORT AbsGraphObject
{
public:
    AbsGraphObject();
    virtual ~AbsGraphObject();
    /** Copies the members; a copy of a derived class's object is a plain one. */
    AbsGraphObject(const AbsGraphObject&) = default;
    AbsGraphObject& operator=(const AbsGraphObject&) = default; ///< Takes over the members.

    /** Makes @p item show the object: its text, and an empty icon for derived classes to replace. Null does nothing. */
    virtual void prepareMainItem(QStandardItem* item);

    /**
     * Fills @p table with the object's properties from @p row on; here with none.
     *
     * @return the next free row
     */
    virtual int preparePropsTable(QTableView* table, int row);

    /** Takes a property that the user has edited; here it does nothing. */
    virtual void changeProperty(const QModelIndex& index, const QVariant& value);

    /** Tells the object's bounding coordinates; here it leaves all four as they are. */
    virtual void getCoordsMinMax(int& xMin, int& yMin, int& xMax, int& yMax);

    /** For derived classes to answer; here false. */
    virtual bool completed();

    /** For derived classes to answer; here false. The list stays the caller's and may be null. */
    virtual bool isContains(QList<MapQt::MapPrimitive*>* primitives);

    /** The names of the types: typeNames[type], type from 0 to 14. What a stream brings may lie outside of that. */
    static const char* const typeNames[15];

    qint64 identifier = 0;              ///< Of the application's choice.
    qint32 type = 0;                    ///< Index into typeNames.
    QString text;                       ///< Shown as the object's name in lists.
    QList<QPoint> points;               ///< In the coordinates of the schema.
    QMap<QString, QVariant> properties; ///< With Qt 5 it may hold several values under one name, as a QMultiMap does.
};

/**
 * A block of a schema: some graphic objects that belong together.
 *
 * It owns nothing by itself: whoever holds a block deletes its objects and then, with delete[], the array. The order of
 * the members must stay as it is.
 */
struct BlockGraphObject
{
    qint32 formatVersion = 0; ///< 1 to 4; only 3 and 4 have a display mode in the stream.
    /// The application's values; 0 or invalid in a new block.
    /// @{
    qint64 identifier = 0;
    qint32 x1 = 0;
    qint32 y1 = 0;
    qint32 x2 = 0;
    qint32 y2 = 0;
    QColor firstColor;
    QColor secondColor;
    qint32 displayMode = 0;
    /// @}
    qint32 objectCount = 0;             ///< Entries of objects.
    AbsGraphObject** objects = nullptr; ///< None of them null.
};

/**
 * Writes a block, which must not be null: formatVersion (32 bits), identifier (64), objectCount (32), x1, y1, x2, y2
 * (32 each), both colors, displayMode (32), whatever the version; then of each object the type (32), identifier (64),
 * text, points (count and each as two times 32) and properties (count and each name with its value, from the greatest
 * name down to the smallest, of equal names the one that was put in first). A value that is a QVariantMap, also within
 * maps and lists, is written in that order too, with Qt 5 and Qt 6 alike; that of a QVariantHash is any. With Qt 6 no
 * two properties of an object have one name: of those read the last one stays.
 *
 * A block of version 1 or 2 becomes one of version 3 or 4 by being written.
 */
PARDEL_EXPORT QDataStream& operator<<(QDataStream& stream, BlockGraphObject* block);

/** Writing may change a block, so that a constant one cannot be written; objects are written with their block only. */
QDataStream& operator<<(QDataStream& stream, const BlockGraphObject* block) = delete;
QDataStream& operator<<(QDataStream& stream, const AbsGraphObject* object) = delete;

/**
 * Reads into a block, which must not be null and should hold no objects: an array that it has is not released.
 *
 * A version-1 stream has no displayMode and gives 3, a version-2 stream gives 0; with a version outside 1 to 4 it is
 * neither read nor changed. The objects end where the stream does, if that comes before their count is reached;
 * objectCount is what was read, and the array, never null, has that many entries. The last object may then be
 * incomplete: it holds the points and properties that came whole, and 0 or nothing in what was not reached. They also
 * end with an object in which the stream fails. Types and color models are not checked. Errors are in the stream's
 * status.
 *
 * Of properties with equal names Qt 5's map holds all, in the stream's order; Qt 6's holds the last, which is what
 * value() gives with either.
 *
 * A value is nothing, a number, a text, bytes, a date, a time or both, a QUrl, a point, size, line, rectangle, polygon
 * or QTransform, a color, font, pen, brush, image (a pixmap in the thread of a QGuiApplication only), or a list, map or
 * hash of such, no deeper than 64 within each other. Any other value sets QDataStream::ReadCorruptData and is the end of
 * the properties, as their names and values are told apart by nothing else. So do streams before QDataStream::Qt_4_0,
 * moments of a zone that is not there or whose name leads out of the folder of zones, gradients with stops outside of 0
 * to 1 or with more than 4096 that do not ascend, and the image for which there is no room.
 *
 * The images of a block, those of brushes with them, have 512 MiB together: 4 bytes for each pixel, 8 where a color has
 * more than 8 bits, and two bytes for each character of texts that came packed. That is one of 11585 x 11585 pixels, with Qt 6 too,
 * whose QImageReader::allocationLimit() is set higher meanwhile. An image whose packed texts (chunks zTXt, iTXt and iCCP,
 * each counted as 1032 times its size, but 8 MB at most) may come to more than 64 MB has no room either. For all else
 * memory is taken for what has come, whatever the counts are.
 *
 * @throw std::bad_array_new_length for a count below 0, the only exception of this library; of the block everything
 *        before the objects is then read, and objects is what it was
 */
PARDEL_EXPORT QDataStream& operator>>(QDataStream& stream, BlockGraphObject* block);
