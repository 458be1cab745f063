#include <Pardel/crc_ccitt.h>

#include <QTest>

namespace {

/// Bit by bit, as the definition has it.
quint16 slowChecksum(const QByteArray& data, bool zeroInit)
{
    unsigned checksum = zeroInit ? 0 : 0xFFFF;
    for (const char byte : data) {
        for (int bit = 7; bit >= 0; --bit) {
            const unsigned out = (checksum >> 15) ^ ((static_cast<unsigned>(byte) >> bit) & 1U);
            checksum = ((checksum << 1) & 0xFFFF) ^ (out ? 0x1021 : 0);
        }
    }
    return static_cast<quint16>(checksum);
}

} // namespace

class TestCrcCcitt : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void publishedValues();
    void everyLength();
    void seals();
};

void TestCrcCcitt::publishedValues()
{
    QCOMPARE(CRC_CCITT("123456789", false), quint16(0x29B1));
    QCOMPARE(CRC_CCITT("123456789", true), quint16(0x31C3));
    QCOMPARE(CRC_CCITT(QByteArray(), false), quint16(0xFFFF));
    QCOMPARE(CRC_CCITT(QByteArray(), true), quint16(0x0000));
}

void TestCrcCcitt::everyLength()
{
    QByteArray data;
    for (int size = 0; size <= 80; ++size) {
        for (const bool zeroInit : {false, true})
            QCOMPARE(CRC_CCITT(data, zeroInit), slowChecksum(data, zeroInit));
        data.append(static_cast<char>(size * 151 + 255));
    }
}

void TestCrcCcitt::seals()
{
    QByteArray empty;
    Append_CRC_CCITT(empty, false);
    QCOMPARE(empty.toHex(), QByteArray("ffff"));
    QByteArray packet("123456789");
    Append_CRC_CCITT(packet, false);
    QCOMPARE(packet, QByteArray("123456789\x29\xB1"));
    packet.chop(2);
    Append_CRC_CCITT(packet, true);
    QCOMPARE(CRC_CCITT(packet, true), quint16(0));
}

QTEST_APPLESS_MAIN(TestCrcCcitt)
#include "tst_crc_ccitt.moc"
