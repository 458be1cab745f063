#include "fuzz.h"

#include <Pardel/packetframer.h>

namespace {

/// The frames as text, of input in pieces of this size, with a pause before each place that the pauses name.
QByteArray framesOf(const QByteArray& input, int pieceSize, int pause, bool zeroInit)
{
    PacketFramer framer(zeroInit);
    PacketFramer::Frame frame;
    QByteArray text;
    qint64 settled = 0;
    const auto takeAll = [&] {
        while (framer.next(frame)) {
            expect(frame.offset == settled && frame.size > 0, "the frames cover the input without a gap");
            settled += frame.size;
            text += QByteArray::number(frame.kind) + ':' + QByteArray::number(frame.size) + ' ';
        }
    };
    const auto size = static_cast<int>(input.size());
    for (int place = 0; place < size;) {
        if (place == pause)
            framer.pause();
        int count = qMin(pieceSize, size - place);
        if (place < pause)
            count = qMin(count, pause - place);
        framer.feed(input.mid(place, count));
        place += count;
        takeAll();
        expect(settled + framer.pendingBytes() == place, "what is not told is pending");
    }
    framer.finish();
    takeAll();
    expect(settled == size, "in the end everything is told");
    return text;
}

} // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const unsigned choice = takeByte(data, size);
    const int pause = static_cast<int>(takeByte(data, size) * 4);
    const int pieceSize = 1 + static_cast<int>(takeByte(data, size));
    const QByteArray input = bytesOf(data, size);
    const QByteArray whole = framesOf(input, 1 << 20, pause, choice & 1);
    expect(framesOf(input, pieceSize, pause, choice & 1) == whole, "pieces make no difference");
    return 0;
}
