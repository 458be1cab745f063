#pragma once

#include "alarmlist.h"
#include "alarmstore.h"

#include <QTimer>
#include <QWidget>

#include <functional>

QT_BEGIN_NAMESPACE
class QCheckBox;
class QLabel;
class QLineEdit;
class QPushButton;
class QSettings;
class QSortFilterProxyModel;
class QTableView;
QT_END_NAMESPACE

/**
 * The list of alarms: new ones ring until somebody acknowledges them, with a remark, and all desks of an archive see it.
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

    /** Who acknowledges. */
    void setUser(const QString& name) { m_user = name; }

    /** Reads what is stored, and brings it up to the objects' last states: what was raised or ended in between. */
    void start(const Tracks& lastStates, const History& history);

    /** Acknowledges the selected ones. */
    void acknowledge();
    /** Writes and reads the table of the archive; happens by itself, too. */
    void exchange();
    /** Why that did not succeed, for people; or nothing. */
    QString exchangeTrouble() const { return m_trouble; }

    AlarmList list;
    // For reading and driving; they belong to the panel.
    QTableView* const table;
    QLineEdit* const remark;
    QPushButton* const acknowledgeButton;
    QCheckBox* const sound;

Q_SIGNALS:
    /** Somebody wants to see the object. */
    void wanted(qint32 id);
    /** How many alarms are new may have changed. */
    void changed();
    void troubleChanged(const QString& text);

private:
    void layOut();
    void ring();
    void enableButton();
    QVector<int> selectedNew() const;

    QSettings& m_ini;
    const qint64 m_period; // seconds
    AlarmStore m_store;
    QSortFilterProxyModel* m_sorted;
    QLabel* m_count;
    QString m_user;
    QString m_trouble;
    QTimer m_exchangeTimer;
    QTimer m_ring; // once for all that come together
    QTimer m_repeat;
};
