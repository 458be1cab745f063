#pragma once

#include "framing.h"
#include "progress.h"

#include <QString>
#include <QStringList>

/**
 * Reads capture files piece by piece and hands their packets to the deriving tool. Tells on standard error what is
 * skipped and which file cannot be read, and shows the progress.
 */
class CaptureReader : protected FrameSink
{
public:
    /**
     * Reads all files; "-" is standard input, and so is an empty list. A file that cannot be read does not keep the
     * others from being read.
     *
     * @param hex the captures are a packet a line in hex digits, not raw packets back to back
     */
    void readAll(const QStringList& files, bool hex);

    qint64 packets() const { return m_packets; }
    qint64 skippedBytes() const { return m_skippedBytes; } ///< Of hex captures: the bytes of skipped lines.
    bool hasUnreadable() const { return m_unreadable; }

protected:
    /** A packet was found; the bytes are valid during the call only. */
    virtual void handlePacket(qint64 place, const char* bytes, int size) = 0;
    /** A piece of the capture has been read and its packets handled. */
    virtual void pieceDone() {}
    /** Nothing has come for a moment, and nobody knows when more will. */
    virtual void idle() {}
    /** Whether it makes no sense to read on. */
    virtual bool stopped() const = 0;

    /** Writes "NAME: @p sentence" to standard error. */
    void tell(const QString& sentence);

private:
    void readFile(const QString& path, Framer& framer);
    void readDescriptor(int descriptor, Framer& framer);
    void packet(qint64 place, const char* bytes, int size) override;
    void skipped(qint64 place, qint64 size) override;
    void tellUnreadable(const QString& reason);

    Progress m_progress;
    QString m_name; // of the file being read, as people are told
    bool m_hex = false;
    qint64 m_packets = 0;
    qint64 m_skippedBytes = 0;
    bool m_unreadable = false;
};
