#include <Pardel/tutils.h>

#include <QTest>

#include <limits>

namespace {

QDateTime at(int year, int month, int day, int hour = 0, int minute = 0, int second = 0)
{
    return QDateTime(QDate(year, month, day), QTime(hour, minute, second));
}

} // namespace

class TestTUtilsCodecs : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void readsTime();
    void writesTime();
    void bcd();
    void coordinates_data();
    void coordinates();
    void convertsCoordinates();
    void repliesAndTypes();
    void externalSupply();
};

void TestTUtilsCodecs::readsTime()
{
    const QMap<QByteArray, QDateTime> times = {
        {"311224235958", at(2024, 12, 31, 23, 59, 58)},
        {"010225040506ff", at(2025, 2, 1, 4, 5, 6)},
        {"010225", at(2025, 2, 1)},
        {"01010a1a2bc3", at(2000, 1, 1)}, // not decimal: 0
        {"010225246060", at(2025, 2, 1)}, // an impossible time: midnight
        {"321324000000", QDateTime()},
        {"", QDateTime()},
    };
    for (auto time = times.cbegin(); time != times.cend(); ++time) {
        const QDateTime read = TUtils::getDateTime(QByteArray::fromHex(time.key()));
        QCOMPARE(read.isValid(), time->isValid());
        if (time->isValid())
            QCOMPARE(read, *time);
        QCOMPARE(read.timeSpec(), Qt::LocalTime);
    }
}

void TestTUtilsCodecs::writesTime()
{
    const QList<QPair<QDateTime, QByteArray>> times = {
        {at(2024, 2, 3, 4, 5, 6), "030224040506"},
        {QDateTime(QDate(2024, 2, 3), QTime(4, 5, 6), Qt::UTC), "030224040506"}, // as it stands
        {at(1999, 2, 3, 4, 5, 6), "030200040506"},
        {at(1800, 2, 3, 4, 5, 6), "030200040506"}, // 8 bits of the difference are positive again
        {at(2105, 2, 3, 4, 5, 6), "0302a5040506"},
        {at(2127, 2, 3, 4, 5, 6), "0302c7040506"},
        {at(2128, 2, 3, 4, 5, 6), "030200040506"},
        {at(2300, 2, 3, 4, 5, 6), "030200040506"},
        {QDateTime(), "000000ffffff"},
    };
    for (const auto& [time, hex] : times)
        QCOMPARE(TUtils::dateTimeToHex(time).toHex(), hex);
}

void TestTUtilsCodecs::bcd()
{
    for (const auto& [number, hex] : {std::pair(7, "07"), {59, "59"}, {100, "a0"}, {2570, "10"}})
        QCOMPARE(TUtils::intToBinDec(number).toHex(), QByteArray(hex));
}

void TestTUtilsCodecs::coordinates_data()
{
    QTest::addColumn<QByteArray>("hex");
    QTest::addColumn<bool>("convert");
    QTest::addColumn<bool>("keepOnInvalid");
    QTest::addColumn<QVector<uint>>("expected"); // over 1 and 2
    const auto row = [](const char* name, const char* hex, bool convert, bool keep, uint latitude, uint longitude) {
        QTest::newRow(name) << QByteArray(hex) << convert << keep << QVector<uint>{latitude, longitude};
    };
    row("packed", "37455000 25370001", false, false, 554550000, 373700010);
    row("converted", "37455000 25370001", true, false, 557583333, 376166683);
    row("digits not decimal", "374a5000 250000f0", false, false, 550000000, 370000000);
    row("bytes missing", "3745", false, false, 554500000, 0);
    row("no position, kept", "ffffffff ffffffff", false, true, 1, 2);
    row("no position, written", "ffffffff ffffffff", false, false, 2550000000, 2550000000);
    row("judged one by one", "7f000000 25370000", true, true, 1, 376166666);
    row("judged after conversion", "ffffffff 7f000000", true, true, static_cast<uint>(-1748278826), 2);
}

void TestTUtilsCodecs::coordinates()
{
    QFETCH(QByteArray, hex);
    QFETCH(bool, convert);
    QFETCH(bool, keepOnInvalid);
    QVector<uint> values = {1, 2};
    TUtils::getCoords(QByteArray::fromHex(hex), values[0], values[1], convert, keepOnInvalid);
    QTEST(values, "expected");
}

void TestTUtilsCodecs::convertsCoordinates()
{
    using Limits = std::numeric_limits<int>;
    for (const auto& [packed, decimal] : {std::pair(554550000, 557583333),
                                          {-554550000, -557583333},
                                          {100000, 166666},
                                          {Limits::max(), Limits::max()},
                                          {Limits::min(), Limits::min()}})
        QCOMPARE(TUtils::ConvertCoordinates(packed), decimal);
}

void TestTUtilsCodecs::repliesAndTypes()
{
    QByteArray reply = QByteArray::fromHex("52 04030281 353535");
    uint version = 9;
    QVERIFY(TUtils::GetVersion(reply, version));
    QCOMPARE(version, 0x81020304U);
    for (QByteArray other : {reply + '5', reply.left(7), 'S' + reply.mid(1), reply.left(7) + '4'}) {
        QVERIFY(!TUtils::GetVersion(other, version));
        QCOMPARE(version, 0x81020304U);
    }
    QVERIFY(!TUtils::ParceAnswer(reply));
    QCOMPARE(TUtils::TypeToString(15), QStringLiteral("Unknow"));
}

void TestTUtilsCodecs::externalSupply()
{
    // Volts by the first code that gives them.
    const QMap<int, int> steps = {{0, 0},    {35, 6},   {57, 7},   {64, 8},   {71, 10},  {86, 12},
                                  {100, 14}, {114, 16}, {129, 18}, {144, 20}, {157, 22}, {173, 24}};
    for (int code = -0x100; code < 0x200; ++code)
        QCOMPARE(GetExternalSupplyValue(code), (--steps.upperBound(code & 0xFF)).value());
}

QTEST_APPLESS_MAIN(TestTUtilsCodecs)
#include "tst_tutils_codecs.moc"
