#pragma once

#include <QList>
#include <QSet>
#include <QWidget>

class KernelNotifyer;
class ObjectCatalog;
class ObjectStates;
class TreeObjCheckable;

QT_BEGIN_NAMESPACE
class QLabel;
class QLineEdit;
class QStandardItem;
class QStandardItemModel;
class QToolButton;
QT_END_NAMESPACE

/** The tree of objects with a filter and a search. What is current in it is selected in the other views, and back. */
class ObjectsPanel : public QWidget
{
    Q_OBJECT

public:
    /** All objects of @p catalog are ticked, those too that come into it later; it has to outlive this. */
    ObjectsPanel(KernelNotifyer& hub, const ObjectCatalog& catalog, QWidget* parent = nullptr);

    const QList<int>& tickedObjects() const { return m_ticked; }

    /** Tells the objects' states beside their names; @p presence has to outlive this. */
    void setPresence(const ObjectStates& presence);
    /** Puts the cursor into the search. */
    void find();
    /** Goes on to the next match, or from elsewhere to the first. */
    void findNext();
    void findPrevious();

    /** Ticks this object, too. */
    void tick(qint32 id);

    QLineEdit* const filterEdit;
    QLineEdit* const searchEdit;
    TreeObjCheckable* const tree;

Q_SIGNALS:
    void tickedChanged(const QList<int>& ids);

private:
    void fill();
    void addNewObjects();
    void addToGroup(const QString& group, const QList<QStandardItem*>& items);
    void findWith(void (TreeObjCheckable::*go)());
    void tellEmpty();
    QStandardItemModel* ownModel() const;
    void readTicks();
    void search(const QString& text);
    void select(unsigned int id);

    KernelNotifyer& m_hub;
    const ObjectCatalog& m_catalog;
    QLabel* m_matches;
    QList<int> m_ticked; // the tree keeps hold of it
    QSet<int> m_known;
    QLabel* m_empty; // over the tree
    unsigned int m_selected = 0;
    bool m_busy = false;
};
