#include "testfiles.h"
#include "treescenario.h"

#include <Pardel/treeobjcheckable.h>
#include <Pardel/treesortfilterproxymodel.h>

#include <QHeaderView>
#include <QVBoxLayout>

namespace {

/// The rules of the states step by step, each change leading to the next by a signal.
class LiteralTree : public QObject
{
public:
    LiteralTree() { connect(&model, &QStandardItemModel::itemChanged, this, &LiteralTree::general); }

    void fill(const QStandardItemModel* source, const QList<int>& ids)
    {
        for (int row = 0; row < source->rowCount(); ++row) {
            QStandardItem* top = copy(source->item(row), ids);
            model.appendRow(top);
            mark(top);
        }
    }

    QStandardItem* copy(const QStandardItem* source, const QList<int>& ids)
    {
        QStandardItem* clone = source->clone();
        clone->setCheckable(true);
        for (int row = 0; row < source->rowCount(); ++row) {
            QStandardItem* child = copy(source->child(row), ids);
            clone->appendRow(child);
            mark(child);
        }
        if (!source->hasChildren()) {
            const int id = qMax(source->data(Qt::UserRole + 10).toInt(), -1);
            clone->setData(id, Qt::UserRole + 10);
            clone->setCheckState(ids.contains(id) ? Qt::Checked : Qt::Unchecked);
        }
        return clone;
    }

    void general(QStandardItem* item)
    {
        disconnect(&model, &QStandardItemModel::itemChanged, this, &LiteralTree::general);
        connect(&model, &QStandardItemModel::itemChanged, this, &LiteralTree::repeat);
        repeat(item);
        disconnect(&model, &QStandardItemModel::itemChanged, this, &LiteralTree::repeat);
        mark(item);
        connect(&model, &QStandardItemModel::itemChanged, this, &LiteralTree::general);
    }

    void repeat(QStandardItem* item)
    {
        const auto state = static_cast<Qt::CheckState>(item->data(Qt::CheckStateRole).toInt());
        for (int row = 0; row < item->rowCount(); ++row)
            item->child(row)->setCheckState(state);
    }

    void mark(QStandardItem* item)
    {
        QStandardItem* group = item->parent() ? item->parent() : model.invisibleRootItem();
        int state = group->child(0)->data(Qt::CheckStateRole).toInt();
        for (int row = 1; row < group->rowCount(); ++row) {
            if (group->child(row)->data(Qt::CheckStateRole).toInt() != state)
                state = Qt::PartiallyChecked;
        }
        if (item->parent()) {
            connect(&model, &QStandardItemModel::itemChanged, this, &LiteralTree::mark);
            group->setCheckState(static_cast<Qt::CheckState>(state));
            disconnect(&model, &QStandardItemModel::itemChanged, this, &LiteralTree::mark);
        } else {
            box = state;
        }
    }

    void selectAllChecked(int state)
    {
        for (int row = 0; row < model.rowCount(); ++row)
            model.item(row)->setCheckState(state ? Qt::Checked : Qt::Unchecked);
        emitted.append(state ? Qt::Checked : Qt::Unchecked);
    }

    void setCheckedSelectAll(int state)
    {
        box = state;
        selectAllChecked(state);
    }

    void changeStateObject(QStandardItem* item, Qt::CheckState state, int id)
    {
        for (int row = 0; row < item->rowCount(); ++row)
            changeStateObject(item->child(row), state, id);
        const int own = item->data(Qt::UserRole + 10).toInt();
        if (item->rowCount() == 0 && own == id && own >= 0)
            item->setCheckState(state);
    }

    QStandardItemModel model;
    int box = 0;
    QVector<int> emitted;
};

} // namespace

class TreeObjCheckableTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void layout()
    {
        TreeScenario<TreeObjCheckable> tree;
        const QLayout* layout = tree.widget.layout();
        QVERIFY(qobject_cast<const QVBoxLayout*>(layout));
        QCOMPARE(layout->contentsMargins(), QMargins());
        QCOMPARE(layout->spacing(), 1);
        QCOMPARE(layout->indexOf(tree.view), 0);
        QCOMPARE(layout->indexOf(tree.box), 1);
        QVERIFY(tree.view->isHeaderHidden());
        QCOMPARE(tree.view->autoExpandDelay(), 1);
        QCOMPARE(tree.view->selectionBehavior(), QAbstractItemView::SelectRows);
        QCOMPARE(tree.view->editTriggers(), QAbstractItemView::NoEditTriggers);
        QVERIFY(qobject_cast<TreeSortFilterProxyModel*>(tree.view->model()));
        QCOMPARE(tree.box->text(), QStringLiteral("Select/Deselect all"));

        QCOMPARE(methodsOf(TreeObjCheckable::staticMetaObject),
                 QByteArray("checkedSelectAll(int) go_right() go_left() setFilterStr(QString) selectAllChecked(int) "
                            "-itemChangedGen(QStandardItem*) -itemChangedRepeat(QStandardItem*) "
                            "-itemChangedMark(QStandardItem*)"));
    }

    void states_data() { addTableRows("checkabletree.txt"); }
    void states()
    {
        QFETCH(const QByteArrayList, cells);
        runScenario<TreeObjCheckable>(cells);
    }

    void states_as_step_by_step()
    {
        for (quint32 seed = 0; seed < 1000; ++seed) {
            compareWithLiteral<TreeObjCheckable, LiteralTree>(
                seed, {"set", "set", "set", "settext", "unset", "quiet", "touch", "rename", "insert", "remove", "all",
                       "command", "object", "object"});
            if (QTest::currentTestFailed())
                return;
        }
    }
};

QTEST_MAIN(TreeObjCheckableTest)

#include "tst_treeobjcheckable.moc"
