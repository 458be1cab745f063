#pragma once

#include "treetext.h"

#include <QCheckBox>
#include <QRandomGenerator>
#include <QSortFilterProxyModel>
#include <QTest>
#include <QTreeView>
#include <QVector>

/** The ids in a text like "1,2". */
QList<int> idsOf(const QByteArray& text);

/** The class's own signals and slots in their order, "-" before private ones. */
QByteArray methodsOf(const QMetaObject& metaObject);

/** A tree of a dozen items at most, in up to four levels, with few different ids and all kinds of states. */
QByteArray randomTree(QRandomGenerator& random);

/** An action for changeTree on one of the model's items. */
QByteArray randomAction(QRandomGenerator& random, const QStandardItemModel* model, const QByteArrayList& verbs);

template <typename Actor, typename = void>
struct HasStateAll : std::false_type
{};

template <typename Actor>
struct HasStateAll<Actor, std::void_t<decltype(&Actor::setStateAll)>> : std::true_type
{};

/**
 * Does what "verb NAME NUMBER..." says on the item of that name, through the model or by calling the actor.
 *
 * set, settext, unset: its state as a number, as a text, taken away; quiet: its state with the model's signals blocked;
 * touch: its tool tip; rename: its id; insert, remove: a new ticked child, all its children; object STATE ID, all,
 * command, under: calls of the widget.
 */
template <typename Actor>
void changeTree(QStandardItemModel* model, Actor* actor, QStandardItem* item, const QByteArrayList& words)
{
    const QByteArray& verb = words.first();
    const int number = words.last().toInt();
    if (verb == "set") {
        item->setData(number, Qt::CheckStateRole);
    } else if (verb == "settext") {
        item->setData(QString::number(number), Qt::CheckStateRole);
    } else if (verb == "unset") {
        item->setData(QVariant(), Qt::CheckStateRole);
    } else if (verb == "quiet") {
        const QSignalBlocker blocker(model);
        item->setData(number, Qt::CheckStateRole);
    } else if (verb == "touch") {
        item->setToolTip(item->toolTip() + QLatin1Char('.'));
    } else if (verb == "rename") {
        item->setData(number, Qt::UserRole + 10);
    } else if (verb == "insert") {
        auto* child = new QStandardItem(QStringLiteral("new"));
        child->setData(number, Qt::UserRole + 10);
        child->setCheckState(Qt::Checked);
        item->appendRow(child);
    } else if (verb == "remove") {
        item->removeRows(0, item->rowCount());
    } else if (verb == "all") {
        actor->selectAllChecked(number);
    } else if (verb == "command") {
        actor->setCheckedSelectAll(number);
    } else if (verb == "object") {
        actor->changeStateObject(item, static_cast<Qt::CheckState>(words.value(2).toInt()), number);
    } else if constexpr (HasStateAll<Actor>::value) {
        actor->setStateAll(item, static_cast<Qt::CheckState>(number));
    } else {
        QFAIL(verb);
    }
}

/** A checkable tree in a window, with its inner parts and a record of its signal. */
template <typename Widget>
class TreeScenario
{
public:
    TreeScenario()
    {
        QObject::connect(&widget, &Widget::checkedSelectAll, &widget, [this](int state) { emitted.append(state); });
        const auto* proxy = qobject_cast<QSortFilterProxyModel*>(view->model());
        model = qobject_cast<QStandardItemModel*>(proxy ? proxy->sourceModel() : view->model());
    }

    void fill(const QByteArray& tree, QList<int>* ids)
    {
        readTree(&source, tree);
        widget.setModelAndCheckedO(&source, ids);
    }

    /** An action of changeTree, or click, key and box, which are the user's; "root" and "foreign" are items too. */
    void act(const QByteArray& action)
    {
        const QByteArrayList words = action.split(' ');
        const QByteArray& verb = words.first();
        QStandardItem* item = words.value(1) == "root"      ? model->invisibleRootItem()
                              : words.value(1) == "foreign" ? source.item(0)
                                                            : itemNamed(model, words.value(1));
        if (verb == "box") {
            show();
            QTest::mouseClick(box, Qt::LeftButton, {}, QPoint(8, box->height() / 2));
        } else if (verb == "click" || verb == "key") {
            show();
            view->expandAll();
            const QModelIndex index = indexInView(item);
            const QRect row = view->visualRect(index);
            if (verb == "click")
                QTest::mouseClick(view->viewport(), Qt::LeftButton, {}, QPoint(row.left() + 8, row.center().y()));
            view->setCurrentIndex(index);
            if (verb == "key")
                QTest::keyClick(view, Qt::Key_Space);
        } else {
            changeTree(model, &widget, item, words);
        }
    }

    void show()
    {
        widget.resize(300, 400);
        widget.show();
        QVERIFY(QTest::qWaitForWindowExposed(&widget));
    }

    QModelIndex indexInView(const QStandardItem* item) const
    {
        const auto* proxy = qobject_cast<QSortFilterProxyModel*>(view->model());
        return proxy ? proxy->mapFromSource(item->index()) : item->index();
    }

    QByteArray stateText() const
    {
        QByteArray text = (treeText(model) + " box ").trimmed() + ' ' + QByteArray::number(box->checkState());
        for (const int state : emitted)
            text += ' ' + QByteArray::number(state);
        return text;
    }

    QStandardItemModel source;
    Widget widget;
    QTreeView* view = widget.getTreeView();
    QCheckBox* box = widget.template findChild<QCheckBox*>(QStringLiteral("checkBox"));
    QStandardItemModel* model = nullptr;
    QVector<int> emitted;
};

/** Fills, acts and compares: tree | ids ("none": no list) | actions | tree after, box after, what was emitted. */
template <typename Widget>
void runScenario(const QByteArrayList& cells)
{
    TreeScenario<Widget> scenario;
    QList<int> ids = idsOf(cells.value(1));
    scenario.fill(cells.value(0), cells.value(1) == "none" ? nullptr : &ids);
    for (const QByteArray& action : cells.value(2).split(';')) {
        if (!action.trimmed().isEmpty())
            scenario.act(action.trimmed());
    }
    QCOMPARE(scenario.stateText(), cells.value(3));
}

/** Changes a random tree at random, and the same tree of a step by step version of the rules, which must stay alike. */
template <typename Widget, typename Literal>
void compareWithLiteral(quint32 seed, const QByteArrayList& verbs)
{
    constexpr int steps = 30;
    QRandomGenerator random(seed);
    TreeScenario<Widget> scenario;
    Literal literal;
    QList<int> ids{1, 3};
    const QByteArray tree = randomTree(random);
    QByteArray history = tree + ": ";
    scenario.fill(tree, &ids);
    literal.fill(&scenario.source, ids);
    for (int step = 0;; ++step) {
        QByteArray text = treeText(&literal.model) + " box " + QByteArray::number(literal.box);
        for (const int state : literal.emitted)
            text += ' ' + QByteArray::number(state);
        QVERIFY2(scenario.stateText() == text, history + " ours: " + scenario.stateText() + " literal: " + text);
        if (step == steps)
            break;
        const QByteArray action = randomAction(random, scenario.model, verbs);
        history += action + "; ";
        const QByteArrayList words = action.split(' ');
        const int place = words.at(1).toInt();
        changeTree(scenario.model, &scenario.widget, allItems(scenario.model).value(place), words);
        changeTree(&literal.model, &literal, allItems(&literal.model).value(place), words);
    }
}
