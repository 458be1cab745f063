#include "capturereader.h"

#include "commandline.h"

#include <QElapsedTimer>
#include <QFile>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstring>

#include <fcntl.h>
#include <poll.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

constexpr int pieceSize = 1 << 18;
constexpr int breathMilliseconds = 200;

int signalPipe[2] = {-1, -1}; // readable from the first signal on

void handleSignal(int)
{
    const int error = errno;
    [[maybe_unused]] const ssize_t written = ::write(signalPipe[1], "", 1);
    errno = error;
}

/// How many bytes lie in a pipe or socket; of a file, none, as all of it is there at any time.
int bytesWaitingIn(int descriptor)
{
    struct stat status
    {};
    int count = 0;
    if (::fstat(descriptor, &status) != 0 || S_ISREG(status.st_mode) || ::ioctl(descriptor, FIONREAD, &count) != 0)
        return 0;
    return count;
}

/// How much of a file is not read yet; nothing of a pipe or socket, which has no end.
qint64 bytesBehind(int descriptor)
{
    struct stat status
    {};
    const off_t place = ::lseek(descriptor, 0, SEEK_CUR);
    if (::fstat(descriptor, &status) != 0 || !S_ISREG(status.st_mode) || place < 0)
        return 0;
    return std::max<qint64>(status.st_size - place, 0);
}

/// What has come.
struct Readiness
{
    bool input;
    bool ended; // by a signal
};

/// Waits for either, so many milliseconds at most.
Readiness waitFor(int descriptor, int milliseconds)
{
    pollfd sources[] = {{descriptor, POLLIN, 0}, {signalPipe[0], POLLIN, 0}};
    if (::poll(sources, 2, milliseconds) < 0)
        return {false, false}; // interrupted: looks again
    return {sources[0].revents != 0, sources[1].revents != 0};
}

} // namespace

void CaptureReader::endOnSignals()
{
    if (::pipe2(signalPipe, O_CLOEXEC | O_NONBLOCK) != 0)
        return; // without the pipe the signals end the program as ever
    struct sigaction action
    {};
    action.sa_handler = handleSignal;
    ::sigaction(SIGTERM, &action, nullptr);
    ::sigaction(SIGINT, &action, nullptr);
}

void CaptureReader::readAll(const QStringList& files, CaptureFramer::Form form, bool checksumFromZero)
{
    m_form = form;
    const QStringList inputs = files.isEmpty() ? QStringList(QStringLiteral("-")) : files;
    QStringList unread;
    for (const QString& file : inputs) {
        if (stopped())
            break;
        if (waitFor(-1, 0).ended) {
            unread += file;
            continue;
        }
        CaptureFramer framer(form, checksumFromZero);
        readFile(file, framer);
    }
    reportLeftOut(true);
    if (unread.isEmpty())
        return;
    m_endedEarly = true;
    tell(QStringLiteral("not read, as a signal came: %1").arg(unread.join(QLatin1String(", "))));
}

void CaptureReader::readFile(const QString& path, CaptureFramer& framer)
{
    if (path == QLatin1String("-")) {
        m_name = QStringLiteral("standard input");
        m_progress.begin(m_name, -1);
        readDescriptor(STDIN_FILENO, framer);
        return;
    }
    m_name = path;
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly | QIODevice::Unbuffered)) {
        tellUnreadable(file.errorString());
        return;
    }
    m_progress.begin(m_name, file.isSequential() ? -1 : file.size());
    readDescriptor(file.handle(), framer);
}

void CaptureReader::readDescriptor(int descriptor, CaptureFramer& framer)
{
    m_bytes = 0;
    m_waited = 0;
    qint64 unread = 0;
    QElapsedTimer wait;
    for (bool more = true; more && !stopped();) {
        wait.start();
        const Readiness ready = waitFor(descriptor, breathMilliseconds);
        m_waited += wait.elapsed();
        if (ready.ended) { // what has come until now is still taken
            for (int left = bytesWaitingIn(descriptor); left > 0 && !stopped(); left -= pieceSize)
                readPiece(descriptor, framer, std::min(left, pieceSize));
            unread = bytesBehind(descriptor);
            break;
        }
        if (ready.input)
            more = readPiece(descriptor, framer, pieceSize);
        if (m_waited >= pauseMilliseconds) {
            m_waited = 0;
            framer.pause();
            handleFrames(framer);
        }
        breathe();
    }
    framer.finish();
    handleFrames(framer);
    m_progress.clear();
    breathe();
    if (unread == 0)
        return;
    m_endedEarly = true;
    tell(QStringLiteral("%1: its last %2 bytes are not read, as a signal came").arg(m_name, QString::number(unread)));
}

/// @return whether there may be more
bool CaptureReader::readPiece(int descriptor, CaptureFramer& framer, int most)
{
    QByteArray piece(most, Qt::Uninitialized);
    // Not through QFile: that waits for a full piece, and a live pipe's packets are to be seen as they come.
    const ssize_t size = ::read(descriptor, piece.data(), static_cast<std::size_t>(most));
    if (size < 0 && (errno == EINTR || errno == EAGAIN))
        return true;
    if (size < 0)
        tellUnreadable(QString::fromLocal8Bit(std::strerror(errno)));
    if (size <= 0)
        return false;
    piece.resize(static_cast<int>(size));
    m_bytes += size;
    m_progress.makeRoom();
    framer.feed(piece);
    handleFrames(framer);
    m_progress.update(m_bytes, m_packets);
    return true;
}

void CaptureReader::handleFrames(CaptureFramer& framer)
{
    for (PacketFramer::Frame frame; !stopped() && framer.next(frame);) {
        m_waited = 0;
        if (frame.kind == PacketFramer::Frame::Skipped) {
            reportSkipped(frame);
        } else {
            ++m_packets;
            handlePacket(frame);
        }
    }
    reportLeftOut(false);
}

void CaptureReader::reportSkipped(const PacketFramer::Frame& frame)
{
    m_skippedBytes += frame.size;
    reportLeftOut(false);
    if (!m_skippedRuns.admits())
        return;
    tell(m_form == CaptureFramer::Hex
             ? QStringLiteral("%1: line %2 is not whole bytes in hex, or more than 1 MiB of them: skipped")
                   .arg(m_name, QString::number(frame.offset))
             : QStringLiteral("%1: skipped %2 bytes at offset %3")
                   .arg(m_name, QString::number(frame.size), QString::number(frame.offset)));
}

void CaptureReader::reportLeftOut(bool now)
{
    if (const qint64 count = m_skippedRuns.takeLeftOut(now); count > 0)
        tell(QStringLiteral("%1: skipped %2 more times").arg(m_name, QString::number(count)));
}

void CaptureReader::tell(const QString& sentence)
{
    m_progress.clear();
    tellError(sentence);
}

void CaptureReader::tellUnreadable(const QString& reason)
{
    tell(QStringLiteral("cannot read %1: %2").arg(m_name, reason));
    m_unreadable = true;
}
