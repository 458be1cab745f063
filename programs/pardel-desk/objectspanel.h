#pragma once

#include <QList>
#include <QTimer>
#include <QWidget>

class KernelNotifyer;
class ObjectCatalog;
class TreeObjCheckable;

QT_BEGIN_NAMESPACE
class QLabel;
class QLineEdit;
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

    /** Ticks this object, too. */
    void tick(qint32 id);

    QLineEdit* const filterEdit;
    QLineEdit* const searchEdit;
    TreeObjCheckable* const tree;

Q_SIGNALS:
    void tickedChanged(const QList<int>& ids);

private:
    void rebuild();
    QStandardItemModel* ownModel() const;
    void readTicks();
    void search(const QString& text);
    void select(unsigned int id);

    KernelNotifyer& m_hub;
    const ObjectCatalog& m_catalog;
    QLabel* m_matches;
    QList<int> m_ticked; // the tree keeps hold of it
    QList<int> m_known;
    QTimer m_ticksChanged; // once, when a change has spread through the tree
    unsigned int m_selected = 0;
    bool m_busy = false;
};
