#pragma once

#include <Pardel/mobdata.h>

#include <QAbstractTableModel>
#include <QCollator>
#include <QHash>
#include <QTableView>
#include <QTimer>

#include <optional>
#include <vector>

class DataPumpNotifyer;
class KernelNotifyer;
class ObjectCatalog;
class ObjectStates;

/** What is shown of an object's last state. */
struct ObjectState
{
    qint32 id = 0;
    QString name;
    std::optional<QCollatorSortKey> order; ///< Of the name among others.
    qint32 time = 0;                       ///< Unix seconds; 0 for an object that was never heard.
    qint32 speed = 0;
    qint32 course = 0;
    std::optional<int> supply; ///< Volts, where the object has the sensor.
    bool alarm = false;
};

/**
 * The last states, one row an object, in the order of their coming until sort() is called. Reports are gathered and
 * shown together a few times a second, however many come. Older ones than what is shown are passed over.
 *
 * It sorts by itself, once for all that come together: a filter model in between would do so for every row.
 */
class StateTableModel : public QAbstractTableModel
{
    Q_OBJECT

public:
    enum Column
    {
        Object,
        State,
        Age,
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

    /** What the columns State and Age and the rows' colours tell from then on; @p presence has to outlive this. */
    void setPresence(const ObjectStates& presence) { m_presence = &presence; }

    /** A row for an object that was never heard, unless it has one; shown as take() says. */
    void add(qint32 id);

    /** Takes a report; it is shown with the next flush(), which comes by itself. */
    void take(const MobData& report);
    void flush();

    /** The row of an object; -1 without one. */
    int rowOf(qint32 id) const { return m_rows.value(id, -1); }

    /** And keeps it sorted so; column -1 leaves the order as it is. */
    void sort(int column, Qt::SortOrder order = Qt::AscendingOrder) override;

    int rowCount(const QModelIndex& parent = QModelIndex()) const override;
    int columnCount(const QModelIndex& parent = QModelIndex()) const override;
    QVariant data(const QModelIndex& index, int role) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role) const override;

private:
    QString text(const ObjectState& state, int column) const;
    QVariant sortKey(const ObjectState& state, int column) const;
    bool isBefore(const ObjectState& a, const ObjectState& b) const;
    void sortAgain();
    bool isMarked(const ObjectState& state) const;
    void setName(ObjectState& state) const;

    const ObjectCatalog& m_catalog;
    const QCollator m_namesOrder;
    const ObjectStates* m_presence = nullptr;
    int m_sortColumn = -1;
    Qt::SortOrder m_sortOrder = Qt::AscendingOrder;
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

    /** Shows these; they have to outlive this. */
    void setPresence(const ObjectStates& presence);

    StateTableModel& states() { return m_states; }

private:
    void fitColumns();
    void select(unsigned int id);

    StateTableModel m_states;
    unsigned int m_selected = 0;
};
