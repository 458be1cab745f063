#pragma once

#include "decodedpacket.h"
#include "framing.h"

#include <Pardel/mobdata.h>

#include <QByteArray>
#include <QList>

#include <deque>
#include <memory>

/** What came out of the bytes of one or several sources. */
struct DecodeCounts
{
    qint64 packets = 0;      ///< Good ones.
    qint64 reports = 0;      ///< Made of them; those of the 545-byte form make none.
    qint64 badChecksums = 0; ///< Packets whose checksum does not match.
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
 * time, and the track since its last packet. A packet whose checksum does not match, and one that cannot be decoded,
 * are counted and make no report; nor does the 545-byte form, which has no checksum and holds nothing for a report. A
 * packet with more further reports than it has room for their tag, position and time is rejected, as it is made to
 * flood: of empty records it could hold a report in every byte.
 *
 * It holds the bytes fed until their packets are decoded, beside them at most one unfinished packet (64 KiB), and the
 * reports of a single packet: feed small pieces, and only while it is not ready.
 */
class PacketDecoder : private FrameSink
{
public:
    enum class Form
    {
        Raw, ///< Packets back to back.
        Hex, ///< A packet a line in hex digits.
    };

    /** @p counts are added to, by several decoders if that is wanted, and have to outlive this. */
    PacketDecoder(Form form, const DecodeSettings& settings, DecodeCounts& counts);

    void feed(const QByteArray& piece);
    /** The source ends here: what is left of an unfinished packet is skipped, or holds smaller ones. */
    void finish();

    /** Whether there is a report to take; decodes on until there is, at most all that was fed. */
    bool ready();
    /** The next report; only after ready(). */
    MobData take();
    /** The time (Unix seconds) of the packet to which the report to be taken belongs; 0 or -1 where it has none. */
    qint32 packetTime() const { return m_packetTime; }

    /** Whether a packet's reports have all been taken, and the next packet's have not yet been made. */
    bool betweenPackets() const { return m_taken == m_reports.size(); }
    /** Packets that wait to be decoded. */
    int waiting() const { return static_cast<int>(m_frames.size()); }
    /** Bytes since the last good packet (of those decoded so far), an unfinished one included. */
    qint64 bytesSinceGoodPacket() const { return m_badBytes + m_skippedBefore + m_framer->untold(); }
    /** Bytes of the unfinished packet, and those skipped right before it. */
    qint64 unfinishedBytes() const { return m_framer->untold(); }

private:
    struct Frame
    {
        QByteArray bytes;
        qint64 skippedBefore; // bytes
    };

    void packet(qint64 place, const char* bytes, int size) override;
    void skipped(qint64 place, qint64 size) override;
    void decode(const Frame& frame);

    const DecodeSettings m_settings;
    DecodeCounts& m_counts;
    std::unique_ptr<Framer> m_framer;
    std::deque<Frame> m_frames;
    qint64 m_skippedBefore = 0; // bytes, the next packet
    qint64 m_badBytes = 0;      // since the last good packet
    QList<MobData> m_reports;   // of the packet decoded last, in the order of taking
    int m_taken = 0;            // of them
    qint32 m_packetTime = 0;
};
