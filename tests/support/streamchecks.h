#pragma once

#include <QDataStream>
#include <QIODevice>
#include <QTest>

#include <utility>

inline QString text(const char* utf8)
{
    return QString::fromUtf8(utf8);
}

/** What a record's writer puts into a stream of this version. */
template <typename T>
QByteArray written(T&& record, int version = QDataStream::Qt_DefaultCompiledVersion)
{
    QByteArray bytes;
    QDataStream stream(&bytes, QIODevice::WriteOnly);
    stream.setVersion(version);
    stream << record;
    return bytes;
}

/** A record that is read, by default into an empty one, from the bytes of this text. */
template <typename T>
T readFrom(const QByteArray& hex, T into = T())
{
    QDataStream stream(QByteArray::fromHex(hex));
    stream >> into;
    return into;
}

/**
 * Checks a record's bytes, and its reader: first with the whole bytes, then with every beginning of them. The record
 * that is read into may already hold something; what is wrongly left in it shows when it is written again.
 */
template <typename T>
void streamsAs(const QByteArray& hex, T record, const T& used = T())
{
    const QByteArray bytes = QByteArray::fromHex(hex);
    QCOMPARE(written(std::as_const(record)).toHex(), bytes.toHex());
    QCOMPARE(written(record).toHex(), bytes.toHex());

    for (auto size = static_cast<int>(bytes.size()); size >= 0; --size) {
        T read = used;
        QDataStream stream(bytes.left(size));
        stream >> read;
        QCOMPARE(stream.status(), size == bytes.size() ? QDataStream::Ok : QDataStream::ReadPastEnd);
        QVERIFY(stream.atEnd());
        if (size == bytes.size())
            QCOMPARE(written(read).toHex(), bytes.toHex());
    }
}
