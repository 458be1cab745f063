#pragma once

#include <Pardel/pardel_export.h>

#include <QByteArray>
#include <QDate>
#include <QString>
#include <QTextStream>

#include <memory>

/**
 * The log of a module: one text file per calendar day in a directory of its own, with an echo on standard error.
 *
 * @code
 * TLog log(TLog::getDirPathDefault(QStringLiteral("Kernel")));
 * log.Enabled(true);
 * log.Message(QStringLiteral("started"));
 * // every minute or so:
 * log.TimerUpdate();
 * @endcode
 *
 * An entry is two line breaks, a line of 50 hyphens, a line "yyyy-MM-dd hh:mm:ss.zzz" of local time, then what Message
 * or Data add; it has been handed to the system when the call returns. The log is a text stream as well: what the
 * operators write goes to the same file, whether the log is on or not, and arrives there with a flush. The codec is
 * the locale's (with Qt 6, UTF-8 where that is neither UTF-8 nor Latin-1, as it has no others); opening a file sets the
 * stream's codec and formatting back to the defaults.
 *
 * A file is named after its day, "2024-03-09.txt", is appended to after a restart, and is never rotated, trimmed or
 * deleted. While no file is open (before Enabled, and after a file could not be opened), all text for the file is
 * dropped; none of it appears in a later file. Write errors, a full disk say, are not detected: that text is lost.
 *
 * The echo holds no header. Each text of it (a message, a column of a row) counts as a format string of the C library's
 * formatted output that has no arguments, as what reads it expects: "%%" comes out as "%", every other "%" stands for
 * itself, and the text ends at its first zero character. The echo is UTF-8. The file always holds the text as given.
 *
 * Without timer, thread or lock: a log is used from one thread at a time.
 */
class PARDEL_EXPORT TLog : public QTextStream
{
public:
    /** A log in the directory @p dir, relative to the current one or absolute; off, and nothing is created yet. */
    explicit TLog(QString dir);
    /** Writes what is pending and closes the file. */
    ~TLog() override;

    /** The usual directory of a module's log: "Logs/Log_" and @p name, under the directory of the executable. */
    static QString getDirPathDefault(QString const& name);
    /** The path of the file of a day. */
    QString getFilePath(QDate const& date);

    /**
     * Switches the entries on or off.
     *
     * On makes the directory with all that is missing above it and opens today's file, anew if one is open. Where that
     * fails, the log is off and standard error gets one of these, in which "Cann't" stays as it is; they pass as format
     * strings like the echo:
     *
     *     Cann't make dir DIRECTORY. Log is off.
     *     Cann't open file PATH for append. Log is off.
     *
     * Off only suppresses the entries: an open file stays open, as it does when the directory cannot be made.
     */
    void Enabled(bool on);

    /**
     * Goes on to today's file, if the log is on and the date has changed; to be called from time to time.
     *
     * Entries made before the first call after midnight go to the file of the day before. Where the file cannot be
     * opened (the directory is not made again), the log stays on, and standard error is told once:
     *
     *     Cann't open file PATH for append. Log goes on when it can.
     *
     * Each further entry tries again; until one succeeds, entries are echoed but reach no file.
     */
    void TimerUpdate();

    /** Writes the header of an entry to the file, for text that operators add; does nothing if the log is off. */
    void SendHeader();

    /** Writes an entry of @p text and a line break, unless it ends in one; does nothing if the log is off. */
    void Message(QString text);

    /**
     * Writes an entry of a packet; does nothing if the log is off.
     *
     * The file gets @p label and "Received" or, with this spelling, "Sended", each on a line; the echo instead "Data: "
     * with a carriage return and a line feed. Then follow rows of 16 bytes, to both:
     *
     *     <line break>31 32 33 0d 0a                                   123<zero><zero>
     *
     * Each byte is two lowercase hexadecimal digits and a space, filled up to 48 characters in the last row; then each
     * byte is a Latin-1 character, carriage return and line feed being characters of code 0. As what reads
     * the files expects, an empty packet makes a row of 45 spaces, not 48, and no line break follows the last row.
     */
    void Data(QString& label, QByteArray const& data, bool received);

    /** Does nothing, and leaves its argument as it is. */
    void Out(QByteArray&);

private:
    class Q_DECL_HIDDEN Private;
    const std::unique_ptr<Private> d;
};
