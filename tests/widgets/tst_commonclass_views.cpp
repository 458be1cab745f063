#include <Pardel/commonclass.h>

#include "testfiles.h"

#include <QApplication>
#include <QHeaderView>
#include <QListView>
#include <QMessageBox>
#include <QPushButton>
#include <QStandardItemModel>
#include <QTableView>
#include <QTimer>
#include <QTreeView>

namespace {

/// Indexes as "row.column", in ascending order; a whole row of two columns as "row N".
QByteArray indexesText(QModelIndexList indexes)
{
    std::sort(indexes.begin(), indexes.end());
    QByteArrayList texts;
    for (const QModelIndex& index : qAsConst(indexes)) {
        const QByteArray row = QByteArray::number(index.row());
        if (index.column() == 1 && texts.last() == row + ".0")
            texts.last() = "row " + row;
        else
            texts += index.isValid() ? row + '.' + QByteArray::number(index.column()) : "none";
    }
    return texts.join(' ');
}

/// A view of four rows of two columns.
template <typename View>
struct SomeView : View
{
    QStandardItemModel model{4, 2};

    SomeView()
    {
        this->setModel(&model);
        this->setSelectionBehavior(QAbstractItemView::SelectRows);
        this->setSelectionMode(QAbstractItemView::ExtendedSelection);
        this->show();
    }

    void click(int row)
    {
        QTest::mouseClick(this->viewport(), Qt::LeftButton, Qt::ControlModifier,
                          this->visualRect(model.index(row, 0)).center());
    }

    /// Behind the indexes, "*" if there is a current one.
    QByteArray selected() const
    {
        return indexesText(this->selectionModel()->selectedIndexes()) + (this->currentIndex().isValid() ? " *" : "");
    }
};

/// Calls the helper of that name, in the form for this kind of view.
template <typename View>
QByteArray call(const QByteArray& name, View* view)
{
    Commonclass common;
    bool had = name.startsWith("WithS"); // the other answer than the one for no selection
    const auto answer = [&](const QModelIndex& index) { return indexesText({index}) + (had ? " true" : " false"); };
    if (name == "WithoutSelection")
        return answer(common.Get_IndexSelection_WithoutSelection(view, had));
    if (name == "WithSelection")
        return answer(common.Get_IndexSelection_WithSelection(view, had));
    if (name == "WithoutSelection short")
        return indexesText({common.Get_IndexSelection_WithoutSelection(view)});
    if (name == "WithSelection short")
        return indexesText({common.Get_IndexSelection_WithSelection(view)});
    if (name == "RowsList")
        return indexesText(common.Get_Model_Selection_IndexRowsList(view));
    if (name == "ItemsList")
        return indexesText(common.Get_Model_Selection_IndexItemsList(view));
    if (name.startsWith("ItemsList "))
        return indexesText(common.Get_Model_Selection_IndexItemsList(view, name.endsWith("true")));
    short row = name.mid(name.indexOf(' ')).toShort();
    const QModelIndex index = common.Set_Selected_Row_Model(view, row);
    return row < 0 ? "a row below 0" : indexesText({index});
}

template <typename View>
void callAndCompare()
{
    SomeView<View> view;
    for (const QByteArray& row : cell("before").isEmpty() ? QByteArrayList() : cell("before").split(' '))
        view.click(row.toInt());
    QCOMPARE(call<View>(cell("call"), &view), cell("answer"));
    QCOMPARE(view.selected(), cell("after"));
}

} // namespace

class TestCommonclassViews : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void selections_data() { addTableRows("selections.txt"); }
    void selections()
    {
        callAndCompare<QTreeView>();
        callAndCompare<QTableView>();
        callAndCompare<QListView>();
    }

    void selectionModelsAreUsedAgain()
    {
        SomeView<QTableView> view;
        QItemSelectionModel* own = view.selectionModel();
        QItemSelectionModel idle(&view.model, &view.model); // of the application, which has not put it on a view yet
        idle.select(view.model.index(3, 0), QItemSelectionModel::Select);
        view.click(3);
        call<QTableView>("Selected_Row 0", &view);
        const auto models = view.model.findChildren<QItemSelectionModel*>().size();
        int calls = 0;
        connect(view.selectionModel(), &QItemSelectionModel::selectionChanged, this, [&calls] { ++calls; });
        for (int i = 0; i < 100; ++i) {
            call<QTableView>("Selected_Row 1", &view);
            call<QTableView>("RowsList", &view);
        }
        QCOMPARE(view.model.findChildren<QItemSelectionModel*>().size(), models);
        view.click(1);
        QCOMPARE(calls, 0); // who listened to one of them hears nothing of its later use
        QCOMPARE(indexesText(idle.selectedIndexes()), QByteArray("3.0"));
        QCOMPARE(indexesText(own->selectedIndexes()), QByteArray("row 3"));

        // From a slot of the selection model that is replaced, while it still has something to do.
        connect(view.selectionModel(), &QItemSelectionModel::selectionChanged, this, [&] {
            for (++calls; calls < 4; ++calls)
                call<QTableView>("RowsList", &view);
        });
        view.click(2);
        QCOMPARE(calls, 4);

        // One that another view shares stays that view's.
        QTableView other;
        other.setModel(&view.model);
        call<QTableView>("Selected_Row 3", &view);
        other.setSelectionModel(view.selectionModel());
        for (const char* change : {"Selected_Row 0", "Selected_Row 1", "Selected_Row 2"})
            call<QTableView>(change, &view);
        QCOMPARE(indexesText(other.selectionModel()->selectedIndexes()), QByteArray("row 3"));
    }

    void theFirstViewCounts()
    {
        SomeView<QTreeView> tree;
        SomeView<QTableView> table;
        SomeView<QListView> list;
        QTreeView bare;
        Commonclass common;
        QCOMPARE(common.Get_Model_By_TypeView(&tree, &table, &list), &tree.model);
        QCOMPARE(common.Get_Model_By_TypeView(nullptr, &table, &list), &table.model);
        QCOMPARE(common.Get_ItemSelectionModel_By_TypeView(nullptr, nullptr, &list), list.selectionModel());
        QVERIFY(!common.Get_ItemSelectionModel_By_TypeView(nullptr, nullptr, nullptr));
        tree.model.clear();
        for (QTreeView* view : {static_cast<QTreeView*>(&tree), &bare, static_cast<QTreeView*>(nullptr)}) {
            for (const char* name : {"WithSelection short", "WithoutSelection short", "Selected_Row 0"})
                QCOMPARE(call<QTreeView>(name, view), QByteArray("none"));
            QCOMPARE(call<QTreeView>("ItemsList", view) + call<QTreeView>("RowsList", view), QByteArray());
        }
    }

    void deletesTheFirstRowOfAnIdentifier()
    {
        constexpr qint64 guid = 0x123456789abcdef0;
        QStandardItemModel model(4, 2);
        for (int row = 1; row < 4; ++row) {
            model.setItem(row, 1, new QStandardItem(QString::number(row)));
            model.item(row, 1)->setData(row == 1 ? 5 : guid, Qt::UserRole + 7);
        }
        Commonclass common;
        QVERIFY(!common.ModelDeleteRowByGUID(nullptr, guid, 1, 7));
        for (const auto& [column, role] : {std::pair(0, 7), {2, 7}, {1, 6}})
            QVERIFY(!common.ModelDeleteRowByGUID(&model, guid, column, role));
        QVERIFY(common.ModelDeleteRowByGUID(&model, guid, 1, 7));
        QCOMPARE(model.rowCount(), 3);
        QCOMPARE(model.item(2, 1)->text(), QStringLiteral("3"));
    }

    void layoutOfATable()
    {
        SomeView<QTableView> view;
        const int height = view.rowHeight(1);
        view.model.setItem(1, new QStandardItem(QStringLiteral("one\ntwo\nthree")));
        view.setWordWrap(false);
        Commonclass().Set_Propeties_for_TableView(&view, {1, 2, -1});
        QVERIFY(view.rowHeight(1) > height);
        QCOMPARE(view.verticalHeader()->sectionResizeMode(3), QHeaderView::ResizeToContents);
        QCOMPARE(view.horizontalHeader()->sectionResizeMode(0), QHeaderView::Interactive);
        QCOMPARE(view.horizontalHeader()->sectionResizeMode(1), QHeaderView::Stretch);
        QVERIFY(view.wordWrap() && view.textElideMode() == Qt::ElideNone);
    }

    void colors()
    {
        Commonclass common;
        const QByteArray red = QByteArray::fromHex("01 8080 ffff 0000 0101 0000");
        QCOMPARE(common.Get_Color_to_DataStream(QColor(255, 0, 1, 128)), red);
        QCOMPARE(common.Get_Color_from_DataSteam(red), QColor(255, 0, 1, 128));
        QCOMPARE(common.Get_Color_from_DataSteam(red.left(5)), QColor(255, 0, 0, 128));
        QCOMPARE(common.Get_Color_from_DataSteam(QByteArray()), QColor(255, 255, 255, 255));
        QCOMPARE(common.Get_Color_from_DataSteam("\x4d" + red.mid(1)), QColor());
    }

    void redText()
    {
        const QString seven = QString::fromUtf8(contentOf(QStringLiteral("redtext.html"))).remove(QLatin1Char('\n'));
        QCOMPARE(Commonclass().GetRedText(QStringLiteral("<b>%1"), 7), seven);
        QString eleven = seven;
        eleven.replace(QStringLiteral(":7pt"), QStringLiteral(":11pt"));
        QCOMPARE(Commonclass().GetRedText(QStringLiteral("<b>%1")), eleven);
    }

    void question()
    {
        for (const auto answer : {QMessageBox::Yes, QMessageBox::No, QMessageBox::NoButton}) {
            QString seen;
            QTimer::singleShot(0, this, [&seen, answer] {
                auto* box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
                seen = box->windowTitle() + box->text() + QString::number(box->standardButtons(), 16);
                seen += QLatin1String(box->defaultButton() ? " default" : "");
                if (answer == QMessageBox::NoButton)
                    QTest::keyClick(box, Qt::Key_Escape);
                else
                    QTest::mouseClick(box->button(answer), Qt::LeftButton);
            });
            QCOMPARE(Commonclass().QuestionMessage(QStringLiteral("Really?")), answer == QMessageBox::Yes);
            QCOMPARE(seen, QStringLiteral("Really?14000"));
        }
    }

    void busyCursor()
    {
        Commonclass common;
        for (const bool busy : {true, true, false})
            common.Set_CursorIcon_Sandglass(busy);
        QVERIFY(QApplication::overrideCursor() && QApplication::overrideCursor()->shape() == Qt::WaitCursor);
        common.Set_CursorIcon_Sandglass(false);
        QVERIFY(!QApplication::overrideCursor());
    }
};

QTEST_MAIN(TestCommonclassViews)
#include "tst_commonclass_views.moc"
