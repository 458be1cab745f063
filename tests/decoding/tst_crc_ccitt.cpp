#include <Pardel/crc_ccitt.h>

#include <QTest>

namespace {

/// As the definition has it.
quint16 bitByBit(const QByteArray& data, bool zeroInit)
{
    unsigned checksum = zeroInit ? 0x0000 : 0xFFFF;
    for (const char byte : data) {
        checksum ^= static_cast<unsigned>(static_cast<uchar>(byte)) << 8;
        for (int bit = 0; bit < 8; ++bit)
            checksum = ((checksum << 1) & 0xFFFF) ^ (checksum & 0x8000 ? 0x1021 : 0);
    }
    return static_cast<quint16>(checksum);
}

} // namespace

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

    void pieces()
    {
        QByteArray data;
        for (int i = 0; i < 50; ++i)
            data.append(static_cast<char>(i * 151));
        const auto size = static_cast<std::size_t>(data.size());
        for (std::size_t cut = 0; cut <= size; ++cut) {
            const quint16 first = CRC_CCITT(data.constData(), cut, 0xFFFF);
            QCOMPARE(CRC_CCITT(data.constData() + cut, size - cut, first), CRC_CCITT(data, false));
        }
        QCOMPARE(CRC_CCITT(nullptr, 0, 0x1234), quint16(0x1234));
    }

    void everyLengthAndTableEntry()
    {
        // In every place of every length every byte occurs, and with it every entry of the tables.
        for (int size = 0; size <= 80; ++size) {
            for (int first = 0; first < 256; ++first) {
                QByteArray data;
                while (data.size() < size)
                    data.append(static_cast<char>(first + data.size() * 151));
                for (const bool zeroInit : {false, true})
                    QCOMPARE(CRC_CCITT(data, zeroInit), bitByBit(data, zeroInit));
            }
        }
    }
};

QTEST_APPLESS_MAIN(TestCrcCcitt)
#include "tst_crc_ccitt.moc"
