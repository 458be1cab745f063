#pragma once

#include <Pardel/mobdata.h>
#include <Pardel/pardel_export.h>

#include <QByteArray>
#include <QDateTime>
#include <QList>
#include <QObject>
#include <QString>

/** @file
 * Packets of the tracking terminals, and the lists of sensors in reports.
 */

/**
 * The packets of the tracking terminals: their parser, the codecs of their fields, and the list of sensors that a
 * report collects from them.
 *
 * The members hold no state and are static; an object is needed only where one is wanted as a QObject. None of them
 * throws, logs or keeps what it is given; bad input gives a zero, an invalid value or false, as said at each.
 *
 * Terminals send numbers partly in binary-coded decimal (BCD): one decimal digit a nibble, the tens in the high one.
 */
class PARDEL_EXPORT TUtils : public QObject
{
    Q_OBJECT

public:
    /** An object without state; @p parent may be null and owns it otherwise. */
    explicit TUtils(QObject* parent = nullptr);

    /** What ParceOB1 found in a packet; its result is the sum of those that hold. */
    enum ResultBit : quint32
    {
        StatusSeen = 1,    ///< A status record (12): statusBit is written.
        Tag228Passed = 4,  ///< A record of tag 228 was passed on.
        Tag140Passed = 16, ///< A record of tag 140 was passed on.
        LongForm = 128,    ///< The 545-byte form, which carries neither position nor time; stands alone.
    };

    /**
     * Turns one packet of a terminal into reports.
     *
     * @code
     * MobData report;
     * bool statusBit = false;
     * QList<MobData> further;
     * QList<QByteArray> rawRecords, rawExtra;
     * const quint32 result = TUtils::ParceOB1(packet, report, statusBit, &further, &rawRecords, &rawExtra, true);
     * @endcode
     *
     * The packet is one whole packet, framed by the caller; its checksum is not looked at (see CRC_CCITT) and its bytes
     * are not changed. Nothing outside of it is read, whatever its bytes say, and the time taken grows linearly with
     * its size. docs/packet.md gives it byte by byte.
     *
     * @param packet the packet: more than 12 bytes beginning with A4 D5, or 545 bytes beginning with A4 D6
     * @param data a fresh report; it receives the fields that the packet carries (others keep what they have), and the
     *        sensors are appended to its own
     * @param statusBit bit 0 of the (last) status byte; written only when the packet holds a status record
     * @param reports may be null; receives the additional reports (226) and those of track blocks (231)
     * @param rawRecords may be null; receives the records that the caller processes itself: whole records of the tags
     *        52 and 140, the first three bytes of the tags 228 and 229, the last 541 bytes of the 545-byte form, and,
     *        only when all three lists are given, whole records of the nested tags 227, 230 and 232, which are not
     *        decoded here
     * @param rawExtra may be null; receives nothing from the records that are decoded today
     * @param convert true passes every latitude and longitude through ConvertCoordinates; false stores them as sent
     * @return a sum of ResultBit, which may be 0 too: a decoded packet always leaves the sensors of the types 49, 76
     *         and 106 behind. LongForm goes with MobData::noTime. Of a packet that is not recognised, is cut off (fewer
     *         bytes than two less than its length field says), or whose groups do not add up, 0: of @p data at most
     *         idObject is then set, everything else is left alone.
     *
     * Rules that terminals and the programs that read archives count on:
     * - the object number's high byte is signed: 0x80 and above give a negative idObject;
     * - a record of tag 226 is one byte shorter than its group says;
     * - groups may end at two bytes before the packet's length, at it, or one byte behind it; what the end of the
     *   packet takes away from such a record is not there, and payload bytes that a record is too short for count as 0;
     * - sensors are appended as they come, so that a type may occur twice; of two positions or times the later wins;
     * - a speed byte counts 1.85325 km/h (truncated), a course byte 2 degrees; times are sent unsigned, so that they
     *   are negative from 2038 on;
     * - sensor 56 takes the bits that were sent, which may be those of an infinity or of no number;
     * - tag 15 raises (status 15) all sensors of a type that came before it, those that @p data held already included,
     *   or appends one with value 1;
     * - once a status record has shown bit 1 without bit 2, sensors of the types 97 to 101 above 0 get status 15;
     * - missing sensors of the types 49, 76 and 106 are appended with value 0; only tag 49's own row and records 76 and
     *   106 count as having brought them, tag 15 does not;
     * - a tag-226 report is made only when both @p reports and @p rawRecords are given, one of 231 when @p reports is.
     */
    static quint32 ParceOB1(QByteArray& packet, MobData& data, bool& statusBit, QList<MobData>* reports,
                            QList<QByteArray>* rawRecords, QList<QByteArray>* rawExtra, bool convert);

    /** For replies that the library does not interpret: does nothing, returns false. */
    static bool ParceAnswer(QByteArray& b);

    /**
     * The time in six BCD bytes: day, month, year minus 2000, hour, minute, second.
     *
     * The result is local time with 0 milliseconds. A byte with a nibble above 9 and a missing byte count as 0 (so that
     * fewer than two bytes never make a date); bytes after the sixth are ignored. An impossible date gives an invalid
     * result; beside a possible date an impossible time becomes midnight, as QDateTime has it.
     */
    static QDateTime getDateTime(QByteArray b);

    /**
     * The six bytes that getDateTime reads, of @p t as it stands (its time zone plays no part).
     *
     * The year byte is intToBinDec of year minus 2000 for the years 2000 to 2127 and of 0 for all others, so that it is
     * above 0x99 from 2100 on. The parts of an invalid date are 0, those of an invalid time 0xFF.
     */
    static QByteArray dateTimeToHex(QDateTime t);

    /**
     * One byte: @p v / 10 in the high nibble, @p v modulo 10 in the low one; BCD for 0 to 99.
     *
     * The tens of larger numbers run over unchecked, 100 gives 0xA0; -1 (the hour of an invalid time) gives 0xFF.
     */
    static QByteArray intToBinDec(int v);

    /**
     * Unpacks a position of eight bytes: latitude in bytes 0 to 3, longitude in 4 to 7; each is whole degrees in plain
     * binary (0 to 255) and six BCD digits MMmmmm, minutes with four decimals.
     *
     * A value is degrees times 10 000 000 plus minutes times 100 000, through ConvertCoordinates if @p convert is set
     * (values above 2 147 483 647 go in as negative numbers). A group of six digits that is not decimal, and missing
     * bytes, count as 0. 2 550 000 000 (degrees 0xFF), 1 270 000 000 (degrees 0x7F) and 0xFFFFFFFF mean "no
     * position": with @p keepOnInvalid such a value is not written, and the other one still is. This is judged after
     * the conversion, which turns the first of them into another number, so that with @p convert degrees 0xFF are
     * written.
     */
    static void getCoords(QByteArray b, uint& lat, uint& lon, bool convert, bool keepOnInvalid);

    /**
     * Decimal degrees times 10 000 000, from degrees times 10 000 000 plus minutes times 100 000, truncated toward
     * zero: 554 550 000 (55 degrees 45.5 minutes) gives 557 583 333.
     *
     * Negative numbers convert symmetrically. A result that would leave 32 bits stays at the nearest 32-bit number.
     */
    static int ConvertCoordinates(int v);

    /**
     * Reads a version reply: exactly 8 bytes, "R", a little-endian unsigned 32-bit version, "555".
     *
     * @return true, with @p version written; for any other packet false, with @p version left alone
     */
    static bool GetVersion(QByteArray& b, uint& version);

    /** The display text of a sensor type: the translated "Unknow" for each, as the library holds no table of names. */
    static QString TypeToString(short type);

    /**
     * Puts a sensor into a report by its type: every sensor of that type becomes a copy of @p sensor (all of them, if
     * there are several); if there is none, a copy is appended.
     *
     * Nothing is owned afterwards. A null pointer does nothing. Always returns 0.
     */
    static int lSensorAdd(MobData* data, Sensor* sensor);

    /** Whether the first sensor of type 15 has a status other than 0; its value plays no part. False without one. */
    static bool isAlarm(const MobData& data);
};

/** Whether @p data holds a sensor of this type. */
PARDEL_EXPORT bool SensorExist(MobData data, short type);

/**
 * The external supply's voltage from its code, of which only the low 8 bits count. Steps in volts: 0 up to code 34,
 * then 6 from 35, 7 from 57, 8 from 64, 10 from 71, 12 from 86, 14 from 100, 16 from 114, 18 from 129, 20 from 144, 22
 * from 157, 24 from 173. The steps are those of the terminals, uneven and without a 9.
 */
PARDEL_EXPORT int GetExternalSupplyValue(int code);
