#pragma once

#include <Pardel/currentuser.h>
#include <Pardel/pardel_export.h>

#include <QByteArray>
#include <QColor>
#include <QList>
#include <QModelIndex>
#include <QObject>
#include <QString>
#include <QStringList>

QT_BEGIN_NAMESPACE
class QAbstractItemModel;
class QItemSelectionModel;
class QListView;
class QStandardItemModel;
class QTableView;
class QTreeView;
QT_END_NAMESPACE

/**
 * Small helpers around views, messages, INI files and the logged-in user.
 *
 * Most view helpers take three pointers, of which the caller sets one and passes null for the others; the first that is
 * not null, in the order tree, table, list, is meant. With none, or with a view without a model, they find nothing,
 * change nothing in the view, and give null, an invalid index or an empty list. The shorter forms take one view of one
 * kind.
 *
 * @code
 * Commonclass common;
 * for (const QModelIndex& row : common.Get_Model_Selection_IndexRowsList(ui.table))
 *     send(row); // the table shows no selection any more
 * @endcode
 */
class PARDEL_EXPORT Commonclass : public QObject
{
    Q_OBJECT

public:
    Commonclass();
    ~Commonclass() override;

    // The order of these two is part of the binary interface.
    CurrentUser currentUser; ///< For the application to fill after login; empty at first.
    QString toolBarStyle;    ///< A style sheet for tool bars: a grey gradient.

    /** @name Model and selection model of a view
     * @{ */
    /** That of the view that is meant; null without a view or model. The view or its model keeps owning it. */
    QAbstractItemModel* Get_Model_By_TypeView(QTreeView* tree, QTableView* table, QListView* list);
    QItemSelectionModel* Get_ItemSelectionModel_By_TypeView(QTreeView* tree, QTableView* table, QListView* list);
    /** @} */

    /** @name The selected index
     * @{ */
    /**
     * The first selected index, @p hadSelection then true and nothing changed. Without a selection @p hadSelection is
     * false and the result is row 0, column 0 of the top level (invalid in an empty model), whose row the forms with
     * @p selectFirst set, and those named WithSelection, add to the selection, column by column.
     */
    QModelIndex Get_IndexSelection_VatiableSelection(QTreeView* tree, QTableView* table, QListView* list,
                                                     bool selectFirst, bool& hadSelection);
    QModelIndex Get_IndexSelection_WithSelection(QTreeView* tree);
    QModelIndex Get_IndexSelection_WithSelection(QTableView* table);
    QModelIndex Get_IndexSelection_WithSelection(QListView* list);
    QModelIndex Get_IndexSelection_WithSelection(QTreeView* tree, bool& hadSelection);
    QModelIndex Get_IndexSelection_WithSelection(QTableView* table, bool& hadSelection);
    QModelIndex Get_IndexSelection_WithSelection(QListView* list, bool& hadSelection);
    QModelIndex Get_IndexSelection_WithoutSelection(QTreeView* tree);
    QModelIndex Get_IndexSelection_WithoutSelection(QTableView* table);
    QModelIndex Get_IndexSelection_WithoutSelection(QListView* list);
    QModelIndex Get_IndexSelection_WithoutSelection(QTreeView* tree, bool& hadSelection);
    QModelIndex Get_IndexSelection_WithoutSelection(QTableView* table, bool& hadSelection);
    QModelIndex Get_IndexSelection_WithoutSelection(QListView* list, bool& hadSelection);
    /** @} */

    /** @name Selecting a row
     * @{ */
    /**
     * Gives the view another selection model, in which every column of @p row of the top level is selected and nothing
     * is current. A negative @p row becomes 0; a row behind the last leaves the selection empty.
     *
     * A selection model that was connected to is no longer the view's afterwards: connect to the view's new one. The
     * new ones belong to the view's model, which keeps one or two more of them than it has views: those that no view
     * has any more are used again, without their former connections. The one that a view came with, or that the
     * application gave it, is left alone.
     *
     * @return the index of @p row, column 0; invalid behind the last row
     */
    QModelIndex Set_Selected_Row_Model(QTreeView* tree, QTableView* table, QListView* list, short& row);
    QModelIndex Set_Selected_Row_Model(QTreeView* tree, short& row);
    QModelIndex Set_Selected_Row_Model(QTableView* table, short& row);
    QModelIndex Set_Selected_Row_Model(QListView* list, short& row);
    /** @} */

    /**
     * Clears the view's selection, all of it and the current index too, whatever @p indexes hold: gives the view
     * another selection model, as Set_Selected_Row_Model does.
     */
    void Set_Desection_itemsModel(QTreeView* tree, QTableView* table, QListView* list, QList<QModelIndex> indexes);

    /** @name The selected rows
     * @{ */
    /**
     * The indexes in column 0 of those rows of which every column is selected; the selection is then cleared with
     * Set_Desection_itemsModel.
     */
    QList<QModelIndex> Get_Model_Selection_IndexRowsList(QTreeView* tree, QTableView* table, QListView* list);
    QList<QModelIndex> Get_Model_Selection_IndexRowsList(QTreeView* tree);
    QList<QModelIndex> Get_Model_Selection_IndexRowsList(QTableView* table);
    QList<QModelIndex> Get_Model_Selection_IndexRowsList(QListView* list);
    /** @} */

    /** @name The selected items
     * @{ */
    /** All selected indexes. The selection is then cleared with Set_Desection_itemsModel, unless @p clear is false. */
    QList<QModelIndex> Get_Model_Selection_IndexItemsList(QTreeView* tree, QTableView* table, QListView* list,
                                                          bool clear);
    QList<QModelIndex> Get_Model_Selection_IndexItemsList(QTreeView* tree, QTableView* table, QListView* list);
    QList<QModelIndex> Get_Model_Selection_IndexItemsList(QTreeView* tree);
    QList<QModelIndex> Get_Model_Selection_IndexItemsList(QTableView* table);
    QList<QModelIndex> Get_Model_Selection_IndexItemsList(QListView* list);
    QList<QModelIndex> Get_Model_Selection_IndexItemsList(QTreeView* tree, bool clear);
    QList<QModelIndex> Get_Model_Selection_IndexItemsList(QTableView* table, bool clear);
    QList<QModelIndex> Get_Model_Selection_IndexItemsList(QListView* list, bool clear);
    /** @} */

    /**
     * Removes the first row of the top level whose item in @p column has the number @p guid in the role Qt::UserRole +
     * @p role; an item without such data has 0. Takes time in proportion to the rows.
     *
     * @return whether a row was removed; false for a null model
     */
    bool ModelDeleteRowByGUID(QStandardItemModel* model, long long guid, int column, int role);

    /**
     * The usual look of a table: rows as high as their contents, now and later, texts wrapped and never elided, and the
     * columns @p stretchColumns as wide as there is room; numbers that are no column of the table are passed over.
     */
    void Set_Propeties_for_TableView(QTableView* view, QList<int> stretchColumns);

    /** @name A color as a byte array
     * @{ */
    /**
     * QColor's stream form in version 11 (QDataStream::Qt_4_5): the color model (8 bits; 0 invalid, 1 RGB, 2 HSV, 3
     * CMYK, 4 HSL, 5 extended RGB), alpha, three or four components and padding, five times 16 bits. An empty array is
     * opaque white, one of another color model an invalid color; components that an array is too short for are 0.
     */
    QByteArray Get_Color_to_DataStream(QColor color);
    QColor Get_Color_from_DataSteam(QByteArray bytes);
    /** @} */

    /** A page of HTML with @p text, which may hold HTML itself, bold and dark red (aa0000), in @p pointSize points. */
    QString GetRedText(QString text, int pointSize);
    QString GetRedText(QString text); ///< In 11 points.

    /**
     * Asks the user and waits. The box has no title and no default button, so that Enter takes its first one, Yes.
     *
     * @return whether the answer is Yes; closing the box is No
     */
    bool QuestionMessage(QString text);

    /** Shows the busy cursor over the application's windows, or takes it away: once for each time that it was shown. */
    void Set_CursorIcon_Sandglass(bool busy);

    /** @name Values in INI files
     * @{ */
    /**
     * @p file is appended to the application's directory as it stands, so that it begins with a slash. Each call opens
     * the file and closes it again; nothing is reported, and a file that is not there is an empty one. Needs an
     * application object.
     *
     * Values are bytes in UTF-8. What other programs have written in UTF-8 is read as such, other 8-bit text as
     * Latin-1; iniSetValue writes what is not ASCII as escapes, which every QSettings reads. So an 8-bit or escaped
     * text that happens to be valid UTF-8 comes back as what that means, "Ã©" as "é". A damaged value is as if it were
     * not there (see pardelIniFormat). iniSetValue keeps all others of the file, and leaves a file that cannot be read
     * as it is. An unquoted comma makes a value a list, which reads as no bytes, and an unquoted semicolon ends it:
     * quote such values in files that are written by hand.
     *
     * iniSetValue puts a key that is not ASCII under its UTF-8 bytes, one character a byte, while iniValue looks for
     * the key as it is: only ASCII keys come back, as in the files that there are. An empty key is never there and
     * stores nothing.
     *
     * iniClear removes everything from the file, whatever @p group says.
     */
    QByteArray iniValue(QString group, QString key, QString defaultValue, QString file);
    void iniSetValue(QString group, QString key, QString value, QString file);
    void iniClear(QString group, QString file);
    /** @} */

    /** Surname, given name and patronymic of the current user, a space between each; parts that are missing are empty. */
    QString Get_DispFIO();

    /** The current user's identifier of kind 1, that of the dispatcher, or 0. */
    unsigned int Get_DispID();

    /**
     * The entries of the region filter: of /Settings/Filter.ini the values Region/1 to Region/n in the group Filter,
     * with n its key count. Missing ones are empty texts, but no more than 65,536 of them, so that a damaged count
     * cannot fill the memory. No entries if count is no decimal number.
     */
    QStringList GetFilterRegionsIDList();
};
