#pragma once

#include <QByteArray>
#include <QStandardItemModel>

class QTreeView;

/**
 * Fills a model from one line: items are "name:id" and, in that order, what holds of their check state ("+" checked,
 * "~" partially checked, "-" unchecked, nothing if there is none), and their children in parentheses.
 */
void readTree(QStandardItemModel* model, const QByteArray& text);

/** The same line of a model; items that have no id are without ":id". */
QByteArray treeText(const QStandardItemModel* model);

/** Names and expanded children of a view, as "a *b+(c d)"; "*" stands before the current item, "!" before selected ones,
 * "+" behind checked ones. */
QByteArray viewText(const QTreeView* view);

/** The first item of this name, or null. */
QStandardItem* itemNamed(const QStandardItemModel* model, const QByteArray& name);

/** Groups in one another, so many that recursion does not survive them, around an item of this id. */
QStandardItem* nestedGroups(int levels, int id);
