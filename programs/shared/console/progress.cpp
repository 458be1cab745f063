#include "progress.h"

#include <cstdio>

#include <unistd.h>

namespace {

constexpr qint64 drawInterval = 500; // ms
constexpr qint64 mebibyte = 1 << 20;

} // namespace

Progress::Progress() : m_shown(isatty(STDERR_FILENO) == 1) {}

void Progress::begin(const QString& name, qint64 size)
{
    m_name = name;
    m_size = size;
    m_begun = false;
    m_sinceDrawn.start();
}

void Progress::update(qint64 bytes, qint64 packets)
{
    const bool takenAway = m_begun && !m_drawn;
    if (!m_shown || (!takenAway && m_sinceDrawn.elapsed() < drawInterval))
        return;
    m_sinceDrawn.restart();
    QString line = QStringLiteral("\r\x1b[K%1: %2 MiB").arg(m_name, QString::number(bytes / mebibyte));
    if (m_size > 0)
        line += QStringLiteral(" of %1 (%2 %)")
                    .arg(QString::number(m_size / mebibyte), QString::number(100 * bytes / m_size));
    line += QStringLiteral(", %1 packets").arg(packets);
    std::fputs(line.toLocal8Bit().constData(), stderr);
    std::fflush(stderr);
    m_begun = true;
    m_drawn = true;
}

void Progress::clear()
{
    if (m_drawn)
        std::fputs("\r\x1b[K", stderr);
    m_drawn = false;
}

void Progress::makeRoom()
{
    if (isatty(STDOUT_FILENO) == 1)
        clear();
}
