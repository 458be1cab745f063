#include "treescenario.h"
#include "widgettext.h"

#include <Pardel/treeobjcheckable.h>
#include <Pardel/treesortfilterproxymodel.h>

#include <QSignalSpy>

namespace {

/// The rules of the states, each change leading to the next by a signal.
struct LiteralRules : LiteralTree
{
    LiteralRules() { connect(&model, &QStandardItemModel::itemChanged, this, &LiteralRules::general); }

    void general(QStandardItem* item)
    {
        disconnect(&model, &QStandardItemModel::itemChanged, this, &LiteralRules::general);
        connect(&model, &QStandardItemModel::itemChanged, this, &LiteralRules::repeat);
        repeat(item);
        disconnect(&model, &QStandardItemModel::itemChanged, this, &LiteralRules::repeat);
        mark(item);
        connect(&model, &QStandardItemModel::itemChanged, this, &LiteralRules::general);
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
            connect(&model, &QStandardItemModel::itemChanged, this, &LiteralRules::mark);
            group->setCheckState(static_cast<Qt::CheckState>(state));
            disconnect(&model, &QStandardItemModel::itemChanged, this, &LiteralRules::mark);
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
};

} // namespace

class TreeObjCheckableTest : public QObject
{
    Q_OBJECT

    using Scenario = TreeScenario<TreeObjCheckable>;

private Q_SLOTS:
    void layout()
    {
        QCOMPARE(layoutLines(TreeObjCheckable()), linesOf("treeobjcheckable.layout"));
        QVERIFY(qobject_cast<TreeSortFilterProxyModel*>(Scenario().view->model()));
    }

    void states_data() { addTableRows("treeobjcheckable.txt"); }
    void states() { runScenario<TreeObjCheckable>(); }

    void ticks_are_told()
    {
        countTicksTold<TreeObjCheckable>();
        Scenario tree("A(a:1 b:2)");
        QCoreApplication::processEvents();
        QSignalSpy told(&tree.widget, &TreeObjCheckable::checkedObjectsChanged);
        tree.widget.setFilterStr(QStringLiteral("b"));
        QCoreApplication::processEvents();
        QCOMPARE(told.size(), 0);
        tree.play("object a 2 1"); // which the filter hides
        QCoreApplication::processEvents();
        QCOMPARE(told.size(), 1);
    }

    void states_as_step_by_step() { compareWithLiteral<TreeObjCheckable, LiteralRules>(); }

    void search_data() { addTableRows("treesearch.txt"); }
    void search()
    {
        for (const bool shown : {false, true}) {
            Scenario tree("Abc(ab:7 xab abd:8) B(C(aB c) d) abz");
            tree.widget.setVisible(shown);
            for (const QByteArray& move : cell("moves").split(' ')) {
                if (move == ">") {
                    tree.widget.go_right();
                } else if (move == "<") {
                    tree.widget.go_left();
                } else if (move.startsWith('?') || move.startsWith('$')) {
                    tree.widget.setSearchAnywhere(move.startsWith('$'));
                    tree.widget.OnSearchTree(QString::fromUtf8(move.mid(1)));
                } else if (move.startsWith('/')) {
                    tree.widget.setFilterStr(QString::fromUtf8(move.mid(1)));
                } else if (!move.isEmpty()) {
                    tree.view->setCurrentIndex(tree.indexInView(move));
                    tree.view->scrollTo(tree.indexInView(move)); // a hidden view does not expand to it
                }
            }
            QCOMPARE(QByteArray::number(tree.widget.Get_index_size()), cell("matches"));
            QCOMPARE(viewText(tree.view), cell("view"));
        }
    }

    void filter_as_row_by_row()
    {
        for (quint32 seed = 0; seed < 300; ++seed) {
            QRandomGenerator random(seed);
            Scenario tree;
            fillAtRandom(&tree.source, &random);
            tree.widget.setModelAndCheckedO(&tree.source, nullptr);
            TreeSortFilterProxyModel proxy;
            proxy.setSourceModel(tree.model);
            QTreeView literal;
            literal.setModel(&proxy);
            literal.setSelectionBehavior(QAbstractItemView::SelectRows);
            for (QTreeView* view : {&literal, tree.view})
                view->setSelectionMode(seed % 2 ? QTreeView::SingleSelection : QTreeView::ExtendedSelection);
            for (int step = 0; step < 8; ++step) {
                const QByteArray item = randomAction({"NAME"}, tree.model, &random);
                if (tree.indexInView(item).isValid()) {
                    tree.view->setCurrentIndex(tree.indexInView(item));
                    literal.setCurrentIndex(proxy.mapFromSource(itemNamed(tree.model, item)->index()));
                }
                const QString text = QStringLiteral("bcd").mid(random.bounded(4), random.bounded(3));
                proxy.setFilterFixedString(text);
                text.isEmpty() ? literal.collapseAll() : literal.expandAll();
                tree.widget.setFilterStr(text);
                QCOMPARE(viewText(tree.view), viewText(&literal));
            }
        }
    }

    /// Rows that are taken out one by one leave the same tree, in a time that grows with their square.
    void filter_is_one_change()
    {
        Scenario tree("A(a b c) B(a b) c");
        const QSignalSpy removed(tree.proxy, &QAbstractItemModel::rowsRemoved);
        const QSignalSpy changed(tree.proxy, &QAbstractItemModel::layoutChanged);
        tree.widget.setFilterStr(QStringLiteral("c"));
        QCOMPARE(viewText(tree.view), QByteArray("A(c) c"));
        QCOMPARE(removed.size(), 0);
        QCOMPARE(changed.size(), 1);
    }

    void collecting_data() { addTableRows("collecting.txt"); }
    void collecting()
    {
        QList<int> list{1, 2, 3, 0};
        QMap<int, QString> map{{77, QString()}};
        Scenario tree("A:9(a:1 B(b:2 c:1 d:4)) C(e:2 f:-1) g:3 h:0", &list);
        tree.play("set f 2");
        tree.play("set d 1");
        list = {3};
        for (const QByteArray& call : cell("calls").split(',')) {
            const QByteArrayList words = call.trimmed().split(' ');
            const QByteArray& name = words.last();
            const QStandardItem* group = itemNamed(tree.model, name);
            const QModelIndex start = name == "foreign" ? tree.view->model()->index(0, 0)
                                      : group           ? group->index()
                                                        : QModelIndex();
            if (words.first() == "filter")
                tree.widget.setFilterStr(QString::fromUtf8(name));
            else if (words.first() == "map")
                tree.widget.getCheckedObjs(name == "null" ? nullptr : &map, start);
            else
                tree.widget.getCheckedObjs(name == "null" ? nullptr : &list, start);
        }
        QByteArrayList collected;
        for (const int id : qAsConst(list))
            collected += QByteArray::number(id);
        for (auto entry = map.cbegin(); entry != map.cend(); ++entry)
            collected += QByteArray::number(entry.key()) + '=' + entry.value().toUtf8();
        QCOMPARE(collected.join(' '), cell("collected"));
    }

    void records_by_address()
    {
        const qint32 record[] = {12, 99};
        const qint32 negative[] = {-12, 99};
        QList<int> ids{12, 1};
        Scenario tree;
        readTree(&tree.source, "a:1 b:2 c:3 d:4 G:5(e:6)");
        const QVariant addresses[] = {qint64(reinterpret_cast<quintptr>(record)),
                                      quint64(reinterpret_cast<quintptr>(negative)), 0, QStringLiteral("123"),
                                      qint64(reinterpret_cast<quintptr>(record))};
        for (int row = 0; row < 5; ++row)
            tree.source.item(row)->setData(addresses[row], Qt::UserRole + 1);
        tree.widget.setModelAndCheckedO(&tree.source, &ids);
        QCOMPARE(tree.state(), QByteArray("a:12+ b:-12- c:3- d:4- G:5-(e:6-) box 1"));
        QCOMPARE(tree.widget.getCurrentObj(), 0);
        tree.view->setCurrentIndex(tree.indexInView("a"));
        QCOMPARE(tree.widget.getCurrentObj(), 12);
    }

    void filling_again()
    {
        QList<int> ids{1};
        Scenario tree("A(a:1 b:2)", &ids);
        tree.play("set A 2");
        tree.model->item(0)->setChild(0, 1, new QStandardItem(QStringLiteral("other column")));
        tree.model->item(0)->child(0, 1)->setText(QStringLiteral("which counts for nothing"));
        QCOMPARE(tree.state(), QByteArray("A+(a:1+ b:2+) box 2"));
        tree.widget.setFilterStr(QStringLiteral("a"));
        readTree(&tree.source, "B(a:1 b:2) C(c:3) a:4");
        tree.source.item(0)->setChild(0, 1, new QStandardItem(QStringLiteral("other column")));
        tree.source.setItem(2, 0, nullptr); // a row with nothing in it
        tree.widget.setModelAndCheckedO(&tree.source, &ids);
        QCOMPARE(viewText(tree.view), QByteArray("B"));
        QCOMPARE(tree.model->item(0)->columnCount(), 1);
        QCOMPARE(tree.source.item(0)->isCheckable(), false);
        tree.widget.setModelAndCheckedO(nullptr, nullptr);
        QCOMPARE(tree.state(), QByteArray("B~(a:1+ b:2-) C-(c:3-) box 1"));
        tree.fill("", &ids);
        QCOMPARE(tree.state(), QByteArray("box 1"));
    }

    void others_learn_of_changes()
    {
        QList<int> ids{3};
        Scenario tree("A(a:1 b:2 c:3 d:4) e:5", &ids);
        QByteArrayList seen;
        connect(tree.model, &QStandardItemModel::itemChanged, this,
                [&](const QStandardItem* item) { seen += item->text().toUtf8(); });
        connect(tree.proxy, &QAbstractItemModel::dataChanged, this,
                [&](const QModelIndex& first, const QModelIndex& last) {
                    seen += first.data().toByteArray() + '-' + last.data().toByteArray();
                });
        tree.widget.selectAllChecked(2);
        std::sort(seen.begin(), seen.end());
        QCOMPARE(seen.join(' '), QByteArray("A A-e a a-b b d d-d e"));
    }

    void receivers_that_interfere()
    {
        Scenario tree("A(a:1 b:2) B(c:3 d:4)");
        const auto follow = connect(tree.model, &QStandardItemModel::itemChanged, this, [&](QStandardItem* item) {
            if (item->text() == QLatin1String("a"))
                itemNamed(tree.model, "c")->setCheckState(item->checkState());
        });
        tree.play("set A 2");
        QCOMPARE(tree.state(), QByteArray("A+(a:1+ b:2+) B~(c:3+ d:4-) box 1"));
        disconnect(follow);

        delete itemNamed(tree.model, "A")->takeChild(0);
        tree.play("object root 0 1");
        // An object is found by an id that it has only just got.
        connect(tree.model, &QStandardItemModel::itemChanged, this, [&](QStandardItem* item) {
            if (item->text() == QLatin1String("d"))
                tree.widget.changeStateObject(tree.model->invisibleRootItem(), Qt::Checked, 77);
        });
        itemNamed(tree.model, "d")->setData(77, Qt::UserRole + 10);
        QCOMPARE(tree.state(), QByteArray("A+( b:2+) B+(c:3+ d:77+) box 2"));
    }

    void groups_one_in_another()
    {
        Scenario tree(QByteArray("a(").repeated(9999) + "z:1" + QByteArray(9999, ')'));
        tree.model->item(0)->setCheckState(Qt::Checked);
        tree.play("object root 0 1");
        QCOMPARE(tree.box->checkState(), Qt::Unchecked);
        tree.widget.setFilterStr(QStringLiteral("z"));
        tree.widget.OnSearchTree(QStringLiteral("z"));
        QVERIFY(tree.view->isExpanded(tree.view->currentIndex().parent()));
        // What is too deep to be shown is ticked all the same.
        tree.widget.setFilterStr(QString());
        tree.fill("b", nullptr);
        tree.model->item(0)->appendRow(nestedGroups(100'000, 5));
        tree.play("all 2");
        QList<int> ids;
        tree.widget.getCheckedObjs(&ids);
        QCOMPARE(ids, QList<int>{5});
        tree.widget.setFilterStr(QStringLiteral("group"));
        tree.view->expandAll();
        tree.widget.OnSearchTree(QStringLiteral("group"));
        QCOMPARE(tree.widget.Get_index_size(), 9999);
        tree.widget.go_left();
    }
};

QTEST_MAIN(TreeObjCheckableTest)

#include "tst_treeobjcheckable.moc"
