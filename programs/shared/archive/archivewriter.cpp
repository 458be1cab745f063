#include "archivewriter.h"

#include "archiveschema.h"

#include <QDateTime>

#include <utility>

namespace {

constexpr qint64 reportsBetweenSends = 16;
constexpr int mostAttempts = 5; // of a transaction in whose way others are

} // namespace

ArchiveWriter::ArchiveWriter(const QSqlDatabase& db, const ArchiveWriterSettings& settings)
    : m_db(db),
      m_settings(settings),
      m_store(ArchiveSchema::isPostgres(db) ? makePostgresStore(db) : makeSqliteStore(db))
{}

ArchiveWriter::~ArchiveWriter()
{
    if (!m_transaction)
        return;
    m_transaction->fail({}); // to be rolled back
    m_store->finish(*m_transaction);
}

qint64 ArchiveWriter::horizon() const
{
    return QDateTime::currentSecsSinceEpoch() + m_settings.ahead.count();
}

void ArchiveWriter::add(const MobData& report)
{
    if (failed())
        return;
    if (m_coming.taken == 0)
        m_coming.oldest.start();
    m_coming.batch.add(report, horizon());
    ++m_coming.taken;
    if (m_transaction && m_coming.taken % reportsBetweenSends == 0)
        m_store->proceed();
    if (!m_coming.batch.isFull())
        return;
    // The database takes these while the next ones come.
    if (m_transaction)
        store();
    if (failed())
        return;
    swapQueues();
    begin();
}

void ArchiveWriter::flush()
{
    m_failure = {};
    if (m_going.taken > 0)
        store();
    if (failed() || m_coming.taken == 0)
        return;
    swapQueues();
    store();
}

void ArchiveWriter::swapQueues()
{
    std::swap(m_coming, m_going);
    m_going.batch.sort();
}

/// Begins the transaction of what is going.
void ArchiveWriter::begin()
{
    m_store->prepare(m_going.batch);
    m_transaction = std::make_unique<Transaction>(m_db);
    if (!m_transaction->failed())
        m_store->send(*m_transaction, m_going.batch);
}

/// Ends it. Returns whether all is committed; else it is rolled back.
bool ArchiveWriter::end()
{
    const ArchiveStore::Added added = m_store->finish(*m_transaction);
    // In the same transaction, so that who sees a last state finds its report; and behind the reports, as others wait
    // for the locks that this takes.
    if (!m_transaction->failed()) {
        m_lastStates.update(*m_transaction, *m_store, m_going.batch, horizon());
        m_sensors.enter(*m_transaction, m_going.batch);
    }
    const bool committed = m_transaction->commit();
    m_failure = m_transaction->failure();
    m_transaction.reset();
    if (!committed) { // the batch stays, for another attempt
        m_store->reset();
        return false;
    }
    m_stored += added.rows;
    m_ahead += added.ahead;
    m_repeated += m_going.taken - added.rows;
    m_going.batch.clear();
    m_going.taken = 0;
    return true;
}

void ArchiveWriter::store()
{
    for (int attempt = 1; attempt <= mostAttempts; ++attempt) {
        if (!m_transaction)
            begin();
        if (end() || !DatabaseTrouble::passes(m_failure.code))
            return;
    }
}

QString ArchiveWriter::advice(DatabaseTrouble::Retry retry) const
{
    return failed() ? DatabaseTrouble::advice(m_failure.code, retry) : QString();
}

qint64 ArchiveWriter::waitingMilliseconds() const
{
    if (m_going.taken > 0)
        return m_going.oldest.elapsed();
    return m_coming.taken > 0 ? m_coming.oldest.elapsed() : 0;
}
