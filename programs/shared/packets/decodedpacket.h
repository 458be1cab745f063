#pragma once

#include <Pardel/mobdata.h>
#include <Pardel/packetframer.h>

#include <QByteArray>
#include <QList>

/** How packets are decoded. */
struct DecodeSettings
{
    bool convert = false;          ///< Coordinates are packed degrees and minutes: make them decimal degrees.
    bool checksumFromZero = false; ///< The checksum's register starts at 0 instead of 0xFFFF.
    bool acceptDamaged = false;    ///< The link has no checksum: packets are judged by their structure alone.
};

/** What is to be done with a packet. */
enum class Verdict
{
    Good,     ///< Its reports count.
    RawOnly,  ///< The 545-byte form: it holds nothing for a report.
    Damaged,  ///< Its checksum does not match.
    Rejected, ///< It cannot be decoded, or is made to flood: it holds more reports than it has room for.
};

/** A packet and all that the library makes of it when it is given all lists. */
struct DecodedPacket
{
    qint64 place = 0; ///< Byte offset or line number in its capture.
    int size = 0;     ///< Bytes.
    quint32 result = 0;
    bool statusBit = false; ///< Means something only if hasStatus().
    bool checksumMatches = false;
    MobData report;
    QList<MobData> reports;
    QList<QByteArray> rawRecords;
    QList<QByteArray> rawExtra;

    bool hasStatus() const;
    bool isLongForm() const;
    /** An accepted packet always leaves sensors behind, but for the 545-byte form, whose result is not 0. */
    bool accepted() const { return result != 0 || !report.sensors.isEmpty(); }

    /** The one rule of all programs that store or announce reports. */
    Verdict verdict(const DecodeSettings& settings) const;
};

/** A frame of bytes that are one packet: damaged if its checksum does not match and it is not of the form without one. */
PacketFramer::Frame frameOf(qint64 place, const QByteArray& packet, bool checksumFromZero);

/** Decodes the packet of a frame that is not skipped. The bytes are not needed afterwards. */
DecodedPacket decodePacket(const PacketFramer::Frame& frame, const DecodeSettings& settings);
