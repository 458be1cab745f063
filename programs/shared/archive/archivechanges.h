#pragma once

#include <Pardel/mobdata.h>

#include <QObject>
#include <QSqlDatabase>
#include <QString>
#include <QThread>
#include <QVector>

/**
 * Tells of last states that others store: reads the rows of archive.lastdata that have changed, soon after each commit,
 * all their sensors.
 *
 * @code
 * ArchiveChanges changes(db); // from here on nothing is missed
 * readLastStates(types, db, take);
 * connect(&changes, &ArchiveChanges::statesChanged, &desk, &Desk::show);
 * changes.start();
 * @endcode
 *
 * The reading has a connection and a thread of its own, so that a server that does not answer holds up nobody. The
 * states come in pages; the next one is read when the receivers have returned from the last. An object that changes
 * faster than they take comes with its newest state, not with each.
 *
 * A lost connection is opened anew, after 1 s, 2 s and so on to 30 s, until it is there; then all comes that has
 * changed meanwhile. So does an archive that has no column `changed` yet. ArchiveSchema::tellsChangesStatement says how
 * the column tells what has changed.
 */
class ArchiveChanges : public QObject
{
    Q_OBJECT

public:
    /**
     * Remembers where the archive stands. What is committed later will be told; older changes will not, but those of
     * transactions that are under way now.
     *
     * @param db an open connection of this thread, with the archive attached where it is SQLite's. Its settings are
     *           taken; it may be used and closed as one likes.
     */
    explicit ArchiveChanges(const QSqlDatabase& db, QObject* parent = nullptr);
    /** Waits for a statement under way, some seconds at most. */
    ~ArchiveChanges() override;

    /** Begins to read; once. */
    void start();
    /** Ends it, and waits so long at most for a statement under way. @return whether it has ended */
    bool stop(std::chrono::milliseconds most);

Q_SIGNALS:
    /**
     * At most 256 states, of different objects: the whole row of each, its sensors in the order of their types. While a
     * receiver runs an event loop of its own, no further ones come.
     */
    void statesChanged(const QVector<MobData>& states);
    /** What keeps it from reading, in one sentence with what to do, told once; empty when it reads again. */
    void troubleChanged(const QString& trouble);

private:
    class Reader;

    const QString m_source; // the connection whose settings it takes
    const qint64 m_from;    // the first value of `changed` that matters
    Reader* m_reader = nullptr;
    QThread m_thread;
};
