#pragma once

#include "archivebatch.h"

#include <QSet>
#include <QString>

class Transaction;

/**
 * Enters the sensors of objects that have none in "Sensors", so that readers find them: first those that most of the
 * object's reports have (readers ask for the first half), then in the order of their types.
 */
class SensorsTable
{
public:
    /** What goes wrong is undone and told by error(): reports are stored without it. */
    void enter(Transaction& transaction, const ArchiveBatch& batch);

    /** Why sensors could not be entered the last time; empty if they could. */
    QString error() const { return m_error; }

private:
    void insert(Transaction& transaction, const ArchiveBatch& batch, const QSet<quint32>& objects);

    QSet<quint32> m_known; // objects that have rows
    QString m_error;
    bool m_usable = true;
};
