#pragma once

#include <Pardel/pardel_export.h>

#include <QByteArray>
#include <QList>

#include <cstddef>

QT_BEGIN_NAMESPACE
class QDataStream;
QT_END_NAMESPACE

/** @file
 * Reports of tracked objects with the readings of their sensors, and their data streams.
 */

/**
 * One reading of one sensor of a tracked object: 12 bytes in memory, laid out as the raw block in which MobData streams
 * its sensors.
 *
 * | Offset | Size | Content                                          |
 * |--------|------|--------------------------------------------------|
 * | 0      | 1    | number, signed                                   |
 * | 1      | 1    | reserved                                         |
 * | 2      | 2    | type, signed (in a stream always little-endian)  |
 * | 4      | 4    | value, IEEE single (in a stream little-endian)   |
 * | 8      | 1    | status, signed                                   |
 * | 9      | 3    | reserved                                         |
 */
struct Sensor
{
    qint8 number = -1;  ///< Position of the sensor within its report; -1 where the terminal gives none.
    qint16 type = -1;   ///< Type code, by which the sensors of a report are told apart; 15 is the alarm.
    float value = 0.0F; ///< The reading, in the unit of its type.
    qint8 status = 0;   ///< Status of the reading; the alarm (type 15) is raised while it is not 0.
};

static_assert(sizeof(Sensor) == 12 && offsetof(Sensor, type) == 2 && offsetof(Sensor, value) == 4 &&
                  offsetof(Sensor, status) == 8,
              "Sensor is the image of its raw stream block");

/**
 * The report of one tracked object at one moment: who, where, how fast, when, and the readings of its sensors.
 *
 * A fresh report is all zeros and holds no sensors.
 */
struct PARDEL_EXPORT MobData
{
    static constexpr qint32 noTime = -1; ///< As timeUnix: the report has no time.

    qint32 idObject = 0;   ///< Number of the object (of its terminal); may be negative.
    qint32 latitude = 0;   ///< Decimal degrees times 10 000 000, north positive.
    qint32 longitude = 0;  ///< Decimal degrees times 10 000 000, east positive.
    qint32 speed = 0;      ///< Whole km/h.
    qint32 course = 0;     ///< Direction of travel in degrees.
    qint32 timeUnix = 0;   ///< Unix seconds, UTC, or noTime.
    QList<Sensor> sensors; ///< One for each type when filled through TUtils::lSensorAdd; the packet parser may repeat.

    /**
     * Fingerprint of the report without its time, for telling whether an object's state has changed.
     *
     * The 16 raw bytes (not hex) of the MD5 digest over latitude, longitude, idObject, speed and course as big-endian
     * 32-bit integers, followed by every sensor in list order as number (1 byte), status (1), type (2, big-endian) and
     * value (4, IEEE single, big-endian). Two reports that differ only in timeUnix hash alike; the order of the sensors
     * counts.
     */
    QByteArray hash() const;
    /** The same. Applications link by this form's name; the one above is for reports that are const. */
    QByteArray hash();
};

/** @name Stream form of a sensor on its own
 * @{ */
/**
 * number (8 bits), status (8), type (16), value (float, as wide as the stream's version and precision make it: 8 bytes
 * from QDataStream::Qt_4_6 on at double precision, else 4). The status comes second, unlike in memory.
 */
PARDEL_EXPORT QDataStream& operator<<(QDataStream& stream, const Sensor& sensor);
PARDEL_EXPORT QDataStream& operator>>(QDataStream& stream, Sensor& sensor);
/** @} */

/**
 * Writes a report: idObject, latitude, longitude, speed, course, timeUnix and the number of sensors as seven 32-bit
 * integers in the stream's byte order (28 bytes), then each sensor as its raw block of 12 bytes.
 *
 * The blocks bypass the stream's byte order: they are little-endian in every stream, as all programs of the system
 * write them so. Reserved bytes are written as 0.
 */
PARDEL_EXPORT QDataStream& operator<<(QDataStream& stream, const MobData& report);

/**
 * Reads a report in the form above.
 *
 * The sensors read are appended to those that @p report already holds: hand in a fresh record. A count of 0
 * or less reads none. A stream that ends inside the blocks still appends one sensor for each counted block, in which
 * the bytes that are missing keep the contents of the block before (of a fresh Sensor in the first), and the stream's
 * status is QDataStream::ReadPastEnd; integers that it does not reach are 0. No more than 65,536 sensors are appended
 * after the last whole block, whatever the count is and however the stream has failed. Reserved bytes are ignored.
 */
PARDEL_EXPORT QDataStream& operator>>(QDataStream& stream, MobData& report);
