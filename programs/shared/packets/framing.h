#pragma once

#include <QByteArray>
#include <QtGlobal>

#include <cstddef>
#include <string>

/** Receives what a Framer finds. A place is a byte offset in raw captures, a line number from 1 in hex ones. */
class FrameSink
{
public:
    virtual ~FrameSink() = default;

    /** A packet; the bytes are valid during the call only. */
    virtual void packet(qint64 place, const char* bytes, int size) = 0;
    /** Something that is no packet: a run of bytes (raw) or a line of this many bytes (hex). */
    virtual void skipped(qint64 place, qint64 size) = 0;
};

/**
 * Cuts a capture that arrives in pieces of any size into packets.
 *
 * What it holds back is bounded: a raw packet's 65 535 bytes and one piece, or a hex line's packet.
 */
class Framer
{
public:
    virtual ~Framer() = default;

    virtual void feed(const char* bytes, std::size_t size) = 0;
    /** The capture ends here; tells what is left. */
    virtual void finish() = 0;
    /** Bytes fed that the sink has not heard of: those of a packet still to be completed, and those skipped so far. */
    virtual qint64 untold() const = 0;
};

/**
 * Packets back to back: A4 D5 with the total length at offset 5 (little-endian, at least 13), or A4 D6 and 545 bytes in
 * all.
 *
 * Every other byte is skipped up to the next A4 D5 or A4 D6, and so is a header whose length is below 13 or whose
 * packet the capture's end cuts off. Bytes skipped in a row are told as one run.
 */
class RawFramer : public Framer
{
public:
    explicit RawFramer(FrameSink& sink) : m_sink(sink) {}

    void feed(const char* bytes, std::size_t size) override;
    void finish() override;
    qint64 untold() const override { return m_skippedRun + m_buffer.size(); }

private:
    void cut(bool ended);
    void skip(int size);
    void tellSkipped();

    FrameSink& m_sink;
    QByteArray m_buffer;     // from the first byte on that is neither in a packet nor skipped
    qint64 m_offset = 0;     // of the byte at m_position in the capture
    int m_position = 0;      // in m_buffer, while it is being cut
    qint64 m_skippedRun = 0; // bytes skipped right before m_offset and not told yet
};

/**
 * One packet a line in hex digits; white space is ignored, empty lines and those beginning with # are passed over.
 *
 * A line that is not whole bytes in hex, or more than 1 MiB of them, is skipped.
 */
class HexFramer : public Framer
{
public:
    explicit HexFramer(FrameSink& sink) : m_sink(sink) {}

    void feed(const char* bytes, std::size_t size) override;
    void finish() override;
    qint64 untold() const override { return m_lineSize; }

private:
    void take(char character);
    void endLine();

    FrameSink& m_sink;
    std::string m_packet;
    qint64 m_line = 1;
    qint64 m_lineSize = 0; // bytes, with their white space
    int m_highDigit = -1;  // waits for the low one
    enum class Line
    {
        Blank,
        Packet,
        Comment,
        Bad
    } m_state = Line::Blank;
};
