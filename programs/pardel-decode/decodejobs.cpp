#include "decodejobs.h"

#include <QSemaphore>

#include <system_error>
#include <utility>
#include <vector>

namespace {

constexpr int batchSize = 1 << 16;
constexpr std::size_t batchesPerJob = 2;
constexpr std::size_t mostHeld = 1 << 21;

/// Lets a batch write when it is the first one's turn.
class InTurn : public Output
{
public:
    explicit InTurn(Output& output) : Output(-1), m_output(output) {}

    void write(const char* data, std::size_t size) override
    {
        if (!std::exchange(m_isFirst, true))
            m_turn.acquire();
        m_output.write(data, size);
    }

    void giveTurn() { m_turn.release(); }

    void endTurn()
    {
        m_turn.tryAcquire(); // there may have been nothing to write
        m_isFirst = false;
    }

private:
    Output& m_output;
    QSemaphore m_turn;
    bool m_isFirst = false;
};

} // namespace

struct DecodeJobs::Batch
{
    explicit Batch(Output& whole) : output(whole) { bytes.reserve(2 * batchSize); }

    QByteArray bytes;
    std::vector<PacketFramer::Frame> frames; ///< Their bytes follow each other in the array.
    qint64 reports = 0;
    qint64 rejected = 0;
    InTurn output;
    std::unique_ptr<PacketWriter> writer;
    QSemaphore done;
};

DecodeJobs::DecodeJobs(int jobs, const DecodeSettings& settings, MakeWriter makeWriter, Output& output)
    : m_mostBatches(batchesPerJob * static_cast<std::size_t>(jobs)),
      m_settings(settings),
      m_makeWriter(std::move(makeWriter)),
      m_output(output)
{
    try {
        while (threads() < jobs)
            m_threads.emplace_back([this] { work(); });
    } catch (const std::system_error&) { // no more of them: those that there are do
    }
}

DecodeJobs::~DecodeJobs()
{
    while (!m_batches.empty())
        takeFirst();
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_ends = true;
    }
    m_queued.notify_all();
    for (std::thread& thread : m_threads)
        thread.join();
}

void DecodeJobs::add(const PacketFramer::Frame& frame)
{
    if (!m_next) {
        if (m_spare.empty()) {
            m_spare.push_back(std::make_unique<Batch>(m_output));
            m_spare.back()->writer = m_makeWriter(m_spare.back()->output, mostHeld, !std::exchange(m_started, true));
        }
        m_next = std::move(m_spare.back());
        m_spare.pop_back();
    }
    m_next->frames.push_back(frame);
    m_next->bytes.append(frame.bytes, static_cast<int>(frame.size));
    if (m_next->bytes.size() >= batchSize)
        start();
}

void DecodeJobs::breathe()
{
    start();
    while (!m_batches.empty() && (m_bytes < batchSize || m_batches.front()->done.available() > 0))
        takeFirst();
}

void DecodeJobs::finish()
{
    start();
    while (!m_batches.empty())
        takeFirst();
}

void DecodeJobs::start()
{
    if (!m_next)
        return;
    if (m_batches.size() >= m_mostBatches)
        takeFirst();
    Batch& batch = *m_next;
    m_bytes += batch.bytes.size();
    m_batches.push_back(std::move(m_next));
    if (m_batches.size() == 1)
        makeFirst();
    if (m_threads.empty()) {
        decode(batch);
        takeFirst(); // as whoever decodes the next one would wait for its own turn
        return;
    }
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_queue.push_back(&batch);
    }
    m_queued.notify_one();
}

void DecodeJobs::work()
{
    for (;;) {
        std::unique_lock<std::mutex> lock(m_mutex);
        m_queued.wait(lock, [this] { return m_ends || !m_queue.empty(); });
        if (m_queue.empty())
            return;
        Batch& batch = *m_queue.front();
        m_queue.pop_front();
        lock.unlock();
        decode(batch);
    }
}

void DecodeJobs::decode(Batch& batch)
{
    const char* bytes = batch.bytes.constData();
    for (PacketFramer::Frame& frame : batch.frames) {
        frame.bytes = bytes;
        bytes += frame.size;
        const DecodedPacket decoded = decodePacket(frame, m_settings);
        if (decoded.accepted())
            batch.reports += 1 + decoded.reports.size();
        else
            ++batch.rejected;
        batch.writer->write(decoded);
    }
    batch.done.release();
}

void DecodeJobs::makeFirst()
{
    if (!m_batches.empty())
        m_batches.front()->output.giveTurn();
}

void DecodeJobs::takeFirst()
{
    Batch& batch = *m_batches.front();
    batch.done.acquire();
    batch.writer->flush();
    m_reports += batch.reports;
    m_rejected += batch.rejected;
    m_bytes -= batch.bytes.size();
    // Used again, as to get memory for each batch and give it back costs as much as a part of the decoding.
    batch.bytes.resize(0);
    batch.frames.clear();
    batch.reports = batch.rejected = 0;
    batch.output.endTurn();
    m_spare.push_back(std::move(m_batches.front()));
    m_batches.pop_front();
    makeFirst();
}
