#pragma once

struct DecodedPacket;

/** A form in which decoded packets are written. Those that are made hold some of the text, up to a size, until flush(). */
class PacketWriter
{
public:
    virtual ~PacketWriter() = default;

    virtual void write(const DecodedPacket& packet) = 0;
    /** Hands everything written so far to the output. */
    virtual void flush() = 0;
};
