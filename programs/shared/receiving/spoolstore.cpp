#include "spoolstore.h"

#include "archiveconnection.h"
#include "archiveschema.h"
#include "databasetrouble.h"
#include "postgreshandle.h"

#include <QFile>
#include <QMutexLocker>
#include <QSqlError>
#include <QSqlQuery>
#include <QVariant>

#include <algorithm>

using namespace std::chrono_literals;

namespace {

constexpr auto shortestPause = 1s;
constexpr auto longestPause = 30s;
constexpr auto longestSilence = 20s; // of the server's machine
constexpr auto aliveInterval = 10s;
constexpr qint64 knownInterval = 60'000; // ms
constexpr qint64 tellInterval = 60'000;  // ms
constexpr qint64 pieceSize = 1 << 16;    // bytes of a file

} // namespace

SpoolStore::SpoolStore(const SpoolStoreSettings& settings, QObject* parent) : QThread(parent), m_settings(settings)
{
    qRegisterMetaType<StoredFile>("StoredFile");
    qRegisterMetaType<QSet<quint32>>("QSet<quint32>");
}

SpoolStore::~SpoolStore()
{
    stop();
    wait();
}

void SpoolStore::store(const QString& path)
{
    const QMutexLocker lock(&m_mutex);
    m_path = path;
    m_changed.wakeAll();
}

void SpoolStore::hurry()
{
    const QMutexLocker lock(&m_mutex);
    m_hurrying = true;
    m_changed.wakeAll();
}

void SpoolStore::stop()
{
    const QMutexLocker lock(&m_mutex);
    m_stopping = true;
    m_changed.wakeAll();
}

void SpoolStore::run()
{
    for (;;) {
        QString path;
        {
            QMutexLocker lock(&m_mutex);
            if (m_path.isEmpty() && !m_stopping && m_archive)
                m_changed.wait(&m_mutex, QDeadlineTimer(aliveInterval));
            if (m_stopping)
                break;
            path = m_path;
        }
        StoredFile result;
        if ((!m_archive && !connectArchive()) || !(path.isEmpty() ? isAlive() : storeFile(path, result))) {
            disconnectArchive();
            m_pause = std::clamp<std::chrono::milliseconds>(2 * m_pause, shortestPause, longestPause);
            if (!waitUnlessStopped(m_pause))
                break;
            continue;
        }
        m_pause = {};
        if (path.isEmpty())
            continue;
        {
            const QMutexLocker lock(&m_mutex);
            m_path.clear();
        }
        Q_EMIT stored(result);
    }
    disconnectArchive();
}

/// @return false if it is to be stopped
bool SpoolStore::waitUnlessStopped(std::chrono::milliseconds time)
{
    const QDeadlineTimer deadline(time);
    QMutexLocker lock(&m_mutex);
    while (!m_stopping && !std::exchange(m_hurrying, false) && !deadline.hasExpired())
        m_changed.wait(&m_mutex, deadline);
    return !m_stopping;
}

bool SpoolStore::connectArchive()
{
    m_archive = std::make_unique<ArchiveConnection>(m_settings.iniFile, m_settings.group, m_settings.baseName);
    QString trouble = m_archive->error();
    if (trouble.isEmpty()) {
        QSqlDatabase db = m_archive->database();
        limitSilence(db, longestSilence);
        // A file needs nobody to set it up; on a server the tables are its administrator's.
        if (!ArchiveSchema::isPostgres(db))
            trouble = ArchiveSchema::create(db);
        if (trouble.isEmpty())
            trouble = ArchiveSchema::check(db);
    }
    if (!trouble.isEmpty()) {
        setTrouble(trouble);
        return false;
    }
    if (const QString error = m_filler.claim(m_archive->database()); !error.isEmpty())
        Q_EMIT advised(tr("desks will not see that this archive is filled: %1").arg(error));
    m_writer = std::make_unique<ArchiveWriter>(m_archive->database(), m_settings.writer);
    m_sinceKnown.invalidate();
    return isAlive();
}

void SpoolStore::disconnectArchive()
{
    m_writer.reset();
    m_archive.reset();
}

bool SpoolStore::isAlive()
{
    if (m_settings.knownOnly && (!m_sinceKnown.isValid() || m_sinceKnown.hasExpired(knownInterval))) {
        if (!readKnown())
            return false;
    } else {
        QSqlQuery query(m_archive->database());
        if (!query.exec(QStringLiteral("SELECT 1"))) {
            setTrouble(DatabaseTrouble::withAdvice(query.lastError(), DatabaseTrouble::Retry::ByItself));
            return false;
        }
    }
    if (!m_refused) // that it is connected again is no help while it takes nothing
        setTrouble({});
    return true;
}

bool SpoolStore::readKnown()
{
    QSqlQuery query(m_archive->database());
    query.setForwardOnly(true);
    if (!query.exec(QStringLiteral("SELECT DISTINCT \"Id_objects\" FROM \"Sensors\""))) {
        setTrouble(DatabaseTrouble::withAdvice(query.lastError(), DatabaseTrouble::Retry::ByItself));
        return false;
    }
    QSet<quint32> known;
    while (query.next())
        known.insert(static_cast<quint32>(query.value(0).toLongLong()));
    m_sinceKnown.start();
    m_known = known;
    Q_EMIT knownObjects(known);
    return true;
}

/// Tells what is wrong, or that nothing is, where that is new; another cause not more often than every minute.
void SpoolStore::setTrouble(const QString& trouble)
{
    const bool isKnown = m_trouble && m_trouble->isEmpty() == trouble.isEmpty();
    if (isKnown && (*m_trouble == trouble || !m_sinceTold.hasExpired(tellInterval)))
        return;
    m_trouble = trouble;
    m_sinceTold.start();
    Q_EMIT databaseChanged(trouble);
}

/// @return whether nothing of it is left to be stored
bool SpoolStore::storeFile(const QString& path, StoredFile& result)
{
    if (m_settings.knownOnly && m_sinceKnown.hasExpired(knownInterval) && !readKnown())
        return false;
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        result.error = file.errorString();
        m_storedOfFile = m_aheadOfFile = 0;
        return true;
    }
    const qint64 storedBefore = m_writer->stored();
    const qint64 repeatedBefore = m_writer->repeated();
    const qint64 aheadBefore = m_writer->ahead();
    PacketDecoder decoder(CaptureFramer::Raw, m_settings.decode, result.decoded);
    const auto takeReports = [&] {
        while (!m_writer->failed() && decoder.ready()) {
            const MobData report = decoder.take();
            if (m_settings.knownOnly && !m_known.contains(static_cast<quint32>(report.idObject)))
                ++result.unknown;
            else
                m_writer->add(report);
        }
    };
    for (QByteArray piece = file.read(pieceSize); !piece.isEmpty() && !m_writer->failed();
         piece = file.read(pieceSize)) {
        decoder.feed(piece);
        takeReports();
    }
    if (!m_writer->failed())
        result.unfinished = decoder.pendingBytes();
    decoder.finish();
    takeReports();
    if (!m_writer->failed())
        m_writer->flush();
    result.stored = m_writer->stored() - storedBefore + m_storedOfFile;
    result.repeated = m_writer->repeated() - repeatedBefore - m_storedOfFile;
    result.ahead = m_writer->ahead() - aheadBefore + m_aheadOfFile;
    m_storedOfFile = m_writer->failed() ? result.stored : 0;
    m_aheadOfFile = m_writer->failed() ? result.ahead : 0;
    if (m_writer->failed()) {
        m_refused = true;
        setTrouble(
            QStringLiteral("%1 (%2)").arg(m_writer->error(), m_writer->advice(DatabaseTrouble::Retry::ByItself)));
        return false;
    }
    if (file.error() != QFileDevice::NoError)
        result.error = file.errorString();
    m_refused = false;
    setTrouble({});
    tellAdvice();
    return true;
}

void SpoolStore::tellAdvice()
{
    QString advice;
    if (!m_writer->sensorsError().isEmpty()) {
        advice =
            QStringLiteral("the sensors of new objects are not entered in \"Sensors\": %1 (the reports are stored; "
                           "let the table be as \"pardel-archive create\" makes it, with the rights SELECT and "
                           "INSERT)")
                .arg(m_writer->sensorsError());
    } else if (!m_writer->partitionError().isEmpty()) {
        advice = QStringLiteral("cannot make the partition %1 (the reports are stored, in the default partition; let "
                                "the owner of archive.master_table run \"pardel-archive partition\")")
                     .arg(m_writer->partitionError());
    }
    if (advice != m_advice)
        Q_EMIT advised(advice);
    m_advice = advice;
}
