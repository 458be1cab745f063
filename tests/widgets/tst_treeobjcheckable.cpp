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
        for (quint32 seed = 0; seed < 500; ++seed) {
            compareWithLiteral<TreeObjCheckable, LiteralTree>(seed, {"set", "set", "set", "settext", "unset", "quiet",
                                                                     "touch", "rename", "insert", "remove", "all",
                                                                     "command", "object", "object"});
            if (QTest::currentTestFailed())
                return;
        }
    }

    void search_data() { addTableRows("treesearch.txt"); }
    void search()
    {
        for (const bool shown : {false, true}) {
            TreeScenario<TreeObjCheckable> tree;
            tree.fill("Abc(ab:7 xab abd:8) B(C(aB c) d) abz", nullptr);
            if (shown)
                tree.show();
            if (!cell(0).isEmpty())
                tree.widget.setFilterStr(QString::fromUtf8(cell(0)));
            tree.widget.OnSearchTree(QStringLiteral("abc"));
            tree.view->setCurrentIndex(QModelIndex());
            tree.widget.OnSearchTree(QString::fromUtf8(cell(1)));
            for (const QByteArray& move : cell(2).split(' ')) {
                const QStandardItem* item = itemNamed(tree.model, move);
                if (move == ">")
                    tree.widget.go_right();
                else if (move == "<")
                    tree.widget.go_left();
                else if (move.startsWith('/'))
                    tree.widget.setFilterStr(QString::fromUtf8(move.mid(1)));
                if (item) {
                    tree.view->setCurrentIndex(tree.indexInView(item));
                    tree.view->scrollTo(tree.indexInView(item)); // a hidden view does not expand to it
                }
            }
            QCOMPARE(QByteArray::number(tree.widget.Get_index_size()), cell(3));
            QCOMPARE(viewText(tree.view), cell(4));
        }
    }

    void filter_as_row_by_row()
    {
        for (quint32 seed = 0; seed < 300; ++seed) {
            QRandomGenerator random(seed);
            TreeScenario<TreeObjCheckable> tree;
            tree.fill(randomTree(random), nullptr);
            TreeSortFilterProxyModel proxy;
            proxy.setSourceModel(tree.model);
            QTreeView literal;
            literal.setSelectionBehavior(QAbstractItemView::SelectRows);
            literal.setModel(&proxy);
            const auto mode =
                random.bounded(2) ? QAbstractItemView::SingleSelection : QAbstractItemView::ExtendedSelection;
            literal.setSelectionMode(mode);
            tree.view->setSelectionMode(mode);
            for (int step = 0; step < 8; ++step) {
                const QList<QStandardItem*> items = allItems(tree.model);
                const QModelIndex item = items.at(random.bounded(items.size()))->index();
                if (random.bounded(2) && proxy.mapFromSource(item).isValid()) {
                    literal.setCurrentIndex(proxy.mapFromSource(item));
                    tree.view->setCurrentIndex(tree.indexInView(tree.model->itemFromIndex(item)));
                }
                items.at(random.bounded(items.size()))->setText(QStringLiteral("abc").mid(random.bounded(3)));
                const QString text = QStringLiteral("abc").mid(random.bounded(4), random.bounded(3));
                proxy.setFilterFixedString(text);
                text.isEmpty() ? literal.collapseAll() : literal.expandAll();
                tree.widget.setFilterStr(text);
                QCOMPARE(viewText(tree.view), viewText(&literal));
            }
        }
    }

    void collecting()
    {
        TreeScenario<TreeObjCheckable> tree;
        QList<int> ids{1, 2, 3, 0};
        tree.fill("A:9(a:1 B(b:2 c:1 d:4)) C(e:2 f:-1) g:3 h:0", &ids);
        tree.model->item(1)->child(1)->setCheckState(Qt::Checked);
        itemNamed(tree.model, "d")->setCheckState(Qt::PartiallyChecked);
        const QMap<int, QString> groups = {
            {0, QString()}, {1, QStringLiteral("B")}, {2, QStringLiteral("C")}, {3, QString()}};

        QMap<int, QString> map{{77, QString()}};
        ids = {3};
        tree.widget.getCheckedObjs(&map); // into the list that the tree was filled with, too
        QCOMPARE(map, groups);
        QCOMPARE(ids, (QList<int>{3, 1, 2, 0}));

        QList<int> list{77};
        tree.widget.setFilterStr(QStringLiteral("h"));
        tree.widget.getCheckedObjs(&list);
        QCOMPARE(list, (QList<int>{1, 2, 3, 0}));
        tree.widget.getCheckedObjs(&list, tree.model->item(1)->index());
        QCOMPARE(list, QList<int>{2});
        tree.widget.getCheckedObjs(&list, itemNamed(tree.model, "c")->index());
        QCOMPARE(list, QList<int>{1});
        tree.widget.getCheckedObjs(&list, tree.view->model()->index(0, 0));
        QCOMPARE(list, QList<int>());
        tree.widget.getCheckedObjs(&map, itemNamed(tree.model, "B")->index());
        QCOMPARE(map.keys(), (QList<int>{1, 2}));
        QCOMPARE(list, (QList<int>{2, 1}));
        tree.widget.getCheckedObjs(static_cast<QMap<int, QString>*>(nullptr));
        QCOMPARE(list, (QList<int>{2, 1, 3, 0}));

        tree.widget.getCheckedObjs(static_cast<QList<int>*>(nullptr));
        tree.widget.getCheckedObjs(&map);
        QCOMPARE(map, groups);
        QCOMPARE(list.size(), 4);
    }

    void records_by_address()
    {
        const struct
        {
            qint32 id;
            char more[20];
        } record = {12, ""}, negative = {-12, ""};
        TreeScenario<TreeObjCheckable> tree;
        readTree(&tree.source, "a:1 b:2 c:3 d:4 G:5(e:6)");
        tree.source.item(0)->setData(qint64(reinterpret_cast<quintptr>(&record)), Qt::UserRole + 1);
        tree.source.item(1)->setData(quint64(reinterpret_cast<quintptr>(&negative)), Qt::UserRole + 1);
        tree.source.item(2)->setData(0, Qt::UserRole + 1);
        tree.source.item(3)->setData(QStringLiteral("123"), Qt::UserRole + 1);
        tree.source.item(4)->setData(qint64(reinterpret_cast<quintptr>(&record)), Qt::UserRole + 1);
        QList<int> ids{12, 1};
        tree.widget.setModelAndCheckedO(&tree.source, &ids);
        QCOMPARE(tree.stateText(), QByteArray("a:12+ b:-12- c:3- d:4- G:5-(e:6-) box 1"));
        QCOMPARE(tree.widget.getCurrentObj(), 0);
        tree.view->setCurrentIndex(tree.indexInView(itemNamed(tree.model, "a")));
        QCOMPARE(tree.widget.getCurrentObj(), 12);
    }

    void filling_again()
    {
        TreeScenario<TreeObjCheckable> tree;
        QList<int> ids{1};
        tree.fill("A(a:1 b:2)", &ids);
        tree.widget.setFilterStr(QStringLiteral("a"));
        readTree(&tree.source, "B(a:1 b:2) C(c:3) a:4");
        tree.source.item(0)->setChild(0, 1, new QStandardItem(QStringLiteral("other column")));
        tree.source.setItem(2, 0, nullptr); // a row with nothing in it
        tree.widget.setModelAndCheckedO(&tree.source, &ids);
        QCOMPARE(viewText(tree.view), QByteArray("B"));
        tree.view->expandAll();
        QCOMPARE(viewText(tree.view), QByteArray("B(a)"));
        QCOMPARE(tree.model->item(0)->columnCount(), 1);
        QCOMPARE(tree.source.item(0)->isCheckable(), false);
        tree.widget.setModelAndCheckedO(nullptr, nullptr);
        QCOMPARE(tree.stateText(), QByteArray("B~(a:1+ b:2-) C-(c:3-) box 1"));
        tree.fill("", &ids);
        QCOMPARE(tree.stateText(), QByteArray("box 1"));
    }

    void others_learn_of_changes()
    {
        TreeScenario<TreeObjCheckable> tree;
        QList<int> ids{3};
        tree.fill("A(a:1 b:2 c:3 d:4) e:5", &ids);
        QByteArrayList items;
        QByteArrayList ranges;
        connect(tree.model, &QStandardItemModel::itemChanged, this,
                [&](const QStandardItem* item) { items += item->text().toUtf8(); });
        connect(tree.view->model(), &QAbstractItemModel::dataChanged, this,
                [&](const QModelIndex& first, const QModelIndex& last) {
                    ranges += first.data().toByteArray() + '-' + last.data().toByteArray();
                });
        tree.widget.selectAllChecked(2);
        std::sort(items.begin(), items.end());
        std::sort(ranges.begin(), ranges.end());
        QCOMPARE(items.join(' '), QByteArray("A a b d e"));
        QCOMPARE(ranges.join(' '), QByteArray("A-e a-b d-d"));
    }

    void receivers_that_interfere()
    {
        TreeScenario<TreeObjCheckable> tree;
        tree.fill("A(a:1 b:2) B(c:3 d:4)", nullptr);
        QStandardItem* c = itemNamed(tree.model, "c");
        const auto connection = connect(tree.model, &QStandardItemModel::itemChanged, this, [&](QStandardItem* item) {
            if (item->text() == QLatin1String("a"))
                c->setCheckState(item->checkState());
        });
        tree.model->item(0)->setCheckState(Qt::Checked);
        QCOMPARE(tree.stateText(), QByteArray("A+(a:1+ b:2+) B~(c:3+ d:4-) box 1"));
        disconnect(connection);

        delete itemNamed(tree.model, "A")->takeChild(0);
        tree.widget.changeStateObject(tree.model->invisibleRootItem(), Qt::Unchecked, 1);
        tree.widget.changeStateObject(tree.model->invisibleRootItem(), Qt::Unchecked, 2);

        connect(tree.model, &QStandardItemModel::itemChanged, this, [&] {
            if (tree.model->rowCount() == 2)
                tree.fill("new:1", nullptr);
        });
        tree.widget.selectAllChecked(2);
        QCOMPARE(tree.stateText(), QByteArray("new:1- box 0 2"));
    }

    void groups_one_in_another()
    {
        constexpr int levels = 10'000;
        TreeScenario<TreeObjCheckable> tree;
        auto* top = new QStandardItem;
        QStandardItem* last = top;
        for (int level = 1; level < levels; ++level) {
            last->appendRow(new QStandardItem(QString::number(level)));
            last = last->child(0);
        }
        tree.source.appendRow(top);
        tree.widget.setModelAndCheckedO(&tree.source, nullptr);
        tree.model->item(0)->setCheckState(Qt::Checked);
        QList<int> ids;
        tree.widget.getCheckedObjs(&ids);
        QCOMPARE(ids, QList<int>{0});
        tree.widget.changeStateObject(tree.model->item(0), Qt::Unchecked, 0);
        QCOMPARE(tree.model->item(0)->checkState(), Qt::Unchecked);
        QCOMPARE(tree.box->checkState(), Qt::Unchecked);
        tree.widget.OnSearchTree(QStringLiteral("9999"));
        QCOMPARE(tree.widget.Get_index_size(), 1);
        tree.widget.setFilterStr(QStringLiteral("9999"));
        QVERIFY(tree.view->isExpanded(tree.view->currentIndex().parent()));
    }
};

QTEST_MAIN(TreeObjCheckableTest)

#include "tst_treeobjcheckable.moc"
