#pragma once

#include <QtGlobal>

QT_BEGIN_NAMESPACE
class QByteArray;
class QVariant;
QT_END_NAMESPACE
struct ImageRoom;

/**
 * An INI file of ASCII characters in which no value begins with "@Variant(" or "@DateTime(", as QSettings hands what
 * follows to QVariant, which trusts it: such an at sign is replaced by a character that no text has.
 */
QByteArray withoutStreamedValues(const QByteArray& ini);

/**
 * The value that QSettings has read from such a file, as it would have been.
 *
 * @param room for the images of the whole file
 * @return false if the value is damaged
 */
bool restoreStreamedValues(QVariant& value, ImageRoom& room);
