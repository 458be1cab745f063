#pragma once

#include <QDataStream>
#include <QList>

/**
 * Reads a list in Qt's generic form (unsigned 32-bit count, elements) into @p list, which is emptied first.
 *
 * Unlike Qt's own reader it reserves nothing for a count that nobody has vouched for, and keeps the elements that were
 * read whole when the stream ends early.
 */
template <typename T>
QDataStream& readList(QDataStream& stream, QList<T>& list)
{
    list.clear();
    quint32 count = 0;
    stream >> count;
    for (quint32 i = 0; i < count; ++i) {
        T element;
        stream >> element;
        if (stream.status() != QDataStream::Ok)
            break;
        list.append(element);
    }
    return stream;
}
