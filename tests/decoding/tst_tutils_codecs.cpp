#include <Pardel/tutils.h>

#include <QTest>

#include <limits>

class TestTUtilsCodecs : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void readsTime()
    {
        // Local times: others would end in their offset.
        for (const auto& [hex, time] : {
                 std::pair("311224235958", "2024-12-31T23:59:58.000"),
                 {"010225040506ff", "2025-02-01T04:05:06.000"},
                 {"010225", "2025-02-01T00:00:00.000"},
                 {"01010a1a2bc3", "2000-01-01T00:00:00.000"}, // not decimal: 0
                 {"010225246060", "2025-02-01T00:00:00.000"}, // an impossible time: midnight
                 {"321324000000", ""},
                 {"", ""},
             })
            QCOMPARE(TUtils::getDateTime(QByteArray::fromHex(hex)).toString(Qt::ISODateWithMs), QLatin1String(time));
    }

    void writesTime()
    {
        for (const auto& [time, hex] : {
                 std::pair("2024-02-03T04:05:06", "030224040506"),
                 {"2024-02-03T04:05:06Z", "030224040506"}, // as it stands
                 {"1999-02-03T04:05:06", "030200040506"},
                 {"1800-02-03T04:05:06", "030200040506"}, // 8 bits of the difference are positive again
                 {"2127-02-03T04:05:06", "0302c7040506"},
                 {"2128-02-03T04:05:06", "030200040506"},
                 {"", "000000ffffff"},
             }) {
            const QDateTime read = QDateTime::fromString(QLatin1String(time), Qt::ISODate);
            QCOMPARE(TUtils::dateTimeToHex(read).toHex(), QByteArray(hex));
        }
    }

    void bcd()
    {
        for (const auto& [number, hex] : {std::pair(7, "07"), {59, "59"}, {100, "a0"}, {2570, "10"}})
            QCOMPARE(TUtils::intToBinDec(number).toHex(), QByteArray(hex));
    }

    void coordinates()
    {
        // Over 1 and 2.
        for (const auto& [hex, convert, keepOnInvalid, latitude, longitude] : {
                 std::tuple("37455000 25370001", false, false, 554550000U, 373700010U),
                 {"37455000 25370001", true, false, 557583333, 376166683},
                 {"374a5000 250000f0", false, false, 550000000, 370000000}, // digits not decimal
                 {"3745", false, false, 554500000, 0},                      // bytes missing
                 {"ffffffff ffffffff", false, true, 1, 2},                  // no position, kept
                 {"ffffffff ffffffff", false, false, 2550000000, 2550000000},
                 {"7f000000 25370000", true, true, 1, 376166666},  // judged one by one
                 {"ffffffff 7f000000", true, true, 2546688470, 2}, // judged after conversion
             }) {
            uint readLatitude = 1;
            uint readLongitude = 2;
            TUtils::getCoords(QByteArray::fromHex(hex), readLatitude, readLongitude, convert, keepOnInvalid);
            QCOMPARE(readLatitude, latitude);
            QCOMPARE(readLongitude, longitude);
        }
    }

    void convertsCoordinates()
    {
        using Limits = std::numeric_limits<int>;
        for (const auto& [packed, decimal] : {std::pair(554550000, 557583333),
                                              {-554550000, -557583333},
                                              {100000, 166666},
                                              {Limits::max(), Limits::max()},
                                              {Limits::min(), Limits::min()}})
            QCOMPARE(TUtils::ConvertCoordinates(packed), decimal);
    }

    void repliesAndTypes()
    {
        QByteArray reply = QByteArray::fromHex("52 04030281 353535");
        uint version = 9;
        QVERIFY(TUtils::GetVersion(reply, version));
        for (QByteArray other : {reply + '5', reply.left(7), 'S' + reply.mid(1), reply.left(7) + '4'}) {
            QVERIFY(!TUtils::GetVersion(other, version));
            QCOMPARE(version, 0x81020304U); // the first one's
        }
        QVERIFY(!TUtils::ParceAnswer(reply));
        QCOMPARE(TUtils::TypeToString(15), QStringLiteral("Unknow"));
    }

    void externalSupply()
    {
        // Volts by the first code that gives them.
        const QMap<int, int> steps = {{0, 0},    {35, 6},   {57, 7},   {64, 8},   {71, 10},  {86, 12},
                                      {100, 14}, {114, 16}, {129, 18}, {144, 20}, {157, 22}, {173, 24}};
        for (int code = -0x100; code < 0x200; ++code)
            QCOMPARE(GetExternalSupplyValue(code), (--steps.upperBound(code & 0xFF)).value());
    }
};

QTEST_APPLESS_MAIN(TestTUtilsCodecs)
#include "tst_tutils_codecs.moc"
