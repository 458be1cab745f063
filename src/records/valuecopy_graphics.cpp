#include "valuecopy_p.h"

#include <QBrush>
#include <QGuiApplication>
#include <QImage>
#include <QPen>
#include <QPixmap>
#include <QThread>
#include <QtEndian>

#include <algorithm>

namespace {

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

/// Only where an application shows windows are there pixmaps, and only in its own thread.
bool canHoldPixmaps()
{
    const auto* application = qobject_cast<QGuiApplication*>(QCoreApplication::instance());
    return application && application->thread() == QThread::currentThread();
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

} // namespace

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
    // Sides are compared by themselves first, as the product of any two might not fit.
    if (!chunk.startsWith(QByteArray("\0\0\0\rIHDR", 8)) || width == 0 || height == 0 || width > m_room.bytes ||
        height > m_room.bytes || width * height > m_room.bytes) {
        corrupt();
        return;
    }
    m_packedBits = width * height * depth;
    m_imageBytes = width * height * (depth > 8 ? 8 : 4);
    if (m_imageBytes > m_room.bytes)
        corrupt();
}

/// The bytes of its texts.
quint64 ValueCopy::imageTexts(const QVariant& value)
{
    const QImage image = imageOf(value);
    quint64 bytes = 0;
    const QStringList keys = image.textKeys();
    for (const QString& key : keys)
        bytes += sizeof(QChar) * static_cast<quint64>(key.size() + image.text(key).size());
    return bytes;
}
