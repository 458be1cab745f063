#include "framing.h"

#include "testfiles.h"

#include <QTest>

#include <type_traits>

namespace {

/// What a framer finds, as framing.txt describes it.
class Record : public FrameSink
{
public:
    void packet(qint64 place, const char* bytes, int size) override
    {
        told += size;
        found += QByteArray::number(place) + ':' + QByteArray(bytes, size).toHex();
    }
    void skipped(qint64 place, qint64 size) override
    {
        told += size;
        found += QByteArray::number(place) + '-' + QByteArray::number(size);
    }

    QByteArrayList found;
    qint64 told = 0; // bytes
};

template <typename FramerType>
QByteArray framed(const QByteArray& capture, int pieceSize)
{
    Record record;
    FramerType framer(record);
    for (int i = 0; i < capture.size(); i += pieceSize) {
        // A copy, so that nothing can be read behind the piece.
        const QByteArray piece = capture.mid(i, pieceSize);
        framer.feed(piece.constData(), static_cast<std::size_t>(piece.size()));
    }
    const qint64 untold = framer.untold();
    const qint64 told = record.told;
    framer.finish();
    if (std::is_same_v<FramerType, RawFramer> && told + untold != capture.size())
        return "bytes told " + QByteArray::number(told) + ", untold " + QByteArray::number(untold);
    return record.found.join(' ');
}

} // namespace

class TestFraming : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void captures_data() { addTableRows("framing.txt"); }

    void captures()
    {
        const bool raw = cell("form") == "raw";
        QByteArray capture = cell("capture");
        QByteArray found = cell("found");
        for (QByteArray* text : {&capture, &found}) {
            text->replace('P', "a4d50000110d0001024123cccc").replace('Q', "a4d50000120d0001024123cccc");
            text->replace('L', "a4d6" + QByteArray(543 * 2, '5'));
        }
        if (raw)
            capture = QByteArray::fromHex(capture);
        for (int pieceSize = 1; pieceSize <= capture.size() + 1; ++pieceSize)
            QCOMPARE(raw ? framed<RawFramer>(capture, pieceSize) : framed<HexFramer>(capture, pieceSize), found);
    }

    void hexLinesAreBounded()
    {
        const QByteArray largest(2 << 20, '0');
        QCOMPARE(framed<HexFramer>(largest + "\n" + largest + "00\n01", 1 << 16), "1:" + largest + " 2-2097154 3:01");
    }
};

QTEST_APPLESS_MAIN(TestFraming)
#include "tst_framing.moc"
