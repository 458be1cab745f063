#pragma once

#include "hexlines.h"

#include <Pardel/packetframer.h>

/**
 * How long a live source is waited for before that is a pause in the sense of PacketFramer, ms: since something was
 * found last, as a terminal that sends every second is never silent for as long.
 */
constexpr int pauseMilliseconds = 2000;

/** Finds the packets of a capture in either of its forms: a PacketFramer or HexLines, and used as these are. */
class CaptureFramer
{
public:
    enum Form
    {
        Raw, ///< Packets back to back.
        Hex, ///< A packet a line in hex digits.
    };

    CaptureFramer(Form form, bool zeroInit) : m_form(form), m_packets(zeroInit), m_lines(zeroInit) {}

    void feed(const QByteArray& bytes) { m_form == Raw ? m_packets.feed(bytes) : m_lines.feed(bytes); }
    void pause() { m_form == Raw ? m_packets.pause() : m_lines.pause(); }
    void finish() { m_form == Raw ? m_packets.finish() : m_lines.finish(); }
    bool next(PacketFramer::Frame& frame) { return m_form == Raw ? m_packets.next(frame) : m_lines.next(frame); }
    qint64 pendingBytes() const { return m_form == Raw ? m_packets.pendingBytes() : m_lines.pendingBytes(); }

private:
    const Form m_form;
    PacketFramer m_packets;
    HexLines m_lines;
};
