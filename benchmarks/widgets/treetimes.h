#pragma once

#include <QCheckBox>
#include <QCoreApplication>
#include <QList>
#include <QSortFilterProxyModel>
#include <QStandardItemModel>
#include <QTreeView>

#include <algorithm>
#include <cstdio>
#include <ctime>
#include <functional>

/** What the benchmarks of the trees share: the processor's time of some work, and a line that tells it. */

/** The model that a checkable tree has made for itself. */
inline QStandardItemModel* copyOf(const QTreeView* view)
{
    const auto* proxy = qobject_cast<QSortFilterProxyModel*>(view->model());
    return qobject_cast<QStandardItemModel*>(proxy ? proxy->sourceModel() : view->model());
}

/** Ticks or unticks an item as a click on its box would. */
inline void toggle(const QTreeView* view, const QModelIndex& index)
{
    const bool isChecked = index.data(Qt::CheckStateRole).toInt() == Qt::Checked;
    view->model()->setData(index, isChecked ? Qt::Unchecked : Qt::Checked, Qt::CheckStateRole);
}

/** The fastest of so many runs of @p work, each after @p prepare, until the windows are painted again. */
inline double fastestSeconds(int runs, const std::function<void()>& prepare, const std::function<void()>& work)
{
    double fastest = 1e9;
    for (int run = 0; run < runs; ++run) {
        prepare();
        QCoreApplication::processEvents();
        const std::clock_t start = std::clock();
        work();
        QCoreApplication::processEvents();
        fastest = std::min(fastest, static_cast<double>(std::clock() - start) / CLOCKS_PER_SEC);
    }
    return fastest;
}

/** Prints a figure beside its target; what misses it is counted in @p missed. */
inline void print(const char* what, const char* unit, double figure, double target, int* missed)
{
    const bool met = figure <= target;
    *missed += met ? 0 : 1;
    std::printf("%-62s %9.3f %-9s target <= %-5.4g %s\n", what, figure, unit, target, met ? "met" : "MISSED");
    std::fflush(stdout);
}
