#include "valuecopy_p.h"

#include <QDateTime>
#include <QImageReader>
#include <QMutex>
#include <QTimeZone>

#include <algorithm>

namespace {

constexpr quint32 userTypeOfQt4 = 127;
[[maybe_unused]] constexpr quint32 firstGraphicTypeOfQt6 = 0x1000;

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

} // namespace

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
    if (m_hasPackedTexts && !m_room.take(imageTexts(value)))
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
