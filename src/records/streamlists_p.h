#pragma once

#include <QDataStream>
#include <QList>

/// At most so many elements are appended after the stream has failed, where a list's count goes on.
#ifdef FUZZING_BUILD_MODE_UNSAFE_FOR_PRODUCTION
constexpr int maximumMissingElements = 64; // else a third of all inputs would cost a second each
#else
constexpr int maximumMissingElements = 65536;
#endif

/**
 * Calls @p read as if the stream had not failed before; a status that it had is there again afterwards.
 *
 * @return whether the stream did not fail in it
 */
template <typename Read>
bool readAfresh(QDataStream& stream, Read read)
{
    const QDataStream::Status before = stream.status();
    stream.resetStatus();
    read();
    const bool whole = stream.status() == QDataStream::Ok;
    if (before != QDataStream::Ok) {
        stream.resetStatus();
        stream.setStatus(before);
    }
    return whole;
}

/**
 * Reads a list of the library's own format: a signed 32-bit count, and @p readElement called so many times, whether the
 * stream still has something for it or not; once it has failed, no more than maximumMissingElements times.
 */
template <typename ReadElement>
void readAnnounced(QDataStream& stream, ReadElement readElement)
{
    readAfresh(stream, [&] {
        qint32 count = 0;
        stream >> count;
        int missing = 0;
        for (qint32 i = 0; i < count && missing < maximumMissingElements; ++i) {
            readElement();
            if (stream.status() != QDataStream::Ok)
                ++missing;
        }
    });
}

/**
 * Reads a container of Qt's format: an unsigned 32-bit count, and @p readElement called so many times, but no more once
 * the stream has failed. A status that the stream had before neither hinders the reading nor gets lost.
 *
 * Unlike Qt's readers it reserves nothing for a count that nobody has vouched for.
 *
 * @return whether all elements came whole
 */
template <typename ReadElement>
bool readCounted(QDataStream& stream, ReadElement readElement)
{
    return readAfresh(stream, [&] {
        quint32 count = 0;
        stream >> count;
        for (quint32 i = 0; i < count && stream.status() == QDataStream::Ok; ++i)
            readElement();
    });
}

/** Replaces @p list by the elements that come whole; @return whether all did. */
template <typename T>
bool readWholeElements(QDataStream& stream, QList<T>& list)
{
    list.clear();
    return readCounted(stream, [&stream, &list] {
        T element;
        stream >> element;
        if (stream.status() == QDataStream::Ok)
            list.append(element);
    });
}

/** Replaces @p list as Qt's own reader does: with nothing if the stream cannot give all of it. */
template <typename T>
QDataStream& readList(QDataStream& stream, QList<T>& list)
{
    if (!readWholeElements(stream, list))
        list.clear();
    return stream;
}
