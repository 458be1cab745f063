#include "terminalconnection.h"

#include <QCoreApplication>

#include <algorithm>
#include <array>
#include <cerrno>

#include <sys/ioctl.h>
#include <sys/socket.h>

namespace {

constexpr int pieceSize = 1 << 13; // bytes read and served at a time
constexpr qint64 thousandths = 1000;
constexpr int systemBuffer = 1 << 17; // bytes, of a connection that may have to wait

QString text(const char* source)
{
    return QCoreApplication::translate("TerminalConnection", source);
}

} // namespace

TerminalConnection::TerminalConnection(Descriptor s, const QHostAddress& from, const QString& n,
                                       const DecodeSettings& settings, int rate)
    : socket(std::move(s)),
      source(from),
      name(n),
      decoder(CaptureFramer::Raw, settings, counts),
      m_rate(rate),
      m_allowance(m_rate * thousandths)
{
    // Else the system would take megabytes of what has to wait, and more from those who come back again and again.
    if (m_rate > 0)
        setsockopt(socket.get(), SOL_SOCKET, SO_RCVBUF, &systemBuffer, sizeof systemBuffer);
}

bool TerminalConnection::isHeldBack() const
{
    return m_rate > 0 && m_allowance < thousandths && readable && !toDrain;
}

void TerminalConnection::letTimePass(qint64 milliseconds)
{
    m_allowance = std::min(m_rate * thousandths, m_allowance + m_rate * milliseconds);
}

void TerminalConnection::beginToDrain()
{
    int count = 0;
    toDrain = ioctl(socket.get(), FIONREAD, &count) == 0 ? count : 0;
    readable = true;
}

void TerminalConnection::refill()
{
    if (toDrain && *toDrain <= 0)
        return finish(Drained, text("the server closes"));
    if (!readable || isHeldBack())
        return;
    std::array<char, pieceSize> piece;
    qint64 wanted = std::min(toDrain.value_or(pieceSize), pieceSize);
    if (m_rate > 0 && !toDrain)
        wanted = std::min(wanted, m_allowance / thousandths);
    const ssize_t size = recv(socket.get(), piece.data(), static_cast<std::size_t>(wanted), 0);
    if (size > 0) {
        m_allowance -= size * thousandths;
        decoder.feed(QByteArray(piece.data(), static_cast<int>(size)));
        // A socket that gave less is empty, and what comes then is told of; but its end may have been told of before.
        readable = size == wanted || hungUp;
        if (toDrain)
            *toDrain -= static_cast<int>(size);
    } else if (size == 0) {
        finish(Ended, text("the terminal ended the connection"));
    } else if (errno == EAGAIN) {
        readable = false;
        if (toDrain)
            toDrain = 0;
    } else if (errno != EINTR) {
        finish(Ended, qt_error_string(errno));
    }
}

void TerminalConnection::finish(End how, const QString& why)
{
    const qint64 rest = decoder.pendingBytes();
    const bool isCut = how == Ended && rest > 0;
    end = isCut ? CutOff : how;
    reason = isCut ? text("cut off after %1 bytes that are no whole packet").arg(rest) : why;
    readable = false;
    decoder.finish();
}
