#pragma once

#include <Pardel/pardel_export.h>

#include <QByteArray>
#include <QtGlobal>

#include <memory>

/**
 * Cuts the bytes of a terminal, a file or a line into packets, and finds the next good packet behind damage.
 *
 * @code
 * PacketFramer framer;
 * PacketFramer::Frame frame;
 * framer.feed(socket.readAll());
 * while (framer.next(frame)) {
 *     if (frame.kind == PacketFramer::Frame::Packet)
 *         handle(frame.toByteArray());
 * }
 * @endcode
 *
 * A start is A4 D5 with a total length, little-endian in the bytes 5 and 6 behind it, from 13 to the largest packet, or
 * A4 D6, which begins 545 bytes. What is no start is skipped up to the next one. Of a start whose bytes are all there:
 *
 * - A4 D5 whose checksum (CRC_CCITT over all but the last two bytes, which hold it, high byte first) matches is a
 *   packet.
 * - Where it does not match, something in it is damaged, perhaps its length. If one of the later starts inside its
 *   bytes is an A4 D5 that is whole, even beyond the end of these bytes, and whose checksum matches, the bytes before
 *   the first such one are skipped. One that is not whole yet is waited for. If there is none, it is a damaged packet
 *   of the length that it announces.
 * - A4 D6 has no checksum. It is a packet where a start (its two bytes) follows it directly, or the end of the input,
 *   or a pause that finds it next to be settled; otherwise only if no good packet begins inside its bytes, as above.
 *
 * A start whose bytes are not all there waits for them: a damaged length would swallow up to 64 KiB. Who reads a live
 * link tells by pause() that nothing more has come for a while; by then the first good A4 D5 packet anywhere behind the
 * start that waits counts. From a start that is not whole, all up to that packet is skipped; a whole one in which
 * another waits is taken as it is, unless that packet begins inside its bytes. Without such a packet it goes on
 * waiting. At the end of the input the same holds, but what would wait on is settled: of a start that is not whole the
 * two bytes are skipped, a whole one is taken.
 *
 * What is found depends on the bytes and on where pause() and finish() were called among them, never on the pieces in
 * which they came. The work is linear in the bytes whatever they are (with a logarithm of 64 KiB at pauses): a checksum
 * inside bytes that have been summed up once follows from sums over their prefixes. Held are the bytes that are not
 * settled, no more than two largest packets, with up to some 1.5 MB about them where they are made to cost most, and
 * those fed and not asked for yet.
 *
 * Used by one thread at a time.
 */
class PARDEL_EXPORT PacketFramer
{
public:
    /** What has been found next in the input. */
    struct Frame
    {
        /** What it is. */
        enum Kind
        {
            Packet,  ///< A packet, whose checksum matches if it begins with A4 D5.
            Damaged, ///< A packet of the announced length whose checksum does not match.
            Skipped, ///< Bytes that are in no packet: all of them between two packets, or before the end, in one run.
        };

        Kind kind = Skipped;         ///< Says what the rest is about.
        qint64 offset = 0;           ///< Of its first byte, counted from the first byte that was fed.
        qint64 size = 0;             ///< Bytes.
        const char* bytes = nullptr; ///< Null if skipped; belongs to the framer, until its next non-const call.

        /** A copy of the bytes; empty if skipped. */
        QByteArray toByteArray() const { return bytes ? QByteArray(bytes, static_cast<int>(size)) : QByteArray(); }
    };

    /** The largest total length that a packet can announce, in bytes. */
    static constexpr int maximumPacketSize = 65535;

    /** @param zeroInit where the checksum's register starts: 0x0000 if true, else 0xFFFF, as for CRC_CCITT */
    explicit PacketFramer(bool zeroInit = false);
    ~PacketFramer();
    Q_DISABLE_COPY(PacketFramer)

    /**
     * Takes an A4 D5 that announces more bytes for no start. Bounds what waits for a damaged length; the form of 545
     * bytes is not meant by it. At first maximumPacketSize; brought into the range from 13 to that. To be set before
     * the first feed().
     */
    void setLargestPacket(int size);

    /**
     * The next bytes. They are shared, not copied, if everything before them is settled; so those of
     * QByteArray::fromRawData have to last until none of them is pending.
     */
    void feed(const QByteArray& bytes);
    /** Nothing more has come for a while, at this place of the input. */
    void pause();
    /** The input ends at this place. What is fed afterwards is another one, whose offsets count on. */
    void finish();

    /** Finds what comes next. @return false, with @p frame unchanged, if more has to come to tell */
    bool next(Frame& frame);

    /** Bytes that were fed and that next() has not told of: those that wait, and the run skipped before them. */
    qint64 pendingBytes() const;

private:
    class Q_DECL_HIDDEN Private;
    const std::unique_ptr<Private> d;
};
