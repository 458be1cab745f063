#include <Pardel/crc_ccitt.h>

#include <QTest>

class TestCrcCcitt : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void publishedValuesSealed();
    void everyLength();
};

void TestCrcCcitt::publishedValuesSealed()
{
    const QByteArray packet("123456789");
    for (const auto& [bytes, zeroInit, checksum] : {
             std::tuple(packet, false, "29b1"),
             {packet, true, "31c3"},
             {QByteArray(), false, "ffff"},
             {QByteArray(), true, "0000"},
         }) {
        QByteArray sealed = bytes;
        Append_CRC_CCITT(sealed, zeroInit);
        QCOMPARE(sealed, bytes + QByteArray::fromHex(checksum));
    }
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

QTEST_APPLESS_MAIN(TestCrcCcitt)
#include "tst_crc_ccitt.moc"
