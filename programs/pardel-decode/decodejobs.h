#pragma once

#include "decodedpacket.h"
#include "output.h"
#include "packetwriter.h"

#include <condition_variable>
#include <deque>
#include <functional>
#include <memory>
#include <mutex>
#include <thread>
#include <vector>

/**
 * Decodes packets on several threads and writes them in the order in which they came, as one thread would.
 *
 * Held are two batches of packets for each thread, and of each batch some 2 MiB of text: a thread whose batch makes
 * more waits until that batch is the first, and then writes it to the output itself.
 */
class DecodeJobs
{
public:
    /** Makes what writes batches and holds so much text; the first one writes the heading. */
    using MakeWriter = std::function<std::unique_ptr<PacketWriter>(Output& output, std::size_t heldSize, bool first)>;

    DecodeJobs(int jobs, const DecodeSettings& settings, MakeWriter makeWriter, Output& output);
    ~DecodeJobs(); ///< Waits for what is under way.
    Q_DISABLE_COPY_MOVE(DecodeJobs)

    /** How many threads there are: fewer than wanted, or none, if the system lets no more start. */
    int threads() const { return static_cast<int>(m_threads.size()); }

    /** Takes a packet; waits if too many are under way. */
    void add(const PacketFramer::Frame& frame);
    /** Writes what is ready; and, of a live source that sends little, all there is. */
    void breathe();
    /** Writes all. */
    void finish();

    qint64 reports() const { return m_reports; }   ///< Of what has been written.
    qint64 rejected() const { return m_rejected; } ///< The same.

private:
    struct Batch;

    void start();
    void work();
    void decode(Batch& batch);
    void makeFirst();
    void takeFirst();

    const std::size_t m_mostBatches;
    const DecodeSettings m_settings;
    const MakeWriter m_makeWriter;
    Output& m_output;
    std::unique_ptr<Batch> m_next; ///< Being filled.
    std::deque<std::unique_ptr<Batch>> m_batches;
    std::vector<std::unique_ptr<Batch>> m_spare; ///< Have been used.
    qint64 m_bytes = 0;                          ///< Of the packets in them.
    bool m_started = false;                      ///< The first writer is made.
    qint64 m_reports = 0;
    qint64 m_rejected = 0;

    std::mutex m_mutex; ///< Of the next two.
    std::deque<Batch*> m_queue;
    bool m_ends = false;
    std::condition_variable m_queued;
    std::vector<std::thread> m_threads;
};
