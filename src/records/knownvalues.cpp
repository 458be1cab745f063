#include "knownvalues_p.h"

#include "streamlists_p.h"

#include <QBrush>
#include <QByteArray>
#include <QDataStream>
#include <QDateTime>
#include <QGuiApplication>
#include <QIODevice>
#include <QImage>
#include <QImageReader>
#include <QMutex>
#include <QPen>
#include <QPixmap>
#include <QThread>
#include <QTimeZone>
#include <QVariant>
#include <QtEndian>

#include <algorithm>
#include <cstring>

namespace {

constexpr int maximumDepth = 64;

/// The types of Qt's graphics by their numbers in streams of Qt 5; those of Qt 6 have other numbers for them.
enum GraphicType
{
    Font = 64,
    Pixmap = 65,
    Brush = 66,
    Color = 67,
    Image = 70,
    Polygon = 71,
    Pen = 76,
    Transform = 80,
    RealPolygon = 86,
    FirstGraphicType = Font,
    UnknownType = -1,
};

constexpr quint32 userTypeOfQt4 = 127;
[[maybe_unused]] constexpr quint32 firstGraphicTypeOfQt6 = 0x1000;
constexpr int colorSize = 11;
constexpr int transformReals = 9;
constexpr quint32 maximumUnsortedStops = 4096;

constexpr int pngSignatureSize = 8;
constexpr char pngSignature[] = "\x89PNG\r\n\x1a\n";
constexpr int chunkHeadSize = 8;
constexpr quint64 checksumSize = 4;
constexpr quint64 maximumInflation = 1032; // of what deflate makes of a byte, at best
constexpr quint64 maximumText = 8000000;   // of what libpng unpacks a chunk to
constexpr quint64 maximumTexts = 8 * maximumText;

void setUpAs(QDataStream& stream, const QDataStream& model)
{
    stream.setVersion(model.version());
    stream.setByteOrder(model.byteOrder());
    stream.setFloatingPointPrecision(model.floatingPointPrecision());
}

/// Only where an application shows windows are there pixmaps, and only in its own thread.
bool canHoldPixmaps()
{
    const auto* application = qobject_cast<QGuiApplication*>(QCoreApplication::instance());
    return application && application->thread() == QThread::currentThread();
}

/// What stands before every value.
struct ValueHead
{
    quint32 type = 0;
    qint8 isNull = 0;
};

QDataStream& operator>>(QDataStream& stream, ValueHead& head)
{
    stream >> head.type;
    if (stream.version() >= QDataStream::Qt_4_2)
        stream >> head.isNull;
    return stream;
}

QDataStream& operator<<(QDataStream& stream, const ValueHead& head)
{
    stream << head.type;
    if (stream.version() >= QDataStream::Qt_4_2)
        stream << head.isNull;
    return stream;
}

template <typename T>
void readAs(QDataStream& stream, QVariant& value)
{
    T read = {};
    stream >> read;
    if (stream.status() == QDataStream::Ok)
        value = read;
}

/// Nearly all values are of these types, which have nothing to count on: they come without a copy. @return whether it
/// was one
bool readPlain(QDataStream& stream, const ValueHead& head, QVariant& value)
{
    if (head.isNull != 0)
        return false;
    switch (head.type) {
    case QMetaType::Bool: readAs<bool>(stream, value); return true;
    case QMetaType::Int: readAs<qint32>(stream, value); return true;
    case QMetaType::UInt: readAs<quint32>(stream, value); return true;
    case QMetaType::LongLong: readAs<qint64>(stream, value); return true;
    case QMetaType::Double: readAs<double>(stream, value); return true;
    case QMetaType::QString: readAs<QString>(stream, value); return true;
    case QMetaType::QByteArray: readAs<QByteArray>(stream, value); return true;
    }
    return false;
}

/// The image that a value is or is drawn with.
QImage imageOf(const QVariant& value)
{
    switch (value.userType()) {
    case QMetaType::QImage: return value.value<QImage>();
    case QMetaType::QPixmap: return value.value<QPixmap>().toImage();
    case QMetaType::QBrush: return value.value<QBrush>().textureImage();
    case QMetaType::QPen: return value.value<QPen>().brush().textureImage();
    }
    return {};
}

quint64 textBytes(const QImage& image)
{
    quint64 bytes = 0;
    const QStringList keys = image.textKeys();
    for (const QString& key : keys)
        bytes += sizeof(QChar) * static_cast<quint64>(key.size() + image.text(key).size());
    return bytes;
}

/// Calls @p read where Qt may decode an image of so many bytes. Qt 6 has a lower limit, one for the whole process.
template <typename Read>
void readImage([[maybe_unused]] quint64 imageBytes, Read read)
{
#if QT_VERSION >= QT_VERSION_CHECK(6, 0, 0)
    static QMutex mutex;
    const QMutexLocker locker(&mutex);
    const int before = QImageReader::allocationLimit();
    if (before != 0) // which is none
        QImageReader::setAllocationLimit(std::max(before, static_cast<int>(imageBytes >> 20) + 1));
    read();
    QImageReader::setAllocationLimit(before);
#else
    read();
#endif
}

/**
 * One value that holds no others. It is copied step by step as Qt's readers take it, but counting on nothing that has not
 * come; then Qt reads the copy, whose counts have been found true, and has to take all of it.
 */
class ValueCopy
{
public:
    ValueCopy(QDataStream& stream, ImageRoom& room)
        : m_stream(stream), m_room(room), m_output(&m_bytes, QIODevice::WriteOnly)
    {
        setUpAs(m_output, stream);
    }

    /// The value behind the head that has been read of it; the stream has failed unless it came whole.
    QVariant readBehind(const ValueHead& head);

private:
    bool good() const { return m_stream.status() == QDataStream::Ok; }
    bool from(QDataStream::Version version) const { return m_stream.version() >= version; }
    void corrupt() { m_stream.setStatus(QDataStream::ReadCorruptData); }

    template <typename T>
    T take()
    {
        T value = {};
        m_stream >> value;
        m_output << value;
        return value;
    }
    void bytes(quint64 size);
    QByteArray rawBytes(int size);
    void reals(quint64 count);

    int readType(quint32 stored);
    void content(int type);
    void graphics(int type);
    void number(int type);
    void texts();
    void moment();
    QString zoneName();
    void font();
    void brush();
    void stops();
    quint64 radialReals() const;
    void pen();
    void image();
    void imageHeader();

    QVariant loaded();
    void checkLoaded(const QVariant& value);

    QDataStream& m_stream;
    ImageRoom& m_room;
    quint64 m_imageBytes = 0;
    quint64 m_packedBits = 0; // that the pixels must be unpacked from, at least
    bool m_hasPackedTexts = false;
    QByteArray m_bytes;
    QDataStream m_output;
};

QVariant ValueCopy::readBehind(const ValueHead& head)
{
    m_output << head;
    const int type = good() ? readType(head.type) : UnknownType;
    if (good())
        content(type);
    if (!good())
        return {};
    const QVariant value = loaded();
    if (good())
        checkLoaded(value);
    return value;
}

/// What Qt makes of the copy; decodes an image.
QVariant ValueCopy::loaded()
{
    QDataStream copied(m_bytes);
    setUpAs(copied, m_stream);
    QVariant value;
    if (m_imageBytes > 0)
        readImage(m_imageBytes, [&] { copied >> value; });
    else
        copied >> value;
    if (copied.status() != QDataStream::Ok || !copied.atEnd())
        corrupt();
    return value;
}

void ValueCopy::checkLoaded(const QVariant& value)
{
    // The writer of a moment asks its zone, which has to be there.
    if (value.userType() == QMetaType::QDateTime) {
        const QDateTime moment = value.toDateTime();
        if (moment.timeSpec() == Qt::TimeZone && !moment.timeZone().isValid())
            corrupt();
    }
    if (m_hasPackedTexts && !m_room.take(textBytes(imageOf(value))))
        corrupt();
}

void ValueCopy::bytes(quint64 size)
{
    constexpr quint64 most = 65536;
    while (size > 0 && good()) {
        const QByteArray piece = rawBytes(static_cast<int>(std::min(size, most)));
        size -= static_cast<quint64>(piece.size());
    }
}

/// So many bytes, or fewer from a stream that then has failed.
QByteArray ValueCopy::rawBytes(int size)
{
    QByteArray piece(size, Qt::Uninitialized);
    const int got = std::max(0, static_cast<int>(m_stream.readRawData(piece.data(), size)));
    if (got < size)
        m_stream.setStatus(QDataStream::ReadPastEnd);
    piece.truncate(got);
    m_output.writeRawData(piece.constData(), got);
    return piece;
}

void ValueCopy::reals(quint64 count)
{
    const bool single = from(QDataStream::Qt_4_6) && m_stream.floatingPointPrecision() == QDataStream::SinglePrecision;
    bytes(count * (single ? sizeof(float) : sizeof(double)));
}

/// The type in Qt 5's numbers.
int ValueCopy::readType(quint32 stored)
{
    if (!from(QDataStream::Qt_5_0)) {
        if (stored == userTypeOfQt4) // of those, polygons are the only ones that Qt 5 writes by itself
            return take<QByteArray>().startsWith("QPolygonF\0") ? RealPolygon : UnknownType;
        if (stored >= 128 && stored <= 137)
            return static_cast<int>(stored) - 97;
        if (stored >= 75 && stored <= 86)
            return stored == 75 ? UnknownType : static_cast<int>(stored) - 1;
    }
#if QT_VERSION >= QT_VERSION_CHECK(6, 0, 0)
    if (from(QDataStream::Qt_6_0) && stored >= FirstGraphicType)
        return stored < firstGraphicTypeOfQt6 || stored > 2 * firstGraphicTypeOfQt6
                   ? UnknownType
                   : static_cast<int>(stored - firstGraphicTypeOfQt6) + FirstGraphicType;
#endif
    return stored <= RealPolygon ? static_cast<int>(stored) : UnknownType;
}

void ValueCopy::content(int type)
{
    switch (type) {
    case QMetaType::UnknownType: // as an invalid value is written
        if (!from(QDataStream::Qt_5_0))
            take<QString>();
        break;
    case QMetaType::QString: take<QString>(); break;
    case QMetaType::QByteArray:
    case QMetaType::QUrl: take<QByteArray>(); break;
    case QMetaType::QStringList: texts(); break;
    case QMetaType::QDate: bytes(from(QDataStream::Qt_5_0) ? 8 : 4); break;
    case QMetaType::QTime: bytes(4); break;
    case QMetaType::QDateTime: moment(); break;
    case QMetaType::QPoint:
    case QMetaType::QSize: bytes(8); break;
    case QMetaType::QLine:
    case QMetaType::QRect: bytes(16); break;
    case QMetaType::QPointF:
    case QMetaType::QSizeF: reals(2); break;
    case QMetaType::QLineF:
    case QMetaType::QRectF: reals(4); break;
    default:
        if (type >= FirstGraphicType)
            graphics(type);
        else
            number(type);
    }
}

void ValueCopy::graphics(int type)
{
    switch (type) {
    case Color: bytes(colorSize); break;
    case Font: font(); break;
    case Brush: brush(); break;
    case Pen: pen(); break;
    case Pixmap:
        if (!canHoldPixmaps())
            corrupt();
        else
            image();
        break;
    case Image: image(); break;
    case Transform: reals(transformReals); break;
    case Polygon: bytes(quint64{8} * take<quint32>()); break;
    case RealPolygon: reals(quint64{2} * take<quint32>()); break;
    default: corrupt();
    }
}

void ValueCopy::number(int type)
{
    switch (type) {
    case QMetaType::Bool:
    case QMetaType::Char:
    case QMetaType::SChar:
    case QMetaType::UChar: bytes(1); break;
    case QMetaType::QChar:
    case QMetaType::Short:
    case QMetaType::UShort: bytes(2); break;
    case QMetaType::Int:
    case QMetaType::UInt: bytes(4); break;
    case QMetaType::Long:
    case QMetaType::ULong:
    case QMetaType::LongLong:
    case QMetaType::ULongLong: bytes(8); break;
    case QMetaType::Double: reals(1); break;
    case QMetaType::Float:
        if (from(QDataStream::Qt_4_6))
            reals(1);
        else
            bytes(sizeof(float));
        break;
    default: corrupt();
    }
}

void ValueCopy::texts()
{
    for (auto count = take<quint32>(); count > 0 && good(); --count)
        take<QString>();
}

void ValueCopy::moment()
{
    bytes(from(QDataStream::Qt_5_0) ? 8 : 4); // date
    bytes(4);                                 // time
    const auto zoneKind = take<qint8>();
    // Where kinds are Qt's own, it looks for the zone of any that it does not know. Other versions have other kinds.
    const bool isQts = from(QDataStream::Qt_5_2) || m_stream.version() == QDataStream::Qt_5_0;
    if (isQts && (zoneKind < Qt::LocalTime || zoneKind > Qt::TimeZone))
        corrupt();
    if (!from(QDataStream::Qt_5_2))
        return;
    if (zoneKind == Qt::OffsetFromUTC)
        bytes(4);
    if (zoneKind != Qt::TimeZone || zoneName() != QLatin1String("OffsetFromUtc"))
        return;
    zoneName();
    bytes(4);
    take<QString>();
    take<QString>();
    bytes(4);
    take<QString>();
}

/// Qt opens the file of this name among those of the zones. A name that leads out of their folder may be that of a
/// pipe or a device, which need not end. Any other is left to Qt: rules and an application's own zones have any
/// characters.
QString ValueCopy::zoneName()
{
    const auto name = take<QString>();
    if (name.startsWith(QLatin1Char('/')) || name.contains(QChar(QChar::Null)) ||
        name.split(QLatin1Char('/')).contains(QLatin1String("..")))
        corrupt();
    return name;
}

void ValueCopy::font()
{
    take<QString>();
    if (from(QDataStream::Qt_5_4))
        take<QString>(); // name of the style
    reals(1);            // size in points
    bytes(4);            // size in pixels
    bytes(from(QDataStream::Qt_5_4) ? 3 : 2);
    bytes(3); // weight, and what else the versions keep in them
    if (from(QDataStream::Qt_4_3))
        bytes(2);
    if (from(QDataStream::Qt_4_4))
        bytes(1);
    if (from(QDataStream::Qt_4_5))
        bytes(8);
    if (from(QDataStream::Qt_5_4))
        bytes(1);
    if (from(QDataStream::Qt_5_6))
        bytes(1);
    if (from(QDataStream::Qt_5_13))
        texts(); // families
}

void ValueCopy::brush()
{
    const int style = take<quint8>();
    bytes(colorSize);
    if (style == Qt::TexturePattern) {
        if (!from(QDataStream::Qt_5_5) && !canHoldPixmaps())
            corrupt();
        else
            image();
    } else if (style == Qt::LinearGradientPattern || style == Qt::RadialGradientPattern ||
               style == Qt::ConicalGradientPattern) {
        const int type = take<qint32>();
        if (from(QDataStream::Qt_4_3))
            bytes(8); // how it goes on, and in which coordinates
        if (from(QDataStream::Qt_4_5))
            bytes(4);
        stops();
        reals(type == QGradient::LinearGradient ? 4 : type == QGradient::RadialGradient ? radialReals() : 3);
    }
    if (from(QDataStream::Qt_4_3))
        reals(transformReals);
}

/// Qt takes stops that ascend as they are, and puts each of any others in its place, which takes the square of their
/// number. Those that it writes ascend, unless single precision makes neighbours equal.
void ValueCopy::stops()
{
    const auto count = take<quint32>();
    bool ascend = true;
    double last = -1;
    for (quint32 i = 0; i < count && good(); ++i) {
        const auto position = take<double>();
        bytes(colorSize);
        if (!(position >= 0 && position <= 1)) // as is a position that is no number
            corrupt();
        ascend = ascend && position > last;
        last = position;
    }
    if (!ascend && count > maximumUnsortedStops)
        corrupt();
}

/// Two points and a radius; Qt 6 has another radius.
quint64 ValueCopy::radialReals() const
{
#if QT_VERSION >= QT_VERSION_CHECK(6, 0, 0)
    if (from(QDataStream::Qt_6_0))
        return 6;
#endif
    return 5;
}

void ValueCopy::pen()
{
    bytes(from(QDataStream::Qt_4_3) ? 3 : 1);
    reals(1);
    brush();
    reals(1);
    reals(take<quint32>()); // dashes
    if (from(QDataStream::Qt_4_3))
        reals(1); // where they begin
    if (from(QDataStream::Qt_5_0))
        bytes(1);
}

/// A mark and, unless that is 0, a PNG file: its signature, and chunks of length, type, so many bytes and a checksum.
void ValueCopy::image()
{
    if (take<qint32>() == 0 || !good())
        return;
    if (rawBytes(pngSignatureSize) != pngSignature)
        corrupt();
    imageHeader();
    quint64 packed = 0;
    quint64 texts = 0;
    QByteArray type;
    while (good() && type != "IEND") {
        const QByteArray head = rawBytes(chunkHeadSize);
        if (!good())
            return;
        const auto size = qFromBigEndian<quint32>(head.constData());
        type = head.mid(4);
        bytes(size + checksumSize);
        if (type == "IDAT")
            packed += size;
        if (type == "zTXt" || type == "iTXt" || type == "iCCP") {
            m_hasPackedTexts = true;
            texts += std::min(maximumInflation * size, maximumText);
        }
    }
    if (good() && (m_packedBits / 8 > maximumInflation * packed || texts > maximumTexts || !m_room.take(m_imageBytes)))
        corrupt();
}

/// The first chunk: width, height, depth, color type and three more.
void ValueCopy::imageHeader()
{
    const QByteArray chunk = rawBytes(chunkHeadSize + 13);
    bytes(checksumSize);
    if (!good())
        return;
    const quint64 width = qFromBigEndian<quint32>(chunk.constData() + 8);
    const quint64 height = qFromBigEndian<quint32>(chunk.constData() + 12);
    const quint64 depth = static_cast<uchar>(chunk[16]);
    constexpr quint64 most = 1U << 31; // of either, by the format
    if (!chunk.startsWith(QByteArray("\0\0\0\rIHDR", 8)) || width == 0 || height == 0 || width >= most ||
        height >= most) {
        corrupt();
        return;
    }
    m_packedBits = width * height * depth;
    m_imageBytes = width * height * (depth > 8 ? 8 : 4);
    if (m_imageBytes > m_room.bytes)
        corrupt();
}

/// A list, map or hash without elements, null where its head says so.
QVariant emptyContainer(const ValueHead& head, const QDataStream& model)
{
    QByteArray bytes;
    QDataStream output(&bytes, QIODevice::WriteOnly);
    setUpAs(output, model);
    output << head << quint32{0};
    QDataStream input(bytes);
    setUpAs(input, model);
    QVariant value;
    input >> value;
    return value;
}

/// The elements of a container that nothing else shares. They are put in as Qt's reader does, as data() would take the
/// mark of null away in Qt 6.
template <typename Container>
Container& contentOf(QVariant& value)
{
    return *static_cast<Container*>(const_cast<void*>(value.constData()));
}

bool readValue(QDataStream& stream, QVariant& value, ImageRoom& room, int depth);

template <typename Container, typename ReadContainer>
bool readNamed(QDataStream& stream, QVariant& value, ImageRoom& room, int depth)
{
    ReadContainer read;
    const bool whole = readCounted(stream, [&] {
        QString name;
        QVariant element;
        stream >> name;
        if (readValue(stream, element, room, depth + 1))
            read.insert(name, element);
    });
    contentOf<Container>(value) = read;
    return whole;
}

bool readContainer(QDataStream& stream, QVariant& value, ImageRoom& room, int depth)
{
    switch (value.userType()) {
    case QMetaType::QVariantMap: return readNamed<QVariantMap, ReadMap>(stream, value, room, depth);
    case QMetaType::QVariantHash: return readNamed<QVariantHash, ReadHash>(stream, value, room, depth);
    }
    auto& list = contentOf<QVariantList>(value);
    return readCounted(stream, [&] {
        QVariant element;
        if (readValue(stream, element, room, depth + 1))
            list.append(element);
    });
}

bool readValue(QDataStream& stream, QVariant& value, ImageRoom& room, int depth)
{
    ValueHead head;
    stream >> head;
    if (depth > maximumDepth)
        stream.setStatus(QDataStream::ReadCorruptData);
    if (stream.status() != QDataStream::Ok)
        return false;
    if (readPlain(stream, head, value))
        return stream.status() == QDataStream::Ok;
    QVariant whole;
    if (head.type == QMetaType::QVariantList || head.type == QMetaType::QVariantMap ||
        head.type == QMetaType::QVariantHash) {
        whole = emptyContainer(head, stream);
        readContainer(stream, whole, room, depth);
    } else {
        whole = ValueCopy(stream, room).readBehind(head);
    }
    if (stream.status() != QDataStream::Ok)
        return false;
    value = whole;
    return true;
}

} // namespace

bool readKnownValue(QDataStream& stream, QVariant& value, ImageRoom& room)
{
    if (stream.version() < QDataStream::Qt_4_0)
        stream.setStatus(QDataStream::ReadCorruptData);
    return readValue(stream, value, room, 1);
}
