#include <Pardel/inifiles.h>

#include "../records/knownvalues_p.h"
#include "inivalues_p.h"

#include <QByteArray>
#include <QFile>
#include <QMutex>
#include <QSet>
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
    const auto size = static_cast<int>(line.size()); // Qt 5 takes a zero byte for the end unless it is told
    const QString text = QString::fromUtf8(line.constData(), size);
    return text.toUtf8() == line ? text : QString::fromLatin1(line.constData(), size);
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

/// A file with all its characters beyond ASCII escaped.
QByteArray escaped(const QByteArray& file)
{
    if (isAscii(file))
        return file;
    QByteArray result;
    IniPlace place;
    const QList<QByteArray> lines = file.split('\n');
    for (const QByteArray& line : lines) {
        bool digitsFollow = false;
        const QString text = textOf(line) + QLatin1Char('\n');
        for (const QChar character : text) {
            if (!place.inValue()) {
                escapeInKey(result, character.unicode());
            } else {
                if (place.isEscaped() && character.unicode() >= 0x80)
                    result.chop(1); // the backslash would take the one of this escape for its own
                escapeInValue(result, character.unicode(), digitsFollow);
            }
            place.take(character.unicode());
        }
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

/// The files that could not be read: for QSettings they are empty, and what it saves would take their values' place.
class UnreadFiles
{
public:
    void set(const QIODevice& device, bool unread)
    {
        const QMutexLocker locker(&m_mutex);
        if (unread)
            m_names.insert(nameOf(device));
        else
            m_names.remove(nameOf(device));
    }
    bool contains(const QIODevice& device)
    {
        const QMutexLocker locker(&m_mutex);
        return m_names.contains(nameOf(device));
    }

private:
    static QString nameOf(const QIODevice& device)
    {
        const auto* const file = qobject_cast<const QFileDevice*>(&device);
        return file ? file->fileName() : QString();
    }

    QMutex m_mutex;
    QSet<QString> m_names;
};

UnreadFiles& unreadFiles()
{
    static UnreadFiles& files = *new UnreadFiles; // QSettings that are destroyed with a program's statics save then
    return files;
}

/// QSettings lists "/k" of an empty section, say, but takes that name for "k" whenever it is given a key.
bool canBeAskedFor(const QString& key)
{
    const QLatin1Char slash('/');
    return !key.isEmpty() && !key.startsWith(slash) && !key.endsWith(slash) && !key.contains(QLatin1String("//"));
}

/// QSettings reports lines that are none as FormatError, and has read all others; of a file that this format reports as
/// such it would take no value, and none would be in it when it is saved.
bool readValues(QIODevice& device, QSettings::SettingsMap& values)
{
    constexpr char byteOrderMark[] = "\xef\xbb\xbf";
    QByteArray bytes = device.readAll();
    if (bytes.size() < device.size())
        return false;
    if (bytes.startsWith(byteOrderMark))
        bytes.remove(0, static_cast<int>(qstrlen(byteOrderMark)));
    AsciiFile file;
    if (!file.write(withoutStreamedValues(escaped(bytes))))
        return false;
    const QSettings settings(file.name(), QSettings::IniFormat);
    ImageRoom room;
    const QStringList keys = settings.allKeys();
    for (const QString& key : keys) {
        if (!canBeAskedFor(key))
            continue;
        QVariant value = settings.value(key);
        if (restoreStreamedValues(value, room))
            values.insert(key, value);
    }
    return settings.status() != QSettings::AccessError;
}

bool readIni(QIODevice& device, QSettings::SettingsMap& values)
{
    const bool isRead = readValues(device, values);
    unreadFiles().set(device, !isRead);
    return isRead;
}

bool writeIni(QIODevice& device, const QSettings::SettingsMap& values)
{
    AsciiFile file;
    if (unreadFiles().contains(device) || !file.write(QByteArray()))
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
