#pragma once

#include <QByteArray>
#include <QFile>
#include <QString>
#include <QtGlobal>

#include <deque>
#include <optional>
#include <utility>
#include <vector>

/** Packets that came at one moment. */
struct Arrival
{
    qint64 time; ///< Milliseconds since 1970, of the first of them; the others came at most 0.1 s later.
    qint64 packets;
};

/** A file of a PacketSpool. */
struct SpoolFile
{
    QString path;
    qint64 bytes = 0;
    qint64 packets = 0;            ///< 0 where an earlier run has written it: nobody has counted them.
    std::vector<Arrival> arrivals; ///< In their order; empty where an earlier run has written it.
    qint64 oldest = 0;             ///< Milliseconds since 1970 at which its first packet came.
};

/**
 * Keeps packets on disk until their reports are in the archive: a folder of files with packets back to back, as any
 * capture, which the archive's programs can read. A process that is killed leaves them there for the next one.
 *
 * What add() takes lies in memory until write(), which hands it to the system: from then on it outlives this process.
 * A file holds whole packets only, unless the process was killed in the middle of a write().
 *
 * Files are handed out for storing in the order of their packets, the one at which it writes last.
 */
class PacketSpool
{
public:
    explicit PacketSpool(const QString& folder);
    ~PacketSpool();
    Q_DISABLE_COPY_MOVE(PacketSpool)

    /**
     * Makes the folder if it is not there, locks it against other processes, and finds what an earlier one has left.
     *
     * @return what went wrong and what to do, or nothing
     */
    QString open();

    /** Whether a process has this folder open. */
    static bool isInUse(const QString& folder);

    void add(const QByteArray& packet);
    /**
     * Hands what was added to the system. When the disk is full, a reserve of 1 MiB in the folder is given up for it;
     * what does not fit even then stays in memory for the next write(), which makes the reserve anew when there is
     * room.
     */
    void write();
    /** Why the last write() met a full disk or failed: then nothing should be added until one does not. Else empty. */
    QString error() const { return m_error; }
    /** The files that have been written to and not been asked for here; to be synchronised and closed by the caller. */
    std::vector<int> takeUnsynchronised();

    /** Whether a file waits that is not written to any more, so that storing is behind. */
    bool isBehind() const { return m_files.size() > (m_file.isOpen() ? 1U : 0U) && !m_taken; }
    /** The next file to be stored, closed; none while there is none or the one handed out before is not removed. */
    std::optional<SpoolFile> take();
    /** Deletes the file that was handed out. @return what went wrong, or nothing */
    QString remove();
    /** Takes the file that was handed out from the spool, but leaves it in the folder under another name. @return that */
    QString setAside();

    const QString& folder() const { return m_folder; }
    qint64 bytes() const { return m_bytes; }                  ///< Of all files that are not removed.
    qint64 unwrittenBytes() const { return m_buffer.size(); } ///< That are in memory alone.
    bool isEmpty() const { return m_bytes == 0 && m_buffer.isEmpty(); }
    int keptCount() const { return m_kept; } ///< Files that were set aside, by earlier processes too.
    /** When the oldest packet came that is not removed, in milliseconds since 1970; 0 without one. */
    qint64 oldest() const;

private:
    bool writeFile();
    bool openFile();
    void closeFile();
    void makeReserve();

    const QString m_folder;
    QFile m_lock;
    QFile m_file; // open while it is the last of m_files
    qint64 m_number = 0;
    QByteArray m_buffer;
    std::vector<Arrival> m_buffered; // what is in it
    std::deque<SpoolFile> m_files;
    bool m_taken = false; // the first of them
    qint64 m_bytes = 0;
    QString m_error;
    std::vector<int> m_closed; // and not yet synchronised
    bool m_written = false;    // to the present file, since that was
    int m_kept = 0;
};
