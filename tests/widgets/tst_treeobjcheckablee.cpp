#include "testfiles.h"
#include "treescenario.h"

#include <Pardel/treeobjcheckablee.h>

#include <QVBoxLayout>

namespace {

/// The rules of the states step by step, each change leading to the next by a signal.
class LiteralTree : public QObject
{
public:
    LiteralTree() { connect(&model, &QStandardItemModel::itemChanged, this, &LiteralTree::changed); }

    void fill(const QStandardItemModel* source, const QList<int>& ids)
    {
        for (int row = 0; row < source->rowCount(); ++row)
            model.appendRow(copy(source->item(row), ids));
    }

    QStandardItem* copy(const QStandardItem* source, const QList<int>& ids)
    {
        QStandardItem* clone = source->clone();
        clone->setCheckable(true);
        for (int row = 0; row < source->rowCount(); ++row)
            clone->appendRow(copy(source->child(row), ids));
        if (!source->hasChildren()) {
            const int id = source->data(Qt::UserRole + 10).toInt();
            clone->setData(id < 1 ? -1 : id, Qt::UserRole + 10);
            clone->setCheckState(ids.contains(id) ? Qt::Checked : Qt::Unchecked);
        }
        return clone;
    }

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
        disconnect(&model, &QStandardItemModel::itemChanged, this, &LiteralTree::changed);
        for (int row = 0; row < model.rowCount(); ++row)
            setStateAll(model.item(row), static_cast<Qt::CheckState>(state));
        connect(&model, &QStandardItemModel::itemChanged, this, &LiteralTree::changed);
        emitted.append(state);
    }

    void setCheckedSelectAll(int state)
    {
        const int newBox = state == 0 ? 0 : 2;
        if (std::exchange(box, newBox) != newBox)
            selectAllChecked(newBox);
    }

    QStandardItemModel model;
    int box = 0;
    int upwardDepth = 0;
    QVector<int> emitted;
};

} // namespace

class TreeObjCheckableETest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void layout()
    {
        const TreeScenario<TreeObjCheckableE> tree;
        QWidget plain;
        const QVBoxLayout usual(&plain);
        const QLayout* layout = tree.widget.layout();
        QVERIFY(qobject_cast<const QVBoxLayout*>(layout));
        QCOMPARE(layout->spacing(), usual.spacing());
        QCOMPARE(layout->contentsMargins(), usual.contentsMargins());
        QCOMPARE(layout->indexOf(tree.view), 0);
        QCOMPARE(layout->indexOf(tree.box), 1);
        QVERIFY(tree.view->isHeaderHidden());
        QCOMPARE(tree.view->autoExpandDelay(), 1);
        QCOMPARE(tree.view->editTriggers(), QTreeView().editTriggers());
        QCOMPARE(tree.box->text(), QStringLiteral("Select/Deselect all"));
        QCOMPARE(methodsOf(TreeObjCheckableE::staticMetaObject),
                 QByteArray("checkedSelectAll(int) itemChangedX(QStandardItem*) selectAllChecked(int)"));
    }

    void states_data() { addTableRows("checkabletreee.txt"); }
    void states()
    {
        QFETCH(const QByteArrayList, cells);
        runScenario<TreeObjCheckableE>(cells);
    }

    void states_as_step_by_step()
    {
        for (quint32 seed = 0; seed < 500; ++seed) {
            compareWithLiteral<TreeObjCheckableE, LiteralTree>(seed, {"set", "set", "set", "set", "settext", "unset",
                                                                      "quiet", "touch", "rename", "insert", "remove",
                                                                      "all", "command", "object", "object", "under"});
            if (QTest::currentTestFailed())
                return;
        }
    }

    void filling_expands_and_unchecks()
    {
        TreeScenario<TreeObjCheckableE> tree;
        QList<int> ids;
        tree.fill("A(B(a:1) b:2)", &ids);
        tree.widget.setCheckedSelectAll(2);
        tree.fill("A(B(a:1) b:2) C(c:3)", nullptr);
        QCOMPARE(viewText(tree.view), QByteArray("A(B(a) b) C(c)"));
        QCOMPARE(tree.stateText(), QByteArray("A-(B-(a:1-) b:2-) C-(c:3-) box 0 2"));
        tree.widget.setModelAndCheckedO(nullptr, nullptr);
        QCOMPARE(tree.model->rowCount(), 2);
    }

    void collecting()
    {
        TreeScenario<TreeObjCheckableE> tree;
        QList<int> ids{1, 4};
        tree.fill("A:7+(a:4 B:8-(b:1 c:2) d:4) e:0 C:9~(f:1)", &ids);
        QList<int> out{99};
        tree.widget.getCheckedObjs(&out);
        QCOMPARE(out, (QList<int>{7, 4, 1}));
        tree.widget.getCheckedObjs(nullptr);
    }

    void records_by_address()
    {
        const struct
        {
            qint32 id;
            char more[20];
        } record = {12, ""}, negative = {-12, ""};
        TreeScenario<TreeObjCheckableE> tree;
        readTree(&tree.source, "a:1 b:2");
        tree.source.item(0)->setData(qint64(reinterpret_cast<quintptr>(&record)), Qt::UserRole + 1);
        tree.source.item(1)->setData(quint64(reinterpret_cast<quintptr>(&negative)), Qt::UserRole + 1);
        QList<int> ids{12, 1};
        tree.widget.setModelAndCheckedO(&tree.source, &ids);
        QCOMPARE(tree.stateText(), QByteArray("a:12+ b:-12- box 0"));
    }
};

QTEST_MAIN(TreeObjCheckableETest)

#include "tst_treeobjcheckablee.moc"
