#include <Pardel/crc_ccitt.h>

#include <QTest>

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
    // A sealed packet's own checksum is 0 only if every table agrees with the others: sealing moves each byte by two.
    QByteArray data;
    for (int size = 0; size <= 80; ++size) {
        for (const bool zeroInit : {false, true}) {
            QByteArray sealed = data;
            Append_CRC_CCITT(sealed, zeroInit);
            QCOMPARE(CRC_CCITT(sealed, zeroInit), quint16(0));
        }
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
}

QTEST_APPLESS_MAIN(TestCrcCcitt)
#include "tst_crc_ccitt.moc"
