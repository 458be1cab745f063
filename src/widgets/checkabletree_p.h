#pragma once

#include "treewalk_p.h"

#include <QHash>
#include <QList>
#include <QObject>
#include <QSet>
#include <QStandardItemModel>
#include <QTreeView>
#include <QVector>

#include <functional>
#include <vector>

QT_BEGIN_NAMESPACE
class QTimer;
QT_END_NAMESPACE

/** What the two checkable trees have in common: items, their copies, and changes of many check states in one go. */
namespace CheckableTree {

/// Address of an application's object record as a 64-bit integer; the record begins with its 32-bit id.
constexpr int ObjectRecordRole = Qt::UserRole + 1;
constexpr int ObjectIdRole = Qt::UserRole + 10;

int checkState(const QStandardItem* item);
int objectId(const QStandardItem* item);

/** A group's rows, 0 for a leaf. */
int childCount(const QStandardItem* item);

/** Whether @p item is @p top or below it; the model's invisible root is above all of its items. */
bool isUnder(const QStandardItem* item, const QStandardItem* top);

/** Calls @p visit for @p top and every item under it (column 0), each before its children and these in order. */
template <typename Visit>
void visitTree(QStandardItem* top, Visit visit)
{
    TreeWalk::walk(
        top, [](const QStandardItem* item) { return childCount(item); },
        [](const QStandardItem* item, int row) { return item->child(row); }, visit, [](QStandardItem*, int) {});
}

enum class GroupState
{
    Cloned,
    SummaryOfChildren
};

/**
 * Appends checkable copies of the source's items (column 0 of every level) to @p model.
 *
 * A leaf is ticked when its id is in @p ticked, which may be null; ids below @p lowestId become -1, those of records
 * stay as they are.
 */
void appendCopy(QStandardItemModel* model, const QStandardItemModel* source, const QList<int>* ticked, int lowestId,
                GroupState groupState);

/**
 * Calls @p tell once, from the event loop, after items of @p model may have been ticked, unticked, put in or taken out.
 *
 * @return what it waits with; start() makes it call though the model tells nothing
 */
QTimer* tellTicks(QStandardItemModel* model, const std::function<void()>& tell);

/** A view with rows of one height, so that changed check states need to be painted only, however many they are. */
class View : public QTreeView
{
public:
    explicit View(QWidget* parent);

    /** Shows what expandAll shows, without an expanded state for every leaf. */
    void expandGroups();

    void dataChanged(const QModelIndex& topLeft, const QModelIndex& bottomRight, const QVector<int>& roles) override;
};

/**
 * Changes many check states quietly and tells the model's receivers of them afterwards, in ranges.
 *
 * Between begin() and end() the model's signals are blocked. announce() makes the model emit dataChanged for every run
 * of neighbours that changed, and with it itemChanged for each of these items; the owner asks isAnnounced() in its own
 * reaction to itemChanged, to tell them from changes made by others. Of items that are too deep to be shown only
 * itemChanged is emitted: a filter proxy would go up from them by recursion.
 */
class StateChanges : public QObject
{
public:
    struct Run
    {
        QStandardItem* parent;
        int first;
        int last;
    };

    using Runs = QVector<Run>;

    /** Starts @p ticked with each announcement. */
    StateChanges(QStandardItemModel* model, QTimer* ticked);

    void begin();

    /** False for an item that has this very state already, to which setCheckState would do nothing either. */
    bool write(QStandardItem* item, int state);

    /** The runs of changed items; the model's signals are back. */
    Runs end();

    /** The items of the runs must live until it returns. */
    void announce(const Runs& runs);

    bool isAnnounced(const QStandardItem* item);

private:
    QStandardItemModel* m_model;
    QTimer* m_ticked;
    bool m_wereBlocked = false;
    Runs m_runs;
    QHash<QStandardItem*, int> m_lastRunOfParent;
    Run m_announced{nullptr, 0, -1};
};

} // namespace CheckableTree
