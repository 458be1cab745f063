#include "hexlines.h"

#include "reporttext.h"
#include "testfiles.h"

namespace {

/// What is found in a text that comes in pieces of this size, as hexlines.txt describes it.
QByteArray framed(const QByteArray& text, int pieceSize)
{
    QByteArrayList found;
    HexLines lines(false);
    const auto ask = [&] {
        for (PacketFramer::Frame frame; lines.next(frame);)
            found += frameText(frame);
    };
    for (int place = 0; place < text.size(); place += pieceSize) {
        lines.feed(QByteArray(text.constData() + place, qMin(pieceSize, text.size() - place)));
        if (place % 2 == 0)
            ask();
    }
    lines.finish();
    ask();
    return lines.pendingBytes() == 0 ? found.join(' ') : "bytes are pending";
}

} // namespace

class TestHexLines : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void captures_data() { addTableRows("hexlines.txt"); }

    void captures()
    {
        const QByteArray text = cell("text");
        for (int pieceSize = 1; pieceSize <= text.size() + 1; ++pieceSize)
            QCOMPARE(framed(text, pieceSize), cell("found"));
    }

    void linesAreBounded()
    {
        const QByteArray largest(2 << 20, '0');
        QCOMPARE(framed(largest + "\n" + largest + "00\n01", 1 << 16), "1!" + largest + " 2-2097154 3!01");
    }
};

QTEST_APPLESS_MAIN(TestHexLines)
#include "tst_hexlines.moc"
