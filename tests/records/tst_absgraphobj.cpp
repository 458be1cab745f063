#include <Pardel/absgraphobj.h>

#include "streamchecks.h"

#include <QIcon>
#include <QStandardItem>

#include <algorithm>
#include <cstring>
#include <functional>
#include <new>

namespace {

QString text(const char* latin1)
{
    return QString::fromLatin1(latin1);
}

/// A block that releases its objects, as the holder of one has to.
struct HeldBlock : BlockGraphObject
{
    HeldBlock() = default;
    Q_DISABLE_COPY_MOVE(HeldBlock)
    ~HeldBlock()
    {
        for (int i = 0; i < objectCount; ++i)
            delete objects[i];
        delete[] objects;
    }

    /// Reads the bytes at version 11.
    QDataStream::Status read(const QByteArray& bytes)
    {
        QDataStream stream(bytes);
        stream.setVersion(QDataStream::Qt_4_5);
        stream >> static_cast<BlockGraphObject*>(this);
        return stream.atEnd() ? stream.status() : QDataStream::WriteFailed;
    }
};

QByteArray blockBytes(BlockGraphObject& block)
{
    return written(&block, QDataStream::Qt_4_5);
}

/// The place of a virtual function in its class's table, as the platform's pointer to it has it.
template <typename Function>
int tablePlace(Function function)
{
    quintptr offset = 0;
    std::memcpy(&offset, &function, sizeof offset);
    return static_cast<int>(offset / sizeof(void*));
}

constexpr char identityHex[] = "0102030405060708";
constexpr char frameHex[] = "00000001 00000002 00000003 00000004"
                            "01 ffff 0a0a 1414 1e1e 0000"
                            "00 ffff 0000 0000 0000 0000";
/// Type, identifier, text, points, properties: "b", then twice "a", the older value first.
constexpr char firstObjectHex[] = "00000009 1112131415161718 00000002 0074"
                                  "00000002 00000001 fffffffe 00000003 00000004"
                                  "00000003 00000002 0062 0000000a 00 00000002 0076"
                                  "00000002 0061 00000002 00 00000007 00000002 0061 00000002 00 00000008";
constexpr char plainObjectHex[] = "00000000 0000000000000000 ffffffff 00000000 00000000";

QByteArray hexOf(const char* version, const char* count, const char* mode)
{
    return QByteArray(version) + identityHex + count + frameHex + mode + firstObjectHex + plainObjectHex;
}

} // namespace

class TestAbsGraphObj : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void writesGoldenBytes()
    {
        QMultiMap<QString, QVariant> properties;
        properties.insert(text("a"), 7);
        properties.insert(text("a"), 8);
        properties.insert(text("b"), text("v"));
        HeldBlock block;
        block.identifier = 0x0102030405060708;
        std::tie(block.x1, block.y1, block.x2, block.y2) = std::tuple(1, 2, 3, 4);
        block.firstColor = QColor(10, 20, 30);
        block.displayMode = 0x0a0b0c0d;
        block.objectCount = 2;
        block.objects = new AbsGraphObject* [2] { new AbsGraphObject, new AbsGraphObject };
        AbsGraphObject& object = *block.objects[0];
        object.type = 9;
        object.identifier = 0x1112131415161718;
        object.text = text("t");
        object.points = {{1, -2}, {3, 4}};
        object.properties = properties;

        // Only the versions 1 and 2 are raised, for good.
        for (const auto& [version, raised] : {std::pair(1, 3), {2, 4}, {3, 3}, {4, 4}, {0, 0}, {5, 5}, {-1, -1}}) {
            block.formatVersion = version;
            const QByteArray number = QByteArray::number(uint(raised), 16).rightJustified(8, '0');
            const QByteArray hex = hexOf(number, "00000002", "0a0b0c0d");
            QCOMPARE(blockBytes(block).toHex(), QByteArray::fromHex(hex).toHex());
            QCOMPARE(block.formatVersion, raised);
        }
    }

    void readsEveryVersion()
    {
        struct Row
        {
            const char* version;
            const char* modeHex;
            int mode;
        };
        for (const Row& row : {Row{"00000001", "", 3}, Row{"00000002", "", 0}, Row{"00000003", "00000007", 7},
                               Row{"00000004", "00000007", 7}, Row{"00000000", "", 99}, Row{"00000005", "", 99}}) {
            HeldBlock block;
            block.displayMode = 99;
            QCOMPARE(block.read(QByteArray::fromHex(hexOf(row.version, "00000002", row.modeHex))), QDataStream::Ok);
            QCOMPARE(block.displayMode, row.mode);
            QCOMPARE(block.formatVersion, QByteArray(row.version).toInt());
            // Written with the same version and mode it gives the same bytes: every member is where it belongs.
            block.formatVersion = 3;
            block.displayMode = 7;
            const QByteArray bytes = QByteArray::fromHex(hexOf("00000003", "00000002", "00000007"));
            QCOMPARE(blockBytes(block).toHex(), bytes.toHex());
            QCOMPARE(block.objects[0]->properties.value(text("a")), QVariant(8));
            QCOMPARE(text(AbsGraphObject::typeNames[block.objects[0]->type]), text("PolygoneX"));
        }
    }

    void endingEarly()
    {
        const QByteArray bytes = QByteArray::fromHex(hexOf("00000004", "00000005", "00000007"));
        const int first = QByteArray::fromHex(firstObjectHex).size();
        const int second = QByteArray::fromHex(plainObjectHex).size();
        const int head = bytes.size() - first - second;
        for (int size = 0; size <= bytes.size(); ++size) {
            HeldBlock block;
            const QDataStream::Status status = block.read(bytes.left(size));
            QCOMPARE(status == QDataStream::Ok, size == head || size == head + first || size == bytes.size());
            QCOMPARE(block.objectCount, size <= head ? 0 : size <= head + first ? 1 : 2);
            QVERIFY(block.objects);
            if (block.objectCount == 0)
                continue;
            // Points and properties that came whole are kept: those of the first object end at these places.
            const AbsGraphObject& object = *block.objects[0];
            QCOMPARE(object.points.size(), size < head + 30 ? 0 : size < head + 38 ? 1 : 2);
            const int end = head + first;
            QCOMPARE(object.properties.size(), size < end - 30 ? 0 : size < end - 15 ? 1 : size < end ? 2 : 3);
        }
    }

    void damagedCounts()
    {
        HeldBlock huge;
        QCOMPARE(huge.read(QByteArray::fromHex(hexOf("00000003", "7fffffff", "00000007"))), QDataStream::Ok);
        QCOMPARE(huge.objectCount, 2);
        HeldBlock points;
        QByteArray bytes = QByteArray::fromHex(hexOf("00000003", "00000001", "00000007"));
        bytes.replace(QByteArray::fromHex("00000002 00000001 fffffffe"),
                      QByteArray::fromHex("ffffffff 00000001 fffffffe"));
        QVERIFY(points.read(bytes) != QDataStream::Ok);
        QVERIFY(points.objects[0]->points.size() > 2);

        BlockGraphObject negative;
        QDataStream stream(QByteArray::fromHex(hexOf("00000001", "ffffffff", "")));
        QVERIFY_EXCEPTION_THROWN(stream >> &negative, std::bad_array_new_length);
        QCOMPARE(negative.displayMode, 3);
        QVERIFY(!negative.objects);
    }

    void layoutInMemory()
    {
        const AbsGraphObject object;
        const void* members[] = {&object,      &object.identifier, &object.type,
                                 &object.text, &object.points,     &object.properties};
        QVERIFY(std::is_sorted(std::begin(members), std::end(members), std::less<>()));
        // Counted from 0; the first two places are the destructor's.
        QCOMPARE(tablePlace(&AbsGraphObject::prepareMainItem), 2);
        QCOMPARE(tablePlace(&AbsGraphObject::preparePropsTable), 3);
        QCOMPARE(tablePlace(&AbsGraphObject::changeProperty), 4);
        QCOMPARE(tablePlace(&AbsGraphObject::getCoordsMinMax), 5);
        QCOMPARE(tablePlace(&AbsGraphObject::completed), 6);
        QCOMPARE(tablePlace(&AbsGraphObject::isContains), 7);
    }

    void plainObject()
    {
        AbsGraphObject object;
        object.text = text("t");
        object.prepareMainItem(nullptr);
        QStandardItem item(QIcon(), text("old"));
        item.setData(text("old"), Qt::DecorationRole);
        object.prepareMainItem(&item);
        QCOMPARE(item.text(), text("t"));
        QVERIFY(item.data(Qt::DecorationRole).canConvert<QIcon>() && item.icon().isNull());
        QCOMPARE(object.preparePropsTable(nullptr, 7), 7);
        int x1 = 1, y1 = 2, x2 = 3, y2 = 4;
        object.getCoordsMinMax(x1, y1, x2, y2);
        QCOMPARE(QList<int>({x1, y1, x2, y2}), QList<int>({1, 2, 3, 4}));
        QVERIFY(!object.completed() && !object.isContains(nullptr));
        QStringList names;
        for (const char* name : AbsGraphObject::typeNames)
            names += text(name);
        QCOMPARE(names.join(QLatin1Char(' ')),
                 text("Abstract Text IconText Line Polygone Circle Rectangle Ellipse Block "
                      "PolygoneX Group Image RichText Callout BigArrow"));
    }
};

QTEST_APPLESS_MAIN(TestAbsGraphObj)
#include "tst_absgraphobj.moc"
