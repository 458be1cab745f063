#include <Pardel/sensorinfo.h>

#include "streamchecks.h"

namespace {

const SensorInfoX sampleInfo = {
    {QStringLiteral("n"), QStringLiteral("c"), 0x01020304, 0x0506, -2, {QStringLiteral("a"), QString()}},
    QStringLiteral("u"),
    "x",
};

constexpr char infoHex[] = "00000002 00000002 0061 ffffffff 00000002 0063 00000002 006e 01020304 0506 fffe";

} // namespace

class TestSensorInfo : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void goldenBytes()
    {
        SensorInfoX used;
        used.valueNames = {QStringLiteral("old")};
        streamsAs(infoHex + QByteArray("00000002 0075 00000001 78"), sampleInfo, used);
        streamsAs("3ff8000000000000 00000007", New_Sens{1.5F, 7});
        streamsAs("00000001 00000002 0074 fffffffe", MessageProp{1, QStringLiteral("t"), -2});
    }

    void streamEndingEarly()
    {
        const QByteArray bytes = QByteArray::fromHex(infoHex);
        for (int size = 0; size < bytes.size(); ++size) {
            const auto info = readFrom<SensorInfo>(bytes.left(size).toHex(), sampleInfo);
            QCOMPARE(info.valueNames.size(), size < 14 ? 0 : 2);
            QCOMPARE(info.number, qint16(0));
        }
        // A count that nobody vouches for reserves nothing.
        QVERIFY(readFrom<SensorInfo>("7fffffff 00000002 0061").valueNames.isEmpty());
        // An error of earlier reads does not shift what is read.
        QDataStream marked(bytes);
        marked.setStatus(QDataStream::ReadCorruptData);
        SensorInfo info;
        marked >> info;
        QCOMPARE(info.number, qint16(-2));
        QCOMPARE(marked.status(), QDataStream::ReadCorruptData);
    }
};

QTEST_APPLESS_MAIN(TestSensorInfo)
#include "tst_sensorinfo.moc"
