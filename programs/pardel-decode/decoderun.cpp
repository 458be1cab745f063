#include "decoderun.h"

#include "capturereader.h"
#include "commandline.h"
#include "decodejobs.h"
#include "jsonwriter.h"
#include "output.h"
#include "tablewriter.h"

#include <QElapsedTimer>

#include <cstdio>

#include <unistd.h>

namespace {

constexpr std::size_t mostHeld = 1 << 16;

class Run : public CaptureReader
{
public:
    explicit Run(const DecodeOptions& options);

    int decodeAll();

private:
    void handlePacket(const PacketFramer::Frame& frame) override;
    void breathe() override { m_jobs ? m_jobs->breathe() : m_writer->flush(); }
    bool stopped() const override { return m_output.failed(); }

    const DecodeOptions& m_options;
    Output m_output{STDOUT_FILENO};
    std::unique_ptr<PacketWriter> m_writer; ///< Where there are no jobs.
    std::unique_ptr<DecodeJobs> m_jobs;
    const bool m_tellsSummary;
    qint64 m_reports = 0;
    qint64 m_rejected = 0;
};

Run::Run(const DecodeOptions& options)
    : m_options(options), m_tellsSummary(options.output == DecodeOptions::Form::Table)
{
    const auto makeWriter = [form = options.output](Output& output, std::size_t heldSize,
                                                    bool first) -> std::unique_ptr<PacketWriter> {
        if (form == DecodeOptions::Form::Json)
            return std::make_unique<JsonWriter>(output, heldSize);
        return std::make_unique<TableWriter>(output, heldSize, !first);
    };
    if (options.jobs == 1) {
        m_writer = makeWriter(m_output, mostHeld, true);
        return;
    }
    m_jobs = std::make_unique<DecodeJobs>(options.jobs, options.settings, makeWriter, m_output);
    if (m_jobs->threads() < options.jobs)
        tell(QStringLiteral("only %1 of %2 threads could be started: all is decoded, but it takes longer")
                 .arg(m_jobs->threads())
                 .arg(options.jobs));
}

int Run::decodeAll()
{
    QElapsedTimer time;
    time.start();
    readAll(m_options.files, m_options.input, m_options.settings.checksumFromZero);
    if (m_jobs) {
        m_jobs->finish();
        m_reports = m_jobs->reports();
        m_rejected = m_jobs->rejected();
    }
    if (m_output.failed() && !m_output.readerGone()) {
        tell(QStringLiteral("cannot write to standard output: %1").arg(m_output.errorString()));
        return Failed;
    }
    if (m_tellsSummary && !m_output.failed()) {
        std::fprintf(stderr, "packets %lld, reports %lld, rejected %lld, skipped bytes %lld, seconds %.3f\n", packets(),
                     m_reports, m_rejected, skippedBytes(), static_cast<double>(time.elapsed()) / 1000);
    }
    if (hasUnreadable())
        return Failed;
    return m_rejected > 0 || skippedBytes() > 0 ? Incomplete : Done;
}

void Run::handlePacket(const PacketFramer::Frame& frame)
{
    if (m_jobs) {
        m_jobs->add(frame);
        return;
    }
    const DecodedPacket decoded = decodePacket(frame, m_options.settings);
    if (decoded.accepted())
        m_reports += 1 + decoded.reports.size();
    else
        ++m_rejected;
    m_writer->write(decoded);
}

} // namespace

int decodeFiles(const DecodeOptions& options)
{
    Run run(options);
    return run.decodeAll();
}
