#include <Pardel/energorecords.h>

#include "streamchecks.h"

namespace {

EnergoObject sampleObject()
{
    EnergoObject object;
    std::tie(object.id, object.type, object.number, object.status) = std::tuple(0x01020304, 0x05060708, -2, 9);
    object.name = QStringLiteral("n");
    object.cards = {{1, text("a"), text("b"), 2, "x", 3}, {}};
    return object;
}

constexpr char objectHex[] = "01020304 00000002 006e 00000002"
                             "00000002 0061 00000002 0062 00000002 00000001 78 0003 00000001"
                             "ffffffff ffffffff 00000000 ffffffff 0000 00000000"
                             "05060708 fffffffe 09";
constexpr char valuesHex[] = "3ff0000000000000 4000000000000000 4008000000000000 4010000000000000 4014000000000000";

} // namespace

class TestEnergoRecords : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void goldenBytes()
    {
        streamsAs("01020304 fe 00000001 61 00000001 62 00000001 63", ZCounterProperty{0x01020304, -2, "a", "b", "c"});
        streamsAs(QByteArray("01020304 05060708 00000002 006e fe") + valuesHex,
                  ZData{0x01020304, 0x05060708, text("n"), -2, 1, 2, 3, 4, 5});
        streamsAs(QByteArray("00000002 0061 00000002 0062 00000002 0063") + valuesHex,
                  ZProp{text("a"), text("b"), text("c"), 1, 2, 3, 4, 5});
        streamsAs("00000002 006e 3ff0000000000000 4000000000000000 00 01 00",
                  ZNebalans_Data{text("n"), 1, 2, false, true, false});
        streamsAs("00000000 3ff0000000000000 4000000000000000 01 00 01", // other flags, so that none hides another
                  ZNebalans_Data{text(""), 1, 2, true, false, true});
        streamsAs("01020304 07 00000001 32 00000001 34 00000001 33 00000001 37 00000001 35",
                  ZRDCCCard{0x01020304, "2", "3", "4", "5", 7, "7"});
        streamsAs(objectHex, sampleObject(), sampleObject());
    }

    void packsItself()
    {
        const QByteArray bytes = QByteArray::fromHex(objectHex);
        QCOMPARE(sampleObject().data(), bytes);
        for (int size = 0; size <= bytes.size(); ++size) {
            EnergoObject read = sampleObject();
            read.LoadFromByteArray(bytes.left(size));
            QCOMPARE(read.id, size < 4 ? 0 : 0x01020304);
            QCOMPARE(read.name, size < 10 ? QString() : text("n"));
            QCOMPARE(read.cards.size(), size < 14 + 27 ? 0 : size < 14 + 27 + 22 ? 1 : 2);
            QCOMPARE(read.number, size < bytes.size() - 1 ? 0 : -2);
        }
        EnergoObject read;
        read.LoadFromByteArray(bytes + "more");
        QCOMPARE(std::as_const(read).data(), bytes);
    }
};

QTEST_APPLESS_MAIN(TestEnergoRecords)
#include "tst_energorecords.moc"
