#pragma once

#include <Pardel/mobdata.h>

#include <QAbstractTableModel>
#include <QHash>
#include <QTableView>
#include <QTimer>

#include <optional>
#include <vector>

class DataPumpNotifyer;
class KernelNotifyer;
class ObjectCatalog;

QT_BEGIN_NAMESPACE
class QSortFilterProxyModel;
QT_END_NAMESPACE

/** What is shown of an object's last state. */
struct ObjectState
{
    qint32 id = 0;
    qint32 time = 0; ///< Unix seconds
    qint32 speed = 0;
    qint32 course = 0;
    std::optional<int> supply; ///< Volts, where the object has the sensor.
    bool alarm = false;
};

/**
 * The last states, one row an object in the order of their coming. Reports are gathered and shown together a few times
 * a second, however many come. Older ones than what is shown are passed over.
 */
class StateTableModel : public QAbstractTableModel
{
    Q_OBJECT

public:
    enum Column
    {
        Object,
        Time,
        Speed,
        Course,
        Supply,
        Alarm,
        ColumnCount
    };
    static constexpr int sortRole = Qt::UserRole; ///< Numbers to sort by; the name of the object.
    static constexpr int idRole = Qt::UserRole + 1;

    explicit StateTableModel(const ObjectCatalog& catalog, QObject* parent = nullptr);

    /** Takes a report; it is shown with the next flush(), which comes by itself. */
    void take(const MobData& report);
    void flush();

    int rowCount(const QModelIndex& parent = QModelIndex()) const override;
    int columnCount(const QModelIndex& parent = QModelIndex()) const override;
    QVariant data(const QModelIndex& index, int role) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role) const override;

private:
    QString text(const ObjectState& state, int column) const;
    QVariant sortKey(const ObjectState& state, int column) const;

    const ObjectCatalog& m_catalog;
    std::vector<ObjectState> m_states;
    QHash<qint32, int> m_rows;
    QHash<qint32, ObjectState> m_pending;
    QTimer m_flushTimer;
};

/** The table of last states: follows the reports of the hub, sorts, and selects objects in the other views and back. */
class StateTable : public QTableView
{
    Q_OBJECT

public:
    StateTable(KernelNotifyer& kernel, DataPumpNotifyer& reports, const ObjectCatalog& catalog,
               QWidget* parent = nullptr);

    StateTableModel& states() { return m_states; }

private:
    void select(unsigned int id);

    StateTableModel m_states;
    QSortFilterProxyModel* m_sorted;
    unsigned int m_selected = 0;
};
