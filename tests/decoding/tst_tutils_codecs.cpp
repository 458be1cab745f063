#include <Pardel/tutils.h>

#include "testfiles.h"

namespace {

/// What the function of that name makes of an input, as codecs.txt has both.
QByteArray answer(const QByteArray& call, const QByteArray& input)
{
    const QByteArray bytes = QByteArray::fromHex(input);
    if (call == "getDateTime") // of a local time; others would end in their offset
        return TUtils::getDateTime(bytes).toString(Qt::ISODateWithMs).toLatin1();
    if (call == "dateTimeToHex")
        return TUtils::dateTimeToHex(QDateTime::fromString(QLatin1String(input), Qt::ISODate)).toHex();
    if (call == "intToBinDec")
        return TUtils::intToBinDec(input.toInt()).toHex();
    if (call == "ConvertCoordinates")
        return QByteArray::number(TUtils::ConvertCoordinates(input.toInt()));
    uint latitude = 1;
    uint longitude = 2;
    TUtils::getCoords(bytes, latitude, longitude, call.contains("convert"), call.contains("keep"));
    return QByteArray::number(latitude) + ' ' + QByteArray::number(longitude);
}

} // namespace

class TestTUtilsCodecs : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void fields_data() { addTableRows("codecs.txt"); }
    void fields() { QCOMPARE(answer(cell("call"), cell("input")), cell("answer")); }

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
