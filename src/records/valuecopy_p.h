#pragma once

#include "knownvalues_p.h"

#include <QByteArray>
#include <QDataStream>
#include <QIODevice>

/// What stands before every value.
struct ValueHead
{
    quint32 type = 0;
    qint8 isNull = 0;
};

inline QDataStream& operator>>(QDataStream& stream, ValueHead& head)
{
    stream >> head.type;
    if (stream.version() >= QDataStream::Qt_4_2)
        stream >> head.isNull;
    return stream;
}

inline QDataStream& operator<<(QDataStream& stream, const ValueHead& head)
{
    stream << head.type;
    if (stream.version() >= QDataStream::Qt_4_2)
        stream << head.isNull;
    return stream;
}

/// Reads or writes as @p model does.
inline void setUpAs(QDataStream& stream, const QDataStream& model)
{
    stream.setVersion(model.version());
    stream.setByteOrder(model.byteOrder());
    stream.setFloatingPointPrecision(model.floatingPointPrecision());
}

/**
 * One value that holds no others, read in three steps: it is copied as Qt's readers take it, but counting on nothing
 * that has not come; Qt reads the copy, whose counts have been found true, and has to take all of it; and what shows
 * only then is checked. Takes once more the memory that the value takes in the stream.
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
    static quint64 imageTexts(const QVariant& value);

    /// What Qt makes of the copy. Decodes an image, which costs more than all else here.
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
