#pragma once

#include <QtGlobal>

QT_BEGIN_NAMESPACE
class QByteArray;
class QVariant;
QT_END_NAMESPACE
struct ImageRoom;

/** Where a reader stands that takes an INI file character by character, by QSettings' rules. */
class IniPlace
{
public:
    void take(ushort character);
    bool inValue() const { return m_part == Value; }
    bool inComment() const { return m_part == Comment; }
    bool isQuoted() const { return m_quoted; }
    /** The character before was a backslash that escapes the next. */
    bool isEscaped() const { return m_escaped; }

private:
    enum Part
    {
        Start,
        Section,
        Key,
        Value,
        Comment
    };

    Part m_part = Start;
    bool m_quoted = false;
    bool m_escaped = false;
    ushort m_escapedEnd = 0; ///< Of a line; the other half of "\r\n" belongs to it.
};

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
