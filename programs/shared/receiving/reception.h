#pragma once

#include "packetreceiver.h"
#include "packetspool.h"
#include "spoolstore.h"

#include <QElapsedTimer>
#include <QObject>
#include <QSet>
#include <QString>
#include <QTimer>

#include <array>
#include <atomic>
#include <memory>

/** How a Reception keeps and stores packets. */
struct ReceptionSettings
{
    QString spool; ///< The folder of its PacketSpool.
    SpoolStoreSettings store;
};

/** What a Reception has done since it was made. */
struct ReceptionCounters
{
    /** Upper ends of the histogram's classes, in seconds; one more takes the rest. */
    static constexpr std::array<double, 10> waits{0.1, 0.25, 0.5, 1, 2, 5, 10, 60, 600, 3600};

    qint64 received = 0; ///< Packets handed to the system, from where they outlive the process.
    qint64 stored = 0;   ///< Reports that are in the archive now and were not before.
    qint64 repeated = 0; ///< Reports that were there already.
    qint64 ahead = 0;    ///< Of those stored, the ones of a time too far in the future for a last state.
    qint64 unknown = 0;  ///< Reports from the spool that were not stored as their objects are not let in.
    qint64 spoolBytes = 0;
    double spoolSeconds = 0; ///< Since the oldest packet came that is not stored; 0 without one.
    int keptFiles = 0;       ///< Of the spool, set aside as they could not be read whole.
    bool databaseUp = false;
    bool spoolFull = false;
    std::array<qint64, waits.size() + 1> waited{}; ///< Packets by the seconds from their arrival to their commit.
    double waitedSeconds = 0;                      ///< Of all of these together.
};

/**
 * What terminals send, on its way into the archive without loss: packets go into a PacketSpool every 0.1 s, and its
 * files to a SpoolStore, one at a time, oldest first and not more often than every 0.4 s while all goes well.
 *
 * What an earlier process has left in the spool is stored first. Every 0.5 s what lies in the spool alone is put on the
 * disk, in another thread, so that a machine that loses its power loses little.
 */
class Reception : public QObject, public PacketReceiver
{
    Q_OBJECT

public:
    explicit Reception(const ReceptionSettings& settings, QObject* parent = nullptr);
    ~Reception() override;

    /** Begins, in the thread's event loop. @return what keeps it from that and what to do, or nothing */
    QString start();
    /**
     * Stores what has come, for so long at most, and ends; what is not stored by then stays in the spool for the next
     * start. Waits without an event loop.
     *
     * @return whether the thread that stores has ended; if not, the database does not answer, and deleting this waits
     *         until it does
     */
    bool finish(std::chrono::milliseconds most);

    bool letsIn(quint32 object) override;
    void takePacket(const QByteArray& packet) override;

    ReceptionCounters counters() const;
    const PacketSpool& spool() const { return m_spool; }

Q_SIGNALS:
    /** Something for the log or the journal, a sentence. */
    void happened(const QString& text);
    /** Whether the spool has room; while it has none, nothing more is to be read from the terminals. */
    void roomChanged(bool room);

private:
    void work();
    void writeSpool();
    void synchronise();
    void storeNext();
    void handleStored(const StoredFile& result);
    void handleDatabase(const QString& trouble);

    const ReceptionSettings m_settings;
    PacketSpool m_spool;
    SpoolStore m_store;
    ReceptionCounters m_counters;
    qint64 m_unwritten = 0; // packets
    std::optional<SpoolFile> m_storing;
    QSet<quint32> m_known;
    bool m_hasKnown = false;
    bool m_finishing = false;
    QTimer m_timer;
    QElapsedTimer m_sinceStored;
    QElapsedTimer m_sinceSynchronised;
    QElapsedTimer m_databaseGone;
    std::shared_ptr<std::atomic<bool>> m_synchronising = std::make_shared<std::atomic<bool>>(false);
};
