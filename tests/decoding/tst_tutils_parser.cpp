#include <Pardel/tutils.h>

#include "reporttext.h"
#include "testfiles.h"

#include <vector>

namespace {

struct Parsed
{
    explicit Parsed(const QByteArray& bytes, bool convert = false, bool status = false) : statusBit(status)
    {
        // Memory of its exact size, so that the sanitizer sees a read behind it, and gone afterwards: results are
        // copies.
        const std::vector<char> memory(bytes.begin(), bytes.end());
        QByteArray packet = QByteArray::fromRawData(memory.data(), bytes.size());
        result = TUtils::ParceOB1(packet, report, statusBit, &reports, &rawRecords, &rawExtra, convert);
        if (packet != bytes || !rawExtra.isEmpty())
            qFatal("the packet was changed, or something was assembled");
    }

    MobData report;
    bool statusBit;
    QList<MobData> reports;
    QList<QByteArray> rawRecords;
    QList<QByteArray> rawExtra;
    quint32 result = 0;
};

/// A packet of object 17 with these groups and two checksum bytes.
QByteArray packetOf(const QByteArray& groups)
{
    QByteArray packet = QByteArray::fromHex("a4d5000011 0000" + groups + "cccc");
    packet[5] = static_cast<char>(packet.size() & 0xFF);
    packet[6] = static_cast<char>(packet.size() >> 8);
    return packet;
}

QByteArray groupOf(const QByteArray& record)
{
    const auto size = QByteArray::fromHex(record).size() + (record.startsWith("e2") ? 1 : 0);
    return "01" + QByteArray(1, static_cast<char>(size)).toHex() + record;
}

/// A packet as packets.txt describes it, without its "c".
QByteArray packetOfCell(const QByteArray& text)
{
    QByteArrayList words = text.mid(1).split(' ');
    if (text.startsWith('P'))
        return QByteArray::fromHex(words.join());
    const bool changed = words.last().startsWith('+') || words.last().startsWith('-');
    const int change = changed ? words.takeLast().toInt() : 0;
    QByteArray packet = packetOf(text.startsWith('R') ? groupOf(words.join()) : words.join());
    packet[5] = static_cast<char>(packet.at(5) + qMax(change, 0));
    return packet.left(packet.size() + qMin(change, 0));
}

QByteArray hexOf(const QList<QByteArray>& list)
{
    QByteArrayList texts;
    for (const QByteArray& bytes : list)
        texts += bytes.toHex();
    return texts.join(' ');
}

} // namespace

class TestTUtilsParser : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void packets_data() { addTableRows("packets.txt"); }

    void packets()
    {
        const bool convert = cell("packet").startsWith('c');
        const Parsed parsed(packetOfCell(cell("packet").mid(convert ? 1 : 0)), convert);
        const QByteArray report = cell("report").isEmpty() ? "0 0,0 0/0 @0" : cell("report");
        QCOMPARE(reportText(parsed.report),
                 QByteArray(report).replace("*", "17 0,0 0/0 @0").replace("~", "49=0 76=0 106=0"));
        QCOMPARE(reportsText(parsed.reports), cell("further reports"));
        QCOMPARE(hexOf(parsed.rawRecords), cell("raw records"));
        QCOMPARE(parsed.result, cell("result").toUInt());
    }

    void statusBitIsWrittenByStatusOnly()
    {
        QVERIFY(Parsed(packetOf("01024123"), false, true).statusBit);
        QVERIFY(!Parsed(packetOf("01020c30"), false, true).statusBit);
        QVERIFY(Parsed(packetOf("01020c31"), false, false).statusBit);
        QVERIFY(!Parsed(packetOf("01020c31 01"), false, false).statusBit); // rejected
    }

    void listsMayBeNull()
    {
        QByteArray packet = packetOf("0403 340102 8c0102 e40102 e50102" + groupOf("e2" + QByteArray(24, '0')) +
                                     groupOf("e7" + QByteArray(44, '0')) + groupOf("e30001"));
        QByteArray longForm = "\xA4\xD6" + QByteArray(543, '1');
        for (int given = 0; given < 8; ++given) {
            MobData report;
            bool statusBit = false;
            QList<MobData> reports;
            QList<QByteArray> raw;
            QList<QByteArray> extra;
            const quint32 result = TUtils::ParceOB1(packet, report, statusBit, given & 1 ? &reports : nullptr,
                                                    given & 2 ? &raw : nullptr, given & 4 ? &extra : nullptr, false);
            QCOMPARE(result, given & 2 ? 20U : 0U);
            QCOMPARE(reports.size(), !(given & 1) ? 0 : given & 2 ? 2 : 1);
            QCOMPARE(raw.size(), given == 7 ? 5 : given & 2 ? 4 : 0);
            QCOMPARE(TUtils::ParceOB1(longForm, report, statusBit, nullptr, nullptr, nullptr, false), 128U);
        }
    }

    void appendsToTheCallersReport()
    {
        QByteArray packet = packetOf("0402 0f03 0f41 4123 0f31");
        MobData report;
        report.latitude = 5;
        report.sensors = {makeSensor(3, 2), makeSensor(-1, 1), makeSensor(321, 1), makeSensor(49, 7)};
        bool statusBit = false;
        TUtils::ParceOB1(packet, report, statusBit, nullptr, nullptr, nullptr, false);
        QCOMPARE(reportText(report),
                 QByteArray("17 5,0 0/0 @0 3=2:15 -1=1 321=1 49=7:15 65=1:15 65=6 49=0 76=0 106=0"));
    }

    void damagedPacketsAreHarmless()
    {
        const QByteArray ones(44, '1');
        const QByteArray whole =
            packetOf(groupOf("0b" + ones.left(28)) + "0602 0c32 0f41 4123 5f0a 6101 4105" + groupOf("32143fc00000") +
                     groupOf("e2" + ones.left(38) + "0302 4123 960102 7501020304") + groupOf("e7" + ones + ones) +
                     "0203 e30001 8c0102 ff01 01");
        for (int size = 0; size < whole.size() - 2; ++size)
            QVERIFY(Parsed(whole.left(size)).report.sensors.isEmpty());
        for (int i = 0; i < whole.size(); ++i) {
            for (int bits = 1; bits < 256; ++bits) {
                QByteArray damaged = whole;
                damaged[i] = static_cast<char>(damaged.at(i) ^ bits);
                const Parsed parsed(damaged, true);
                const bool rejected = parsed.report.sensors.isEmpty();
                QVERIFY(!rejected || (parsed.result == 0 && parsed.reports.isEmpty() && parsed.rawRecords.isEmpty()));
            }
        }
    }
};

QTEST_APPLESS_MAIN(TestTUtilsParser)
#include "tst_tutils_parser.moc"
