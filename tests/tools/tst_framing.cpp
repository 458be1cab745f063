#include "framing.h"

#include <QTest>

namespace {

/// What a framer finds, in one line: "place:hex" for a packet, "place-size" for what is skipped.
class Record : public FrameSink
{
public:
    void packet(qint64 place, const char* bytes, int size) override
    {
        found += QByteArray::number(place) + ':' + QByteArray(bytes, size).toHex();
    }
    void skipped(qint64 place, qint64 size) override
    {
        found += QByteArray::number(place) + '-' + QByteArray::number(size);
    }

    QByteArrayList found;
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
    framer.finish();
    return record.found.join(' ');
}

const QByteArray packetHex = "a4d50000110d0001024123cccc";
const QByteArray otherHex = "a4d50000120d0001024123cccc";

} // namespace

class TestFraming : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void raw_data();
    void raw();
    void hex_data();
    void hex();
    void hexLinesAreBounded();
};

void TestFraming::raw_data()
{
    QTest::addColumn<QByteArray>("capture");
    QTest::addColumn<QByteArray>("found");
    const QByteArray longHex = "a4d6" + QByteArray(543 * 2, '5');
    const auto row = [](const char* name, const QByteArray& hex, const QByteArray& found) {
        QTest::newRow(name) << QByteArray::fromHex(hex) << found;
    };
    row("nothing", "", "");
    row("back to back", packetHex + otherHex, "0:" + packetHex + " 13:" + otherHex);
    row("both forms", longHex + packetHex, "0:" + longHex + " 545:" + packetHex);
    row("noise between", "00a4" + packetHex + "a4a4" + otherHex + "d5a4",
        "0-2 2:" + packetHex + " 15-2 17:" + otherHex + " 30-2");
    row("length below 13", "a4d5000011 0c00 010141cccc" + packetHex, "0-12 12:" + packetHex);
    row("a packet inside a bad one", "a4d5000011 0c00" + packetHex, "0-7 7:" + packetHex);
    row("cut off by the end", packetHex + otherHex.left(24), "0:" + packetHex + " 13-12");
    row("header cut off", packetHex + "a4d5000011", "0:" + packetHex + " 13-5");
    row("long form cut off, a packet inside it", "a4d6" + packetHex, "0-2 2:" + packetHex);
    row("too long, two packets inside it", "a4d5000011 ffff" + packetHex + "00" + otherHex,
        "0-7 7:" + packetHex + " 20-1 21:" + otherHex);
}

void TestFraming::raw()
{
    QFETCH(QByteArray, capture);
    for (int pieceSize = 1; pieceSize <= capture.size() + 1; ++pieceSize)
        QTEST(framed<RawFramer>(capture, pieceSize), "found");
}

void TestFraming::hex_data()
{
    QTest::addColumn<QByteArray>("capture");
    QTest::addColumn<QByteArray>("found");
    QTest::newRow("nothing") << QByteArray() << QByteArray();
    QTest::newRow("lines") << QByteArray("a4D5\n00\n") << QByteArray("1:a4d5 2:00");
    QTest::newRow("no line end at the end") << QByteArray("\n\nff") << QByteArray("3:ff");
    QTest::newRow("white space") << QByteArray(" a 4\tD5\r\n \t\n01") << QByteArray("1:a4d5 3:01");
    QTest::newRow("comments") << QByteArray("# zz\n\n #01\n01\n") << QByteArray("4:01");
    QTest::newRow("half a byte") << QByteArray("012\n34\n") << QByteArray("1-3 2:34");
    QTest::newRow("not hex") << QByteArray("01 0g 02\n01#\n03") << QByteArray("1-8 2-3 3:03");
    QTest::newRow("zero byte") << QByteArray("01\0\n02", 6) << QByteArray("1-3 2:02");
}

void TestFraming::hex()
{
    QFETCH(QByteArray, capture);
    for (int pieceSize = 1; pieceSize <= capture.size() + 1; ++pieceSize)
        QTEST(framed<HexFramer>(capture, pieceSize), "found");
}

void TestFraming::hexLinesAreBounded()
{
    const QByteArray largest(2 << 20, '0');
    QCOMPARE(framed<HexFramer>(largest + "\n" + largest + "00\n01", 1 << 16), "1:" + largest + " 2-2097154 3:01");
}

QTEST_APPLESS_MAIN(TestFraming)
#include "tst_framing.moc"
