#include "decoderun.h"

#include "commandline.h"
#include "framing.h"
#include "jsonwriter.h"
#include "output.h"
#include "progress.h"
#include "tablewriter.h"

#include <QFile>
#include <QFileInfo>

#include <array>
#include <cerrno>
#include <cstdio>
#include <cstring>

#include <unistd.h>

namespace {

constexpr std::size_t pieceSize = 1 << 18;

struct Totals
{
    qint64 packets = 0;
    qint64 reports = 0;
    qint64 rejected = 0;
    qint64 skippedBytes = 0;
};

class Run : private FrameSink
{
public:
    explicit Run(const DecodeOptions& options);

    int decodeAll();

private:
    void decodeFile(const QString& path);
    void decodeDescriptor(int descriptor);
    void packet(qint64 place, const char* bytes, int size) override;
    void skipped(qint64 place, qint64 size) override;
    void tell(const QString& sentence);
    void tellUnreadable(const QString& reason);

    const DecodeOptions& m_options;
    Output m_output{STDOUT_FILENO};
    std::unique_ptr<PacketWriter> m_writer;
    Progress m_progress;
    QElapsedTimer m_time;
    QString m_name; // of the file being read, as people are told
    Totals m_totals;
    bool m_unreadable = false;
    std::array<char, pieceSize> m_piece;
};

Run::Run(const DecodeOptions& options) : m_options(options)
{
    if (options.json)
        m_writer = std::make_unique<JsonWriter>(m_output);
    else
        m_writer = std::make_unique<TableWriter>(m_output);
}

int Run::decodeAll()
{
    m_time.start();
    const QStringList files = m_options.files.isEmpty() ? QStringList(QStringLiteral("-")) : m_options.files;
    for (const QString& file : files) {
        decodeFile(file);
        if (m_output.failed())
            break;
    }
    if (m_output.failed() && !m_output.readerGone()) {
        tell(QStringLiteral("cannot write to standard output: %1").arg(m_output.errorString()));
        return Failed;
    }
    if (!m_options.json && !m_output.failed()) {
        std::fprintf(stderr, "packets %lld, reports %lld, rejected %lld, skipped bytes %lld, seconds %.3f\n",
                     m_totals.packets, m_totals.reports, m_totals.rejected, m_totals.skippedBytes,
                     static_cast<double>(m_time.elapsed()) / 1000);
    }
    if (m_unreadable)
        return Failed;
    return m_totals.rejected > 0 || m_totals.skippedBytes > 0 ? Incomplete : Done;
}

void Run::decodeFile(const QString& path)
{
    if (path == QLatin1String("-")) {
        m_name = QStringLiteral("standard input");
        m_progress.begin(m_name, -1);
        decodeDescriptor(STDIN_FILENO);
        return;
    }
    m_name = path;
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly | QIODevice::Unbuffered)) {
        tellUnreadable(file.errorString());
        return;
    }
    m_progress.begin(m_name, file.isSequential() ? -1 : file.size());
    decodeDescriptor(file.handle());
}

void Run::decodeDescriptor(int descriptor)
{
    RawFramer rawFramer(*this);
    HexFramer hexFramer(*this);
    Framer& framer = m_options.hex ? static_cast<Framer&>(hexFramer) : rawFramer;
    qint64 bytes = 0;
    while (!m_output.failed()) {
        // Not through QFile: that waits for a full piece, and a live pipe's packets are to be seen as they come.
        const ssize_t size = ::read(descriptor, m_piece.data(), m_piece.size());
        if (size < 0 && errno == EINTR)
            continue;
        if (size < 0)
            tellUnreadable(QString::fromLocal8Bit(std::strerror(errno)));
        if (size <= 0)
            break;
        m_progress.makeRoom();
        framer.feed(m_piece.data(), static_cast<std::size_t>(size));
        bytes += size;
        m_writer->flush();
        m_progress.update(bytes, m_totals.packets);
    }
    framer.finish();
    m_progress.clear();
    m_writer->flush();
}

void Run::packet(qint64 place, const char* bytes, int size)
{
    if (m_output.failed())
        return;
    const DecodedPacket decoded = decodePacket(place, bytes, size, m_options.settings);
    ++m_totals.packets;
    if (decoded.accepted())
        m_totals.reports += 1 + decoded.reports.size();
    else
        ++m_totals.rejected;
    m_writer->write(decoded);
}

void Run::skipped(qint64 place, qint64 size)
{
    if (m_output.failed())
        return;
    m_totals.skippedBytes += size;
    tell(m_options.hex ? QStringLiteral("%1: line %2 is not whole bytes in hex, or more than 1 MiB of them: skipped")
                             .arg(m_name)
                             .arg(place)
                       : QStringLiteral("%1: skipped %2 bytes at offset %3").arg(m_name).arg(size).arg(place));
}

void Run::tell(const QString& sentence)
{
    m_progress.clear();
    tellError(sentence);
}

void Run::tellUnreadable(const QString& reason)
{
    tell(QStringLiteral("cannot read %1: %2").arg(m_name, reason));
    m_unreadable = true;
}

} // namespace

int decodeFiles(const DecodeOptions& options)
{
    Run run(options);
    return run.decodeAll();
}
