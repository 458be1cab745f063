#include <Pardel/inifiles.h>

#include "../records/knownvalues_p.h"
#include "inivalues_p.h"

#include <QByteArray>
#include <QFile>
#include <QTemporaryFile>

#include <algorithm>
#include <cctype>

namespace {

bool isAscii(const QByteArray& bytes)
{
    return std::all_of(bytes.begin(), bytes.end(), [](char byte) { return static_cast<signed char>(byte) >= 0; });
}

/// A line's text: UTF-8 where that is valid, else Latin-1.
QString textOf(const QByteArray& line)
{
    const QString text = QString::fromUtf8(line);
    return text.toUtf8() == line ? text : QString::fromLatin1(line);
}

/// "\\xe9". Hex digits of any number belong to the escape, so that a digit behind it is escaped too.
void escapeInValue(QByteArray& line, ushort character, bool& digitsFollow)
{
    const bool isDigit = character < 0x80 && std::isxdigit(static_cast<int>(character));
    if (character >= 0x80 || (digitsFollow && isDigit)) {
        line += "\\x" + QByteArray::number(character, 16);
        digitsFollow = true;
    } else {
        line += static_cast<char>(character);
        digitsFollow = false;
    }
}

void escapeInKey(QByteArray& line, ushort character)
{
    if (character >= 0x80)
        line += "%U" + QByteArray::number(character, 16).rightJustified(4, '0').toUpper();
    else
        line += static_cast<char>(character);
}

/// A file with all its characters beyond ASCII escaped. A line that ends in a backslash goes on in the next.
QByteArray escaped(const QByteArray& file)
{
    if (isAscii(file))
        return file;
    QByteArray result;
    bool inValue = false;
    const QList<QByteArray> lines = file.split('\n');
    for (const QByteArray& line : lines) {
        bool digitsFollow = false;
        const QString text = textOf(line);
        for (const QChar character : text) {
            if (inValue)
                escapeInValue(result, character.unicode(), digitsFollow);
            else
                escapeInKey(result, character.unicode());
            inValue = inValue || character == QLatin1Char('=');
        }
        inValue = inValue && line.endsWith('\\');
        result += '\n';
    }
    result.chop(1);
    return result;
}

/// Reading and writing are left to Qt, through a file of ASCII characters, of which all versions think alike.
class AsciiFile
{
public:
    bool write(const QByteArray& bytes)
    {
        return m_file.open() && m_file.write(bytes) == bytes.size() && m_file.flush();
    }
    QString name() const { return m_file.fileName(); }

private:
    QTemporaryFile m_file;
};

bool readIni(QIODevice& device, QSettings::SettingsMap& values)
{
    AsciiFile file;
    if (!file.write(withoutStreamedValues(escaped(device.readAll()))))
        return false;
    const QSettings settings(file.name(), QSettings::IniFormat);
    ImageRoom room;
    const QStringList keys = settings.allKeys();
    for (const QString& key : keys) {
        QVariant value = settings.value(key);
        if (restoreStreamedValues(value, room))
            values.insert(key, value);
    }
    return settings.status() == QSettings::NoError;
}

bool writeIni(QIODevice& device, const QSettings::SettingsMap& values)
{
    AsciiFile file;
    if (!file.write(QByteArray()))
        return false;
    {
        QSettings settings(file.name(), QSettings::IniFormat);
        for (auto value = values.begin(); value != values.end(); ++value)
            settings.setValue(value.key(), value.value());
        settings.sync();
        if (settings.status() != QSettings::NoError)
            return false;
    }
    QFile written(file.name());
    if (!written.open(QIODevice::ReadOnly))
        return false;
    const QByteArray bytes = escaped(written.readAll());
    return device.write(bytes) == bytes.size();
}

} // namespace

QSettings::Format pardelIniFormat()
{
    static const QSettings::Format format = [] {
        const QSettings::Format registered = QSettings::registerFormat(QStringLiteral("ini"), readIni, writeIni);
        return registered == QSettings::InvalidFormat ? QSettings::IniFormat : registered;
    }();
    return format;
}
