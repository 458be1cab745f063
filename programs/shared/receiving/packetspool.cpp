#include "packetspool.h"

#include <QCoreApplication>
#include <QDateTime>
#include <QDir>
#include <QFileInfo>

#include <algorithm>
#include <utility>

#include <fcntl.h>
#include <unistd.h>

namespace {

constexpr qint64 mostInFile = 4 << 20; // bytes; more are begun anew, so that space is given back bit by bit
constexpr qint64 oneMoment = 100;      // ms in which arrivals are not told apart
constexpr int numberDigits = 9;
const QLatin1String suffix(".packets");
const QLatin1String keptSuffix(".kept");
const char reserve[] = "/reserve"; // space that is given up when the disk is full
constexpr qint64 reserveSize = 1 << 20;
const char timeFormat[] = "yyyyMMdd'T'HHmmsszzz";

void addArrivals(std::vector<Arrival>& arrivals, const std::vector<Arrival>& more)
{
    for (const Arrival& arrival : more) {
        if (!arrivals.empty() && arrival.time >= arrivals.back().time &&
            arrival.time - arrivals.back().time < oneMoment)
            arrivals.back().packets += arrival.packets;
        else
            arrivals.push_back(arrival);
    }
}

QString tr(const char* text)
{
    return QCoreApplication::translate("PacketSpool", text);
}

} // namespace

PacketSpool::PacketSpool(const QString& folder) : m_folder(folder) {}

PacketSpool::~PacketSpool()
{
    if (!m_buffer.isEmpty()) // without packets the folder may be another process's
        write();
    closeFile();
    for (const int descriptor : takeUnsynchronised())
        ::close(descriptor);
}

bool PacketSpool::isInUse(const QString& folder)
{
    QFile file(folder + QLatin1String("/lock"));
    struct flock lock = {};
    lock.l_type = F_WRLCK; // would anybody keep us from taking it?
    return file.open(QIODevice::ReadOnly) && ::fcntl(file.handle(), F_OFD_GETLK, &lock) == 0 && lock.l_type != F_UNLCK;
}

QString PacketSpool::open()
{
    if (!QDir().mkpath(m_folder))
        return tr("cannot make the spool folder %1: let this user write there, or name another").arg(m_folder);
    m_lock.setFileName(m_folder + QLatin1String("/lock"));
    if (!m_lock.open(QIODevice::ReadWrite))
        return tr("cannot write to the spool folder %1: %2").arg(m_folder, m_lock.errorString());
    struct flock lock = {};
    lock.l_type = F_WRLCK;
    if (::fcntl(m_lock.handle(), F_OFD_SETLK, &lock) != 0)
        return tr("the spool folder %1 is in use by another process: each needs one of its own").arg(m_folder);
    m_kept = static_cast<int>(QDir(m_folder).entryList({QLatin1Char('*') + keptSuffix}, QDir::Files).size());
    const QFileInfoList left = QDir(m_folder).entryInfoList({QLatin1Char('*') + suffix}, QDir::Files, QDir::Name);
    for (const QFileInfo& info : left) {
        m_number = std::max(m_number, info.baseName().section(QLatin1Char('-'), 0, 0).toLongLong());
        if (info.size() == 0) {
            QFile::remove(info.filePath());
            continue;
        }
        // The name says when its first packet came; the file's own time is that of the last.
        const QDateTime named =
            QDateTime::fromString(info.baseName().section(QLatin1Char('-'), 1, 1), QLatin1String(timeFormat));
        QDateTime came = named.isValid() ? named : info.lastModified();
        if (named.isValid())
            came.setTimeSpec(Qt::UTC);
        m_files.push_back({info.filePath(), info.size(), 0, {}, came.toMSecsSinceEpoch()});
        m_bytes += info.size();
    }
    return {};
}

void PacketSpool::add(const QByteArray& packet)
{
    m_buffer += packet;
    addArrivals(m_buffered, {{QDateTime::currentMSecsSinceEpoch(), 1}});
}

bool PacketSpool::openFile()
{
    if (m_file.isOpen())
        return true;
    QDir().mkpath(m_folder); // somebody may have tidied up
    const qint64 now = m_buffered.front().time;
    const QString name = QStringLiteral("%1-%2")
                             .arg(++m_number, numberDigits, 10, QLatin1Char('0'))
                             .arg(QDateTime::fromMSecsSinceEpoch(now, Qt::UTC).toString(QLatin1String(timeFormat)));
    m_file.setFileName(m_folder + QLatin1Char('/') + name + suffix);
    if (!m_file.open(QIODevice::WriteOnly | QIODevice::Unbuffered | QIODevice::NewOnly)) {
        m_error = m_file.errorString();
        return false;
    }
    m_files.push_back({m_file.fileName(), 0, 0, {}, now});
    return true;
}

void PacketSpool::closeFile()
{
    if (!m_file.isOpen())
        return;
    if (std::exchange(m_written, false))
        m_closed.push_back(::dup(m_file.handle()));
    m_file.close();
    if (m_files.back().bytes == 0) {
        m_file.remove();
        m_files.pop_back();
    }
}

void PacketSpool::write()
{
    m_error.clear();
    if (m_buffer.isEmpty() || writeFile())
        makeReserve();
    else if (QFile::remove(m_folder + QLatin1String(reserve)))
        writeFile(); // for more there is no room: the error stays
}

void PacketSpool::makeReserve()
{
    QFile file(m_folder + QLatin1String(reserve));
    if (file.size() == reserveSize)
        return;
    const bool isOpen = file.open(QIODevice::WriteOnly);
    const int error = isOpen ? ::posix_fallocate(file.handle(), 0, reserveSize) : 0;
    if (!isOpen)
        m_error = file.errorString();
    else if (error != 0)
        m_error = qt_error_string(error);
    if (!m_error.isEmpty())
        file.remove();
}

bool PacketSpool::writeFile()
{
    if (!openFile())
        return false;
    SpoolFile& file = m_files.back();
    qint64 written = 0;
    while (written < m_buffer.size()) {
        const qint64 size = m_file.write(m_buffer.constData() + written, m_buffer.size() - written);
        if (size <= 0) {
            m_error = m_file.errorString();
            // Only whole packets: what is left of the disk may serve a smaller piece, or another file.
            m_file.resize(file.bytes);
            closeFile();
            return false;
        }
        written += size;
    }
    m_written = true;
    file.bytes += written;
    m_bytes += written;
    for (const Arrival& arrival : m_buffered)
        file.packets += arrival.packets;
    addArrivals(file.arrivals, m_buffered);
    m_buffer.clear();
    m_buffered.clear();
    if (file.bytes >= mostInFile)
        closeFile();
    return true;
}

std::vector<int> PacketSpool::takeUnsynchronised()
{
    std::vector<int> descriptors = std::exchange(m_closed, {});
    if (m_file.isOpen() && std::exchange(m_written, false))
        descriptors.push_back(::dup(m_file.handle()));
    return descriptors;
}

std::optional<SpoolFile> PacketSpool::take()
{
    if (m_taken || m_files.empty() || m_files.front().bytes == 0)
        return std::nullopt;
    if (m_files.size() == 1)
        closeFile();
    m_taken = true;
    return m_files.front();
}

QString PacketSpool::remove()
{
    const SpoolFile file = std::move(m_files.front());
    m_files.pop_front();
    m_taken = false;
    m_bytes -= file.bytes;
    if (QFile::remove(file.path) || !QFile::exists(file.path))
        return {};
    return tr("cannot remove %1 from the spool: its reports are stored, and the next start finds them there already")
        .arg(file.path);
}

QString PacketSpool::setAside()
{
    const QString path = m_files.front().path;
    const QString aside = path + keptSuffix;
    QFile::remove(aside);
    m_bytes -= m_files.front().bytes;
    m_files.pop_front();
    m_taken = false;
    ++m_kept;
    return QFile::rename(path, aside) ? aside : path;
}

qint64 PacketSpool::oldest() const
{
    if (!m_files.empty() && m_files.front().bytes > 0)
        return m_files.front().oldest;
    return m_buffered.empty() ? 0 : m_buffered.front().time;
}
