#include <Pardel/packetframer.h>

#include "reporttext.h"
#include "testfiles.h"

#include <Pardel/crc_ccitt.h>

#include <QElapsedTimer>
#include <QtEndian>

#include <random>

namespace {

using Frame = PacketFramer::Frame;

/// Bytes, and the places in them at which nothing comes for a while.
struct Input
{
    QByteArray bytes;
    QList<int> pauses;
};

int sizeOf(const QByteArray& bytes)
{
    return static_cast<int>(bytes.size());
}

/// What a framer finds when the input comes in pieces of these sizes, in turn, and is asked after each or at last; ";"
/// stands before what is found by the end alone.
QByteArray framed(const Input& input, QList<int> pieceSizes, bool askAlways)
{
    PacketFramer framer;
    QByteArrayList found;
    qint64 told = 0;
    const auto ask = [&] {
        for (Frame frame; framer.next(frame); told += frame.size)
            found += frameText(frame);
    };
    int fed = 0;
    QList<int> pauses = input.pauses;
    while (fed < input.bytes.size() || !pauses.isEmpty()) {
        const int end = pauses.isEmpty() ? sizeOf(input.bytes) : pauses.constFirst();
        if (fed == end) {
            framer.pause();
            pauses.removeFirst();
        } else {
            const int size = qMin(pieceSizes.constFirst(), end - fed);
            pieceSizes += pieceSizes.takeFirst();
            framer.feed(QByteArray(input.bytes.constData() + fed, size)); // a copy, of which nothing lies behind
            fed += size;
        }
        if (askAlways)
            ask();
        if (askAlways && told + framer.pendingBytes() != fed)
            return "told " + QByteArray::number(told) + ", pending " + QByteArray::number(framer.pendingBytes());
    }
    ask();
    found += ";";
    framer.finish();
    ask();
    if (found.constLast() == ";")
        found.removeLast();
    return found.join(' ');
}

/// What a framer finds in bytes that a pause follows.
QByteArray foundBy(PacketFramer& framer, const QByteArray& bytes)
{
    QByteArrayList found;
    framer.feed(bytes);
    framer.pause();
    for (Frame frame; framer.next(frame);)
        found += frameText(frame);
    return found.join(' ');
}

/// The rules once more, as they are told: slow, and without a thought of pieces.
class Model
{
public:
    explicit Model(const Input& input) : m_bytes(input.bytes), m_stops(input.pauses) { m_stops += sizeOf(input.bytes); }

    QByteArray framed()
    {
        while (!m_stops.isEmpty()) {
            m_limit = m_stops.constFirst();
            if (!step())
                m_stops.removeFirst();
        }
        tellSkipped();
        return m_found.join(' ');
    }

private:
    bool isStart(int place, char form) const
    {
        return place + 1 < m_limit && m_bytes[place] == '\xA4' && m_bytes[place + 1] == form;
    }
    /// 0 where no start of that form is, or its size is not there yet.
    int sizeAt(int place) const
    {
        if (isStart(place, '\xD6'))
            return 545;
        if (!isStart(place, '\xD5') || place + 7 > m_limit)
            return 0;
        const int size = qFromLittleEndian<quint16>(m_bytes.constData() + place + 5);
        return size < 13 ? 0 : size;
    }
    bool isWhole(int place) const { return sizeAt(place) > 0 && place + sizeAt(place) <= m_limit; }
    bool isGood(int place) const
    {
        return isStart(place, '\xD5') && isWhole(place) && CRC_CCITT(m_bytes.mid(place, sizeAt(place)), false) == 0;
    }
    /// Whether more bytes can make it a good packet.
    bool mayBecomeGood(int place) const
    {
        if (m_bytes[place] != '\xA4' || isStart(place, '\xD6') || isWhole(place))
            return false;
        return place + 1 == m_limit || (isStart(place, '\xD5') && (place + 7 > m_limit || sizeAt(place) > 0));
    }
    void tellSkipped()
    {
        if (m_skipped > 0)
            m_found += QByteArray::number(m_place - m_skipped) + '-' + QByteArray::number(m_skipped);
        m_skipped = 0;
    }
    bool skip(int size)
    {
        m_skipped += size;
        m_place += size;
        return true;
    }
    bool take(int size, char mark)
    {
        tellSkipped();
        m_found += QByteArray::number(m_place) + mark + m_bytes.mid(m_place, size).toHex();
        m_place += size;
        return true;
    }

    /// @return whether something is settled
    bool step()
    {
        const bool ended = m_stops.size() == 1;
        if (m_place == m_limit)
            return false;
        const bool maybeStart = m_bytes[m_place] == '\xA4' && m_place + 1 == m_limit;
        const bool unknown = isStart(m_place, '\xD5') && m_place + 7 > m_limit;
        if (!maybeStart && !unknown && sizeAt(m_place) == 0)
            return skip(1);
        const int size = isWhole(m_place) ? sizeAt(m_place) : 0;
        const int behind = m_place + size;
        const bool isLong = isStart(m_place, '\xD6');
        if (isGood(m_place))
            return take(size, ':');
        if (size > 0 && isLong && (behind == m_limit || isStart(behind, '\xD5') || isStart(behind, '\xD6')))
            return take(size, ':');
        bool undecided = size == 0 || (isLong && behind + 1 == m_limit && m_bytes[behind] == '\xA4');
        for (int place = m_place + 1; place < behind && !undecided; ++place) {
            if (isGood(place))
                return skip(place - m_place);
            undecided = mayBecomeGood(place);
        }
        if (!undecided)
            return take(size, isLong ? ':' : '!');
        // Nothing comes behind the stop for now.
        int good = m_place + 1;
        while (good < m_limit && !isGood(good))
            ++good;
        if (good < m_limit && (size == 0 || good < behind))
            return skip(good - m_place);
        if (size > 0 && (good < m_limit || ended))
            return take(size, isLong ? ':' : '!');
        return ended && skip(qMin(2, m_limit - m_place));
    }

    const QByteArray m_bytes;
    QList<int> m_stops;
    QByteArrayList m_found;
    int m_limit = 0;
    int m_place = 0;
    int m_skipped = 0;
};

QByteArray sealed(const QByteArray& payload, bool zeroInit = false)
{
    QByteArray packet = QByteArray::fromHex("a4d50000110000") + payload;
    qToLittleEndian(static_cast<quint16>(packet.size() + 2), packet.data() + 5);
    Append_CRC_CCITT(packet, zeroInit);
    return packet;
}

/// Texts of packetframer.txt.
QByteArray expanded(const QByteArray& text)
{
    QByteArrayList words;
    for (const QByteArray& word : text.simplified().split(' ')) {
        const QByteArrayList parts = word.split('*');
        QByteArray bytes = parts[0];
        const QByteArray inner = sealed(QByteArray::fromHex("01024123"));
        bytes.replace('R', sealed(inner + QByteArray(4, '\0')).toHex());
        bytes.replace('P', inner.toHex());
        bytes.replace('Q', "a4d50000120d00010241234da3");
        bytes.replace('X', "a4d50000120d00010241239522");
        bytes.replace('F', "a4d5000011ffff");
        bytes.replace('L', "a4d6" + QByteArray(543 * 2, '5'));
        words += bytes.repeated(parts.size() > 1 ? parts[1].toInt() : 1);
    }
    return words.join();
}

Input inputOf(const QByteArray& text)
{
    Input input;
    for (const QByteArray& part : expanded(text).split('!')) {
        input.bytes += QByteArray::fromHex(part);
        input.pauses += sizeOf(input.bytes);
    }
    input.pauses.removeLast();
    return input;
}

} // namespace

class TestPacketFramer : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void rules_data() { addTableRows("packetframer.txt"); }

    void rules()
    {
        const Input input = inputOf(cell("input"));
        QByteArrayList expected;
        for (const QByteArray& word : cell("found").simplified().split(' ')) {
            const bool begins = word.contains(':') || word.contains('!') || word.contains('-') || word == ";";
            const auto mark = word.indexOf(word.contains('!') ? '!' : ':') + 1;
            if (begins || expected.isEmpty())
                expected += word.left(mark) + (word.contains('-') ? word.mid(mark) : expanded(word.mid(mark)));
            else
                expected.last() += expanded(word);
        }
        QCOMPARE(Model(input).framed(), expected.join(' ').replace("; ", ""));
        for (int size = 1; size <= input.bytes.size() + 1; ++size) {
            for (const bool askAlways : {true, false})
                QCOMPARE(framed(input, {size}, askAlways), expected.join(' '));
        }
    }

    void agreesWithTheModel()
    {
        std::random_device device;
        const unsigned seed = device();
        std::mt19937 random(seed);
        const auto draw = [&](int below) { return static_cast<int>(random() % static_cast<unsigned>(below)); };
        for (int round = 0; round < 400; ++round) {
            Input input;
            for (int words = draw(30); words >= 0; --words) {
                QByteArray packet = sealed(QByteArray(4 + draw(20), '\2'));
                switch (draw(9)) {
                case 0: packet[draw(sizeOf(packet))] = static_cast<char>(draw(256)); break;
                case 1: packet[5] = static_cast<char>(draw(256)); break;
                case 2: packet = "\xA4\xD6" + QByteArray(draw(2) == 0 ? 543 : draw(560), '\3'); break;
                case 3: packet = sealed(packet + sealed("nest")); break;
                case 4: packet = packet.left(draw(sizeOf(packet))); break;
                case 5: packet = "\xA4\xD5" + packet.mid(2, 3) + static_cast<char>(draw(200)) + '\0'; break;
                case 6: input.pauses += sizeOf(input.bytes); break;
                default: break;
                }
                input.bytes += packet;
            }
            QList<int> pieceSizes;
            while (pieceSizes.size() < 100)
                pieceSizes += 1 + draw(40);
            const QByteArray found = framed(input, pieceSizes, draw(2) == 0).replace("; ", "");
            QVERIFY2(found == Model(input).framed(),
                     qPrintable(QStringLiteral("seed %1 round %2").arg(seed).arg(round)));
        }
    }

    /// By sums, of which the exponent of the shift has two bytes.
    void goodOfAnySizeInside()
    {
        for (const int size : {13, 255, 256, 257, 511, 512, 768, 32767, 32768, 65279, 65535}) {
            QByteArray packet = sealed(QByteArray(size - 9, '\2'));
            const QByteArray start = QByteArray::fromHex("a4d5000011ffff");
            PacketFramer framer;
            QCOMPARE(foundBy(framer, start + packet), "0-7 7:" + packet.toHex());
        }
    }

    /// Some 50 ms; without sums or with starts looked at again for each pause, minutes.
    void hostileStartsCostLittle()
    {
        const QByteArray piece = QByteArray::fromHex("a4d5000011ffff").repeated(143);
        PacketFramer framer;
        QElapsedTimer timer;
        timer.start();
        for (int fed = 0; fed < 1'000'000 && timer.elapsed() < 10'000; fed += sizeOf(piece)) {
            framer.feed(piece);
            framer.pause();
            for (Frame frame; framer.next(frame);)
                ;
        }
        QVERIFY2(timer.elapsed() < 10'000, qPrintable(QString::number(timer.elapsed())));
    }

    void settings()
    {
        PacketFramer framer(true);
        framer.setLargestPacket(100);
        const QByteArray packet = sealed("good", true);
        const QByteArray tooLarge = sealed(QByteArray(92, '\2'), true);
        QCOMPARE(foundBy(framer, tooLarge + packet), "0-101 101:" + packet.toHex());
    }
};

QTEST_APPLESS_MAIN(TestPacketFramer)
#include "tst_packetframer.moc"
