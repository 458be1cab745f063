#pragma once

#include <Pardel/mobdata.h>

#include <QByteArray>
#include <QList>

/** How packets are decoded. */
struct DecodeSettings
{
    bool convert = false;          ///< Coordinates are packed degrees and minutes: make them decimal degrees.
    bool checksumFromZero = false; ///< The checksum's register starts at 0 instead of 0xFFFF.
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

    bool hasStatus() const { return (result & 1U) != 0; }
    /** An accepted packet always leaves sensors behind, but for the 545-byte form, whose result is not 0. */
    bool accepted() const { return result != 0 || !report.sensors.isEmpty(); }
};

/** Decodes one packet of @p size bytes. The bytes are not needed afterwards. */
DecodedPacket decodePacket(qint64 place, const char* bytes, int size, const DecodeSettings& settings);
