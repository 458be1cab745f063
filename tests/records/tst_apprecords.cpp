#include <Pardel/apprecords.h>

#include "streamchecks.h"

namespace {

using Dictionary = QMap<QString, unsigned int>;

const DocumentInfo document = {0x01020304, text("n"), text("d"), 5, -2};
const CardsProperty card = {0x01020304, text("n"), text("d"), 0x05060708, "x", 0x090a};

constexpr char documentHex[] = "01020304 00000002 006e 00000002 0064 05 fe";
constexpr char cardHex[] = "00000002 006e 00000002 0064 05060708 00000001 78 090a 01020304";

QString pairsText(const QList<Setting>& settings)
{
    QStringList pairs;
    for (const Setting& setting : settings)
        pairs += setting.name + QLatin1Char('=') + setting.value;
    return pairs.join(QLatin1Char(' '));
}

} // namespace

class TestAppRecords : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void goldenBytes()
    {
        streamsAs(documentHex, document, document);
        streamsAs(cardHex, card, card);
        streamsAs("01020304 00000002 006e 05060708 00000002 0064 00000001 78 090a0b0c",
                  CmdDesc{0x01020304, text("n"), text("d"), 0x05060708, "x", 0x090a0b0c});
        streamsAs("00000001 6e 00000001 78 00000002 0064 01020304 05060708",
                  ParamDesc{"n", "x", text("d"), 0x01020304, 0x05060708});
        streamsAs("00000000", QList<DocumentInfo>());
        streamsAs(QByteArray("00000002") + documentHex + documentHex, QList<DocumentInfo>{document, document});
        streamsAs("00000002 00000001 6e 00000002 d18f 00000000 00000001 76",
                  QList<Setting>{{text("n"), text("я")}, {text(""), text("v")}});
        streamsAs("00000003 00000001 61 ffffffff 00000001 62 00000002 00000002 d18f 00000003",
                  Dictionary{{text("b"), 2}, {text("я"), 3}, {text("a"), 0xffffffff}});
        streamsAs(QByteArray("00000002") + cardHex + cardHex, QList<CardsProperty>{card, card}, {card, card, card});
    }

    void addToWhatIsThere()
    {
        const QList<Setting> old = {{text("1"), text("a")}, {text("2"), text("b")}};
        const QByteArray three = "00000003 0000000133 0000000163 0000000134 0000000164 0000000135 ffffffff";
        QCOMPARE(pairsText(readFrom(three, old)), text("1=a 2=b 3=c 4=d 5="));
        for (const char* count : {"00000000", "ffffffff", "80000000"}) {
            const QByteArray hex = count + three.mid(8);
            QCOMPARE(pairsText(readFrom(hex, old)), text("1=a 2=b"));
            QCOMPARE(readFrom(hex, QList<DocumentInfo>{document}).size(), 1);
            QCOMPARE(readFrom(hex, Dictionary{{text("1"), 1}}).size(), 1);
        }
        QCOMPARE(readFrom(QByteArray("00000001") + documentHex, QList<DocumentInfo>{document}).size(), 2);

        const QByteArray twice = "00000003 0000000178 00000001 0000000179 00000003 0000000178 00000002";
        const Dictionary expected = {{text("x"), 2}, {text("y"), 3}, {text("z"), 26}};
        QCOMPARE(readFrom(twice, Dictionary{{text("z"), 26}, {text("y"), 25}}), expected);
    }

    void textsInUtf8()
    {
        QCOMPARE(written(QList<Setting>{{QString(), text("")}}), QByteArray::fromHex("00000001 ffffffff 00000000"));
        QVERIFY(!readFrom<QList<Setting>>("00000001 ffffffff ffffffff").first().name.isNull());
        const QString cut = text("a") + QChar() + text("b");
        const QByteArray hex = "00000001 00000003 610062 00000003 610062";
        QCOMPARE(written(QList<Setting>{{cut, cut}}), QByteArray::fromHex(hex));
        QCOMPARE(pairsText(readFrom<QList<Setting>>(hex)), text("a=a"));
        QCOMPARE(readFrom<Dictionary>(hex).firstKey(), text("a"));
    }

    void endingEarly()
    {
        // Lists of the library's own format make up what is missing, up to a limit that only a damaged count reaches.
        QCOMPARE(readFrom<QList<DocumentInfo>>(QByteArray("00000005") + documentHex).size(), 5);
        QCOMPARE(pairsText(readFrom<QList<Setting>>("00000003 0000000161 0000000162 00000001 63")), text("a=b c= ="));
        QCOMPARE(readFrom<QList<DocumentInfo>>(QByteArray("7fffffff") + documentHex).size(), 1 + 65536);
        QCOMPARE(readFrom<QList<Setting>>("7fffffff").size(), 65536);
        QCOMPARE(readFrom<Dictionary>("7fffffff 0000000161 00000001"), (Dictionary{{text("a"), 1}, {QString(), 0}}));

        // That of cards keeps those that came whole.
        const QByteArray two = QByteArray::fromHex(QByteArray("00000003") + cardHex + cardHex);
        const auto cardSize = static_cast<int>(two.size() - 4) / 2;
        for (int size = 0; size <= two.size(); ++size)
            QCOMPARE(readFrom(two.left(size).toHex(), QList<CardsProperty>{card}).size(), qMax(0, size - 4) / cardSize);
        QCOMPARE(readFrom<QList<CardsProperty>>(QByteArray("ffffffff") + cardHex).size(), 1);
    }
};

QTEST_APPLESS_MAIN(TestAppRecords)
#include "tst_apprecords.moc"
