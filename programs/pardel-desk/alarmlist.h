#pragma once

#include "track.h"

#include <QAbstractTableModel>
#include <QHash>
#include <QString>
#include <QVector>

class ObjectCatalog;

/** One alarm of an object, from the report that raised it up to one without it. */
struct DeskAlarm
{
    qint32 object = 0;
    qint64 time = 0; ///< Unix seconds, as the others; with the object what it is known by.
    qint32 latitude = 0;
    qint32 longitude = 0;
    qint32 speed = 0;
    qint64 ended = 0;        ///< When the first report without it was made; 0 while it is on.
    qint64 acknowledged = 0; ///< 0 while it is new.
    QString by;              ///< Who has acknowledged it.
    QString remark;
    bool shared = true; ///< Of a terminal, and stored for all desks; else of a capture that is played here.

    bool isNew() const { return acknowledged == 0; }
};

/**
 * The alarms, one row each in the order in which they came to be known.
 *
 * An alarm that report after report repeats is one, until a report without it. What is too old for the one that is on,
 * or lies within another, is that one too.
 */
class AlarmList : public QAbstractTableModel
{
    Q_OBJECT

public:
    enum Column
    {
        Time,
        Object,
        State,
        Remark,
        Place,
        Speed,
        Until,
        ColumnCount
    };
    static constexpr int sortRole = Qt::UserRole;
    static constexpr int idRole = Qt::UserRole + 1;
    static constexpr int newRole = Qt::UserRole + 2; ///< Whether it waits to be acknowledged.
    static constexpr int mostRows = 20'000;          ///< Further ones are told of, but not listed.

    explicit AlarmList(const ObjectCatalog& catalog, QObject* parent = nullptr);

    /** Takes a state of an object; @p shared as in DeskAlarm. */
    void take(qint32 id, const TrackPoint& state, bool shared = true);

    /** Acknowledges the rows that are new. */
    void acknowledge(const QVector<int>& rows, const QString& by, qint64 time, const QString& remark);

    /** What is stored replaces what is here, but for alarms that are not shared. */
    void replaceStored(const QVector<DeskAlarm>& stored);

    const DeskAlarm& at(int row) const { return m_alarms.at(row); }
    /** The newest alarm of the object that is on; null without one. */
    const DeskAlarm* current(qint32 id) const;
    int newCount() const { return m_newCount; }

    int rowCount(const QModelIndex& parent = QModelIndex()) const override;
    int columnCount(const QModelIndex& parent = QModelIndex()) const override;
    QVariant data(const QModelIndex& index, int role) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role) const override;

Q_SIGNALS:
    /** There is one more, from here or from another desk; @p here is false for the latter. */
    void raised(const DeskAlarm& alarm, bool here);
    void ended(const DeskAlarm& alarm);
    void wasAcknowledged(const DeskAlarm& alarm);
    /** Whether an object has an alarm that nobody has acknowledged. */
    void markChanged(qint32 id, bool marked);

private:
    int rowOf(qint32 id, qint64 time) const;
    void append(const DeskAlarm& alarm);
    void update(int row, const DeskAlarm& alarm);
    void takeOut(const QVector<int>& ascending);
    void count(qint32 id, int change);
    QString text(const DeskAlarm& alarm, int column) const;
    QVariant sortKey(const DeskAlarm& alarm, int column) const;

    const ObjectCatalog& m_catalog;
    QVector<DeskAlarm> m_alarms;
    QMultiHash<qint32, int> m_rows;
    QHash<qint32, int> m_newOf; // objects with new alarms, and how many
    int m_newCount = 0;
};
