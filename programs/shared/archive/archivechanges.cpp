#include "archivechanges.h"

#include "archiveschema.h"
#include "changedstates.h"
#include "changewatch.h"
#include "postgreshandle.h"

#include <QMetaObject>
#include <QPointer>
#include <QSqlError>
#include <QSqlQuery>
#include <QTimer>

#include <algorithm>
#include <chrono>
#include <utility>

namespace {

constexpr int firstPause = 1000; // milliseconds, after which a lost connection is opened anew
constexpr int longestPause = 30'000;
constexpr int gatheringTime = 100; // milliseconds in which commits come together

constexpr auto mostSilence = std::chrono::seconds(10); // of a server whose machine or network is gone
const char connectTimeout[] = "connect_timeout=4";     // seconds

const char noColumn[] = "archive.lastdata has no column changed, by which a desk is told what has come: run "
                        "\"pardel-archive create\" as its owner";

} // namespace

/// Lives in the thread, with the connection.
class ArchiveChanges::Reader : public QObject
{
public:
    Reader(ArchiveChanges* owner, const QString& source, qint64 from);
    ~Reader() override;

    void open();
    /** The owner has handed over the last page. */
    void pageTaken();

private:
    QString prepare();
    void read();
    void readPage();
    void lose(const QString& error);
    void fail(const QString& trouble);
    void setTrouble(const QString& trouble);

    ArchiveChanges* const m_owner; // of another thread; outlives this
    const QString m_source;
    const QString m_name;
    QSqlDatabase m_db;
    ChangedStates m_states;
    ChangeWatch m_watch;
    QTimer m_open;
    QTimer m_read;
    int m_pause = firstPause;
    bool m_pageOut = false; // with the owner
    bool m_reading = false;
    bool m_again = false; // something has changed while it was reading
    QString m_trouble;
};

ArchiveChanges::Reader::Reader(ArchiveChanges* owner, const QString& source, qint64 from)
    : m_owner(owner),
      m_source(source),
      m_name(QStringLiteral("changes of %1, %2").arg(source).arg(reinterpret_cast<quintptr>(owner))),
      m_states(from),
      m_watch(this),
      m_open(this),
      m_read(this)
{
    m_open.setSingleShot(true);
    m_read.setSingleShot(true);
    m_read.setInterval(gatheringTime);
    connect(&m_open, &QTimer::timeout, this, &Reader::open);
    connect(&m_read, &QTimer::timeout, this, &Reader::read);
    connect(&m_watch, &ChangeWatch::changed, this, [this] {
        if (!m_read.isActive())
            m_read.start();
    });
    connect(&m_watch, &ChangeWatch::lost, this, &Reader::lose);
}

ArchiveChanges::Reader::~Reader()
{
    m_watch.stop();
    m_states = ChangedStates(0);
    m_db = QSqlDatabase();
    QSqlDatabase::removeDatabase(m_name);
}

void ArchiveChanges::Reader::open()
{
    const QString error = prepare();
    if (!error.isEmpty())
        lose(error);
    else if (!m_states.hasColumn())
        fail(QLatin1String(noColumn));
    else
        read(); // what has come before it began to listen
}

/// Opens the connection and begins to listen.
QString ArchiveChanges::Reader::prepare()
{
    if (!m_db.isValid()) {
        m_db = QSqlDatabase::cloneDatabase(m_source, m_name);
        if (ArchiveSchema::isPostgres(m_db))
            m_db.setConnectOptions(
                QStringList{m_db.connectOptions(), QLatin1String(connectTimeout)}.join(QLatin1Char(';')));
    }
    if (!m_db.open())
        return ArchiveSchema::errorText(m_db.lastError());
    QString error;
    if (ArchiveSchema::isPostgres(m_db)) {
        limitSilence(m_db, mostSilence);
        QSqlQuery(m_db).exec(QStringLiteral("SET statement_timeout = '10s'")); // behind a lock too
    } else {
        error = ArchiveSchema::attachArchive(m_db);
    }
    if (error.isEmpty())
        error = m_states.use(m_db);
    if (error.isEmpty() && m_states.hasColumn())
        error = m_watch.start(m_db);
    return error;
}

void ArchiveChanges::Reader::read()
{
    if (!m_db.isOpen())
        return;
    m_again = std::exchange(m_reading, true);
    if (m_again) // when that reading has ended
        return;
    const QString error = m_states.find();
    if (!error.isEmpty())
        return lose(error);
    m_pause = firstPause;
    setTrouble(QString());
    if (!m_pageOut)
        readPage();
}

void ArchiveChanges::Reader::readPage()
{
    QVector<MobData> page;
    while (page.isEmpty() && m_states.hasMore()) { // the rows may be gone
        const QString error = m_states.read(&page);
        if (!error.isEmpty())
            return lose(error);
    }
    if (page.isEmpty()) {
        m_reading = false;
        if (std::exchange(m_again, false))
            m_read.start();
        return m_watch.check();
    }
    m_pageOut = true;
    QMetaObject::invokeMethod(
        m_owner,
        [this, page] {
            const QPointer<ArchiveChanges> owner(m_owner);
            Q_EMIT owner->statesChanged(page);
            if (owner) // this lives as long as that
                QMetaObject::invokeMethod(this, &Reader::pageTaken, Qt::QueuedConnection);
        },
        Qt::QueuedConnection);
}

void ArchiveChanges::Reader::pageTaken()
{
    m_pageOut = false;
    if (m_reading)
        readPage();
}

void ArchiveChanges::Reader::lose(const QString& error)
{
    fail(QStringLiteral("the archive cannot be read: %1 (it is tried again until it can)").arg(error));
}

void ArchiveChanges::Reader::fail(const QString& trouble)
{
    m_watch.stop();
    m_read.stop();
    m_reading = false;
    m_again = false;
    m_db.close();
    setTrouble(trouble);
    m_open.start(m_pause);
    m_pause = std::min(2 * m_pause, longestPause);
}

/// Of trouble that follows trouble nobody is told: it is mostly the same in other words.
void ArchiveChanges::Reader::setTrouble(const QString& trouble)
{
    if (m_trouble.isEmpty() == trouble.isEmpty())
        return;
    m_trouble = trouble;
    const auto tell = [owner = m_owner, trouble] { Q_EMIT owner->troubleChanged(trouble); };
    QMetaObject::invokeMethod(m_owner, tell, Qt::QueuedConnection);
}

ArchiveChanges::ArchiveChanges(const QSqlDatabase& db, QObject* parent)
    : QObject(parent), m_source(db.connectionName()), m_from(ChangedStates::present(db))
{}

ArchiveChanges::~ArchiveChanges()
{
    m_thread.quit();
    m_thread.wait();
}

bool ArchiveChanges::stop(std::chrono::milliseconds most)
{
    m_thread.quit();
    return m_thread.wait(static_cast<unsigned long>(most.count()));
}

void ArchiveChanges::start()
{
    m_reader = new Reader(this, m_source, m_from);
    m_reader->moveToThread(&m_thread);
    connect(&m_thread, &QThread::finished, m_reader, &QObject::deleteLater);
    m_thread.start();
    QMetaObject::invokeMethod(m_reader, &Reader::open, Qt::QueuedConnection);
}
