#include "reception.h"

#include <QCoreApplication>
#include <QDateTime>
#include <QDeadlineTimer>
#include <QFileInfo>
#include <QThreadPool>

#include <algorithm>

#include <unistd.h>

namespace {

constexpr int workInterval = 100;           // ms
constexpr qint64 storeInterval = 400;       // ms; commits more often cost the database more than they bring
constexpr qint64 synchroniseInterval = 500; // ms

/// Puts on the disk what the system holds of a file, beside whatever else is done.
class Synchronisation : public QRunnable
{
public:
    Synchronisation(int descriptor, std::shared_ptr<std::atomic<bool>> running)
        : m_descriptor(descriptor), m_running(std::move(running))
    {}

    void run() override
    {
        ::fdatasync(m_descriptor);
        ::close(m_descriptor);
        *m_running = false;
    }

private:
    const int m_descriptor;
    const std::shared_ptr<std::atomic<bool>> m_running;
};

} // namespace

Reception::Reception(const ReceptionSettings& settings, QObject* parent)
    : QObject(parent), m_settings(settings), m_spool(settings.spool), m_store(settings.store)
{
    connect(&m_store, &SpoolStore::stored, this, &Reception::handleStored);
    connect(&m_store, &SpoolStore::databaseChanged, this, &Reception::handleDatabase);
    connect(&m_store, &SpoolStore::advised, this, [this](const QString& text) {
        if (!text.isEmpty())
            Q_EMIT happened(text);
    });
    connect(&m_store, &SpoolStore::knownObjects, this, [this](const QSet<quint32>& objects) {
        m_known = objects;
        m_hasKnown = true;
    });
    m_timer.setInterval(workInterval);
    connect(&m_timer, &QTimer::timeout, this, &Reception::work);
}

Reception::~Reception() = default;

QString Reception::start()
{
    const QString error = m_spool.open();
    if (!error.isEmpty())
        return error;
    if (!m_spool.isEmpty()) {
        Q_EMIT happened(tr("%1 bytes of packets that came before the last end are in %2 and are stored first")
                            .arg(m_spool.bytes())
                            .arg(m_spool.folder()));
    }
    m_sinceSynchronised.start();
    m_store.start();
    m_timer.start();
    work();
    return {};
}

bool Reception::finish(std::chrono::milliseconds most)
{
    const QDeadlineTimer deadline(most);
    m_finishing = true;
    m_timer.stop();
    m_store.hurry();
    do {
        writeSpool();
        storeNext();
        if (!m_storing)
            break;
        QThread::msleep(5);
        QCoreApplication::sendPostedEvents(this); // of the store
    } while (!deadline.hasExpired());
    m_store.stop();
    const bool ended = m_store.wait(static_cast<unsigned long>(std::max<qint64>(deadline.remainingTime(), 100)));
    QCoreApplication::sendPostedEvents(this);
    if (!m_spool.isEmpty()) {
        Q_EMIT happened(tr("%1 bytes of packets are not stored and stay in %2; the next start stores them first")
                            .arg(m_spool.bytes())
                            .arg(m_spool.folder()));
    }
    return ended;
}

bool Reception::letsIn(quint32 object)
{
    // Before the database has told who is known all are taken: what is not is found when it is to be stored.
    return !m_hasKnown || m_known.contains(object);
}

void Reception::takePacket(const QByteArray& packet)
{
    m_spool.add(packet);
    ++m_unwritten;
}

void Reception::work()
{
    writeSpool();
    synchronise();
    storeNext();
}

void Reception::writeSpool()
{
    const bool written = m_spool.write();
    if (written) {
        m_counters.received += m_unwritten;
        m_unwritten = 0;
    }
    if (written != m_counters.spoolFull)
        return;
    m_counters.spoolFull = !written;
    Q_EMIT happened(written ? tr("the spool takes packets again")
                            : tr("cannot write to the spool %1: %2 (nothing is lost: terminals wait; make room there)")
                                  .arg(m_spool.folder(), m_spool.error()));
    Q_EMIT roomChanged(written);
}

void Reception::synchronise()
{
    if (!m_sinceSynchronised.hasExpired(synchroniseInterval) || *m_synchronising)
        return;
    m_sinceSynchronised.start();
    const int descriptor = m_spool.duplicateDescriptor();
    if (descriptor < 0)
        return;
    *m_synchronising = true;
    QThreadPool::globalInstance()->start(new Synchronisation(descriptor, m_synchronising));
}

void Reception::storeNext()
{
    const bool waits = m_sinceStored.isValid() && !m_sinceStored.hasExpired(storeInterval);
    if (m_storing || (waits && !m_spool.isBehind() && !m_finishing))
        return;
    m_storing = m_spool.take();
    if (!m_storing)
        return;
    m_sinceStored.start();
    m_store.store(m_storing->path);
}

void Reception::handleStored(const StoredFile& result)
{
    m_counters.stored += result.stored;
    m_counters.repeated += result.repeated;
    m_counters.ahead += result.ahead;
    m_counters.unknown += result.unknown;
    const SpoolFile file = *std::exchange(m_storing, std::nullopt);
    const qint64 now = QDateTime::currentMSecsSinceEpoch();
    for (const Arrival& arrival : file.arrivals) {
        const double seconds = static_cast<double>(std::max<qint64>(now - arrival.time, 0)) / 1000;
        const auto place = std::lower_bound(ReceptionCounters::waits.begin(), ReceptionCounters::waits.end(), seconds);
        m_counters.waited[static_cast<std::size_t>(place - ReceptionCounters::waits.begin())] += arrival.packets;
        m_counters.waitedSeconds += seconds * static_cast<double>(arrival.packets);
    }
    const DecodeCounts& decoded = result.decoded;
    const qint64 found = decoded.packets + decoded.rawOnly;
    if (!result.error.isEmpty() || (file.packets > 0 && found != file.packets)) {
        Q_EMIT happened(
            tr("of %1 packets in a file of the spool %2 could be read%3; it is kept as %4 (look at the disk; what "
               "pardel-import can read of it has been stored)")
                .arg(file.packets)
                .arg(found)
                .arg(result.error.isEmpty() ? QString() : QLatin1String(": ") + result.error, m_spool.setAside()));
        return;
    }
    if (const qint64 bad = decoded.badChecksums + decoded.rejected + decoded.skippedBytes; bad > 0) {
        Q_EMIT happened(
            tr("%1, left by an earlier run, holds %2 packets, and beside them %3 damaged, %4 rejected, and %5 "
               "bytes of no packet, as a run leaves that is killed while it writes")
                .arg(QFileInfo(file.path).fileName())
                .arg(found)
                .arg(decoded.badChecksums)
                .arg(decoded.rejected)
                .arg(decoded.skippedBytes));
    }
    const QString error = m_spool.remove();
    if (!error.isEmpty())
        Q_EMIT happened(error);
    storeNext();
}

void Reception::handleDatabase(const QString& trouble)
{
    m_counters.databaseUp = trouble.isEmpty();
    if (!trouble.isEmpty()) {
        m_databaseGone.start();
        Q_EMIT happened(tr("the database does not take reports: %1; packets are kept in the spool %2, and it is tried "
                           "again, at least every 30 s")
                            .arg(trouble, m_spool.folder()));
    } else if (m_databaseGone.isValid()) {
        Q_EMIT happened(tr("the database takes reports again, after %1 s; %2 bytes of packets are in the spool")
                            .arg(m_databaseGone.elapsed() / 1000)
                            .arg(m_spool.bytes()));
        m_databaseGone.invalidate();
    }
}

ReceptionCounters Reception::counters() const
{
    ReceptionCounters counters = m_counters;
    counters.spoolBytes = m_spool.bytes();
    if (const qint64 oldest = m_spool.oldest(); oldest > 0)
        counters.spoolSeconds = static_cast<double>(QDateTime::currentMSecsSinceEpoch() - oldest) / 1000;
    return counters;
}
