#include "treescenario.h"
#include "widgettext.h"

#include <Pardel/treeobjcheckablee.h>

namespace {

/// The rules of the states, each change leading to the next by a signal.
struct LiteralRules : LiteralTree
{
    LiteralRules() { connect(&model, &QStandardItemModel::itemChanged, this, &LiteralRules::changed); }

    void changed(QStandardItem* item)
    {
        const int state = item->data(Qt::CheckStateRole).toInt();
        const int id = item->data(Qt::UserRole + 10).toInt();
        if (item->hasChildren()) {
            for (int row = 0; row < item->rowCount() && upwardDepth == 0; ++row)
                item->child(row)->setCheckState(static_cast<Qt::CheckState>(state));
        } else if (id >= 1) {
            for (int row = 0; row < model.rowCount(); ++row)
                changeStateObject(model.item(row), static_cast<Qt::CheckState>(state), id);
        }
        if (state == Qt::Checked && item->parent()) {
            ++upwardDepth;
            item->parent()->setCheckState(Qt::Checked);
            --upwardDepth;
        }
        if (state != Qt::PartiallyChecked)
            box = 0;
    }

    void changeStateObject(QStandardItem* item, Qt::CheckState state, int id)
    {
        if (id >= 1 && item->data(Qt::UserRole + 10).toInt() == id)
            item->setCheckState(state);
        for (int row = 0; row < item->rowCount(); ++row)
            changeStateObject(item->child(row), state, id);
    }

    void setStateAll(QStandardItem* item, Qt::CheckState state)
    {
        item->setCheckState(state);
        for (int row = 0; row < item->rowCount(); ++row)
            setStateAll(item->child(row), state);
    }

    void selectAllChecked(int state)
    {
        disconnect(&model, &QStandardItemModel::itemChanged, this, &LiteralRules::changed);
        for (int row = 0; row < model.rowCount(); ++row)
            setStateAll(model.item(row), static_cast<Qt::CheckState>(state));
        connect(&model, &QStandardItemModel::itemChanged, this, &LiteralRules::changed);
        emitted.append(state);
    }

    void setCheckedSelectAll(int state)
    {
        const int newBox = state == 0 ? 0 : 2;
        if (std::exchange(box, newBox) != newBox)
            selectAllChecked(newBox);
    }

    int upwardDepth = 0;
};

} // namespace

class TreeObjCheckableETest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void layout() { QCOMPARE(layoutLines(TreeObjCheckableE()), linesOf("treeobjcheckablee.layout")); }

    void states_data() { addTableRows("treeobjcheckablee.txt"); }
    void states() { runScenario<TreeObjCheckableE>(); }

    void ticks_are_told() { countTicksTold<TreeObjCheckableE>(); }

    void states_as_step_by_step() { compareWithLiteral<TreeObjCheckableE, LiteralRules>({"under NAME STATE"}); }

    void filling_expands_and_unchecks()
    {
        TreeScenario<TreeObjCheckableE> tree("A(B(a:1) b:2)");
        tree.widget.setCheckedSelectAll(2);
        tree.fill("A(B(a:1) b:2) C(c:3)", nullptr);
        tree.widget.setModelAndCheckedO(nullptr, nullptr);
        QCOMPARE(viewText(tree.view), QByteArray("A(B(a) b) C(c)"));
        QCOMPARE(tree.state(), QByteArray("A-(B-(a:1-) b:2-) C-(c:3-) box 0 2"));
    }

    void collecting()
    {
        QList<int> ids{1, 4};
        TreeScenario<TreeObjCheckableE> tree("A:7+(a:4 B:8-(b:1 c:2) d:4) e:0 C:9~(f:1) D:0+(g:2)", &ids);
        QList<int> out{99};
        tree.widget.getCheckedObjs(&out);
        QCOMPARE(out, (QList<int>{7, 4, 1}));
        tree.widget.getCheckedObjs(nullptr);
    }

    void groups_one_in_another()
    {
        TreeScenario<TreeObjCheckableE> tree("A:7");
        tree.model->item(0)->appendRow(nestedGroups(100'000, 5));
        tree.view->expandAll();
        tree.play("set A 2");
        QList<int> ids;
        tree.widget.getCheckedObjs(&ids);
        QCOMPARE(ids, (QList<int>{7, 5}));
        tree.fill("A", nullptr);
    }
};

QTEST_MAIN(TreeObjCheckableETest)

#include "tst_treeobjcheckablee.moc"
