#include <Pardel/commonclass.h>

#include <QApplication>
#include <QDataStream>
#include <QHeaderView>
#include <QIODevice>
#include <QItemSelectionModel>
#include <QListView>
#include <QMessageBox>
#include <QSet>
#include <QStandardItemModel>
#include <QTableView>
#include <QTreeView>

#include <algorithm>

namespace {

QAbstractItemView* firstView(QTreeView* tree, QTableView* table, QListView* list)
{
    if (tree)
        return tree;
    if (table)
        return table;
    return list;
}

QSet<QItemSelectionModel*> selectionsOfAllViews()
{
    QSet<QItemSelectionModel*> selections;
    const QWidgetList widgets = QApplication::allWidgets();
    for (const QWidget* widget : widgets) {
        if (const auto* view = qobject_cast<const QAbstractItemView*>(widget))
            selections.insert(view->selectionModel());
    }
    return selections;
}

/**
 * An empty selection model that no view has and nobody listens to.
 *
 * One that was replaced is not deleted, as the call may come from a slot that it has just called itself; it is used
 * again. They are made in pairs, as two suffice for a view to alternate between. The mark tells them from those that
 * the application has put under its model and may still mean to use.
 */
QItemSelectionModel* spareSelection(QAbstractItemModel* model)
{
    const QString mark = QStringLiteral("PardelSelection");
    const auto known = model->findChildren<QItemSelectionModel*>(mark, Qt::FindDirectChildrenOnly);
    const QSet<QItemSelectionModel*> used = selectionsOfAllViews();
    for (QItemSelectionModel* spare : known) {
        if (used.contains(spare))
            continue;
        spare->disconnect();
        spare->reset(); // the current index too
        return spare;
    }
    auto* first = new QItemSelectionModel(model);
    auto* second = new QItemSelectionModel(model);
    first->setObjectName(mark);
    second->setObjectName(mark);
    return first;
}

void selectRow(QItemSelectionModel* selection, int row)
{
    const QAbstractItemModel* model = selection->model();
    for (int column = 0; column < model->columnCount(); ++column)
        selection->select(model->index(row, column), QItemSelectionModel::Select);
}

} // namespace

QAbstractItemModel* Commonclass::Get_Model_By_TypeView(QTreeView* tree, QTableView* table, QListView* list)
{
    const QAbstractItemView* view = firstView(tree, table, list);
    return view ? view->model() : nullptr;
}

QItemSelectionModel* Commonclass::Get_ItemSelectionModel_By_TypeView(QTreeView* tree, QTableView* table,
                                                                     QListView* list)
{
    const QAbstractItemView* view = firstView(tree, table, list);
    return view ? view->selectionModel() : nullptr;
}

QModelIndex Commonclass::Get_IndexSelection_VatiableSelection(QTreeView* tree, QTableView* table, QListView* list,
                                                              bool selectFirst, bool& hadSelection)
{
    hadSelection = false;
    QItemSelectionModel* selection = Get_ItemSelectionModel_By_TypeView(tree, table, list);
    if (!selection || !selection->model())
        return {};
    const QModelIndexList selected = selection->selectedIndexes();
    hadSelection = !selected.isEmpty();
    if (hadSelection)
        return selected.first();
    if (selectFirst)
        selectRow(selection, 0);
    return selection->model()->index(0, 0);
}

QModelIndex Commonclass::Get_IndexSelection_WithSelection(QTreeView* tree)
{
    bool hadSelection = false;
    return Get_IndexSelection_WithSelection(tree, hadSelection);
}

QModelIndex Commonclass::Get_IndexSelection_WithSelection(QTableView* table)
{
    bool hadSelection = false;
    return Get_IndexSelection_WithSelection(table, hadSelection);
}

QModelIndex Commonclass::Get_IndexSelection_WithSelection(QListView* list)
{
    bool hadSelection = false;
    return Get_IndexSelection_WithSelection(list, hadSelection);
}

QModelIndex Commonclass::Get_IndexSelection_WithSelection(QTreeView* tree, bool& hadSelection)
{
    return Get_IndexSelection_VatiableSelection(tree, nullptr, nullptr, true, hadSelection);
}

QModelIndex Commonclass::Get_IndexSelection_WithSelection(QTableView* table, bool& hadSelection)
{
    return Get_IndexSelection_VatiableSelection(nullptr, table, nullptr, true, hadSelection);
}

QModelIndex Commonclass::Get_IndexSelection_WithSelection(QListView* list, bool& hadSelection)
{
    return Get_IndexSelection_VatiableSelection(nullptr, nullptr, list, true, hadSelection);
}

QModelIndex Commonclass::Get_IndexSelection_WithoutSelection(QTreeView* tree)
{
    bool hadSelection = false;
    return Get_IndexSelection_WithoutSelection(tree, hadSelection);
}

QModelIndex Commonclass::Get_IndexSelection_WithoutSelection(QTableView* table)
{
    bool hadSelection = false;
    return Get_IndexSelection_WithoutSelection(table, hadSelection);
}

QModelIndex Commonclass::Get_IndexSelection_WithoutSelection(QListView* list)
{
    bool hadSelection = false;
    return Get_IndexSelection_WithoutSelection(list, hadSelection);
}

QModelIndex Commonclass::Get_IndexSelection_WithoutSelection(QTreeView* tree, bool& hadSelection)
{
    return Get_IndexSelection_VatiableSelection(tree, nullptr, nullptr, false, hadSelection);
}

QModelIndex Commonclass::Get_IndexSelection_WithoutSelection(QTableView* table, bool& hadSelection)
{
    return Get_IndexSelection_VatiableSelection(nullptr, table, nullptr, false, hadSelection);
}

QModelIndex Commonclass::Get_IndexSelection_WithoutSelection(QListView* list, bool& hadSelection)
{
    return Get_IndexSelection_VatiableSelection(nullptr, nullptr, list, false, hadSelection);
}

QModelIndex Commonclass::Set_Selected_Row_Model(QTreeView* tree, QTableView* table, QListView* list, short& row)
{
    row = std::max<short>(row, 0);
    QAbstractItemModel* model = Get_Model_By_TypeView(tree, table, list);
    if (!model)
        return {};
    QItemSelectionModel* selection = spareSelection(model);
    selectRow(selection, row);
    firstView(tree, table, list)->setSelectionModel(selection);
    return model->index(row, 0);
}

QModelIndex Commonclass::Set_Selected_Row_Model(QTreeView* tree, short& row)
{
    return Set_Selected_Row_Model(tree, nullptr, nullptr, row);
}

QModelIndex Commonclass::Set_Selected_Row_Model(QTableView* table, short& row)
{
    return Set_Selected_Row_Model(nullptr, table, nullptr, row);
}

QModelIndex Commonclass::Set_Selected_Row_Model(QListView* list, short& row)
{
    return Set_Selected_Row_Model(nullptr, nullptr, list, row);
}

void Commonclass::Set_Desection_itemsModel(QTreeView* tree, QTableView* table, QListView* list, QList<QModelIndex>)
{
    if (QAbstractItemModel* model = Get_Model_By_TypeView(tree, table, list))
        firstView(tree, table, list)->setSelectionModel(spareSelection(model));
}

QList<QModelIndex> Commonclass::Get_Model_Selection_IndexRowsList(QTreeView* tree, QTableView* table, QListView* list)
{
    const QItemSelectionModel* selection = Get_ItemSelectionModel_By_TypeView(tree, table, list);
    const QModelIndexList rows = selection ? selection->selectedRows(0) : QModelIndexList();
    Set_Desection_itemsModel(tree, table, list, rows);
    return rows;
}

QList<QModelIndex> Commonclass::Get_Model_Selection_IndexRowsList(QTreeView* tree)
{
    return Get_Model_Selection_IndexRowsList(tree, nullptr, nullptr);
}

QList<QModelIndex> Commonclass::Get_Model_Selection_IndexRowsList(QTableView* table)
{
    return Get_Model_Selection_IndexRowsList(nullptr, table, nullptr);
}

QList<QModelIndex> Commonclass::Get_Model_Selection_IndexRowsList(QListView* list)
{
    return Get_Model_Selection_IndexRowsList(nullptr, nullptr, list);
}

QList<QModelIndex> Commonclass::Get_Model_Selection_IndexItemsList(QTreeView* tree, QTableView* table, QListView* list,
                                                                   bool clear)
{
    const QItemSelectionModel* selection = Get_ItemSelectionModel_By_TypeView(tree, table, list);
    const QModelIndexList items = selection ? selection->selectedIndexes() : QModelIndexList();
    if (clear)
        Set_Desection_itemsModel(tree, table, list, items);
    return items;
}

QList<QModelIndex> Commonclass::Get_Model_Selection_IndexItemsList(QTreeView* tree, QTableView* table, QListView* list)
{
    return Get_Model_Selection_IndexItemsList(tree, table, list, true);
}

QList<QModelIndex> Commonclass::Get_Model_Selection_IndexItemsList(QTreeView* tree)
{
    return Get_Model_Selection_IndexItemsList(tree, nullptr, nullptr, true);
}

QList<QModelIndex> Commonclass::Get_Model_Selection_IndexItemsList(QTableView* table)
{
    return Get_Model_Selection_IndexItemsList(nullptr, table, nullptr, true);
}

QList<QModelIndex> Commonclass::Get_Model_Selection_IndexItemsList(QListView* list)
{
    return Get_Model_Selection_IndexItemsList(nullptr, nullptr, list, true);
}

QList<QModelIndex> Commonclass::Get_Model_Selection_IndexItemsList(QTreeView* tree, bool clear)
{
    return Get_Model_Selection_IndexItemsList(tree, nullptr, nullptr, clear);
}

QList<QModelIndex> Commonclass::Get_Model_Selection_IndexItemsList(QTableView* table, bool clear)
{
    return Get_Model_Selection_IndexItemsList(nullptr, table, nullptr, clear);
}

QList<QModelIndex> Commonclass::Get_Model_Selection_IndexItemsList(QListView* list, bool clear)
{
    return Get_Model_Selection_IndexItemsList(nullptr, nullptr, list, clear);
}

bool Commonclass::ModelDeleteRowByGUID(QStandardItemModel* model, long long guid, int column, int role)
{
    const int rows = model ? model->rowCount() : 0;
    for (int row = 0; row < rows; ++row) {
        const QStandardItem* item = model->item(row, column);
        if (item && item->data(Qt::UserRole + role).toLongLong() == guid)
            return model->removeRow(row);
    }
    return false;
}

void Commonclass::Set_Propeties_for_TableView(QTableView* view, QList<int> stretchColumns)
{
    if (!view)
        return;
    view->resizeRowsToContents();
    view->verticalHeader()->setSectionResizeMode(QHeaderView::ResizeToContents);
    QHeaderView* header = view->horizontalHeader();
    for (const int column : qAsConst(stretchColumns)) {
        if (column >= 0 && column < header->count())
            header->setSectionResizeMode(column, QHeaderView::Stretch);
    }
    view->setWordWrap(true);
    view->setTextElideMode(Qt::ElideNone);
}

QByteArray Commonclass::Get_Color_to_DataStream(QColor color)
{
    QByteArray bytes;
    QDataStream stream(&bytes, QIODevice::WriteOnly);
    stream.setVersion(QDataStream::Qt_4_5);
    stream << color;
    return bytes;
}

QColor Commonclass::Get_Color_from_DataSteam(QByteArray bytes)
{
    if (bytes.isEmpty())
        return QColor(255, 255, 255);
    if (quint8(bytes.at(0)) > QColor::ExtendedRgb)
        return QColor();
    QDataStream stream(bytes);
    stream.setVersion(QDataStream::Qt_4_5);
    QColor color;
    stream >> color;
    return color;
}

QString Commonclass::GetRedText(QString text, int pointSize)
{
    return QStringLiteral(" <!DOCTYPE HTML PUBLIC \"-//W3C//DTD HTML 4.0//EN\" "
                          "\"http://www.w3.org/TR/REC-html40/strict.dtd\">  "
                          "<html><body style=\" font-family:'MS Shell Dlg 2';  font-size:8.25pt; font-weight:400; "
                          "font-style:normal;\">  <p style=\" margin-top:0px; margin-bottom:0px; margin-left:0px;  "
                          "margin-right:0px; -qt-block-indent:0; text-indent:0px;\"><span style=\"  "
                          "font-family:'DejaVu Sans';  font-size:") +
           QString::number(pointSize) + QStringLiteral("pt; font-weight:600;  color:#aa0000;\"> ") + text +
           QStringLiteral(" </span></p></body></html> ");
}

QString Commonclass::GetRedText(QString text)
{
    return GetRedText(text, 11);
}

bool Commonclass::QuestionMessage(QString text)
{
    return QMessageBox::question(nullptr, QString(), text, QMessageBox::Yes | QMessageBox::No, QMessageBox::NoButton) ==
           QMessageBox::Yes;
}

void Commonclass::Set_CursorIcon_Sandglass(bool busy)
{
    if (busy)
        QApplication::setOverrideCursor(Qt::WaitCursor);
    else
        QApplication::restoreOverrideCursor();
}
