#pragma once

#include <QModelIndex>
#include <QStandardItem>

#include <vector>

namespace TreeWalk {

inline bool exists(const QStandardItem* item)
{
    return item;
}

inline bool exists(const QModelIndex& index)
{
    return index.isValid();
}

/**
 * Walks from @p top through a tree, depth first and without recursion, which thousands of levels would not survive.
 *
 * @param rowsOf rows of a node, asked for after @p enter
 * @param childAt the node in a row of another; one that does not exist is passed over
 * @param enter called with each node, before its children and these in order
 * @param leave called with each node and its rows, after its children
 */
template <typename Node, typename RowsOf, typename ChildAt, typename Enter, typename Leave>
void walk(const Node& top, RowsOf rowsOf, ChildAt childAt, Enter enter, Leave leave)
{
    struct Open
    {
        Node node;
        int nextRow;
        int rows;
    };
    std::vector<Open> open;
    const auto begin = [&](const Node& node) {
        enter(node);
        if (const int rows = rowsOf(node))
            open.push_back({node, 0, rows});
        else
            leave(node, 0);
    };
    begin(top);
    while (!open.empty()) {
        Open& current = open.back();
        if (current.nextRow < current.rows) {
            const Node child = childAt(current.node, current.nextRow++);
            if (exists(child))
                begin(child);
        } else {
            const Open finished = current;
            open.pop_back();
            leave(finished.node, finished.rows);
        }
    }
}

} // namespace TreeWalk
