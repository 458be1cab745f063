#pragma once

#include "captureframer.h"
#include "decodedpacket.h"

#include <Pardel/mobdata.h>

#include <QByteArray>
#include <QList>

/** What came out of the bytes of one or several sources. */
struct DecodeCounts
{
    qint64 packets = 0; ///< Good ones: their checksum matches and they make reports.
    qint64 rawOnly = 0; ///< Of the 545-byte form, which has no checksum and makes no report; not among the packets.
    qint64 reports = 0; ///< Taken of the good ones.
    qint64 badChecksums = 0; ///< Damaged packets: their checksum does not match.
    qint64 rejected = 0;     ///< Packets with a matching checksum that cannot be decoded, or hold reports of nothing.
    qint64 skippedBytes = 0; ///< In no packet. Of hex captures: the bytes of bad lines.

    DecodeCounts& operator+=(const DecodeCounts& other);
};

/**
 * Turns the bytes of one source, a connection or a capture, into reports, one at a time, so that whoever takes them can
 * stop at any moment and go on later.
 *
 * @code
 * decoder.feed(piece);
 * while (decoder.ready()) {
 *     MobData report = decoder.take();
 *     hub.OnDataRecieved(report);
 * }
 * @endcode
 *
 * A packet's further reports come before its own, which is the newest: they are what the terminal could not send in
 * time, and the track since its last packet. What DecodedPacket::verdict does not call good is counted and makes no
 * report. Who wants the packets too asks nextPacket() whenever betweenPackets() instead of ready().
 *
 * It holds the bytes fed until their packets are decoded, beside them at most what a PacketFramer does, and the reports
 * of a single packet: feed small pieces, and only when it is exhausted.
 */
class PacketDecoder
{
public:
    /** @p counts are added to, by several decoders if that is wanted, and have to outlive this. */
    PacketDecoder(CaptureFramer::Form form, const DecodeSettings& settings, DecodeCounts& counts);

    void feed(const QByteArray& piece);
    /** Nothing more has come for a while: what waits for the rest of a damaged packet need not wait for it. */
    void pause();
    /** The source ends here: what is left of an unfinished packet is skipped, or holds smaller ones. */
    void finish();

    /** Decodes on to the next packet that is good or of the 545-byte form; only betweenPackets(). @return false if none */
    bool nextPacket();
    /** A copy of the bytes of that packet; only until the decoder is fed. */
    QByteArray packet() const { return m_frame.toByteArray(); }
    /** Whether it is of the 545-byte form. */
    bool isRawOnly() const { return m_reports.isEmpty(); }
    /** Its object, if it is good. */
    qint32 object() const { return m_object; }

    /** Whether there is a report to take; decodes on until there is, at most all that was fed. */
    bool ready();
    /** The next report; only after ready(). */
    MobData take();
    /** The time (Unix seconds) of the packet to which the report to be taken belongs; 0 or -1 where it has none. */
    qint32 packetTime() const { return m_packetTime; }

    /** Whether a packet's reports have all been taken, and the next packet's have not yet been made. */
    bool betweenPackets() const { return m_taken == m_reports.size(); }
    /** Packets and skipped runs found so far: while it stands still, something waits for its rest. */
    qint64 found() const { return m_found; }
    /** Whether ready() has made of all that was fed what can be made of it. */
    bool exhausted() const { return m_exhausted; }
    /**
     * Bytes since the last good packet of what has been decoded, those of the 545-byte form among them, as anyone can
     * fill it; when it is exhausted, with what waits for more.
     */
    qint64 bytesSinceGoodPacket() const { return m_badBytes + (m_exhausted ? m_framer.pendingBytes() : 0); }
    /** Bytes that are not decoded: when it is exhausted, those of an unfinished packet and those skipped before it. */
    qint64 pendingBytes() const { return m_framer.pendingBytes(); }

private:
    bool handle();

    const DecodeSettings m_settings;
    DecodeCounts& m_counts;
    CaptureFramer m_framer;
    bool m_exhausted = true;
    qint64 m_found = 0;
    qint64 m_badBytes = 0;       // since the last good packet
    PacketFramer::Frame m_frame; // found last
    QList<MobData> m_reports;    // of the packet decoded last, in the order of taking
    int m_taken = 0;             // of them
    qint32 m_object = 0;
    qint32 m_packetTime = 0;
};
