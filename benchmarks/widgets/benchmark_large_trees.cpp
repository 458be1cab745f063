// Times the trees and their filter at their limits: 1,000,000 objects, 1,000 groups in one another, 100,000 levels, and
// single changes in a tree of 100,000 objects. Prints one line a figure with its target. Arguments name the parts to
// run (proxy, columns, search, single, nested, million, levels); without any all run, the last one in a tree that no
// recursion by depth survives.

#include "treetimes.h"

#include <Pardel/treeobjcheckable.h>
#include <Pardel/treeobjcheckablee.h>
#include <Pardel/treesortfilterproxymodel.h>

#include <QApplication>
#include <QFile>

#include <memory>
#include <utility>

namespace {

constexpr int idRole = Qt::UserRole + 10;
constexpr int runs = 5;

int missed = 0;

void tell(const char* what, const char* unit, double figure, double target)
{
    print(what, unit, figure, target, &missed);
}

QStandardItem* newObject(int id)
{
    auto* object = new QStandardItem(QStringLiteral("Object %1").arg(id));
    object->setData(1000 + id, idRole);
    return object;
}

/// So many objects in each of so many groups, which are side by side or, each as the last row, in one another.
void fillSource(QStandardItemModel* source, int groups, int objects, bool nested)
{
    QList<QStandardItem*> chain;
    int id = 0;
    for (int number = 0; number < groups; ++number) {
        chain.append(new QStandardItem(QStringLiteral("Group")));
        for (int row = 0; row < objects; ++row)
            chain.last()->appendRow(newObject(id++));
    }
    for (int number = groups - 1; number > 0 && nested; --number)
        chain.at(number - 1)->appendRows({chain.at(number)}); // appendRow goes through all that is below
    for (int number = 0; number < (nested ? 1 : groups); ++number)
        source->appendRow(chain.at(number));
}

/// Takes groups in one another apart from below: Qt deletes by recursion.
void takeApart(QStandardItemModel* source)
{
    QList<QStandardItem*> chain{source->item(0)};
    while (QStandardItem* below = chain.last()->child(chain.last()->rowCount() - 1))
        chain.append(below);
    while (chain.size() > 1) {
        chain.removeLast();
        chain.last()->removeRow(chain.last()->rowCount() - 1);
    }
}

template <typename Widget>
struct Window
{
    Window(int groups, int objects, bool nested)
    {
        fillSource(&source, groups, objects, nested);
        widget.setModelAndCheckedO(&source, nullptr);
        widget.resize(400, 600);
        widget.show();
        QCoreApplication::processEvents();
    }

    QStandardItemModel source;
    Widget widget;
    QTreeView* view = widget.getTreeView();
    QStandardItemModel* model = copyOf(view);
};

int visibleRows(const QAbstractItemModel* model, const QModelIndex& parent = QModelIndex())
{
    const int rows = model->rowCount(parent);
    int visible = rows;
    for (int row = 0; row < rows; ++row)
        visible += visibleRows(model, model->index(row, 0, parent));
    return visible;
}

/// One key column beside Qt's recursive filter, in turns as the difference is small.
void compareProxies(int groups, int objects)
{
    QStandardItemModel source;
    fillSource(&source, groups, objects, false);
    TreeSortFilterProxyModel tree;
    QSortFilterProxyModel bare;
    bare.setRecursiveFilteringEnabled(true);
    bare.setFilterCaseSensitivity(Qt::CaseInsensitive);
    const auto seconds = [&](QSortFilterProxyModel* proxy) {
        return fastestSeconds(
            1, [&] { proxy->setSourceModel(nullptr); },
            [&] {
                proxy->setFilterFixedString(QStringLiteral("7"));
                proxy->setSourceModel(&source);
                visibleRows(proxy);
            });
    };
    double ours = 1e9;
    double theirs = 1e9;
    for (int turn = 0; turn < 10 * runs; ++turn) {
        ours = std::min(ours, seconds(&tree));
        theirs = std::min(theirs, seconds(&bare));
    }
    const QString what = QStringLiteral("one key column, %1 groups of %2").arg(groups).arg(objects);
    tell(what.toUtf8(), "of Qt's", ours / theirs, 1);
}

void compareColumns()
{
    constexpr int levels = 6;
    constexpr int groups = 6;
    constexpr int objects = 13; // 101,088 in all
    QStandardItemModel source;
    const std::function<void(QStandardItem*, int)> fill = [&](QStandardItem* parent, int level) {
        for (int row = 0; row < (level == levels ? objects : groups); ++row) {
            parent->appendRow({newObject(row), newObject(row), newObject(row)});
            if (level < levels)
                fill(parent->child(row), level + 1);
        }
    };
    fill(source.invisibleRootItem(), 1);
    const auto seconds = [&](const QList<int>& columns) {
        TreeSortFilterProxyModel proxy;
        proxy.setFilterKeyColumns(columns);
        proxy.setSourceModel(&source);
        return fastestSeconds(
            1, [] {},
            [&] {
                proxy.setFilterFixedString(QStringLiteral("?"));
                visibleRows(&proxy);
            });
    };
    double one = 1e9;
    double three = 1e9;
    for (int turn = 0; turn < runs && one + three > 1; ++turn) {
        one = std::min(one, seconds({0}));
        three = std::min(three, seconds({0, 1, 2}));
    }
    tell("three key columns, 6 levels, 100,000 objects, no match", "of one", three / one, 3.5);
}

void searchMany()
{
    for (const int objects : {100, 1000}) {
        Window<TreeObjCheckable> window(1000, objects, true);
        const double seconds = fastestSeconds(
            2, [] {}, [&] { window.widget.OnSearchTree(QStringLiteral("object")); });
        if (window.widget.Get_index_size() != 1000 * objects)
            std::puts("the search has not found all objects");
        const QString what = QStringLiteral("search with %1 hits, 1,000 groups in one another").arg(1000 * objects);
        tell(what.toUtf8(), "s", seconds, objects == 1000 ? 1 : 0.13);
    }
}

/// The mean of so many, without painting: the layout of a view is Qt's.
double meanMilliseconds(int count, const std::function<void(int)>& work)
{
    const std::clock_t start = std::clock();
    for (int number = 0; number < count; ++number)
        work(number);
    return 1000.0 * static_cast<double>(std::clock() - start) / CLOCKS_PER_SEC / count;
}

template <typename Widget>
void changeSingly(const char* name, int groups, int objects)
{
    const QByteArray suffix =
        QByteArray(", ") + name + ", " + QByteArray::number(groups) + " x " + QByteArray::number(objects);
    Window<Widget> window(groups, objects, false);
    QStandardItem* group = window.model->item(0);
    constexpr int count = 400;
    const auto appendAndTick = [&](int number) {
        group->appendRow(newObject(groups * objects + number));
        group->child(group->rowCount() - 1)->setCheckState(Qt::Checked);
        window.widget.changeStateObject(window.model->invisibleRootItem(), Qt::Unchecked, 1000 + number);
    };
    window.widget.changeStateObject(window.model->invisibleRootItem(), Qt::Checked, 1000);
    tell("append a row, tick it, untick another" + suffix, "ms", meanMilliseconds(count, appendAndTick), 0.1);
    window.widget.changeStateObject(window.model->invisibleRootItem(), Qt::Unchecked, 1000);
    group->setCheckState(Qt::Checked);
    QCoreApplication::processEvents();
    group->child(0)->setText(QStringLiteral("looks at all children once"));
    const auto appendTicked = [&](int number) {
        group->appendRow(newObject(groups * objects + count + number));
        group->child(group->rowCount() - 1)->setCheckState(Qt::Checked);
    };
    tell("append a row and tick it, where all are ticked" + suffix, "ms", meanMilliseconds(count, appendTicked), 0.1);
    tell("change a text where all agree" + suffix, "ms",
         meanMilliseconds(count, [&](int number) { group->child(number)->setText(QString::number(number)); }), 0.05);
}

template <typename Widget>
void tickNested(const char* what, int objects)
{
    Window<Widget> window(1000, objects, true);
    const QModelIndex top = window.view->model()->index(0, 0);
    tell(what, "s",
         fastestSeconds(
             runs, [] {}, [&] { toggle(window.view, top); }),
         0.2);
}

double memoryMegabytes()
{
    QFile status(QStringLiteral("/proc/self/status"));
    if (!status.open(QIODevice::ReadOnly))
        return 0;
    const QList<QByteArray> lines = status.readAll().split('\n');
    for (const QByteArray& line : lines) {
        if (line.startsWith("VmHWM:"))
            return line.mid(6).simplified().split(' ').first().toDouble() / 1024;
    }
    return 0;
}

void useMillion()
{
    auto source = std::make_unique<QStandardItemModel>();
    fillSource(source.get(), 1000, 1000, false);
    TreeObjCheckable tree;
    tree.resize(400, 600);
    tree.show();
    tell("1,000,000 objects: fill", "s",
         fastestSeconds(
             1, [] {}, [&] { tree.setModelAndCheckedO(source.get(), nullptr); }),
         1);
    tell("    tick all", "s",
         fastestSeconds(
             1, [] {}, [&] { tree.setCheckedSelectAll(2); }),
         1);
    tell("    filter a letter", "s",
         fastestSeconds(
             1, [] {}, [&] { tree.setFilterStr(QStringLiteral("7")); }),
         1);
    QList<int> ids;
    tell("    collect", "s",
         fastestSeconds(
             1, [] {}, [&] { tree.getCheckedObjs(&ids); }),
         1);
    if (ids.size() != 1'000'000)
        std::puts("not all objects were collected");
    tell("    search in what is visible", "s",
         fastestSeconds(
             1, [] {}, [&] { tree.OnSearchTree(QStringLiteral("object")); }),
         1);
    tell("    memory at its peak, the application's model included", "MB", memoryMegabytes(), 800);
}

template <typename Widget>
void nest(const char* name, const std::function<void(Widget&)>& filterAndSearch)
{
    constexpr int levels = 100'000;
    QStandardItemModel source;
    fillSource(&source, levels, 1, true);
    const double seconds = fastestSeconds(
        1, [] {},
        [&] {
            Widget widget;
            widget.setModelAndCheckedO(&source, nullptr);
            widget.show();
            QCoreApplication::processEvents();
            filterAndSearch(widget);
            QCoreApplication::processEvents();
            widget.selectAllChecked(2);
            QList<int> ids;
            widget.getCheckedObjs(&ids);
            if (ids.size() != levels)
                std::puts("not all objects were ticked");
        });
    takeApart(&source);
    tell(name, "s", seconds, 30);
}

void useLevels()
{
    nest<TreeObjCheckable>("100,000 levels: fill, filter, search, tick, delete", [](TreeObjCheckable& widget) {
        const QString text = QStringLiteral("object");
        widget.setFilterStr(text);
        widget.OnSearchTree(text);
        widget.go_left();
        QCoreApplication::processEvents();
        widget.setFilterStr(QString());
    });
    nest<TreeObjCheckableE>("100,000 levels: TreeObjCheckableE", [](TreeObjCheckableE&) {});
}

} // namespace

int main(int argc, char* argv[])
{
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    const QApplication application(argc, argv);
    const QStringList wanted = QCoreApplication::arguments().mid(1);
    const std::pair<const char*, std::function<void()>> parts[] = {
        {"million", useMillion}, // first, as the peak of the memory is the process's
        {"proxy",
         [] {
             compareProxies(1, 20'000);
             compareProxies(200, 100);
         }},
        {"columns", compareColumns},
        {"search", searchMany},
        {"single",
         [] {
             changeSingly<TreeObjCheckable>("TreeObjCheckable", 1, 100'000);
             changeSingly<TreeObjCheckable>("TreeObjCheckable", 1000, 100);
             changeSingly<TreeObjCheckableE>("TreeObjCheckableE", 1, 100'000);
         }},
        {"nested",
         [] {
             tickNested<TreeObjCheckable>("tick 1,000 groups in one another, 100,000 objects", 100);
             tickNested<TreeObjCheckableE>("the same, TreeObjCheckableE", 100);
         }},
        {"levels", useLevels}};
    for (const auto& [name, run] : parts) {
        if (wanted.isEmpty() || wanted.contains(QLatin1String(name)))
            run();
    }
    std::printf("%d figures miss their target\n", missed);
    return 0;
}
