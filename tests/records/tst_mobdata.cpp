#include <Pardel/mobdata.h>

#include "reporttext.h"
#include "streamchecks.h"

#include <QBuffer>

namespace {

/// Every field has another value, so that a swapped pair shows.
const MobData sampleReport = {
    -2, 0x01020304, 0x05060708, 90, 258, 0x5F5E1000, {makeSensor(0x0102, 1.5F, 3, 7), makeSensor(-2, -0.25F, -1)}};

const QByteArray sampleFields = "fffffffe 01020304 05060708 0000005a 00000102 5f5e1000";
const QByteArray sampleBlocks = "070002010000c03f03000000 ff00feff000080beff000000";
const QByteArray sampleHex = sampleFields + "00000002" + sampleBlocks;

} // namespace

class TestMobData : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void goldenBytes()
    {
        streamsAs("0703 0102 3ff8000000000000", makeSensor(0x0102, 1.5F, 3, 7));
        streamsAs(sampleHex, sampleReport);
        QByteArray bytes;
        QDataStream stream(&bytes, QIODevice::WriteOnly);
        stream.setByteOrder(QDataStream::LittleEndian); // which the blocks of sensors have in any case
        stream << sampleReport;
        QVERIFY(bytes.startsWith(QByteArray::fromHex("feffffff 04030201")));
        QVERIFY(bytes.endsWith(QByteArray::fromHex(sampleBlocks)));
    }

    void appendsWhatItReads()
    {
        MobData before;
        before.sensors = {makeSensor(5)};
        QByteArray reserved = sampleHex; // bytes, which may hold anything
        reserved.replace("0700", "0755").replace("03000000", "03000055");
        QCOMPARE(reportText(readFrom(reserved, before)),
                 QByteArray("-2 16909060,84281096 90/258 @1600000000 5=0 7#258=1.5:3 -2=-0.25:-1"));
    }

    void badCounts()
    {
        // None below 1, and no more than these after the last whole block.
        for (const auto& [count, sensors] : {std::pair("00000000", 0), {"80000000", 0}, {"7fffffff", 2 + 65536}}) {
            QDataStream stream(QByteArray::fromHex(sampleFields + count + sampleBlocks));
            MobData report;
            stream >> report;
            QCOMPARE(report.sensors.size(), sensors);
            QCOMPARE(stream.atEnd(), sensors > 0);
        }
    }

    void failingDevice()
    {
        // It gives what it has, then nothing, and is never at its end.
        struct Broken : QBuffer
        {
            bool atEnd() const override { return false; }
            qint64 readData(char* data, qint64 size) override
            {
                const qint64 got = QBuffer::readData(data, size);
                return got > 0 ? got : -1;
            }
        } device;
        device.setData(QByteArray::fromHex(sampleFields + "7fffffff" + sampleBlocks));
        device.open(QIODevice::ReadOnly | QIODevice::Unbuffered);
        QDataStream stream(&device);
        MobData report;
        stream >> report;
        QCOMPARE(report.sensors.size(), 2 + 65536);
        QCOMPARE(stream.status(), QDataStream::ReadPastEnd);
    }

    void manySensors()
    {
        // More than are written or read in one piece.
        MobData report = sampleReport;
        for (qint16 type = 0; type < 1000; ++type)
            report.sensors.append(makeSensor(type, type));
        const QByteArray bytes = written(report);
        QCOMPARE(bytes.size(), 28 + 12 * 1002);
        QCOMPARE(reportText(readFrom<MobData>(bytes.toHex())), reportText(report));
        for (int whole = 1; whole < 1002; ++whole) { // the last whole one stands for those that are missing
            const auto cut = readFrom<MobData>(bytes.left(28 + 12 * whole).toHex());
            QCOMPARE(cut.sensors.constLast().type, report.sensors.at(whole - 1).type);
        }
    }

    void streamEndingEarly()
    {
        // What the two counted blocks become in a stream of this size.
        const QMap<int, QByteArray> expected = {
            {28, "-1=0 -1=0"}, {29, "7#-1=0 7#-1=0"}, {32, "7#258=0 7#258=0"}, {40, "7#258=1.5:3 7#258=1.5:3"},
            {44, "-2=1.5:3"},  {48, "-2=-0.25:3"},
        };
        const QByteArray sampleBytes = QByteArray::fromHex(sampleHex);
        for (int size = 0; size < sampleBytes.size(); ++size) {
            const auto report = readFrom<MobData>(sampleBytes.left(size).toHex());
            QCOMPARE(report.sensors.size(), size < 28 ? 0 : 2);
            QVERIFY2(sensorsText(report.sensors).endsWith(expected.value(size)), sensorsText(report.sensors));
        }
    }

    void hashIsTheDigestOfItsContent()
    {
        // MD5 of 01020304 05060708 fffffffe 0000005a 00000102, 07 03 0102 3fc00000, ff ff fffe be800000
        MobData report = sampleReport;
        const QByteArray hash = QByteArray::fromHex("e4785e7ae8572135105eabddcb6e1d7b");
        QCOMPARE(report.hash(), hash);
        report.timeUnix += 60;
        QCOMPARE(std::as_const(report).hash(), hash);
        report.sensors.swapItemsAt(0, 1);
        QVERIFY(report.hash() != hash);
    }
};

QTEST_APPLESS_MAIN(TestMobData)
#include "tst_mobdata.moc"
