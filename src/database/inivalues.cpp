#include "inivalues_p.h"

#include "../records/knownvalues_p.h"

#include <QByteArray>
#include <QDataStream>
#include <QStringList>
#include <QVariant>

#include <cstring>

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

/// Goes through a file as QSettings does: which parts are values, where quotes, escapes and lines end.
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
    static bool endsLine(char character) { return character == '\n' || character == '\r'; }
    void copy(int count)
    {
        const QByteArray part = m_ini.mid(m_place, count);
        m_result += part;
        m_place += static_cast<int>(part.size());
    }

    void step();
    void escape();
    void atSign(int size);

    const QByteArray m_ini;
    QByteArray m_result;
    int m_place = 0;
    bool m_inValue = false;
    bool m_quoted = false;
    bool m_atStart = false; ///< Of a value or of an element of a list, whose text is still empty.
};

void Scanner::step()
{
    const char character = at(m_place);
    if (character == '\\') {
        escape();
        return;
    }
    if (character == '"') {
        m_quoted = !m_quoted;
    } else if (!m_quoted && character == ';') {
        while (m_place < m_ini.size() && !endsLine(at(m_place)))
            copy(1);
        return;
    } else if (!m_quoted && endsLine(character)) {
        m_inValue = m_atStart = false;
    } else if (!m_quoted && character == (m_inValue ? ',' : '=')) {
        m_inValue = m_atStart = true;
    } else if (m_atStart && character == '@') {
        atSign(1);
        return;
    } else if (character != ' ' && character != '\t' && !endsLine(character)) {
        m_atStart = false;
    }
    copy(1);
}

void Scanner::escape()
{
    const bool hexadecimal = at(m_place + 1) == 'x';
    const int base = hexadecimal ? 16 : 8;
    int end = m_place + (hexadecimal ? 2 : 1);
    const int digits = end;
    uint number = 0;
    for (int digit; m_inValue && (digit = digitOf(at(end), base)) >= 0; ++end)
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
    const char escaped = at(m_place + 1);
    const char next = at(m_place + 2);
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
