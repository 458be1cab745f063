#include "packetdecoder.h"

#include <utility>

DecodeCounts& DecodeCounts::operator+=(const DecodeCounts& other)
{
    packets += other.packets;
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

bool PacketDecoder::ready()
{
    while (betweenPackets()) {
        m_reports.clear();
        m_taken = 0;
        PacketFramer::Frame frame;
        m_exhausted = !m_framer.next(frame);
        if (m_exhausted)
            return false;
        ++m_found;
        handle(frame);
    }
    return true;
}

MobData PacketDecoder::take()
{
    return std::move(m_reports[m_taken++]);
}

void PacketDecoder::handle(const PacketFramer::Frame& frame)
{
    if (frame.kind == PacketFramer::Frame::Skipped) {
        m_counts.skippedBytes += frame.size;
        m_badBytes += frame.size;
        return;
    }
    DecodedPacket decoded = decodePacket(frame, m_settings);
    const Verdict verdict = decoded.verdict(m_settings);
    if (verdict == Verdict::Damaged || verdict == Verdict::Rejected) {
        ++(verdict == Verdict::Damaged ? m_counts.badChecksums : m_counts.rejected);
        m_badBytes += frame.size;
        return;
    }
    m_badBytes = 0;
    ++m_counts.packets;
    if (verdict == Verdict::RawOnly)
        return;
    m_packetTime = decoded.report.timeUnix;
    m_reports = std::move(decoded.reports);
    m_reports.append(std::move(decoded.report));
    m_counts.reports += m_reports.size();
}
