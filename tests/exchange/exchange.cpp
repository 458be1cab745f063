// What programs of Qt 5 and of Qt 6 hand to each other. Built with either, it writes records and INI files of fixed
// values, and reads, compares and changes what the other has written.

#include "archiveconnection.h"
#include "heldblock.h"
#include "reporttext.h"
#include "streamchecks.h"

#include <Pardel/archive.h>
#include <Pardel/inifiles.h>
#include <Pardel/mobdata.h>

#include <QBrush>
#include <QCoreApplication>
#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QFont>
#include <QImage>
#include <QLineF>
#include <QPen>
#include <QPolygonF>
#include <QTextStream>
#include <QTransform>
#include <QUrl>

#include <tuple>
#include <type_traits>

namespace {

int faults = 0;

void expect(bool holds, const QString& what, const char* expected)
{
    if (holds)
        return;
    ++faults;
    QTextStream(stderr) << what << ": " << expected << "\n";
}

struct Schema : HeldBlock
{
    Schema() = default;
    explicit Schema(const QMap<QString, QVariant>& properties)
    {
        formatVersion = 4;
        identifier = 0x0102030405060708;
        std::tie(x1, y1, x2, y2, displayMode) = std::tuple(-1, 2, 3, 4, 5);
        firstColor = QColor(10, 20, 30, 128);
        secondColor = QColor::fromHsv(300, 100, 200);
        objectCount = 2;
        objects = new AbsGraphObject* [2] { new AbsGraphObject, new AbsGraphObject };
        objects[0]->type = 9;
        objects[0]->identifier = -2;
        objects[0]->text = text("Größe Я 🚚");
        objects[0]->points = {{1, -2}, {3, 4}};
        objects[0]->properties = properties;
    }
};

QDataStream& operator<<(QDataStream& stream, Schema& schema)
{
    return stream << static_cast<BlockGraphObject*>(&schema);
}

QDataStream& operator>>(QDataStream& stream, Schema& schema)
{
    return stream >> static_cast<BlockGraphObject*>(&schema);
}

/// Writes the record's files, one a stream version, or reads them.
struct Records
{
    QDir folder;
    bool isWriting;

    template <typename T>
    void operator()(const char* name, T&& record) const
    {
        for (int version : {QDataStream::Qt_4_5, QDataStream::Qt_5_15}) {
            const QString fileName = text(name) + QLatin1Char('.') + QString::number(version);
            QFile file(folder.filePath(fileName));
            if (!file.open(isWriting ? QIODevice::WriteOnly : QIODevice::ReadOnly)) {
                expect(false, file.fileName(), "it cannot be opened");
            } else if (isWriting) {
                const QByteArray bytes = written(record, version);
                expect(file.write(bytes) == bytes.size() && file.flush(), fileName, "it cannot be written");
            } else {
                const QByteArray bytes = file.readAll();
                QDataStream stream(bytes);
                stream.setVersion(version);
                std::decay_t<T> read;
                stream >> read;
                expect(stream.status() == QDataStream::Ok && stream.atEnd(), fileName, "it is not read whole");
                expect(written(read, version) == bytes, fileName, "what was read is written in other bytes");
                expect(written(record, version) == bytes, fileName, "the value is written in other bytes here");
                if constexpr (std::is_same_v<std::decay_t<T>, Schema>) // some that are written alike are not the same
                    expect(read.objectCount == 2 && read.objects[0]->properties == record.objects[0]->properties,
                           fileName, "another value is read");
            }
        }
    }
};

QFont pixelFont()
{
    QFont font(text("DejaVu Sans"));
    font.setPixelSize(17);
    font.setUnderline(true);
    return font;
}

QImage image()
{
    QImage image(2, 3, QImage::Format_ARGB32);
    image.fill(QColor(1, 2, 3, 4));
    image.setPixelColor(1, 2, Qt::red);
    return image;
}

/// What applications keep in the properties of graphic objects.
QMap<QString, QVariant> properties()
{
    const QVariantMap map = {{text("a"), 1}, {text("б"), text("Ж")}, {text("c"), QColor(Qt::red)}};
    const QVariantMap nested = {{text("inner"), map}, {text("list"), QVariantList{map, 2}}, {text("x"), QVariant()}};
    const QDate date(2026, 2, 28);
    const QTime time(23, 59, 58, 987);
    return {
        {text("nothing"), QVariant()},
        {text("bool"), true},
        {text("int"), -7},
        {text("unsigned"), 4000000000U},
        {text("long"), Q_INT64_C(-5000000000)},
        {text("unsigned-long"), Q_UINT64_C(18000000000000000000)},
        {text("short"), QVariant::fromValue<short>(-300)},
        {text("float"), 0.1F},
        {text("double"), 0.1},
        {text("text"), text("Größe Я 🚚")},
        {text("text-null"), QString()},
        {text("char"), QChar(0x42F)},
        {text("bytes"), QByteArray("\0\xff\x80z", 4)},
        {text("date"), date},
        {text("time"), time},
        {text("moment-utc"), QDateTime(date, time, Qt::UTC)},
        {text("moment-local"), QDateTime(date, time)},
        {text("url"), QUrl(text("file:///a%20b?c#d"))},
        {text("point"), QPoint(1, -2)},
        {text("point-f"), QPointF(0.1, -2.5)},
        {text("line-f"), QLineF(0.1, -2.5, 3, 4)},
        {text("size"), QSize(3, 4)},
        {text("rectangle"), QRect(1, 2, 3, 4)},
        {text("color"), QColor(1, 2, 3, 4)},
        {text("color-hsv"), QColor::fromHsv(300, 100, 200)},
        {text("color-invalid"), QColor()},
        {text("font"), QFont(text("DejaVu Sans"), 12, QFont::Bold, true)},
        {text("font-pixels"), pixelFont()},
        {text("polygon"), QPolygon(QVector<QPoint>{{1, 2}, {-3, 4}})},
        {text("polygon-f"), QPolygonF(QVector<QPointF>{{0.1, 2}, {-3, 4}})},
        {text("image"), image()},
        {text("brush"), QBrush(Qt::red, Qt::Dense3Pattern)},
        {text("pen"), QPen(QBrush(Qt::red), 2, Qt::DashLine)},
        {text("transform"), QTransform(1, 2, 3, 4, 5, 6)},
        {text("texts"), QStringList{text("a"), QString(), text("Ж")}},
        {text("list"), QVariantList{1, text("a"), QVariantList(), QVariant()}},
        {text("map"), map},
        {text("map-empty"), QVariantMap()},
        {text("map-nested"), nested},
        {text("list-of-maps"), QVariantList{map, nested}},
    };
}

void exchangeRecords(const Records& exchange)
{
    exchange(
        "MobData",
        MobData{
            -2, 546403461, -362233821, 46, 258, 1767225626, {makeSensor(15, 1, 15), makeSensor(258, -0.1F, -1, 7)}});
    exchange("MobData-empty", MobData());
    // The bytes of the other records are the same under every Qt by the tests of each.
    const QMap<QString, QVariant> all = properties();
    for (auto property = all.begin(); property != all.end(); ++property) {
        Schema schema({{property.key(), property.value()}});
        exchange(qUtf8Printable(QLatin1String("schema-") + property.key()), schema);
    }
    Schema schema(all);
    exchange("schema", schema);
}

/// An INI file, and in which format it is written, then changed with the other Qt, then read with the first again.
struct IniFile
{
    const char* name;
    QSettings::Format writes;
    QSettings::Format changes;
    QSettings::Format reads;
};

QList<IniFile> iniFiles()
{
    const QSettings::Format shared = pardelIniFormat();
    return {
        {"shared.ini", shared, shared, shared},
        {"own.ini", QSettings::IniFormat, shared, QSettings::IniFormat},
        {"own-read.ini", shared, shared, QSettings::IniFormat},
        {"own-change.ini", shared, QSettings::IniFormat, shared},
    };
}

QVariantMap iniValues()
{
    return {
        {text("top"), text("café")},
        {text("Db/BaseName"), text("/tmp/Größe, Я;1=\"2\"\\3")},
        {text("Db/escapes"), text("é1 äbc\n\t")},
        {text("Db/beyond 16 bits"), text("🚚")},
        {text("Größe/ключ"), text("v")},
        {text("Größe/inner/é"), text(" spaces ")},
        {text("lists/texts"), QStringList{text("ä, ö"), text("Ж;"), text("")}},
        {text("lists/one"), QStringList{text("ü")}},
        {text("values/number"), -7},
        {text("values/bytes"), QByteArray("\0\xff\xc3\xa9", 4)},
        {text("values/point"), QPoint(1, -2)},
        {text("values/color"), QColor(1, 2, 3, 4)},
        {text("values/map"), QVariantMap{{text("a"), text("Ж")}, {text("b"), 2}}},
    };
}

constexpr char addedKey[] = "Größe/new Я";

void writeIniFiles(const QDir& folder)
{
    const QVariantMap values = iniValues();
    for (const IniFile& file : iniFiles()) {
        QSettings settings(folder.filePath(text(file.name)), file.writes);
        for (auto value = values.begin(); value != values.end(); ++value)
            settings.setValue(value.key(), value.value());
        settings.sync();
        expect(settings.status() == QSettings::NoError, text(file.name), "it cannot be written");
    }
}

void compareIniFile(const QSettings& settings, QVariantMap expected)
{
    const QStringList keys = settings.allKeys();
    for (const QString& key : keys) {
        // A file keeps numbers, and lists of one, as texts.
        QVariant read = settings.value(key);
        const QVariant value = expected.take(key);
        if (value.userType() == QMetaType::QStringList)
            read = read.toStringList();
        else if (value.userType() == QMetaType::Int)
            read = read.toInt();
        expect(read == value, settings.fileName() + QLatin1Char(' ') + key, "another value is read");
    }
    for (auto missing = expected.begin(); missing != expected.end(); ++missing)
        expect(false, settings.fileName() + QLatin1Char(' ') + missing.key(), "it is lost");
}

/// Compares what has been written, and adds a key, or compares what has been changed so.
void compareIniFiles(const QDir& folder, bool isChanged)
{
    QVariantMap expected = iniValues();
    if (isChanged)
        expected.insert(text(addedKey), text("Ж é"));
    for (const IniFile& file : iniFiles()) {
        QSettings settings(folder.filePath(text(file.name)), isChanged ? file.reads : file.changes);
        compareIniFile(settings, expected);
        settings.setValue(text(addedKey), text("Ж é"));
        settings.sync();
        expect(settings.status() == QSettings::NoError, text(file.name), "it cannot be changed");
    }
}

/// Prints the last states of the archive that the group Db of this INI file names.
void showArchive(const QString& iniFile)
{
    const ArchiveConnection archive(iniFile, QStringLiteral("Db"));
    QTextStream out(stdout);
    QList<qint16> types;
    readSensorTypes(types, archive.database());
    const QSqlError error = readLastStates(types, archive.database(), [&out](const MobData& state) {
        out << reportText(state) << "\n";
        return true;
    });
    expect(error.type() == QSqlError::NoError, iniFile, qUtf8Printable(archive.error() + error.text()));
}

} // namespace

int main(int argc, char* argv[])
{
    const QCoreApplication application(argc, argv);
    const QString action = QCoreApplication::arguments().value(1);
    const QString path = QCoreApplication::arguments().value(2);
    if (action == QLatin1String("write")) {
        exchangeRecords({path, true});
        writeIniFiles(path);
    } else if (action == QLatin1String("read")) {
        exchangeRecords({path, false});
    } else if (action == QLatin1String("change-ini")) {
        compareIniFiles(path, false);
    } else if (action == QLatin1String("read-ini")) {
        compareIniFiles(path, true);
    } else if (action == QLatin1String("states")) {
        showArchive(path);
    } else {
        expect(false, action, "no action; they are write, read, change-ini and read-ini FOLDER, states FILE");
    }
    return faults == 0 ? 0 : 1;
}
