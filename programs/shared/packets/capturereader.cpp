#include "capturereader.h"

#include "commandline.h"

#include <QFile>

#include <cerrno>
#include <cstring>
#include <memory>
#include <vector>

#include <poll.h>
#include <unistd.h>

namespace {

constexpr std::size_t pieceSize = 1 << 18;
constexpr int idleMilliseconds = 200;

std::unique_ptr<Framer> makeFramer(bool hex, FrameSink& sink)
{
    if (hex)
        return std::make_unique<HexFramer>(sink);
    return std::make_unique<RawFramer>(sink);
}

} // namespace

void CaptureReader::readAll(const QStringList& files, bool hex)
{
    m_hex = hex;
    const QStringList inputs = files.isEmpty() ? QStringList(QStringLiteral("-")) : files;
    for (const QString& file : inputs) {
        if (stopped())
            break;
        const std::unique_ptr<Framer> framer = makeFramer(hex, *this);
        readFile(file, *framer);
    }
}

void CaptureReader::readFile(const QString& path, Framer& framer)
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

void CaptureReader::readDescriptor(int descriptor, Framer& framer)
{
    std::vector<char> piece(pieceSize);
    qint64 bytes = 0;
    while (!stopped()) {
        if (pollfd input = {descriptor, POLLIN, 0}; ::poll(&input, 1, idleMilliseconds) == 0) {
            idle();
            if (stopped())
                break;
        }
        // Not through QFile: that waits for a full piece, and a live pipe's packets are to be seen as they come.
        const ssize_t size = ::read(descriptor, piece.data(), piece.size());
        if (size < 0 && errno == EINTR)
            continue;
        if (size < 0)
            tellUnreadable(QString::fromLocal8Bit(std::strerror(errno)));
        if (size <= 0)
            break;
        m_progress.makeRoom();
        framer.feed(piece.data(), static_cast<std::size_t>(size));
        bytes += size;
        pieceDone();
        m_progress.update(bytes, m_packets);
    }
    framer.finish();
    m_progress.clear();
    pieceDone();
}

void CaptureReader::packet(qint64 place, const char* bytes, int size)
{
    if (stopped())
        return;
    ++m_packets;
    handlePacket(place, bytes, size);
}

void CaptureReader::skipped(qint64 place, qint64 size)
{
    if (stopped())
        return;
    m_skippedBytes += size;
    tell(m_hex ? QStringLiteral("%1: line %2 is not whole bytes in hex, or more than 1 MiB of them: skipped")
                     .arg(m_name, QString::number(place))
               : QStringLiteral("%1: skipped %2 bytes at offset %3")
                     .arg(m_name, QString::number(size), QString::number(place)));
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
