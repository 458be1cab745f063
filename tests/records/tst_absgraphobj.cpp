#include <Pardel/absgraphobj.h>

#include "heldblock.h"
#include "streamchecks.h"
#include "testfiles.h"

#include <QBrush>
#include <QDateTime>
#include <QFont>
#include <QIcon>
#include <QImage>
#include <QLineF>
#include <QPen>
#include <QPolygonF>
#include <QStandardItem>
#include <QTimeZone>
#include <QTransform>
#include <QUrl>

#include <new>

namespace {

/// Reads the bytes at version 11.
QDataStream::Status readBlock(BlockGraphObject* block, const QByteArray& bytes)
{
    QDataStream stream(bytes);
    stream.setVersion(QDataStream::Qt_4_5);
    stream >> block;
    return stream.atEnd() ? stream.status() : QDataStream::WriteFailed;
}

constexpr char identityHex[] = "0102030405060708";
constexpr char frameHex[] = "00000001 00000002 00000003 00000004"
                            "01 ffff 0a0a 1414 1e1e 0000"
                            "00 ffff 0000 0000 0000 0000";
/// Type, identifier, text, points, properties: "m", a map with a list of a map in it, "b" and "a".
constexpr char firstObjectHex[] = "00000009 1112131415161718 00000002 0074"
                                  "00000002 00000001 fffffffe 00000003 00000004"
                                  "00000003 00000002 006d 00000008 00 00000002"
                                  "00000002 0079 0000000a 00 00000002 0076"
                                  "00000002 0078 00000009 00 00000001 00000008 00 00000002"
                                  "00000002 0071 00000002 00 00000002 00000002 0070 00000002 00 00000001"
                                  "00000002 0062 00000002 00 00000007 00000002 0061 00000002 00 00000008";
constexpr char plainObjectHex[] = "00000000 0000000000000000 ffffffff 00000000 00000000";

QByteArray bytesOf(qint32 version, qint32 count, const QByteArray& modeHex,
                   const QByteArray& objectHex = firstObjectHex)
{
    return written(version) + QByteArray::fromHex(identityHex) + written(count) +
           QByteArray::fromHex(QByteArray(frameHex) + modeHex + objectHex + plainObjectHex);
}

/// The block of these bytes, with the display mode 0x0a0b0c0d.
void fillSample(BlockGraphObject* block)
{
    block->identifier = 0x0102030405060708;
    std::tie(block->x1, block->y1, block->x2, block->y2) = std::tuple(1, 2, 3, 4);
    block->firstColor = QColor(10, 20, 30);
    block->displayMode = 0x0a0b0c0d;
    block->objectCount = 2;
    block->objects = new AbsGraphObject* [2] { new AbsGraphObject, new AbsGraphObject };
    AbsGraphObject& object = *block->objects[0];
    object.type = 9;
    object.identifier = 0x1112131415161718;
    object.text = text("t");
    object.points = {{1, -2}, {3, 4}};
    const QVariantMap inner{{text("p"), 1}, {text("q"), 2}};
    const QVariantMap map{{text("x"), QVariantList{inner}}, {text("y"), text("v")}};
    object.properties = {{text("a"), 8}, {text("b"), 7}, {text("m"), map}};
}

QByteArray gradientOf(int stops, bool ascending)
{
    QByteArray bytes = QByteArray::fromHex("00000042 00 0f 0100000000000000000000 00000000 00000000 00000000 00000000");
    QDataStream stream(&bytes, QIODevice::Append);
    stream << stops;
    for (int i = 0; i < stops; ++i)
        stream << (ascending ? i : stops - i) / double(stops) << QColor();
    for (int i = 0; i < 4 + 9; ++i) // where it begins and ends, and how it is transformed
        stream << 1.0;
    return bytes;
}

/// As a value; few bytes for its size.
QByteArray imageOf(int side, int textSize)
{
    QImage image(side, side, QImage::Format_Mono);
    image.fill(0);
    if (textSize > 0)
        image.setText(text("t"), QString(textSize, QLatin1Char('a')));
    return written(QVariant(image), QDataStream::Qt_4_5);
}

} // namespace

class TestAbsGraphObj : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void goldenBytes_data() { addTableRows("blocks.txt"); }
    void goldenBytes()
    {
        const qint32 version = cell("version").toInt();
        const qint32 raised = cell("written").toInt();
        HeldBlock block;
        fillSample(&block);
        block.formatVersion = version;
        for (const int streamVersion :
             {QDataStream::Qt_4_5, QDataStream::Qt_5_15, QDataStream::Qt_DefaultCompiledVersion}) {
            QCOMPARE(written(&block, streamVersion), bytesOf(raised, 2, "0a0b0c0d"));
            QCOMPARE(block.formatVersion, raised); // nothing else changes
        }
        const QByteArray withoutNullMarks = QByteArray(firstObjectHex).replace(" 00 ", " ");
        QCOMPARE(written(&block, QDataStream::Qt_4_0), bytesOf(raised, 2, "0a0b0c0d", withoutNullMarks));

        HeldBlock read;
        read.displayMode = 99;
        QCOMPARE(readBlock(&read, bytesOf(version, 2, cell("mode"))), QDataStream::Ok);
        QCOMPARE(read.displayMode, cell("read").toInt());
        QCOMPARE(read.formatVersion, version);
        // Written with the same version and mode it gives the same bytes: every member is where it belongs.
        read.formatVersion = 3;
        read.displayMode = 7;
        QCOMPARE(written(&read, QDataStream::Qt_4_5), bytesOf(3, 2, "00000007"));
    }

    void equalNames()
    {
        const QByteArray name = "00000002 0061 00000002 00 ";
        const QByteArray head = "00000000 0000000000000000 ffffffff 00000000 ";
        const auto bytes = [&](const QByteArray& properties) {
            return written(3) + QByteArray::fromHex(identityHex) + written(1) +
                   QByteArray::fromHex(QByteArray(frameHex) + "00000007" + head + properties);
        };
        HeldBlock block;
        QCOMPARE(readBlock(&block, bytes("00000002" + name + "00000007" + name + "00000008")), QDataStream::Ok);
        QCOMPARE(block.objects[0]->properties.value(text("a")), QVariant(8));
        const bool keptBoth = block.objects[0]->properties.size() == 2;
        QCOMPARE(keptBoth, QT_VERSION_MAJOR == 5);
        QCOMPARE(written(&block),
                 bytes(keptBoth ? "00000002" + name + "00000007" + name + "00000008" : "00000001" + name + "00000008"));
    }

    void endingEarly()
    {
        const QByteArray bytes = bytesOf(4, 5, "00000007");
        const auto end = bytes.size() - QByteArray::fromHex(plainObjectHex).size(); // of the first object
        const auto head = end - QByteArray::fromHex(firstObjectHex).size();
        for (int size = 0; size <= bytes.size(); ++size) {
            HeldBlock block;
            const QDataStream::Status status = readBlock(&block, bytes.left(size));
            QCOMPARE(status == QDataStream::Ok, size == head || size == end || size == bytes.size());
            QCOMPARE(block.objectCount, size <= head ? 0 : size <= end ? 1 : 2);
            QVERIFY(block.objects);
            if (block.objectCount == 0)
                continue;
            // Points and properties that came whole are kept: those of the first object end at these places.
            const AbsGraphObject& object = *block.objects[0];
            QCOMPARE(object.points.size(), size < head + 30 ? 0 : size < head + 38 ? 1 : 2);
            QCOMPARE(object.properties.size(), size < end - 30 ? 0 : size < end - 15 ? 1 : size < end ? 2 : 3);
        }
    }

    void damagedCounts()
    {
        HeldBlock huge;
        QCOMPARE(readBlock(&huge, bytesOf(3, 0x7fffffff, "00000007")), QDataStream::Ok);
        QCOMPARE(huge.objectCount, 2);
        HeldBlock negative;
        QVERIFY_EXCEPTION_THROWN(readBlock(&negative, bytesOf(1, -1, "")), std::bad_array_new_length);
        QCOMPARE(negative.displayMode, 3);
        QVERIFY(!negative.objects);
        negative.objectCount = 0;
    }

    void values()
    {
        QImage image(3, 2, QImage::Format_ARGB32);
        image.fill(QColor(1, 2, 3, 4));
        QLinearGradient linear(1, 2, 3, 4);
        linear.setStops({{0.25, Qt::red}, {0.5, Qt::blue}});
        QPen pen(QBrush(linear), 2.5, Qt::CustomDashLine);
        pen.setDashPattern({1, 2, 3, 4});
        QFont font(text("DejaVu Sans"), 12, QFont::Bold, true);
        const QDate date(2026, 2, 28);
        QVariantList all;
        all << QVariant() << true << -7 << 4000000000U << Q_INT64_C(-5000000000) << QVariant::fromValue<short>(-3)
            << QVariant::fromValue<uchar>(3) << QVariant::fromValue<long>(-3) << 0.1F << 0.1 << QChar(0x42F)
            << text("Ж") << QString() << QByteArray("\0z", 2) << QStringList{text("a"), QString()} << date
            << QTime(23, 59) << QDateTime(date, QTime(1, 2), Qt::UTC) << QDateTime(date, QTime(1, 2)) << QPoint(1, -2)
            << QPointF(0.1, 2) << QSize(3, 4) << QSizeF(3, 4.5) << QRect(1, 2, 3, 4) << QRectF(1, 2, 3, 4)
            << QLine(1, 2, 3, 4) << QLineF(1, 2, 3, 4) << QUrl(text("file:///a%20b")) << QColor(1, 2, 3, 4) << QColor()
            << font << pen << QPen() << QBrush() << QBrush(linear) << QBrush(QRadialGradient(1, 2, 3))
            << QBrush(QConicalGradient(1, 2, 3)) << image << QImage() << QPolygon(QVector<QPoint>{{1, 2}, {-3, 4}})
            << QPolygonF(QVector<QPointF>{{0.1, 2}, {-3, 4}}) << QTransform(1, 2, 3, 4, 5, 6)
            << QVariantHash{{text("h"), image}};
        all << QVariant(QVariantList(all)) << QVariantMap{{text("x"), all}, {text("y"), QVariantMap()}};
        QVariantList later = all;
        later << QDateTime(date, QTime(1, 2), QTimeZone("Europe/Berlin")) << QBrush(image)
              << QDateTime(date, QTime(1, 2), QTimeZone(3600)) << QDateTime(date, QTime(1, 2), Qt::OffsetFromUTC, 60);
        for (const QTimeZone& zone :
             {QTimeZone("UTC+03:00"), QTimeZone("EST5EDT"), QTimeZone("EST5EDT4,M3.2.0,M11.1.0"),
              QTimeZone("Наша / 1..2", 60, text("a"), text("b"))})
            later << QDateTime(date, QTime(1, 2), zone);
        for (int version = QDataStream::Qt_4_0; version <= QDataStream::Qt_DefaultCompiledVersion; ++version) {
            for (const int form : {0, 1, 2, 3}) {
                QByteArray bytes;
                QDataStream stream(&bytes, QIODevice::ReadWrite);
                stream.setVersion(version);
                stream.setByteOrder(form & 1 ? QDataStream::LittleEndian : QDataStream::BigEndian);
                stream.setFloatingPointPrecision(form & 2 ? QDataStream::SinglePrecision
                                                          : QDataStream::DoublePrecision);
                HeldBlock block;
                block.objectCount = 1;
                block.objects = new AbsGraphObject* [1] { new AbsGraphObject };
                const QVariantList& values = version < QDataStream::Qt_5_5 ? all : later;
                for (const QVariant& value : values)
                    block.objects[0]->properties.insert(QString::number(block.objects[0]->properties.size()), value);
                block.formatVersion = 3;
                stream << static_cast<BlockGraphObject*>(&block);
                const QByteArray before = bytes;
                stream.device()->seek(0);
                HeldBlock read;
                stream >> static_cast<BlockGraphObject*>(&read);
                const auto what = QStringLiteral("version %1 form %2: ").arg(version).arg(form);
                QVERIFY2(stream.status() == QDataStream::Ok && stream.atEnd(),
                         qPrintable(what + read.objects[0]->properties.firstKey() + text(" came last")));
                stream.device()->seek(0);
                stream << static_cast<BlockGraphObject*>(&read);
                QVERIFY2(bytes == before || version < QDataStream::Qt_4_5, qPrintable(what)); // older ones lose some
            }
        }
    }

    void valuesNotTaken_data() { addTableRows("values.txt"); }
    void valuesNotTaken()
    {
        QByteArray value = QByteArray::fromHex(cell("value"));
        if (cell("value").startsWith('['))
            value = QByteArray::fromHex("000000090000000001").repeated(cell("value").chopped(1).mid(1).toInt() - 1) +
                    QByteArray::fromHex("000000090000000000");
        const QByteArray good =
            "00000000 0000000000000000 ffffffff 00000000 00000002 00000002 0061 00000002 00 00000007";
        const QByteArray name = QByteArray::fromHex("000000020062");
        QByteArray bytes = bytesOf(3, 5, "00000000", good);
        bytes.chop(QByteArray::fromHex(plainObjectHex).size());
        bytes += name + value;
        const bool ends = cell("status") == "end";
        if (!ends)
            bytes += QByteArray(100, '\1');
        QDataStream stream(bytes);
        stream.setVersion(cell("version").toInt());
        HeldBlock block;
        stream >> static_cast<BlockGraphObject*>(&block);
        QCOMPARE(stream.status(), ends ? QDataStream::ReadPastEnd : QDataStream::ReadCorruptData);
        QCOMPARE(block.objectCount, 1);
        QCOMPARE(block.objects[0]->properties, (QMap<QString, QVariant>{{text("a"), 7}}));
    }

    /// What takes more than its size lets expect, so many times in a block.
    void greedyValues_data()
    {
        QTest::addColumn<QByteArray>("value");
        QTest::addColumn<int>("count");
        QTest::addColumn<bool>("isTaken");
        QTest::newRow("stops that ascend") << gradientOf(80000, true) << 1 << true;
        QTest::newRow("a few stops that do not") << gradientOf(4096, false) << 1 << true;
        QTest::newRow("stops that do not") << gradientOf(80000, false) << 1 << false;
        QTest::newRow("images for which there is room") << imageOf(6000, 0) << 3 << true;
        QTest::newRow("one more") << imageOf(6000, 0) << 4 << false;
        QTest::newRow("image with room for its text") << imageOf(11500, 3000000) << 1 << true;
        QTest::newRow("image with none") << imageOf(11500, 4000000) << 1 << false;
        const QByteArray packed = QByteArray::fromHex("00001f40") + "zTXt" + QByteArray(8000 + 4, 'k');
        QTest::newRow("texts that may become large") << imageOf(1, 0).insert(42, packed.repeated(9)) << 1 << false;
    }
    void greedyValues()
    {
        QFETCH(const QByteArray, value);
        QFETCH(const int, count);
        const QByteArray head = bytesOf(3, 1, "00000000", "00000000 0000000000000000 ffffffff 00000000")
                                    .chopped(QByteArray::fromHex(plainObjectHex).size());
        QDataStream stream(head + written(count) + (QByteArray(4, '\0') + value).repeated(count));
        stream.setVersion(QDataStream::Qt_4_5);
        HeldBlock block;
        stream >> static_cast<BlockGraphObject*>(&block);
        QTEST(stream.status() == QDataStream::Ok && stream.atEnd(), "isTaken");
    }

    void plainObject()
    {
        AbsGraphObject object;
        object.text = text("t");
        object.prepareMainItem(nullptr);
        QStandardItem item(text("old"));
        item.setData(text("old"), Qt::DecorationRole);
        object.prepareMainItem(&item);
        QCOMPARE(item.text(), text("t"));
        QVERIFY(item.data(Qt::DecorationRole).canConvert<QIcon>() && item.icon().isNull());
        int x1 = 1, y1 = 2, x2 = 3, y2 = 4;
        object.getCoordsMinMax(x1, y1, x2, y2);
        QCOMPARE((QList<int>{object.preparePropsTable(nullptr, 7), x1, y1, x2, y2}), (QList<int>{7, 1, 2, 3, 4}));
        QVERIFY(!object.completed() && !object.isContains(nullptr));
        const QByteArrayList names(std::begin(object.typeNames), std::end(object.typeNames));
        QCOMPARE(names.join(' '), QByteArray("Abstract Text IconText Line Polygone Circle Rectangle Ellipse Block "
                                             "PolygoneX Group Image RichText Callout BigArrow"));
    }
};

QTEST_APPLESS_MAIN(TestAbsGraphObj)
#include "tst_absgraphobj.moc"
