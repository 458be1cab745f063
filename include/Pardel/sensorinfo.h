#pragma once

#include <Pardel/pardel_export.h>

#include <QByteArray>
#include <QList>
#include <QString>

QT_BEGIN_NAMESPACE
class QDataStream;
QT_END_NAMESPACE

/** @file
 * Descriptions of sensors and messages that travel in the applications' streams. The library reads no meaning into
 * their fields: it carries them.
 *
 * Numbers and texts follow the settings of the stream: byte order (big-endian by default), width of a float (8 bytes
 * from QDataStream::Qt_4_6 on at double precision, else 4), a QString or QByteArray as a 32-bit length in bytes (all
 * ones for a null one) and the data, a QString's in UTF-16. A stream that ends early leaves what was not reached at 0
 * or empty and has the status QDataStream::ReadPastEnd.
 */

/** Description of one kind of sensor. */
struct SensorInfo
{
    /// The application's values; 0 or empty in a new record.
    /// @{
    QString name;
    QString caption;
    qint32 id = 0;
    qint16 type = 0;
    qint16 number = 0;
    QList<QString> valueNames;
    /// @}
};

/** A SensorInfo with a unit and data of the application's own. */
struct SensorInfoX : SensorInfo
{
    /// The application's values; 0 or empty in a new record.
    /// @{
    QString unit;
    QByteArray extra;
    /// @}
};

/** A sensor's value in short. */
struct New_Sens
{
    /// The application's values; 0 or empty in a new record.
    /// @{
    float value = 0.0F;
    qint32 type = 0;
    /// @}
};

/** Properties of one message. */
struct MessageProp
{
    /// The application's values; 0 or empty in a new record.
    /// @{
    qint32 id = 0;
    QString text;
    qint32 flags = 0;
    /// @}
};

/** @name Stream form of SensorInfo
 * @{ */
/**
 * Number of valueNames (32 bits) and each of them, caption, name, id (32), type (16), number (16). The order is not
 * that of the fields. The reader replaces the list, with an empty one if the stream ends inside it; it reserves nothing
 * for the count, so that a damaged one cannot fill the memory.
 */
PARDEL_EXPORT QDataStream& operator<<(QDataStream& stream, const SensorInfo& info);
PARDEL_EXPORT QDataStream& operator>>(QDataStream& stream, SensorInfo& info);
/** @} */

/** @name Stream form of SensorInfoX
 * @{ */
/** The SensorInfo, unit, extra. */
PARDEL_EXPORT QDataStream& operator<<(QDataStream& stream, const SensorInfoX& info);
PARDEL_EXPORT QDataStream& operator>>(QDataStream& stream, SensorInfoX& info);
/** @} */

/** @name Stream form of New_Sens
 * @{ */
/** value (float), type (32 bits). */
PARDEL_EXPORT QDataStream& operator<<(QDataStream& stream, const New_Sens& sensor);
PARDEL_EXPORT QDataStream& operator>>(QDataStream& stream, New_Sens& sensor);
/** @} */

/** @name Stream form of MessageProp
 * @{ */
/** id (32 bits), text, flags (32). */
PARDEL_EXPORT QDataStream& operator<<(QDataStream& stream, const MessageProp& properties);
PARDEL_EXPORT QDataStream& operator>>(QDataStream& stream, MessageProp& properties);
/** @} */
