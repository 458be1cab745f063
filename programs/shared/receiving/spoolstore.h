#pragma once

#include "archivefiller.h"
#include "archivewriter.h"
#include "decodedpacket.h"
#include "packetdecoder.h"

#include <QMutex>
#include <QSet>
#include <QString>
#include <QThread>
#include <QWaitCondition>

#include <chrono>
#include <memory>
#include <optional>

class ArchiveConnection;

/** Where a SpoolStore stores, and what. */
struct SpoolStoreSettings
{
    QString iniFile;
    QString group;    ///< Of the file, which describes the database.
    QString baseName; ///< The database, if it is not the one that the group names.
    DecodeSettings decode;
    ArchiveWriterSettings writer;
    bool knownOnly = false; ///< Objects that have no row in "Sensors" are not stored.
};

/** What became of the packets of a file. */
struct StoredFile
{
    DecodeCounts decoded;
    qint64 stored = 0;     ///< Reports that are in the archive now and were not before.
    qint64 repeated = 0;   ///< Reports that were there already.
    qint64 ahead = 0;      ///< Of those stored, the ones of a time too far in the future for a last state.
    qint64 unknown = 0;    ///< Reports of objects that are not let in.
    qint64 unfinished = 0; ///< Bytes at its end that are no whole packet; among those skipped.
    QString error;         ///< Why the file could not be read; then nothing of it may be stored.
};

/**
 * Stores the packets of files in the archive, in a thread and over a connection of its own, so that a database that is
 * slow or gone keeps nobody waiting.
 *
 * A file that cannot be stored is tried again until it can, after 1 s, 2 s and so on up to 30 s, over a new connection
 * each time. While nothing is to be stored, the connection is tried every 10 s.
 */
class SpoolStore : public QThread
{
    Q_OBJECT

public:
    explicit SpoolStore(const SpoolStoreSettings& settings, QObject* parent = nullptr);
    /** Stops, however long the database takes for what it is doing. */
    ~SpoolStore() override;

    /** Stores a file; one at a time. stored() follows, unless it is stopped before. */
    void store(const QString& path);
    /** Where it waits for the database to come back, tries at once. */
    void hurry();
    /** Ends the thread: at once where it waits for the database to come back, else with the present transaction. */
    void stop();

Q_SIGNALS:
    void stored(const StoredFile& file);
    /** The database's state has changed: @p trouble says what is wrong and what to do, and is empty if nothing is. */
    void databaseChanged(const QString& trouble);
    /** Something that people have to do, while reports are stored all the same; empty when it is done. */
    void advised(const QString& text);
    /** The objects in "Sensors", when knownOnly; read anew every minute. */
    void knownObjects(const QSet<quint32>& objects);

protected:
    void run() override;

private:
    bool connectArchive();
    void disconnectArchive();
    bool isAlive();
    bool readKnown();
    bool storeFile(const QString& path, StoredFile& result);
    void setTrouble(const QString& trouble);
    void tellAdvice();
    bool waitUnlessStopped(std::chrono::milliseconds time);

    const SpoolStoreSettings m_settings;
    QMutex m_mutex;
    QWaitCondition m_changed;
    QString m_path; // to be stored
    bool m_hurrying = false;
    bool m_stopping = false;

    // Of the thread:
    std::unique_ptr<ArchiveConnection> m_archive;
    std::unique_ptr<ArchiveWriter> m_writer;
    ArchiveFiller m_filler;
    std::optional<QString> m_trouble; // none until the first try
    QElapsedTimer m_sinceTold;
    bool m_refused = false; // to store a file, since one was stored
    QString m_advice;
    qint64 m_storedOfFile = 0; // by transactions before the one that failed
    qint64 m_aheadOfFile = 0;
    QSet<quint32> m_known;
    QElapsedTimer m_sinceKnown;
    std::chrono::milliseconds m_pause{0}; // before the next try
};
