#include <Pardel/crc_ccitt.h>

#include <QTest>

class TestCrcCcitt : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void publishedValuesSealed()
    {
        for (const auto& [bytes, zeroInit, checksum] : {
                 std::tuple(QByteArray("123456789"), false, "29b1"),
                 {"123456789", true, "31c3"},
                 {"", false, "ffff"},
                 {"", true, "0000"},
             }) {
            QByteArray sealed = bytes;
            Append_CRC_CCITT(sealed, zeroInit);
            QCOMPARE(sealed, bytes + QByteArray::fromHex(checksum));
        }
    }

    void everyLength()
    {
        // A sealed packet's own checksum is 0 only if the tables agree: sealing moves each byte by two.
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
};

QTEST_APPLESS_MAIN(TestCrcCcitt)
#include "tst_crc_ccitt.moc"
