#pragma once

#include "testfiles.h"
#include "treetext.h"

#include <QCheckBox>
#include <QRandomGenerator>
#include <QSignalSpy>
#include <QSortFilterProxyModel>
#include <QTreeView>

/** What the slow, step by step version of a tree's rules has to hold. */
struct LiteralTree : QObject
{
    QStandardItemModel model;
    int box = 0;
    QList<int> emitted;
};

/** The ids in a text like "1,2"; none in an empty one. */
QList<int> idsOf(const QByteArray& text);

/** As treeText has it, with the box behind it and what was emitted. */
QByteArray stateText(const QStandardItemModel* model, int box, const QList<int>& emitted);

/** Fills a model with a dozen items at most, with few different ids and all kinds of states. */
void fillAtRandom(QStandardItemModel* model, QRandomGenerator* random);

/** One of the actions, in which NAME, STATE and ID are replaced by an item of the model and numbers. */
QByteArray randomAction(const QByteArrayList& actions, const QStandardItemModel* model, QRandomGenerator* random);

/** Does those verbs of act that change an item; false for others. */
bool changeItem(QStandardItem* item, const QByteArray& verb, int number);

template <typename Tree>
auto callSetStateAll(Tree* tree, QStandardItem* item, Qt::CheckState state) -> decltype(tree->setStateAll(item, state))
{
    tree->setStateAll(item, state);
}

inline void callSetStateAll(...) {} // of the tree that cannot

/**
 * Does what "verb NAME NUMBER" says to a tree or its slow version; "root" and "foreign" are names of items too.
 *
 * set, put, quiet: its state, put by the model's setItemData, quiet with the model's signals blocked; unset: takes the
 * state away; touch: its tool tip; rename: its id; insert, remove: a ticked child of this id, all children; move: to the
 * front of the top level. all STATE, command STATE, object NAME STATE ID, under NAME STATE: calls of the tree.
 */
template <typename Tree>
void act(Tree* tree, QStandardItemModel* model, const QByteArray& action)
{
    const QByteArrayList words = action.split(' ');
    const QByteArray& verb = words.first();
    const int number = words.last().toInt();
    QStandardItem stranger;
    QStandardItem* item = words.value(1) == "root"      ? model->invisibleRootItem()
                          : words.value(1) == "foreign" ? &stranger
                                                        : itemNamed(model, words.value(1));
    if (verb == "all")
        tree->selectAllChecked(number);
    else if (verb == "command")
        tree->setCheckedSelectAll(number);
    else if (verb == "object")
        tree->changeStateObject(item, static_cast<Qt::CheckState>(words.value(2).toInt()), number);
    else if (!changeItem(item, verb, number))
        callSetStateAll(tree, item, static_cast<Qt::CheckState>(number));
}

/** A checkable tree, with its inner parts and a record of its signal. */
template <typename Widget>
struct TreeScenario
{
    QStandardItemModel source;
    Widget widget;
    QTreeView* view = widget.getTreeView();
    QCheckBox* box = widget.template findChild<QCheckBox*>(QStringLiteral("checkBox"));
    QSortFilterProxyModel* proxy = qobject_cast<QSortFilterProxyModel*>(view->model());
    QStandardItemModel* model = qobject_cast<QStandardItemModel*>(proxy ? proxy->sourceModel() : view->model());
    QList<int> emitted;

    explicit TreeScenario(const QByteArray& tree = "", QList<int>* ids = nullptr)
    {
        QObject::connect(&widget, &Widget::checkedSelectAll, &widget, [this](int state) { emitted.append(state); });
        fill(tree, ids);
    }

    void fill(const QByteArray& tree, QList<int>* ids)
    {
        readTree(&source, tree);
        widget.setModelAndCheckedO(&source, ids);
    }

    QByteArray state() const { return stateText(model, box->checkState(), emitted); }

    QModelIndex indexInView(const QByteArray& name) const
    {
        const QModelIndex index = itemNamed(model, name)->index();
        return proxy ? proxy->mapFromSource(index) : index;
    }

    /// Also the user's actions: "click NAME", "key NAME" for the space bar, "box".
    void play(const QByteArray& action)
    {
        const QByteArrayList words = action.split(' ');
        if (!QByteArrayList{"box", "click", "key"}.contains(words.first()))
            return act(&widget, model, action);
        widget.show();
        QVERIFY(QTest::qWaitForWindowExposed(&widget));
        if (words.first() == "box")
            return QTest::mouseClick(box, Qt::LeftButton, {}, QPoint(8, box->height() / 2));
        view->expandAll();
        view->setCurrentIndex(indexInView(words.last()));
        const QRect row = view->visualRect(view->currentIndex());
        if (words.first() == "click")
            QTest::mouseClick(view->viewport(), Qt::LeftButton, {}, QPoint(row.left() + 8, row.center().y()));
        else
            QTest::keyClick(view, Qt::Key_Space);
    }
};

/** Plays a row with the columns source, ids ("none": no list), actions and state. */
template <typename Widget>
void runScenario()
{
    QList<int> ids = idsOf(cell("ids"));
    TreeScenario<Widget> scenario(cell("source"), cell("ids") == "none" ? nullptr : &ids);
    for (const QByteArray& action : cell("actions").split(';')) {
        if (!action.isEmpty())
            scenario.play(action.trimmed());
    }
    QCOMPARE(scenario.state(), cell("state"));
}

/** What is told of ticks comes once a turn of the event loop, and only when there may be other ticks. */
template <typename Widget>
void countTicksTold()
{
    TreeScenario<Widget> scenario("A(a:1 b:2) c:3");
    QSignalSpy told(&scenario.widget, &Widget::checkedObjectsChanged);
    QCoreApplication::processEvents();
    QCOMPARE(told.size(), 1); // of the filling
    // How often, and what is done before.
    for (const QByteArray& step : QByteArrayList{"1 set a 2", "0 set a 2", "0 touch a", "1 set A 2;set c 2;set b 0",
                                                 "1 all 0", "0 all 0", "1 rename c 9", "1 insert A 5", "1 remove A"}) {
        told.clear();
        for (const QByteArray& action : step.mid(2).split(';'))
            scenario.play(action);
        QCOMPARE(told.size(), 0);
        QCoreApplication::processEvents();
        QVERIFY2(told.size() == step.left(1).toInt(), step);
    }
}

/** Changes random trees at random, and the same trees of the slow version, which must stay alike. */
template <typename Widget, typename Literal>
void compareWithLiteral(const QByteArrayList& furtherActions = {})
{
    const QByteArrayList actions =
        QByteArrayList{"set NAME STATE", "set NAME STATE", "set NAME STATE", "put NAME STATE",      "quiet NAME STATE",
                       "unset NAME",     "touch NAME",     "rename NAME ID", "insert NAME ID",      "remove NAME",
                       "move NAME",      "all STATE",      "command STATE",  "object NAME STATE ID"} +
        furtherActions;
    for (quint32 seed = 0; seed < 500; ++seed) {
        QRandomGenerator random(seed);
        TreeScenario<Widget> scenario;
        fillAtRandom(&scenario.source, &random);
        QList<int> ids{1, 3};
        scenario.widget.setModelAndCheckedO(&scenario.source, &ids);
        Literal literal;
        readTree(&literal.model, treeText(scenario.model));
        literal.box = scenario.box->checkState();
        QByteArray history = scenario.state();
        for (int step = 0; step < 30; ++step) {
            const QByteArray action = randomAction(actions, scenario.model, &random);
            act(&scenario.widget, scenario.model, action);
            act(&literal, &literal.model, action);
            const QByteArray expected = stateText(&literal.model, literal.box, literal.emitted);
            history += "; " + action;
            QVERIFY2(scenario.state() == expected, history + ": " + scenario.state() + ", not " + expected);
        }
    }
}
