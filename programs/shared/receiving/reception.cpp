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
constexpr qint64 synchroniseInterval = 400; // ms; with workInterval half a second
constexpr qint64 longestAnswer = 20'000;    // ms after which the database counts as gone
constexpr qint64 mostInMemory = 256 * 1024; // bytes of packets
constexpr char formWithoutReports = '\xd6'; // the second byte of the 545-byte form

/// Puts on the disk what the system holds of files, beside whatever else is done.
class Synchronisation : public QRunnable
{
public:
    Synchronisation(std::vector<int> descriptors, std::shared_ptr<std::atomic<bool>> running)
        : m_descriptors(std::move(descriptors)), m_running(std::move(running))
    {}

    void run() override
    {
        for (const int descriptor : m_descriptors) {
            ::fdatasync(descriptor);
            ::close(descriptor);
        }
        *m_running = false;
    }

private:
    const std::vector<int> m_descriptors;
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
        if (m_spool.isEmpty())
            break;
        QThread::msleep(5);
        QCoreApplication::sendPostedEvents(this); // of the store
    } while (!deadline.hasExpired());
    m_store.stop();
    const bool ended = m_store.wait(static_cast<unsigned long>(std::max<qint64>(deadline.remainingTime(), 100)));
    QCoreApplication::sendPostedEvents(this);
    if (m_spool.unwrittenBytes() > 0) {
        Q_EMIT happened(tr("%1 bytes of packets are LOST: they could not be written to %2: %3")
                            .arg(m_spool.unwrittenBytes())
                            .arg(m_spool.folder(), m_spool.error()));
    }
    if (m_spool.bytes() > 0) {
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
    if (packet.size() > 1 && packet.at(1) == formWithoutReports)
        return;
    m_spool.add(packet);
    ++m_unwritten;
    if (m_spool.unwrittenBytes() >= mostInMemory && !m_counters.spoolFull)
        writeSpool();
}

void Reception::work()
{
    writeSpool();
    synchronise();
    storeNext();
    if (m_storing && m_counters.databaseUp && m_sinceStored.hasExpired(longestAnswer))
        handleDatabase(tr("it has not answered for %1 s").arg(longestAnswer / 1000));
}

void Reception::writeSpool()
{
    m_spool.write();
    if (m_spool.unwrittenBytes() == 0)
        m_counters.received += std::exchange(m_unwritten, 0);
    const bool room = m_spool.error().isEmpty();
    if (room != m_counters.spoolFull)
        return;
    m_counters.spoolFull = !room;
    Q_EMIT happened(room ? tr("the spool takes packets again")
                         : tr("cannot write to the spool %1: %2 (nothing is lost: terminals wait; make room there)")
                               .arg(m_spool.folder(), m_spool.error()));
    Q_EMIT roomChanged(room);
}

void Reception::synchronise()
{
    if (!m_sinceSynchronised.hasExpired(synchroniseInterval) || *m_synchronising)
        return;
    m_sinceSynchronised.start();
    std::vector<int> descriptors = m_spool.takeUnsynchronised();
    if (descriptors.empty())
        return;
    *m_synchronising = true;
    QThreadPool::globalInstance()->start(new Synchronisation(std::move(descriptors), m_synchronising));
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
    if (!m_counters.databaseUp)
        handleDatabase({});
    const DecodeCounts& decoded = result.decoded;
    // Of a file without any packet nobody can say that it was a packet's beginning.
    const bool isWhole = result.error.isEmpty() && decoded.packets > 0 &&
                         decoded.badChecksums + decoded.rejected == 0 && decoded.skippedBytes == result.unfinished &&
                         (file.packets == 0 || decoded.packets == file.packets);
    if (!isWhole) {
        const QString name = QFileInfo(file.path).fileName();
        const QString cause = result.error.isEmpty() ? QString() : QLatin1String(": ") + result.error;
        Q_EMIT happened(
            tr("not all of %1 in the spool could be read%2: %3 packets, whose reports are stored; %4 damaged, "
               "%5 rejected, %6 bytes of no packet. It is kept as %7 (is CrcInit what it was, and the disk in "
               "order? pardel-import stores what can be read of it)")
                .arg(name, cause)
                .arg(decoded.packets)
                .arg(decoded.badChecksums)
                .arg(decoded.rejected)
                .arg(decoded.skippedBytes)
                .arg(m_spool.setAside()));
        storeNext();
        return;
    }
    if (result.unfinished > 0) {
        Q_EMIT happened(
            tr("%1, left by an earlier run, ends with %2 bytes of a packet that was being written when that was "
               "killed; its %3 packets are stored")
                .arg(QFileInfo(file.path).fileName())
                .arg(result.unfinished)
                .arg(decoded.packets));
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
        if (!m_databaseGone.isValid())
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
    counters.keptFiles = m_spool.keptCount();
    const qint64 now = QDateTime::currentMSecsSinceEpoch();
    if (const qint64 oldest = m_spool.oldest(); oldest > 0)
        counters.spoolSeconds = static_cast<double>(std::max<qint64>(now - oldest, 0)) / 1000; // clocks are set back
    return counters;
}
