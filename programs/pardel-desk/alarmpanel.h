#pragma once

#include "alarmlist.h"
#include "alarmstore.h"

#include <QTimer>
#include <QWidget>

#include <atomic>
#include <chrono>
#include <functional>
#include <memory>
#include <optional>

QT_BEGIN_NAMESPACE
class QCheckBox;
class QLabel;
class QLineEdit;
class QPushButton;
class QSettings;
class QTableView;
class QThread;
QT_END_NAMESPACE
class NamesOrder;

/**
 * The list of alarms: new ones ring until somebody acknowledges them, with a remark, and all desks of an archive see
 * it.
 *
 * The group "Alarms" of the settings has "Sound", "RepeatSeconds", after which it rings again while an alarm is new (0:
 * never), and "Days", for which acknowledged ones stay in the list.
 */
class AlarmPanel : public QWidget
{
    Q_OBJECT

public:
    /** Reads an object's points between two moments in Unix seconds. */
    using History = std::function<Track(qint32 id, qint64 from, qint64 to)>;

    /** All have to outlive this. */
    AlarmPanel(const ObjectCatalog& catalog, const QSqlDatabase& db, QSettings& ini, QWidget* parent = nullptr);
    /** As finish(), for three seconds at most. */
    ~AlarmPanel() override;

    /** Who acknowledges. */
    void setUser(const QString& name) { m_user = name; }

    /**
     * Reads what is stored, and when that has come, brings it up to the objects' last states: what was raised or ended
     * in between; @p history has to work until then.
     */
    void start(const Tracks& lastStates, const History& history);

    /** Acknowledges the selected ones. */
    void acknowledge();
    /** Writes and reads the table of the archive, in a thread of its own; happens by itself, too. */
    void exchange();
    /** Writes for the last time, without waiting for it. */
    void stop();
    /** Waits until that is done, for so long at most. @return how many changes nobody else will see */
    int finish(std::chrono::milliseconds most);
    bool isExchanging() const { return m_exchanging; }
    /** Why the last one did not succeed, for people; or nothing. */
    QString exchangeTrouble() const { return m_trouble; }

    AlarmList list;
    // For reading and driving; they belong to the panel.
    QTableView* const table;
    QLineEdit* const remark;
    QPushButton* const acknowledgeButton;
    QCheckBox* const sound;
    std::function<void()> beep; ///< At first the display's bell; where there is none, nothing is heard.

Q_SIGNALS:
    /** Somebody wants to see the object. */
    void wanted(qint32 id);
    /** How many alarms are new may have changed. */
    void changed();
    /** What has kept it from exchanging for some time; nothing when that is over. */
    void troubleChanged(const QString& text);

private:
    using Change = std::function<void(AlarmStore&)>;

    void catchUp();
    void change(Change&& change);
    void takeExchange(const std::optional<QVector<DeskAlarm>>& stored, const QString& trouble);
    void layOut();
    void ring();
    void enableButton();
    QVector<int> selectedNew() const;

    QSettings& m_ini;
    const qint64 m_period; // seconds
    QThread* m_thread;
    QObject* m_worker;                                    // there
    QObject* m_replies;                                   // here; outlives this if the thread does
    std::shared_ptr<std::unique_ptr<AlarmStore>> m_store; // made, used and deleted there
    QVector<Change> m_changes;                            // to be stored
    std::shared_ptr<std::atomic<int>> m_unstored;         // with those that are on their way
    bool m_exchanging = false;
    bool m_isStopped = false;
    bool m_readAll = false;
    int m_failures = 0;
    QString m_told;
    Tracks m_lastStates;
    History m_history; // until the first exchange is over
    NamesOrder* m_sorted;
    QLabel* m_count;
    QString m_user;
    QString m_trouble;
    QTimer m_exchangeTimer;
    QTimer m_ring; // once for all that come together
    QTimer m_repeat;
};
