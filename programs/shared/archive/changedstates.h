#pragma once

#include <Pardel/mobdata.h>

#include <QHash>
#include <QList>
#include <QSqlDatabase>
#include <QString>
#include <QVector>

#include <vector>

/**
 * The last states that have changed since they were read the last time, a page at a time:
 *
 * @code
 * ChangedStates states(ChangedStates::present(db));
 * QString error = states.use(db);
 * if (error.isEmpty())
 *     error = states.find();
 * while (error.isEmpty() && states.hasMore())
 *     error = states.read(&page);
 * @endcode
 *
 * Each statement is a transaction of its own, and a row may change between them: then it comes in its newer form, once.
 * After an error, use() and find() begin where the last complete reading began; what has been read does not come again
 * unless it has changed.
 */
class ChangedStates
{
public:
    /** Where an archive stands: from there on everything not committed yet is found. 0, all, where it cannot be asked. */
    static qint64 present(const QSqlDatabase& db);

    /** @p from is what present() gave. */
    explicit ChangedStates(qint64 from) : m_from(from) {}

    /**
     * Reads from this connection from now on.
     *
     * @return what went wrong, or nothing; hasColumn() is false if archive.lastdata does not tell of changes
     */
    QString use(const QSqlDatabase& db);
    bool hasColumn() const { return m_hasColumn; }

    /** Finds what has changed; what the last find() found has to be read. @return what went wrong, or nothing */
    QString find();
    bool hasMore() const { return !m_found.empty(); }

    /** Reads at most 256 of the states found, all their sensors. @return what went wrong, or nothing */
    QString read(QVector<MobData>* page);

private:
    void endReading();

    QSqlDatabase m_db;
    bool m_hasColumn = false;
    QList<qint16> m_types;
    QString m_columns;
    qint64 m_from;
    qint64 m_next = 0;             // where the next reading begins
    std::vector<quint32> m_found;  // objects, not read yet
    QHash<quint32, qint64> m_read; // `changed` of the rows that have been read, from m_from on
};
