#pragma once

#include "objectmark.h"

#include <QHash>
#include <QObject>
#include <QSet>
#include <QString>
#include <QTimer>

QT_BEGIN_NAMESPACE
class QSettings;
QT_END_NAMESPACE

/** Which objects are heard now, and which have an alarm that nobody has acknowledged. */
class ObjectStates : public QObject
{
    Q_OBJECT

public:
    /** In seconds. */
    struct Thresholds
    {
        qint64 silent = 300; ///< An object whose last state is older is silent.
        qint64 faint = 3600; ///< Its track fades from then up to this age.

        /** "SilentSeconds" and "FaintSeconds" of the group "Live"; at least 1, and the second not below the first. */
        static Thresholds read(const QSettings& ini);
    };

    explicit ObjectStates(const Thresholds& thresholds, QObject* parent = nullptr);

    /** An object has a state of this time, in Unix seconds; older ones than what is known, and those
     * of a wrong clock, are passed over. */
    void hear(qint32 id, qint32 time);
    void setAlarm(qint32 id, bool alarm);
    /** What time it is; later on the clock tells, every second. */
    void setNow(qint64 now);

    Presence presence(qint32 id) const;
    const QSet<qint32>& alarms() const { return m_alarms; }
    bool hasAlarm(qint32 id) const { return m_alarms.contains(id); }
    ObjectMark mark(qint32 id) const { return {presence(id), hasAlarm(id), false}; }
    /** Seconds since the object's last state; -1 if it was never heard. */
    qint64 age(qint32 id) const;
    /** "online", "silent" or "never heard". */
    QString word(qint32 id) const;
    /** The same, and since when it is silent. */
    QString text(qint32 id) const;
    /** The same with the age in place of the time, and with a new alarm before it. */
    QString shortText(qint32 id) const;
    /** Of a track that ends with a state of @p time: 1 while that is one of now, then less and less, 0.25 at last. */
    double opacity(qint64 time) const;
    /** How many objects of those that were heard are online. */
    int onlineCount() const;
    int heardCount() const { return static_cast<int>(m_heard.size()); }

    static QString ageText(qint64 seconds);

Q_SIGNALS:
    /** Something is to be painted anew. */
    void changed();
    void secondPassed();

private:
    const Thresholds m_thresholds;
    qint64 m_now;
    QHash<qint32, qint64> m_heard;
    QSet<qint32> m_alarms;
    QTimer m_clock;
};
