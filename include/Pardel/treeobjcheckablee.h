#pragma once

#include <Pardel/pardel_export.h>

#include <QList>
#include <QWidget>

#include <memory>

QT_BEGIN_NAMESPACE
class QStandardItem;
class QStandardItemModel;
class QTreeView;
QT_END_NAMESPACE

/**
 * A simpler tree of check boxes than TreeObjCheckable: without filter and search, and with ticks that spread otherwise.
 *
 * Ticking spreads down to all that is under an item and, as plain "checked", up to all groups above it; unticking
 * spreads down only. Every other item with the id of an object (an item without children) follows that object, groups
 * included, which take along what is under them. An item that has the new state already passes nothing on. The box
 * under the tree is a command, not a sum: any tick or untick sets it to unchecked.
 *
 * Item roles and record addresses are those of TreeObjCheckable, but ids below 1 are no objects here. Item texts can be
 * edited in place. The view's model is the widget's copy itself; any change of an item that others make there, not only
 * that of its state, spreads as if the user had ticked it. When one change leads to many, the copy emits dataChanged
 * for every run of neighbours that changed, and itemChanged for each of these items, once all states are final. A
 * receiver of these signals may change further items, but must not refill the tree, put in or take out rows, or delete
 * the widget before they are over: do that later, by a queued connection.
 *
 * Rows have one height, and levels below the 10,000th are not shown: TreeObjCheckable says more of both.
 */
class PARDEL_EXPORT TreeObjCheckableE : public QWidget
{
    Q_OBJECT

public:
    /** An empty tree; @p parent may be null and owns it otherwise. */
    explicit TreeObjCheckableE(QWidget* parent = nullptr);
    ~TreeObjCheckableE() override;

    /**
     * Replaces the tree by a checkable copy of @p source, all expanded, in which the objects of @p checked are ticked,
     * and sets the box to unchecked without ticking or unticking anything.
     *
     * Groups keep the state that they have in @p source. An object's id is the first 32-bit field of the record whose
     * address Qt::UserRole + 1 holds, unless that is 0 or no integer; otherwise Qt::UserRole + 10, any number below 1
     * as -1. The copy holds it in Qt::UserRole + 10.
     *
     * @param source stays the caller's and is not needed afterwards; null does nothing
     * @param checked may be null; is not changed
     */
    void setModelAndCheckedO(QStandardItemModel* source, QList<int>* checked);

    /**
     * The ids of the ticked items with an id of at least 1, groups included, in the order of the tree, each once.
     *
     * @param out is cleared first; null does nothing
     */
    void getCheckedObjs(QList<int>* out);

    /**
     * Sets the state of every item with this id, group or object, that is @p item or under it; each spreads as if the
     * user had ticked it.
     *
     * Does nothing for an @p id below 1, and for a null @p item or one that is not in the widget's model.
     */
    void changeStateObject(QStandardItem* item, Qt::CheckState state, int id);

    /**
     * Sets the state of @p item and of everything under it; each spreads as if the user had ticked it.
     *
     * Does nothing for a null @p item or one that is not in the widget's model.
     */
    void setStateAll(QStandardItem* item, Qt::CheckState state);

    /** Ticks the box, or with 0 unticks it; if that changes it, selectAllChecked follows. */
    void setCheckedSelectAll(int state);

    /** The inner view; it belongs to the widget. */
    QTreeView* getTreeView() const;

Q_SIGNALS:
    /** selectAllChecked has given this state to all items. */
    void checkedSelectAll(int state);

    /**
     * The ticked objects may be others than before: items were ticked or unticked, put in or taken out, or the tree
     * was filled.
     *
     * It comes once for all that has happened in a turn of the event loop, and after that: receivers may do whatever
     * they like to the tree.
     */
    void checkedObjectsChanged();

public Q_SLOTS:
    /** Spreads the state of @p item. Does nothing for a null item or one that is not in the widget's model. */
    void itemChangedX(QStandardItem* item);

    /** Sets the state (0 to 2, as it is) of every item, leaves the box alone and emits checkedSelectAll. */
    void selectAllChecked(int state);

private:
    class Q_DECL_HIDDEN Private;
    const std::unique_ptr<Private> d;
};
