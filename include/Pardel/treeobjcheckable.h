#pragma once

#include <Pardel/pardel_export.h>

#include <QList>
#include <QMap>
#include <QModelIndex>
#include <QString>
#include <QWidget>

#include <memory>

QT_BEGIN_NAMESPACE
class QStandardItem;
class QStandardItemModel;
class QTreeView;
QT_END_NAMESPACE

/**
 * The objects of an application as a tree of check boxes, with a box that ticks them all, a filter and a search.
 *
 * @code
 * auto* tree = new TreeObjCheckable(this);
 * QList<int> ids{17, 42};
 * tree->setModelAndCheckedO(&objects, &ids); // the objects 17 and 42 are ticked
 * ...
 * tree->getCheckedObjs(&ids, QModelIndex()); // what is ticked now
 * @endcode
 *
 * A group is an item with children, an object one without (a leaf). The check state of a group sums up its children:
 * checked or unchecked when all of them are, else partially checked; so does the box under the tree for the top level.
 * Ticking a group ticks all that is under it.
 *
 * Item roles: Qt::DisplayRole is the text that is shown, filtered and searched; Qt::CheckStateRole is 0 (unchecked), 1
 * (partially checked) or 2 (checked), and a missing one counts as 0; Qt::UserRole + 10 is the object id, of which those
 * below 0 are no objects; Qt::UserRole + 1 may hold the address of an object record as a 64-bit integer, from which an
 * object then takes its id. Only column 0 of every level counts.
 *
 * The widget works on a copy of the caller's model. It is reached by getTreeView(), whose model is a
 * TreeSortFilterProxyModel on the copy. What others change there is followed up as if the user had: any change of an
 * item, not only that of its state, hands the item's state down to all that is under it and then sums up the groups
 * above it. Rows that others put in or take out change no state; what is taken by takeChild or takeItem, of which a
 * model tells nobody, counts from the next tick in its group.
 *
 * When one change leads to many, the copy emits dataChanged for every run of neighbours that changed, and itemChanged
 * for each of these items, once all states are final. A receiver of these signals may change further items, but must
 * not refill the tree, put in or take out rows, or delete the widget before they are over: do that later, by a queued
 * connection.
 *
 * The view's rows have one height (QTreeView::uniformRowHeights), as it would otherwise measure every expanded row
 * after each change: texts of several lines or large icons are cut off. An application that wants such rows and has
 * some thousands at most calls getTreeView()->setUniformRowHeights(false).
 *
 * Groups may be in one another as deeply as memory allows. Views, filter and search see the first 10,000 levels, which
 * is what Qt's recursion survives; what is deeper is ticked, told of by itemChanged alone, and collected all the same.
 * To tick there, an application changes a group above or calls changeStateObject: Qt's own setCheckState would have the
 * filter go up by recursion.
 */
class PARDEL_EXPORT TreeObjCheckable : public QWidget
{
    Q_OBJECT
    /** Whether a search finds texts anywhere in an item's instead of at its beginning; false at first. */
    Q_PROPERTY(bool searchAnywhere READ searchAnywhere WRITE setSearchAnywhere)

public:
    /** An empty tree; @p parent may be null and owns it otherwise. */
    explicit TreeObjCheckable(QWidget* parent = nullptr);
    ~TreeObjCheckable() override;

    /**
     * Replaces the tree by a checkable copy of @p source, all collapsed, in which the objects of @p checked are ticked.
     *
     * An object's id is the first 32-bit field of the record whose address Qt::UserRole + 1 holds, unless that is 0 or
     * no integer; otherwise Qt::UserRole + 10, any negative number as -1. The copy holds it in Qt::UserRole + 10. The
     * box is set to the sum of the top-level items; it is left alone when there are none. A filter stays in force.
     *
     * @param source stays the caller's and is not needed afterwards; null does nothing
     * @param checked may be null; is not changed, but kept: see getCheckedObjs for the map
     */
    void setModelAndCheckedO(QStandardItemModel* source, QList<int>* checked);

    /**
     * The ids of the ticked objects in the order of the tree, each once.
     *
     * Collected are objects with an id of at least 0 and state 2, whether the filter shows them or not; never a group.
     *
     * @param out is cleared first; it must stay alive until another list is given here or to setModelAndCheckedO, or
     *        none (null) is given, which collects nothing
     * @param start an index of the widget's own model, to which the collection is confined; the whole tree if it is
     *        invalid, nothing if it is of another model
     */
    void getCheckedObjs(QList<int>* out, const QModelIndex& start = QModelIndex());

    /**
     * The ticked objects, as above, with the text of the group they are in, which is empty for top-level objects.
     *
     * Of an object in several groups the last one counts. The list that was last given to setModelAndCheckedO or to
     * the other getCheckedObjs, if any, is not cleared, but the ids that it does not hold yet are appended to it.
     *
     * @param out is cleared first; may be null, and is not needed afterwards
     * @param start as above
     */
    void getCheckedObjs(QMap<int, QString>* out, const QModelIndex& start = QModelIndex());

    /** The id of the view's current item, which may be a group with or without one; 0 when there is no current item. */
    int getCurrentObj() const;

    /**
     * Sets the state of every object with this id that is @p item or under it.
     *
     * Does nothing for an @p id below 0, and for a null @p item or one that is not in the widget's model.
     */
    void changeStateObject(QStandardItem* item, Qt::CheckState state, int id);

    /**
     * Sets the box to @p state (0 to 2), then does what selectAllChecked does.
     *
     * The box ends up as the sum of the top-level items if one of them changed.
     */
    void setCheckedSelectAll(int state);

    /**
     * Collapses the tree and makes the first item current whose text begins with @p text, or with searchAnywhere
     * contains it, in upper or lower case.
     *
     * All visible items are searched, in the order of the tree. Without a match, and for an empty text, nothing is
     * selected.
     */
    void OnSearchTree(QString text);

    /** Whether OnSearchTree finds a text anywhere in an item's instead of at its beginning only. */
    bool searchAnywhere() const;
    /** Sets that; it holds from the next search on, and go_right and go_left keep to what the last one found. */
    void setSearchAnywhere(bool anywhere);

    /** How many items the last search found. */
    int Get_index_size() const;

    /** The inner view; it belongs to the widget. */
    QTreeView* getTreeView() const;

Q_SIGNALS:
    /** All was ticked (2) or unticked (0) by the box, selectAllChecked or setCheckedSelectAll. */
    void checkedSelectAll(int state);

    /**
     * The ticked objects, those too that a filter hides, may be others than before: items were ticked or unticked,
     * put in or taken out, or the tree was filled.
     *
     * It comes once for all that has happened in a turn of the event loop, and after that: receivers may do whatever
     * they like to the tree.
     */
    void checkedObjectsChanged();

public Q_SLOTS:
    /**
     * Collapses the tree and goes on to the next item that was found, from the last one to the first.
     *
     * Items that a filter hides by now are passed over. Does nothing unless the current item is one that was found.
     */
    void go_right();

    /** The same for the previous item, from the first one to the last. */
    void go_left();

    /** Shows only items that contain this text and the way to them, all expanded; with an empty text all, collapsed. */
    void setFilterStr(QString str);

    /** Ticks everything, or with state 0 unticks it, and emits checkedSelectAll. */
    void selectAllChecked(int state);

private:
    Q_PRIVATE_SLOT(d, void itemChangedGen(QStandardItem* item))
    Q_PRIVATE_SLOT(d, void itemChangedRepeat(QStandardItem* item))
    Q_PRIVATE_SLOT(d, void itemChangedMark(QStandardItem* item))
    class Q_DECL_HIDDEN Private;
    const std::unique_ptr<Private> d;
};
