#include "knownvalues_p.h"

#include "streamlists_p.h"
#include "valuecopy_p.h"

namespace {

constexpr int maximumDepth = 64;

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
