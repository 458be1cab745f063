// Times what a person waits for in the checkable trees, in shown windows, until the window is painted again. Prints one
// line a figure with its target: the processor's time at 100,000 objects, how many times as long 300,000 take as
// 30,000, and the time beside Qt's own. A bare walk over all states tells how much of the growth is the machine's
// memory.

#include "treetimes.h"

#include <Pardel/treeobjcheckable.h>
#include <Pardel/treeobjcheckablee.h>
#include <Pardel/treesortfilterproxymodel.h>

#include <QApplication>

#include <algorithm>
#include <cstdio>
#include <functional>
#include <memory>

namespace {

constexpr int idRole = Qt::UserRole + 10;
constexpr int runs = 5;
constexpr int usualSize = 100'000;
constexpr int largeSize = 300'000; ///< Growth is measured where no size fits into the caches of a core.
constexpr int smallSize = largeSize / 10;
constexpr int peerSize = 10'000; ///< Qt takes out rows one by one, with a time that grows with the square of the size.
constexpr int groupSize = 100;
constexpr double longestSeconds = 0.5;
constexpr double largestGrowth = 13;
constexpr int sharedId = 7;

enum class Shape
{
    OneGroup,
    ManyGroups
};

/// Every tenth object is a truck; the first object of every group has the same id.
void fillSource(QStandardItemModel* source, Shape shape, int size)
{
    const int perGroup = shape == Shape::OneGroup ? size : groupSize;
    for (int id = 0; id < size;) {
        auto* group = new QStandardItem(QStringLiteral("Group"));
        for (int row = 0; row < perGroup; ++row, ++id) {
            const QString kind = id % 10 == 0 ? QStringLiteral("Truck %1") : QStringLiteral("Object %1");
            auto* object = new QStandardItem(kind.arg(id));
            object->setData(row == 0 ? sharedId : 1000 + id, idRole);
            group->appendRow(object);
        }
        source->appendRow(group);
    }
}

QList<int> everySecondId(int size)
{
    QList<int> ids;
    for (int id = 0; id < size; id += 2)
        ids.append(1000 + id);
    return ids;
}

/// A filled widget in a window.
template <typename Widget>
struct Window
{
    Window(Shape shape, int size) : ids(everySecondId(size))
    {
        fillSource(&source, shape, size);
        widget.setModelAndCheckedO(&source, &ids);
        widget.resize(400, 600);
        widget.show();
        QCoreApplication::processEvents();
    }

    QStandardItemModel source;
    QList<int> ids;
    Widget widget;
    QTreeView* view = widget.getTreeView();
    QCheckBox* box = widget.template findChild<QCheckBox*>();
};

using Tree = Window<TreeObjCheckable>;
using TreeE = Window<TreeObjCheckableE>;

int missed = 0;
volatile int ticked = 0; ///< Keeps the compiler from leaving out a walk that only reads.

template <typename Window>
using Work = std::function<void(Window&)>;

/// The time at the usual size, and the growth.
template <typename Window>
void measure(
    const char* what, Shape shape, const Work<Window>& work, const Work<Window>& prepare = [](Window&) {})
{
    const auto secondsAt = [&](int size) {
        Window window(shape, size);
        return fastestSeconds(
            runs, [&] { prepare(window); }, [&] { work(window); });
    };
    const QByteArray name = QByteArray(what) + (shape == Shape::OneGroup ? ", one group" : ", groups of 100");
    print(name, "s", secondsAt(usualSize), longestSeconds, &missed);
    print("    from 30,000 to 300,000 objects", "times", secondsAt(largeSize) / secondsAt(smallSize), largestGrowth,
          &missed);
}

void filterExpanded(QTreeView* view, QSortFilterProxyModel* proxy)
{
    proxy->setFilterFixedString(QStringLiteral("7"));
    view->expandAll();
}

/// The same letter in a plain view with Qt's recursive filtering, and visible rows counted without any view.
void compareFilter(Shape shape)
{
    const QByteArray suffix = shape == Shape::OneGroup ? ", one group" : ", groups of 100";
    Tree ours(shape, peerSize);
    Tree theirs(shape, peerSize);
    QStandardItemModel* model = copyOf(theirs.view);
    QSortFilterProxyModel recursive;
    recursive.setRecursiveFilteringEnabled(true);
    recursive.setFilterCaseSensitivity(Qt::CaseInsensitive);
    recursive.setSourceModel(model);
    QTreeView plain;
    plain.setUniformRowHeights(true);
    plain.setHeaderHidden(true);
    plain.setModel(&recursive);
    plain.resize(400, 600);
    plain.show();
    const auto clear = [&] {
        recursive.setFilterFixedString(QString());
        plain.expandAll();
        ours.widget.setFilterStr(QString());
        ours.view->expandAll();
    };
    const double our = fastestSeconds(runs, clear, [&] { ours.widget.setFilterStr(QStringLiteral("7")); });
    const double their = fastestSeconds(runs, clear, [&] { filterExpanded(&plain, &recursive); });
    print(QByteArray("filter, beside a view with Qt's recursive filtering") + suffix, "of theirs", our / their, 1,
          &missed);

    const auto countRows = [&](QSortFilterProxyModel* proxy) {
        int rows = 0;
        proxy->setSourceModel(nullptr);
        proxy->setSourceModel(model);
        for (int row = 0; row < proxy->rowCount(); ++row)
            rows += proxy->rowCount(proxy->index(row, 0));
        return rows;
    };
    TreeSortFilterProxyModel tree;
    tree.setFilterFixedString(QStringLiteral("7"));
    QSortFilterProxyModel bare;
    bare.setRecursiveFilteringEnabled(true);
    bare.setFilterCaseSensitivity(Qt::CaseInsensitive);
    bare.setFilterFixedString(QStringLiteral("7"));
    if (countRows(&tree) != countRows(&bare))
        std::puts("the two proxies do not show the same rows");
    double ourRows = 1e9;
    double theirRows = 1e9;
    for (int turn = 0; turn < runs; ++turn) { // in turns, as the difference is small
        ourRows = std::min(ourRows, fastestSeconds(
                                        runs, [] {}, [&] { countRows(&tree); }));
        theirRows = std::min(theirRows, fastestSeconds(
                                            runs, [] {}, [&] { countRows(&bare); }));
    }
    print(QByteArray("proxy alone, beside Qt's recursive filtering") + suffix, "of theirs", ourRows / theirRows, 1,
          &missed);
}

void measureAll(Shape shape)
{
    measure<Tree>("fill, half of the ids to tick", shape,
                  [](Tree& tree) { tree.widget.setModelAndCheckedO(&tree.source, &tree.ids); });
    measure<Tree>(
        "tick a group, expanded", shape, [](Tree& tree) { toggle(tree.view, tree.view->model()->index(0, 0)); },
        [](Tree& tree) { tree.view->expandAll(); });
    measure<Tree>(
        "select all by the box, expanded", shape, [](Tree& tree) { tree.box->click(); },
        [](Tree& tree) { tree.view->expandAll(); });
    measure<Tree>("(a bare walk that reads every state, for comparison)", shape, [](Tree& tree) {
        const QStandardItemModel* model = copyOf(tree.view);
        for (int group = 0; group < model->rowCount(); ++group) {
            const QStandardItem* top = model->item(group);
            for (int row = 0; row < top->rowCount(); ++row)
                ticked = top->child(row)->data(Qt::CheckStateRole).toInt();
        }
    });
    measure<Tree>("getCheckedObjs, list", shape, [](Tree& tree) {
        QList<int> ids;
        tree.widget.getCheckedObjs(&ids);
    });
    measure<Tree>("getCheckedObjs, map", shape, [](Tree& tree) {
        QMap<int, QString> groups;
        QList<int>* none = nullptr;
        tree.widget.getCheckedObjs(none);
        tree.widget.getCheckedObjs(&groups);
    });
    const auto change = [](Tree& tree, int count) {
        QStandardItemModel* model = copyOf(tree.view);
        const auto state = static_cast<Qt::CheckState>(model->item(0)->child(1)->checkState() == Qt::Checked ? 0 : 2);
        for (int id = 1001; id < 1001 + count; ++id)
            tree.widget.changeStateObject(model->invisibleRootItem(), state, id);
    };
    measure<Tree>(
        "changeStateObject, first one after a fill", shape, [=](Tree& tree) { change(tree, 1); },
        [](Tree& tree) { tree.widget.setModelAndCheckedO(&tree.source, &tree.ids); });
    measure<Tree>("changeStateObject, a tenth of the objects one by one", shape,
                  [=](Tree& tree) { change(tree, static_cast<int>(tree.ids.size()) / 5); });
    measure<Tree>(
        "type a letter into the filter, all expanded by Qt", shape,
        [](Tree& tree) { tree.widget.setFilterStr(QStringLiteral("7")); },
        [](Tree& tree) {
            tree.widget.setFilterStr(QString());
            tree.view->expandAll();
        });
    measure<Tree>(
        "another letter, all expanded by the one before", shape,
        [](Tree& tree) { tree.widget.setFilterStr(QStringLiteral("7")); },
        [](Tree& tree) { tree.widget.setFilterStr(QStringLiteral("c")); });
    measure<Tree>("a search that hits a tenth", shape,
                  [](Tree& tree) { tree.widget.OnSearchTree(QStringLiteral("truck")); });
    measure<TreeE>("TreeObjCheckableE: fill", shape,
                   [](TreeE& tree) { tree.widget.setModelAndCheckedO(&tree.source, &tree.ids); });
    measure<TreeE>("TreeObjCheckableE: tick a group", shape,
                   [](TreeE& tree) { toggle(tree.view, tree.view->model()->index(0, 0)); });
    measure<TreeE>("TreeObjCheckableE: tick an object of every group", shape, [](TreeE& tree) {
        toggle(tree.view, tree.view->model()->index(0, 0, tree.view->model()->index(0, 0)));
    });
    compareFilter(shape);
}

} // namespace

int main(int argc, char* argv[])
{
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    const QApplication application(argc, argv);
    measureAll(Shape::OneGroup);
    measureAll(Shape::ManyGroups);
    std::printf("%d figures miss their target\n", missed);
    return 0;
}
