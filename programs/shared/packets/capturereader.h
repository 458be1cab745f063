#pragma once

#include "captureframer.h"
#include "messagelimit.h"
#include "progress.h"

#include <QString>
#include <QStringList>

/**
 * Reads capture files piece by piece and hands their packets to the deriving program. Says on standard error what is
 * skipped (20 runs a second, and how many more there were) and which file cannot be read, and shows the progress.
 */
class CaptureReader
{
public:
    virtual ~CaptureReader() = default;

    /**
     * Reads all files; "-" is standard input, and so is an empty list. A file that cannot be read does not keep the
     * others from being read. Two seconds of waiting, since something was found last, are a pause of the input.
     */
    void readAll(const QStringList& files, CaptureFramer::Form form, bool checksumFromZero);

    /** From now on SIGTERM and SIGINT end all captures as their end would, behind what has come through a pipe by then. */
    static void endOnSignals();

    qint64 packets() const { return m_packets; }           ///< Damaged ones included.
    qint64 skippedBytes() const { return m_skippedBytes; } ///< Of hex captures: the bytes of skipped lines.
    bool hasUnreadable() const { return m_unreadable; }
    /** Whether a signal has kept files, or the rest of one, from being read, which has been told. */
    bool endedEarly() const { return m_endedEarly; }

protected:
    /** A packet was found, good or damaged; its bytes are valid during the call only. */
    virtual void handlePacket(const PacketFramer::Frame& frame) = 0;
    /** A piece of the capture has been read and its packets handled, or nothing has come for 0.2 seconds. */
    virtual void breathe() {}
    /** Whether it makes no sense to read on. */
    virtual bool stopped() const = 0;

    /** Writes "NAME: @p sentence" to standard error. */
    void tell(const QString& sentence);

private:
    void readFile(const QString& path, CaptureFramer& framer);
    void readDescriptor(int descriptor, CaptureFramer& framer);
    bool readPiece(int descriptor, CaptureFramer& framer, int most);
    void handleFrames(CaptureFramer& framer);
    void reportSkipped(const PacketFramer::Frame& frame);
    void reportLeftOut(bool now);
    void tellUnreadable(const QString& reason);

    Progress m_progress;
    QString m_name; // of the file being read, as people are told
    CaptureFramer::Form m_form = CaptureFramer::Raw;
    MessageLimit m_skippedRuns;
    qint64 m_bytes = 0;  // of the file being read
    qint64 m_waited = 0; // ms for its bytes, since something was found in them
    qint64 m_packets = 0;
    qint64 m_skippedBytes = 0;
    bool m_unreadable = false;
    bool m_endedEarly = false;
};
