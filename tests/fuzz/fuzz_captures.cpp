#include "fuzz.h"
#include "packetdecoder.h"

#include <tuple>

namespace {

/// What a capture holds: its reports as text, and what else was in it.
struct Told
{
    QByteArray reports;
    DecodeCounts counts;

    Told(const QByteArray& capture, int pieceSize, CaptureFramer::Form form, const DecodeSettings& settings)
    {
        PacketDecoder decoder(form, settings, counts);
        const auto takeAll = [&] {
            while (decoder.ready()) {
                const MobData report = decoder.take();
                reports += report.hash().toHex() + ' ' + QByteArray::number(report.timeUnix) + '\n';
            }
        };
        const auto size = static_cast<int>(capture.size());
        for (int place = 0; place < size; place += pieceSize) {
            decoder.feed(capture.mid(place, pieceSize));
            takeAll();
            expect(decoder.pendingBytes() <= size, "no more is pending than was fed");
        }
        decoder.finish();
        takeAll();
        expect(decoder.pendingBytes() == 0 && decoder.exhausted(), "in the end everything is told");
    }

    auto numbers() const
    {
        return std::tie(reports, counts.packets, counts.rawOnly, counts.reports, counts.badChecksums, counts.rejected,
                        counts.skippedBytes);
    }
};

} // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const unsigned choice = takeByte(data, size);
    const CaptureFramer::Form form = choice & 1 ? CaptureFramer::Raw : CaptureFramer::Hex;
    DecodeSettings settings;
    settings.convert = choice & 2;
    settings.checksumFromZero = choice & 4;
    settings.acceptDamaged = choice & 8;
    const int pieceSize = 1 + static_cast<int>(takeByte(data, size));
    const QByteArray capture = bytesOf(data, size);
    const Told whole(capture, 1 << 20, form, settings);
    expect(whole.counts.skippedBytes >= 0 && whole.counts.skippedBytes <= capture.size(), "no byte is told twice");
    expect(whole.numbers() == Told(capture, pieceSize, form, settings).numbers(), "pieces make no difference");
    return 0;
}
