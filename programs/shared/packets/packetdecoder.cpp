#include "packetdecoder.h"

namespace {

constexpr quint32 longFormResult = 128;
constexpr int leastReport = 13; // bytes: tag, position, time

std::unique_ptr<Framer> makeFramer(PacketDecoder::Form form, FrameSink& sink)
{
    if (form == PacketDecoder::Form::Hex)
        return std::make_unique<HexFramer>(sink);
    return std::make_unique<RawFramer>(sink);
}

} // namespace

DecodeCounts& DecodeCounts::operator+=(const DecodeCounts& other)
{
    packets += other.packets;
    reports += other.reports;
    badChecksums += other.badChecksums;
    rejected += other.rejected;
    skippedBytes += other.skippedBytes;
    return *this;
}

PacketDecoder::PacketDecoder(Form form, const DecodeSettings& settings, DecodeCounts& counts)
    : m_settings(settings), m_counts(counts), m_framer(makeFramer(form, *this))
{}

void PacketDecoder::feed(const QByteArray& piece)
{
    m_framer->feed(piece.constData(), static_cast<std::size_t>(piece.size()));
}

void PacketDecoder::finish()
{
    m_framer->finish();
}

bool PacketDecoder::ready()
{
    while (betweenPackets()) {
        m_reports.clear();
        m_taken = 0;
        if (m_frames.empty())
            return false;
        decode(m_frames.front());
        m_frames.pop_front();
    }
    return true;
}

MobData PacketDecoder::take()
{
    return std::move(m_reports[m_taken++]);
}

void PacketDecoder::packet(qint64, const char* bytes, int size)
{
    m_frames.push_back({QByteArray(bytes, size), m_skippedBefore});
    m_skippedBefore = 0;
}

void PacketDecoder::skipped(qint64, qint64 size)
{
    m_counts.skippedBytes += size;
    m_skippedBefore += size;
}

void PacketDecoder::decode(const Frame& frame)
{
    DecodedPacket decoded = decodePacket(0, frame.bytes.constData(), frame.bytes.size(), m_settings);
    const bool longForm = decoded.result == longFormResult;
    const bool plausible = decoded.reports.size() <= decoded.size / leastReport;
    if (!longForm && (!decoded.checksumMatches || !decoded.accepted() || !plausible)) {
        ++(decoded.checksumMatches ? m_counts.rejected : m_counts.badChecksums);
        m_badBytes += frame.skippedBefore + frame.bytes.size();
        return;
    }
    m_badBytes = 0;
    ++m_counts.packets;
    if (longForm)
        return;
    m_packetTime = decoded.report.timeUnix;
    m_reports = std::move(decoded.reports);
    m_reports.append(std::move(decoded.report));
    m_counts.reports += m_reports.size();
}
