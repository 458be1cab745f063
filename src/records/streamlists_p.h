#pragma once

#include <QDataStream>
#include <QList>

/**
 * Reads a list as Qt's own reader does: an unsigned 32-bit count and the elements; @p list is emptied first and stays
 * empty when the stream ends early; a status that the stream had before neither hinders the reading nor gets lost.
 *
 * Unlike Qt's reader it reserves nothing for a count that nobody has vouched for.
 */
template <typename T>
QDataStream& readList(QDataStream& stream, QList<T>& list)
{
    const QDataStream::Status before = stream.status();
    stream.resetStatus();
    list.clear();
    quint32 count = 0;
    stream >> count;
    for (quint32 i = 0; i < count; ++i) {
        T element;
        stream >> element;
        if (stream.status() != QDataStream::Ok) {
            list.clear();
            break;
        }
        list.append(element);
    }
    if (before != QDataStream::Ok) {
        stream.resetStatus();
        stream.setStatus(before);
    }
    return stream;
}
