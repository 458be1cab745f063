#include <Pardel/crc_ccitt.h>

#include <QTest>

#include <utility>

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

    void everyTableEntry()
    {
        // A byte with zeros after it uses one entry; bit by bit, as the definition has it, it has to be the same.
        for (unsigned byte = 0; byte < 256; ++byte) {
            QByteArray data(1, static_cast<char>(byte));
            unsigned checksum = byte << 8;
            for (int bit = 1; bit <= 16 * 8; ++bit) {
                checksum = ((checksum << 1) & 0xFFFF) ^ (checksum & 0x8000 ? 0x1021 : 0);
                if (bit % 8 != 0)
                    continue;
                QCOMPARE(CRC_CCITT(data, true), static_cast<quint16>(checksum));
                data.append('\0');
            }
        }
    }

    void everyLength()
    {
        QByteArray data;
        for (int size = 0; size <= 80; ++size) {
            for (const bool zeroInit : {false, true}) {
                unsigned checksum = zeroInit ? 0x0000 : 0xFFFF; // bit by bit, as the definition has it
                for (const char byte : std::as_const(data)) {
                    checksum ^= static_cast<unsigned>(static_cast<uchar>(byte)) << 8;
                    for (int bit = 0; bit < 8; ++bit)
                        checksum = ((checksum << 1) & 0xFFFF) ^ (checksum & 0x8000 ? 0x1021 : 0);
                }
                QCOMPARE(CRC_CCITT(data, zeroInit), static_cast<quint16>(checksum));
            }
            data.append(static_cast<char>(size * 151 + 255));
        }
    }
};

QTEST_APPLESS_MAIN(TestCrcCcitt)
#include "tst_crc_ccitt.moc"
