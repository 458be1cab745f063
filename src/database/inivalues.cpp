#include "inivalues_p.h"

#include "../records/knownvalues_p.h"

#include <QByteArray>
#include <QDataStream>
#include <QStringList>
#include <QVariant>

#include <cstring>
#include <utility>

namespace {

/// A code point that Unicode keeps free of characters, and its octal escape, which no digit of a name can prolong.
constexpr ushort placeHolder = 0xFDD0;
constexpr char placeHolderEscape[] = "\\176720";

int digitOf(char character, int base)
{
    const int digit = character >= 'a'   ? character - 'a' + 10
                      : character >= 'A' ? character - 'A' + 10
                                         : character - '0';
    return digit >= 0 && digit < base ? digit : -1;
}

bool endsLine(ushort character)
{
    return character == '\n' || character == '\r';
}

/// Goes through a file as QSettings does, and finds where values and elements of lists begin.
class Scanner
{
public:
    explicit Scanner(const QByteArray& ini) : m_ini(ini) { m_result.reserve(ini.size()); }

    QByteArray scan()
    {
        while (m_place < m_ini.size())
            step();
        return m_result;
    }

private:
    char at(int place) const { return place < m_ini.size() ? m_ini[place] : '\n'; }
    void copy(int count)
    {
        for (; count > 0 && m_place < m_ini.size(); --count, ++m_place) {
            m_line.take(static_cast<uchar>(m_ini[m_place]));
            m_result += m_ini[m_place];
        }
    }

    void step();
    void escape();
    void atSign(int size);

    const QByteArray m_ini;
    QByteArray m_result;
    int m_place = 0;
    IniPlace m_line;
    bool m_atStart = false; ///< Of a value or of an element of a list, whose text is still empty.
};

void Scanner::step()
{
    const char character = at(m_place);
    if (character == '\\' && !m_line.inComment()) {
        escape();
    } else if (!m_line.inValue()) {
        copy(1);
        m_atStart = m_line.inValue();
    } else if (m_atStart && character == '@') {
        atSign(1);
    } else {
        if (character == ',' && !m_line.isQuoted())
            m_atStart = true;
        else if (character != '"' && character != ' ' && character != '\t' && !endsLine(static_cast<uchar>(character)))
            m_atStart = false;
        copy(1);
    }
}

void Scanner::escape()
{
    const bool hexadecimal = at(m_place + 1) == 'x';
    const int base = hexadecimal ? 16 : 8;
    int end = m_place + (hexadecimal ? 2 : 1);
    const int digits = end;
    uint number = 0;
    for (int digit; m_line.inValue() && (digit = digitOf(at(end), base)) >= 0; ++end)
        number = number * static_cast<uint>(base) + static_cast<uint>(digit);
    if (end > digits) {
        if (m_atStart && (number & 0xFFFF) == '@') {
            atSign(end - m_place);
            return;
        }
        m_atStart = false;
        copy(end - m_place);
        return;
    }
    // The end of a line is left out with what escapes it, and so is what Qt does not know as an escape.
    const auto escaped = static_cast<uchar>(at(m_place + 1));
    const auto next = static_cast<uchar>(at(m_place + 2));
    const bool isPair = endsLine(escaped) && endsLine(next) && escaped != next;
    m_atStart = m_atStart && (escaped == '\0' || !std::strchr("abfnrtv\"?'\\", escaped));
    copy(isPair ? 3 : 2);
}

/// What follows may be a name that leads to QVariant, or hide one behind an escape, a quote or a space.
void Scanner::atSign(int size)
{
    const char next = at(m_place + size);
    m_atStart = false;
    if (!std::strchr("VD\\\" \t\r\n", next)) {
        copy(size);
        return;
    }
    m_result += placeHolderEscape;
    m_place += size;
}

bool restoreText(QString text, QVariant& value, ImageRoom& room)
{
    const bool marked = text.startsWith(QChar(placeHolder));
    text.replace(QChar(placeHolder), QLatin1Char('@'));
    value = text;
    if (!marked || !text.endsWith(QLatin1Char(')')))
        return true;
    const bool isVariant = text.startsWith(QLatin1String("@Variant("));
    if (!isVariant && !text.startsWith(QLatin1String("@DateTime(")))
        return true;
    const QByteArray bytes = text.mid(text.indexOf(QLatin1Char('(')) + 1).toLatin1();
    QDataStream stream(bytes);
    stream.setVersion(isVariant ? QDataStream::Qt_4_0 : QDataStream::Qt_5_6);
    return readKnownValue(stream, value, room);
}

} // namespace

void IniPlace::take(ushort character)
{
    const ushort escapedEnd = std::exchange(m_escapedEnd, 0);
    if (std::exchange(m_escaped, false)) {
        m_escapedEnd = endsLine(character) ? character : 0;
        return;
    }
    if (endsLine(character)) {
        if (m_part == Comment || (!m_quoted && (escapedEnd == 0 || escapedEnd == character)))
            m_part = Start;
        return;
    }
    if (m_part == Comment)
        return;
    if (m_part == Start && character != ' ' && character != '\t')
        m_part = character == '[' ? Section : Key;
    if (character == '\\')
        m_escaped = true;
    else if (character == '"')
        m_quoted = !m_quoted;
    else if (character == ';' && !m_quoted)
        m_part = Comment;
    else if (character == '=' && !m_quoted && m_part == Key)
        m_part = Value;
}

QByteArray withoutStreamedValues(const QByteArray& ini)
{
    return ini.contains('@') || ini.contains('\\') ? Scanner(ini).scan() : ini;
}

bool restoreStreamedValues(QVariant& value, ImageRoom& room)
{
    if (value.userType() == QMetaType::QString)
        return restoreText(value.toString(), value, room);
    if (value.userType() != QMetaType::QStringList && value.userType() != QMetaType::QVariantList)
        return true;
    const bool ofTexts = value.userType() == QMetaType::QStringList;
    bool streamed = false;
    bool whole = true;
    QVariantList elements = value.toList();
    for (QVariant& element : elements) {
        streamed = streamed || element.toString().startsWith(QChar(placeHolder));
        if (element.userType() == QMetaType::QString)
            whole = restoreText(element.toString(), element, room) && whole;
    }
    value = elements;
    if (ofTexts && !streamed)
        value = value.toStringList();
    return whole;
}
