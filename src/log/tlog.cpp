#include <Pardel/tlog.h>

#include "tlog_p.h"

#include <QCoreApplication>
#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QIODevice>

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <ctime>

#include <langinfo.h>

qint64 (*DailyLog::millisecondsSinceEpoch)() = &QDateTime::currentMSecsSinceEpoch;

namespace {

constexpr int bytesPerRow = 16;
constexpr int hexColumnWidth = 3 * bytesPerRow;
constexpr int emptyHexColumnWidth = hexColumnWidth - 3;
constexpr int rowLength = 1 + hexColumnWidth + bytesPerRow;

/// Discards all text. A stream without a device would warn, and keep the text for the next file.
class Nowhere : public QIODevice
{
public:
    Nowhere() { open(QIODevice::WriteOnly | QIODevice::Unbuffered); }

protected:
    qint64 readData(char*, qint64) override { return -1; }
    qint64 writeData(const char*, qint64 size) override { return size; }
};

/// QDateTime's conversion looks the time zone up anew each time, which takes as long as writing an entry.
std::tm localTime(qint64 milliseconds)
{
    const std::time_t seconds = milliseconds / 1000;
    std::tm local = {};
    localtime_r(&seconds, &local);
    return local;
}

QDate today()
{
    const std::tm local = localTime(DailyLog::millisecondsSinceEpoch());
    return {1900 + local.tm_year, 1 + local.tm_mon, local.tm_mday};
}

/// The time stamp of now, in @p text.
QLatin1String writeTimeStamp(char (&text)[32])
{
    const qint64 milliseconds = DailyLog::millisecondsSinceEpoch();
    const std::tm local = localTime(milliseconds);
    auto size = static_cast<int>(std::strftime(text, sizeof text, "%Y-%m-%d %H:%M:%S.", &local));
    for (const int unit : {100, 10, 1})
        text[size++] = static_cast<char>('0' + milliseconds / unit % 10);
    return QLatin1String(text, size);
}

/// What the C library's formatted output makes of @p text, in UTF-8, as a format string without arguments.
QByteArray formatted(const QString& text)
{
    const QByteArray format = text.toUtf8();
    QByteArray output;
    output.reserve(format.size() + 1);
    const char* rest = format.constData();
    // Several times as fast as QByteArray::replace, which counts in every packet's echo.
    while (const char* percents = std::strstr(rest, "%%")) {
        output.append(rest, static_cast<int>(percents + 1 - rest));
        rest = percents + 2;
    }
    return output.append(rest);
}

void writeToStandardError(const QByteArray& bytes)
{
    std::fwrite(bytes.constData(), 1, static_cast<std::size_t>(bytes.size()), stderr);
}

/// Appends one row with the line break before it; to @p echo only what is before the first zero.
void appendRow(const char* bytes, int size, QString& text, QString& echo)
{
    constexpr char digits[] = "0123456789abcdef";
    char row[rowLength + 1];
    std::fill(std::begin(row), std::end(row), ' ');
    row[0] = '\n';
    char* const hexColumn = row + 1;
    char* const textColumn = hexColumn + (size > 0 ? hexColumnWidth : emptyHexColumnWidth);
    for (int i = 0; i < size; ++i) {
        const auto byte = static_cast<uchar>(bytes[i]);
        hexColumn[3 * i] = digits[byte >> 4];
        hexColumn[3 * i + 1] = digits[byte & 0xF];
        textColumn[i] = byte == '\r' || byte == '\n' ? '\0' : bytes[i];
    }
    textColumn[size] = '\0';
    text += QLatin1String(row, textColumn + size);
    echo += QLatin1String(row);
}

} // namespace

class Q_DECL_HIDDEN TLog::Private
{
public:
    Private(QTextStream* log, const QString& dir) : stream(log), directory(QFileInfo(dir).absoluteFilePath()) {}

    QString filePath(QDate day) const
    {
        return directory + QLatin1Char('/') + day.toString(QStringLiteral("yyyy-MM-dd")) + QStringLiteral(".txt");
    }

    /// What localtime_r leaves out. tzset looks at the zone's file each time, which would take longer than the writing.
    void followTimeZone()
    {
        const QByteArray named = qgetenv("TZ");
        if (named == zone && !zone.isNull())
            return;
        zone = named.isNull() ? QByteArray("") : named;
        tzset();
    }

    bool openTodaysFile()
    {
        followTimeZone();
        // Changing the device writes pending text to the old file. Text that it cannot take is discarded.
        stream->setDevice(&nowhere);
        file.close();
        date = today();
        file.setFileName(filePath(date));
        // The stream has a buffer; another one in the file would copy all once more and hold what a full disk refuses.
        if (!file.open(QIODevice::Append | QIODevice::Unbuffered))
            return false;
        stream->setDevice(&file);
        useCodecOfLocale();
        return true;
    }

    /// Left in the stream's buffer: one flush for all of an entry, as each is a call of the system.
    void writeHeader()
    {
        if (!file.isOpen())
            openTodaysFile();
        followTimeZone();
        // After a write error the stream would write no more and keep the text of all later entries in memory.
        stream->resetStatus();
        char text[32];
        *stream << QLatin1String("\n\n--------------------------------------------------\n") << writeTimeStamp(text)
                << '\n';
    }

    /// What setDevice sees to in Qt 5; Qt 6 would write UTF-8 everywhere, and has no other codecs than Latin-1.
    void useCodecOfLocale()
    {
#if QT_VERSION >= QT_VERSION_CHECK(6, 0, 0)
        const auto encoding = QStringConverter::encodingForName(nl_langinfo(CODESET));
        stream->setEncoding(encoding.value_or(QStringConverter::Utf8));
#endif
    }

    QTextStream* const stream;
    const QString directory;
    bool enabled = false;
    QByteArray zone; ///< The environment's TZ that counts; not null once one does.
    QDate date;      ///< Of the file that is open, or that could not be opened.
    QFile file;
    Nowhere nowhere; ///< The stream's device while no file is open.
};

TLog::TLog(QString dir) : d(std::make_unique<Private>(this, dir))
{
    setDevice(&d->nowhere);
    setAutoDetectUnicode(true);
}

TLog::~TLog()
{
    // The stream outlives its devices, and would write pending text to them.
    setDevice(nullptr);
}

QString TLog::getDirPathDefault(QString const& name)
{
    return QCoreApplication::applicationDirPath() + QStringLiteral("/Logs/Log_") + name;
}

QString TLog::getFilePath(QDate const& date)
{
    return d->filePath(date);
}

void TLog::Enabled(bool on)
{
    d->enabled = on;
    if (!on)
        return;
    QString failure;
    if (!QDir().mkpath(d->directory))
        failure = QStringLiteral("Cann't make dir %1. Log is off.\n").arg(d->directory);
    else if (!d->openTodaysFile())
        failure = QStringLiteral("Cann't open file %1 for append. Log is off.\n").arg(d->file.fileName());
    else
        return;
    d->enabled = false;
    writeToStandardError(formatted(failure));
}

void TLog::TimerUpdate()
{
    tzset(); // the zone's file may have been changed too
    if (d->enabled && today() != d->date && !d->openTodaysFile())
        writeToStandardError(formatted(
            QStringLiteral("Cann't open file %1 for append. Log goes on when it can.\n").arg(d->file.fileName())));
}

void TLog::SendHeader()
{
    if (!d->enabled)
        return;
    d->writeHeader();
    flush();
}

void TLog::Message(QString text)
{
    if (!d->enabled)
        return;
    d->writeHeader();
    QByteArray echo = formatted(text);
    *this << text;
    if (!text.endsWith(QLatin1Char('\n'))) {
        *this << '\n';
        echo += '\n';
    }
    flush();
    writeToStandardError(echo);
}

void TLog::Data(QString& label, QByteArray const& data, bool received)
{
    if (!d->enabled)
        return;
    d->writeHeader();
    const QLatin1String direction(received ? "\nReceived\n" : "\nSended\n");
    const QLatin1String echoStart("Data: \r\n");
    const auto size = static_cast<int>(data.size());
    const int rows = std::max(1, (size + bytesPerRow - 1) / bytesPerRow);
    QString text;
    text.reserve(label.size() + direction.size() + rows * rowLength);
    text += label;
    text += direction;
    QString echo;
    echo.reserve(echoStart.size() + rows * rowLength);
    echo += echoStart;
    for (int row = 0; row < rows; ++row) {
        const int start = row * bytesPerRow;
        appendRow(data.constData() + start, std::min(bytesPerRow, size - start), text, echo);
    }
    *this << text;
    flush();
    // Formatted in one: each row begins with a line break, so that no "%%" comes from two.
    writeToStandardError(formatted(echo));
}

void TLog::Out(QByteArray&) {}
