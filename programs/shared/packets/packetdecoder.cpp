#include "packetdecoder.h"

#include <utility>

DecodeCounts& DecodeCounts::operator+=(const DecodeCounts& other)
{
    packets += other.packets;
    rawOnly += other.rawOnly;
    reports += other.reports;
    badChecksums += other.badChecksums;
    rejected += other.rejected;
    skippedBytes += other.skippedBytes;
    return *this;
}

PacketDecoder::PacketDecoder(CaptureFramer::Form form, const DecodeSettings& settings, DecodeCounts& counts)
    : m_settings(settings), m_counts(counts), m_framer(form, settings.checksumFromZero)
{}

void PacketDecoder::feed(const QByteArray& piece)
{
    m_framer.feed(piece);
    m_exhausted = false;
}

void PacketDecoder::pause()
{
    m_framer.pause();
    m_exhausted = false;
}

void PacketDecoder::finish()
{
    m_framer.finish();
    m_exhausted = false;
}

bool PacketDecoder::nextPacket()
{
    m_reports.clear();
    m_taken = 0;
    do {
        m_exhausted = !m_framer.next(m_frame);
        if (m_exhausted)
            return false;
        ++m_found;
    } while (!handle());
    return true;
}

bool PacketDecoder::ready()
{
    while (betweenPackets()) {
        if (!nextPacket())
            return false;
    }
    return true;
}

MobData PacketDecoder::take()
{
    ++m_counts.reports;
    return std::move(m_reports[m_taken++]);
}

/// @return whether it is a packet that is good or of the 545-byte form
bool PacketDecoder::handle()
{
    m_badBytes += m_frame.size;
    if (m_frame.kind == PacketFramer::Frame::Skipped) {
        m_counts.skippedBytes += m_frame.size;
        return false;
    }
    DecodedPacket decoded = decodePacket(m_frame, m_settings);
    switch (decoded.verdict(m_settings)) {
    case Verdict::Damaged: ++m_counts.badChecksums; return false;
    case Verdict::Rejected: ++m_counts.rejected; return false;
    case Verdict::RawOnly: ++m_counts.rawOnly; return true;
    case Verdict::Good: break;
    }
    m_badBytes = 0;
    ++m_counts.packets;
    m_object = decoded.report.idObject;
    m_packetTime = decoded.report.timeUnix;
    m_reports = std::move(decoded.reports);
    m_reports.append(MobData()); // Qt 5's lists take no element over
    m_reports.last() = std::move(decoded.report);
    return true;
}
