#include "output.h"

#include <cerrno>
#include <csignal>
#include <cstring>

#include <unistd.h>

Output::Output(int descriptor) : m_descriptor(descriptor)
{
    std::signal(SIGPIPE, SIG_IGN);
}

void Output::write(const char* data, std::size_t size)
{
    while (size > 0 && !failed()) {
        const ssize_t written = ::write(m_descriptor, data, size);
        if (written >= 0) {
            data += written;
            size -= static_cast<std::size_t>(written);
        } else if (errno != EINTR) {
            m_error = errno;
        }
    }
}

bool Output::readerGone() const
{
    return m_error == EPIPE;
}

QString Output::errorString() const
{
    return QString::fromLocal8Bit(std::strerror(m_error));
}
