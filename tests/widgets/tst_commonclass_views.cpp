#include <Pardel/commonclass.h>

#include <QApplication>
#include <QHeaderView>
#include <QListView>
#include <QMessageBox>
#include <QPushButton>
#include <QStandardItemModel>
#include <QTableView>
#include <QTest>
#include <QTimer>
#include <QTreeView>

namespace {

QString text(const char* latin1)
{
    return QString::fromLatin1(latin1);
}

/// Indexes as "row.column", in ascending order.
QString indexesText(QModelIndexList indexes)
{
    std::sort(indexes.begin(), indexes.end());
    QStringList texts;
    for (const QModelIndex& index : qAsConst(indexes))
        texts += index.isValid() ? text("%1.%2").arg(index.row()).arg(index.column()) : text("none");
    return texts.join(QLatin1Char(' '));
}

/// A view of four rows, shown, with nothing selected.
template <typename View>
struct ShownView
{
    QStandardItemModel model;
    View view;
    Commonclass common;

    ShownView() : model(4, std::is_same_v<View, QListView> ? 1 : 2)
    {
        for (int row = 0; row < 4; ++row)
            model.setItem(row, 0, new QStandardItem(text("object %1").arg(row)));
        view.setModel(&model);
        view.setSelectionBehavior(QAbstractItemView::SelectRows);
        view.setSelectionMode(QAbstractItemView::ExtendedSelection);
        view.show();
        QVERIFY(QTest::qWaitForWindowExposed(&view));
    }

    void click(int row, Qt::KeyboardModifiers modifiers = Qt::NoModifier)
    {
        const QPoint place = view.visualRect(model.index(row, 0)).center();
        QTest::mouseClick(view.viewport(), Qt::LeftButton, modifiers, place);
    }

    QString selected() const { return indexesText(view.selectionModel()->selectedIndexes()); }

    /// A row's indexes, as selected() would give them.
    QString row(int number) const { return text(model.columnCount() == 1 ? "%1.0" : "%1.0 %1.1").arg(number); }

    int selectionModels() const
    {
        return model.findChildren<QItemSelectionModel*>().size() +
               view.template findChildren<QItemSelectionModel*>().size();
    }
};

template <typename View>
void readsTheSelection()
{
    ShownView<View> shown;
    View* view = &shown.view;
    bool had = true;
    QCOMPARE(indexesText({shown.common.Get_IndexSelection_WithoutSelection(view, had)}), text("0.0"));
    QVERIFY(!had);
    QCOMPARE(indexesText({shown.common.Get_IndexSelection_WithoutSelection(view)}), text("0.0"));
    QCOMPARE(shown.selected(), QString());
    had = true;
    QCOMPARE(indexesText({shown.common.Get_IndexSelection_WithSelection(view, had)}), text("0.0"));
    QVERIFY(!had);
    QCOMPARE(shown.selected(), shown.row(0));

    shown.click(2);
    shown.click(3, Qt::ControlModifier);
    const QString both = shown.row(2) + QLatin1Char(' ') + shown.row(3);
    QCOMPARE(indexesText({shown.common.Get_IndexSelection_WithSelection(view, had)}), text("2.0"));
    QVERIFY(had);
    had = false;
    QCOMPARE(indexesText({shown.common.Get_IndexSelection_WithoutSelection(view, had)}), text("2.0"));
    QVERIFY(had);
    QCOMPARE(indexesText(shown.common.Get_Model_Selection_IndexItemsList(view, false)), both);
    QCOMPARE(shown.selected(), both);
    QCOMPARE(indexesText(shown.common.Get_Model_Selection_IndexRowsList(view)), text("2.0 3.0"));
    QCOMPARE(shown.selected(), QString());
    QCOMPARE(indexesText({shown.common.Get_IndexSelection_WithSelection(view)}), text("0.0"));
    QCOMPARE(indexesText(shown.common.Get_Model_Selection_IndexItemsList(view)), shown.row(0));
    QCOMPARE(shown.selected(), QString());
    shown.click(1); // the view goes on with its new selection model
    QCOMPARE(indexesText(shown.common.Get_Model_Selection_IndexItemsList(view, true)), shown.row(1));
    QCOMPARE(shown.selected(), QString());
}

template <typename View>
void selectsRows()
{
    ShownView<View> shown;
    View* view = &shown.view;
    QItemSelectionModel* own = view->selectionModel();
    QItemSelectionModel idle(&shown.model, &shown.model); // of the application, which has not put it on a view yet
    idle.select(shown.model.index(3, 0), QItemSelectionModel::Select);
    shown.click(3);
    for (const auto& [given, used, result] : {std::tuple(-5, 0, "0.0"), {2, 2, "2.0"}, {4, 4, "none"}, {1, 1, "1.0"}}) {
        QItemSelectionModel* before = view->selectionModel();
        short row = static_cast<short>(given);
        QCOMPARE(indexesText({shown.common.Set_Selected_Row_Model(view, row)}), text(result));
        QCOMPARE(int(row), used);
        QCOMPARE(shown.selected(), used < 4 ? shown.row(used) : QString());
        QVERIFY(view->selectionModel() != before && !view->selectionModel()->currentIndex().isValid());
        view->setCurrentIndex(shown.model.index(1, 0));
    }
    QCOMPARE(indexesText(idle.selectedIndexes()), text("3.0"));
    QCOMPARE(indexesText(own->selectedIndexes()), shown.row(3)); // the one that is replaced is left alone
}

template <typename View>
void replacesSelectionModels()
{
    ShownView<View> shown;
    View* view = &shown.view;
    short row = 0;
    shown.common.Set_Selected_Row_Model(view, row);
    const int models = shown.selectionModels();
    int calls = 0;
    QObject::connect(view->selectionModel(), &QItemSelectionModel::selectionChanged, view, [&calls] { ++calls; });
    for (int i = 0; i < 10000; ++i) {
        row = static_cast<short>(i % 4);
        shown.common.Set_Selected_Row_Model(view, row);
        shown.common.Get_Model_Selection_IndexRowsList(view);
    }
    QCOMPARE(shown.selectionModels(), models);
    shown.click(1);
    QCOMPARE(calls, 0); // who listened to one of them hears nothing of the others, nor of its later use

    // From a slot of the selection model that is replaced, while it still has something to do.
    QObject::connect(view->selectionModel(), &QItemSelectionModel::selectionChanged, view, [&] {
        ++calls;
        for (int i = 0; i < 3; ++i)
            shown.common.Get_Model_Selection_IndexRowsList(view);
    });
    shown.click(2);
    QCOMPARE(calls, 1);

    // One that another view shares stays that view's.
    View other;
    other.setModel(&shown.model);
    row = 3;
    shown.common.Set_Selected_Row_Model(view, row);
    other.setSelectionModel(view->selectionModel());
    for (row = 0; row < 3; ++row)
        shown.common.Set_Selected_Row_Model(view, row);
    QCOMPARE(indexesText(other.selectionModel()->selectedIndexes()), shown.row(3));
    QCOMPARE(shown.selected(), shown.row(2));
}

} // namespace

class TestCommonclassViews : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void selection()
    {
        readsTheSelection<QTreeView>();
        readsTheSelection<QTableView>();
        readsTheSelection<QListView>();
        selectsRows<QTreeView>();
        selectsRows<QTableView>();
        selectsRows<QListView>();
        replacesSelectionModels<QTreeView>();
        replacesSelectionModels<QTableView>();
        replacesSelectionModels<QListView>();
    }

    void theFirstViewCounts()
    {
        ShownView<QTreeView> tree;
        ShownView<QTableView> table;
        ShownView<QListView> list;
        Commonclass common;
        short row = 1;
        bool had = true;
        QCOMPARE(common.Get_Model_By_TypeView(&tree.view, &table.view, &list.view), &tree.model);
        QCOMPARE(common.Get_Model_By_TypeView(nullptr, &table.view, &list.view), &table.model);
        QCOMPARE(common.Get_ItemSelectionModel_By_TypeView(nullptr, nullptr, &list.view), list.view.selectionModel());
        common.Set_Selected_Row_Model(nullptr, &table.view, &list.view, row);
        QCOMPARE(indexesText(common.Get_Model_Selection_IndexItemsList(nullptr, &table.view, &list.view)),
                 table.row(1));
        QVERIFY(common.Get_Model_Selection_IndexRowsList(nullptr, &table.view, nullptr).isEmpty());

        // No view, a view without a model, an empty model.
        QTreeView bare;
        for (QTreeView* view : {static_cast<QTreeView*>(nullptr), &bare}) {
            QVERIFY(!common.Get_Model_By_TypeView(view, nullptr, nullptr));
            QVERIFY(!common.Get_IndexSelection_VatiableSelection(view, nullptr, nullptr, true, had).isValid() && !had);
            QVERIFY(!common.Set_Selected_Row_Model(view, nullptr, nullptr, row).isValid());
            QVERIFY(common.Get_Model_Selection_IndexRowsList(view, nullptr, nullptr).isEmpty());
            QVERIFY(common.Get_Model_Selection_IndexItemsList(view, nullptr, nullptr).isEmpty());
        }
        QVERIFY(!common.Get_ItemSelectionModel_By_TypeView(nullptr, nullptr, nullptr));
        tree.model.clear();
        QVERIFY(!common.Get_IndexSelection_WithSelection(&tree.view).isValid());
    }

    void deletesTheFirstRowOfAnIdentifier()
    {
        QStandardItemModel model(4, 2);
        constexpr qint64 guid = 0x123456789abcdef0;
        for (int row = 1; row < 4; ++row) {
            auto* item = new QStandardItem(QString::number(row));
            item->setData(row == 1 ? 5 : guid, Qt::UserRole + 7);
            model.setItem(row, 1, item);
        }
        Commonclass common;
        QVERIFY(!common.ModelDeleteRowByGUID(&model, guid, 0, 7));
        QVERIFY(!common.ModelDeleteRowByGUID(&model, guid, 2, 7));
        QVERIFY(!common.ModelDeleteRowByGUID(&model, guid, 1, 6));
        QVERIFY(!common.ModelDeleteRowByGUID(nullptr, guid, 1, 7));
        QCOMPARE(model.rowCount(), 4);
        QVERIFY(common.ModelDeleteRowByGUID(&model, guid, 1, 7));
        QCOMPARE(model.rowCount(), 3);
        QCOMPARE(model.item(2, 1)->text(), text("3"));
    }

    void layoutOfATable()
    {
        ShownView<QTableView> shown;
        QHeaderView* header = shown.view.horizontalHeader();
        shown.model.item(1, 0)->setText(text("one\ntwo\nthree"));
        const int height = shown.view.rowHeight(1);
        shown.view.setWordWrap(false);
        shown.common.Set_Propeties_for_TableView(&shown.view, {1, 2, -1});
        QVERIFY(shown.view.rowHeight(1) > height);
        QCOMPARE(shown.view.verticalHeader()->sectionResizeMode(3), QHeaderView::ResizeToContents);
        QCOMPARE(header->sectionResizeMode(0), QHeaderView::Interactive);
        QCOMPARE(header->sectionResizeMode(1), QHeaderView::Stretch);
        QVERIFY(shown.view.wordWrap());
        QCOMPARE(shown.view.textElideMode(), Qt::ElideNone);
    }

    void colors()
    {
        Commonclass common;
        const QByteArray red = QByteArray::fromHex("01 8080 ffff 0000 0101 0000");
        QCOMPARE(common.Get_Color_to_DataStream(QColor(255, 0, 1, 128)), red);
        QCOMPARE(common.Get_Color_from_DataSteam(red), QColor(255, 0, 1, 128));
        QCOMPARE(common.Get_Color_from_DataSteam(QByteArray()), QColor(255, 255, 255, 255));
        QVERIFY(!common.Get_Color_from_DataSteam(common.Get_Color_to_DataStream(QColor())).isValid());
        QCOMPARE(common.Get_Color_from_DataSteam(red.left(5)), QColor(255, 0, 0, 128));
        QVERIFY(!common.Get_Color_from_DataSteam("\x4d" + red.mid(1)).isValid());
        const QColor hsv = QColor::fromHsv(120, 100, 50, 25);
        QCOMPARE(common.Get_Color_from_DataSteam(common.Get_Color_to_DataStream(hsv)), hsv);
    }

    void redText()
    {
        Commonclass common;
        const QString head =
            text(" <!DOCTYPE HTML PUBLIC \"-//W3C//DTD HTML 4.0//EN\" \"http://www.w3.org/TR/REC-html40/strict.dtd\">"
                 "  <html><body style=\" font-family:'MS Shell Dlg 2';  font-size:8.25pt; font-weight:400; "
                 "font-style:normal;\">  <p style=\" margin-top:0px; margin-bottom:0px; margin-left:0px;  "
                 "margin-right:0px; -qt-block-indent:0; text-indent:0px;\"><span style=\"  font-family:'DejaVu Sans';  "
                 "font-size:");
        QCOMPARE(common.GetRedText(text("x")),
                 head + text("11pt; font-weight:600;  color:#aa0000;\"> x </span></p></body></html> "));
        QCOMPARE(common.GetRedText(text("<b>%1"), 7),
                 head + text("7pt; font-weight:600;  color:#aa0000;\"> <b>%1 </span></p></body></html> "));
    }

    void question()
    {
        Commonclass common;
        const auto answered = [&common](auto act) {
            QString seen;
            QTimer::singleShot(0, &common, [&] {
                auto* box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
                QVERIFY(box && !box->defaultButton());
                seen = text("%1|%2|%3").arg(box->windowTitle(), box->text()).arg(int(box->standardButtons()), 0, 16);
                act(box);
            });
            const bool yes = common.QuestionMessage(text("Really?"));
            return seen + text(yes ? " yes" : " no");
        };
        const auto press = [](QMessageBox::StandardButton button) {
            return [button](QMessageBox* box) { QTest::mouseClick(box->button(button), Qt::LeftButton); };
        };
        QCOMPARE(answered(press(QMessageBox::Yes)), text("|Really?|14000 yes"));
        QCOMPARE(answered(press(QMessageBox::No)), text("|Really?|14000 no"));
        QCOMPARE(answered([](QMessageBox* box) { QTest::keyClick(box, Qt::Key_Escape); }), text("|Really?|14000 no"));
    }

    void busyCursor()
    {
        Commonclass common;
        common.Set_CursorIcon_Sandglass(true);
        common.Set_CursorIcon_Sandglass(true);
        common.Set_CursorIcon_Sandglass(false);
        QVERIFY(QApplication::overrideCursor());
        QCOMPARE(QApplication::overrideCursor()->shape(), Qt::WaitCursor);
        common.Set_CursorIcon_Sandglass(false);
        QVERIFY(!QApplication::overrideCursor());
    }
};

QTEST_MAIN(TestCommonclassViews)
#include "tst_commonclass_views.moc"
