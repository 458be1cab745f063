#include "knownvalues_p.h"

#include <QBrush>
#include <QByteArray>
#include <QDataStream>
#include <QDateTime>
#include <QGuiApplication>
#include <QIODevice>
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
constexpr quint64 maximumPixels = 1 << 26;
constexpr quint64 maximumInflation = 1032; // of what deflate makes of a byte, at best

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

/**
 * Copies one value, step by step as Qt's readers take it, but counting on nothing that has not come. What Qt then reads
 * is the copy, whose counts have been found true.
 */
class ValueCopy
{
public:
    explicit ValueCopy(QDataStream& stream) : m_stream(stream), m_output(&m_bytes, QIODevice::WriteOnly)
    {
        setUpAs(m_output, stream);
    }

    /// A value behind the head that has been read of it.
    bool copyBehind(const ValueHead& head, int depth = 1, int start = 0);
    /// What Qt makes of the copy from a place on; fails the stream unless that takes all of it.
    QVariant loaded(int start = 0);

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

    bool copy(int depth);
    int readType(quint32 stored);
    void content(int type, int depth);
    void graphics(int type);
    void number(int type);
    void elements(bool named, int depth);
    void moment();
    QString zoneName();
    void font();
    void brush();
    void stops();
    quint64 radialReals() const;
    void pen();
    void image();
    quint64 pngPixels(const QByteArray& header, quint64& bits);

    QDataStream& m_stream;
    QByteArray m_bytes;
    QDataStream m_output;
};

bool ValueCopy::copy(int depth)
{
    const auto start = static_cast<int>(m_bytes.size());
    ValueHead head;
    m_stream >> head;
    return copyBehind(head, depth, start);
}

bool ValueCopy::copyBehind(const ValueHead& head, int depth, int start)
{
    if (depth > maximumDepth)
        corrupt();
    m_output << head.type;
    if (from(QDataStream::Qt_4_2))
        m_output << head.isNull;
    const int type = good() ? readType(head.type) : UnknownType;
    if (good())
        content(type, depth);
    // Were a part of the copy shorter for Qt than it is here, Qt would take what follows for something else.
    const bool isContainer =
        type == QMetaType::QVariantList || type == QMetaType::QVariantMap || type == QMetaType::QVariantHash;
    if (good() && !isContainer) {
        const QVariant value = loaded(start);
        // The writer of a moment asks its zone, which has to be there.
        if (type == QMetaType::QDateTime) {
            const QDateTime moment = value.toDateTime();
            if (moment.timeSpec() == Qt::TimeZone && !moment.timeZone().isValid())
                corrupt();
        }
    }
    return good();
}

QVariant ValueCopy::loaded(int start)
{
    QDataStream copied(m_bytes.mid(start));
    setUpAs(copied, m_stream);
    QVariant value;
    copied >> value;
    if (copied.status() != QDataStream::Ok || !copied.atEnd())
        corrupt();
    return value;
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

void ValueCopy::content(int type, int depth)
{
    switch (type) {
    case QMetaType::UnknownType: // as an invalid value is written
        if (!from(QDataStream::Qt_5_0))
            take<QString>();
        break;
    case QMetaType::QString: take<QString>(); break;
    case QMetaType::QByteArray:
    case QMetaType::QUrl: take<QByteArray>(); break;
    case QMetaType::QStringList:
        for (auto count = take<quint32>(); count > 0 && good(); --count)
            take<QString>();
        break;
    case QMetaType::QVariantList: elements(false, depth); break;
    case QMetaType::QVariantMap:
    case QMetaType::QVariantHash: elements(true, depth); break;
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

void ValueCopy::elements(bool named, int depth)
{
    for (auto count = take<quint32>(); count > 0 && good(); --count) {
        if (named)
            take<QString>();
        if (good())
            copy(depth + 1);
    }
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
        content(QMetaType::QStringList, maximumDepth); // families
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
    quint64 pixels = 0;
    quint64 bits = 0;
    quint64 packed = 0;
    QByteArray type;
    while (good() && type != "IEND") {
        const QByteArray head = rawBytes(8);
        if (!good())
            return;
        const auto size = qFromBigEndian<quint32>(head.constData());
        type = head.mid(4);
        if (pixels == 0) {
            if (type != "IHDR" || size != 13) {
                corrupt();
                return;
            }
            pixels = pngPixels(rawBytes(13), bits);
        } else {
            bytes(size);
        }
        bytes(4);
        if (type == "IDAT")
            packed += size;
    }
    if (good() && (pixels > maximumPixels || bits / 8 > maximumInflation * packed))
        corrupt();
}

/// From width, height, depth and color type; @p bits is how many they take at least.
quint64 ValueCopy::pngPixels(const QByteArray& header, quint64& bits)
{
    if (!good())
        return 1;
    const quint64 width = qFromBigEndian<quint32>(header.constData());
    const quint64 height = qFromBigEndian<quint32>(header.constData() + 4);
    if (width == 0 || height == 0 || width > maximumPixels || height > maximumPixels) {
        corrupt();
        return 1;
    }
    bits = width * height * static_cast<uchar>(header[8]);
    return width * height;
}

} // namespace

bool readKnownValue(QDataStream& stream, QVariant& value)
{
    if (stream.version() < QDataStream::Qt_4_0)
        stream.setStatus(QDataStream::ReadCorruptData);
    ValueHead head;
    stream >> head;
    if (stream.status() != QDataStream::Ok)
        return false;
    if (readPlain(stream, head, value))
        return stream.status() == QDataStream::Ok;
    ValueCopy copy(stream);
    if (!copy.copyBehind(head))
        return false;
    const QVariant whole = copy.loaded();
    if (stream.status() != QDataStream::Ok)
        return false;
    value = whole;
    return true;
}
