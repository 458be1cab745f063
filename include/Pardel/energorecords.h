#pragma once

#include <Pardel/apprecords.h>
#include <Pardel/pardel_export.h>

#include <QByteArray>
#include <QList>
#include <QString>

QT_BEGIN_NAMESPACE
class QDataStream;
QT_END_NAMESPACE

/** @file
 * Records of the energy-metering applications. The library reads no meaning into their fields: it carries them.
 *
 * Numbers and texts follow the settings of the stream (a double is 4 bytes at single precision); nothing is put around
 * them. Errors are in the stream's status: a record that ends early has 0 or nothing in what was not reached.
 * docs/streams.md gives the bytes.
 */

/** Properties of a counter. Streamed in the order of its members. */
struct ZCounterProperty
{
    /// The application's values; 0 or empty in a new record.
    /// @{
    qint32 id = 0;
    qint8 type = 0;
    QByteArray data1;
    QByteArray data2;
    QByteArray data3;
    /// @}
};

/** Metered data. Streamed in the order of its members. */
struct ZData
{
    /// The application's values; 0 or empty in a new record.
    /// @{
    qint32 id = 0;
    qint32 number = 0;
    QString name;
    qint8 type = 0;
    double value1 = 0;
    double value2 = 0;
    double value3 = 0;
    double value4 = 0;
    double value5 = 0;
    /// @}
};

/** A property with five measured values. Streamed in the order of its members. */
struct ZProp
{
    /// The application's values; 0 or empty in a new record.
    /// @{
    QString text1;
    QString text2;
    QString text3;
    double value1 = 0;
    double value2 = 0;
    double value3 = 0;
    double value4 = 0;
    double value5 = 0;
    /// @}
};

/** Result of an imbalance calculation. Streamed in the order of its members. */
struct ZNebalans_Data
{
    /// The application's values; 0 or empty in a new record.
    /// @{
    QString name;
    double value1 = 0;
    double value2 = 0;
    bool flag1 = false;
    bool flag2 = false;
    bool flag3 = false;
    /// @}
};

/** A card of the metering hardware. Streamed in another order than that of its members. */
struct ZRDCCCard
{
    qint32 id = 0;    ///< Streamed first.
    QByteArray data1; ///< Streamed third.
    QByteArray data2; ///< Streamed fifth.
    QByteArray data3; ///< Streamed fourth.
    QByteArray data4; ///< Streamed seventh, the last.
    qint8 type = 0;   ///< Streamed second.
    QByteArray data5; ///< Streamed sixth.
};

/** An energy-metering object with its cards. Streamed in another order than that of its members. */
struct PARDEL_EXPORT EnergoObject
{
    /** The four numbers of a new object are whatever its memory held: set them before they are used. */
    EnergoObject();

    qint32 id;                  ///< Streamed first.
    qint32 type;                ///< Streamed fourth.
    qint32 number;              ///< Streamed fifth.
    qint8 status;               ///< Streamed sixth, the last.
    QString name;               ///< Streamed second.
    QList<CardsProperty> cards; ///< Streamed third.

    /** The object's stream form in version 11 (QDataStream::Qt_4_5), big-endian. Both forms give the same bytes. */
    QByteArray data() const;
    QByteArray data(); ///< The same; applications link by this form's name.

    /**
     * Takes everything from bytes that data() made. Bytes that are too few leave 0 or nothing in what they do not
     * reach, and the cards that came whole; bytes behind the object are ignored. Nothing is reported.
     */
    void LoadFromByteArray(QByteArray bytes);
};

/** @name Stream form of ZCounterProperty
 * @{ */
/** id (32 bits), type (8), data1, data2, data3. */
PARDEL_EXPORT QDataStream& operator<<(QDataStream& stream, const ZCounterProperty& property);
PARDEL_EXPORT QDataStream& operator>>(QDataStream& stream, ZCounterProperty& property);
/** @} */

/** @name Stream form of ZData
 * @{ */
/** id (32 bits), number (32), name, type (8), value1 to value5 (double). */
PARDEL_EXPORT QDataStream& operator<<(QDataStream& stream, const ZData& data);
PARDEL_EXPORT QDataStream& operator>>(QDataStream& stream, ZData& data);
/** @} */

/** @name Stream form of ZProp
 * @{ */
/** text1 to text3, value1 to value5 (double). */
PARDEL_EXPORT QDataStream& operator<<(QDataStream& stream, const ZProp& property);
PARDEL_EXPORT QDataStream& operator>>(QDataStream& stream, ZProp& property);
/** @} */

/** @name Stream form of ZNebalans_Data
 * @{ */
/** name, value1, value2 (double), flag1 to flag3 (8 bits each: 0 or 1; any other byte reads as true). */
PARDEL_EXPORT QDataStream& operator<<(QDataStream& stream, const ZNebalans_Data& imbalance);
PARDEL_EXPORT QDataStream& operator>>(QDataStream& stream, ZNebalans_Data& imbalance);
/** @} */

/** @name Stream form of ZRDCCCard
 * @{ */
/** id (32 bits), type (8), data1, data3, data2, data5, data4. */
PARDEL_EXPORT QDataStream& operator<<(QDataStream& stream, const ZRDCCCard& card);
PARDEL_EXPORT QDataStream& operator>>(QDataStream& stream, ZRDCCCard& card);
/** @} */

/** @name Stream form of EnergoObject
 * @{ */
/**
 * id (32 bits), name, cards (count, 32, unsigned, and each card), type (32), number (32), status (8). The reader
 * replaces the cards.
 */
PARDEL_EXPORT QDataStream& operator<<(QDataStream& stream, const EnergoObject& object);
PARDEL_EXPORT QDataStream& operator>>(QDataStream& stream, EnergoObject& object);
/** @} */
