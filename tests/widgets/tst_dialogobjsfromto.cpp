#include <Pardel/calendar.h>
#include <Pardel/dialogobjsfromto.h>
#include <Pardel/treeobjcheckable.h>

#include "testfiles.h"
#include "treetext.h"
#include "widgettext.h"

#include <QCheckBox>
#include <QDateTimeEdit>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QRadioButton>
#include <QTreeView>

namespace {

/// A dialog with objects, a period and modes, shown and active.
struct ShownDialog : DialogObjsFromTo
{
    ShownDialog()
    {
        QStandardItemModel objects;
        readTree(&objects, "Trucks(Atlas:1 Bison:2 ATOM:3) Vans(Cat:4 atlantic:5)");
        tree->setModelAndCheckedO(&objects, nullptr);
        for (QDateTimeEdit* date : {dateFrom, dateTo})
            date->setDisplayFormat(QStringLiteral("d.M. h:mm"));
        dateFrom->setDateTime({{2024, 2, 29}, {7, 30}});
        dateTo->setDateTime({{2024, 3, 9}, {18, 45}});
        showWithStatus(QStringLiteral("Track of the day"));
        QVERIFY(QTest::qWaitForWindowActive(this));
    }

    QString state() const
    {
        QStringList parts = {dateFrom->text(), dateTo->text(), findLabel->text(),
                             tree->getTreeView()->selectionModel()->selectedRows().value(0).data().toString()};
        for (const auto* mode : findChildren<QRadioButton*>())
            parts += mode->isChecked() ? QStringList(mode->text()) : QStringList();
        return parts.join(QStringLiteral(", "));
    }

    QString searchState() const
    {
        return QStringList{searchEdit->text(), findLabel->text(), statusBar.currentMessage()}.join(QLatin1Char('|'));
    }
};

} // namespace

class TestDialogObjsFromTo : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void layout()
    {
        const ShownDialog dialog;
        QCOMPARE(layoutLines(dialog), linesOf("dialogobjsfromto.layout"));
        QCOMPARE(dialog.calendar->parent(), &dialog);
        QCOMPARE(dialog.layout()->itemAt(2)->layout(), dialog.searchLayout);
        QVERIFY(dialog.tree->height() >= 200);
        QCOMPARE(dialog.dateFrom->x(), dialog.dateTo->x());
        QVERIFY(dialog.rect().contains(dialog.statusBar.geometry()));
        Q_CLEANUP_RESOURCE(common);
        QVERIFY(!layoutLines(DialogObjsFromTo()).join().contains("text=Calendar accessibleDescription=From icon"));
    }

    void use_data() { addTableRows("dialogobjsfromto.txt"); }
    void use()
    {
        ShownDialog dialog;
        for (QWidget* mode : {dialog.rbOnlyPlayer, dialog.rbOnlyReports, dialog.rbPlayerWithReports})
            mode->show();
        dialog.layout()->activate();
        QString result;
        connect(&dialog, &QDialog::finished, this, [&](int code) { result += QString::number(code); });
        (cell("begin") == "From" ? static_cast<QWidget*>(dialog.dateFrom) : dialog.searchEdit)->setFocus();
        play(dialog, cell("keys"));
        if (dialog.isVisible())
            result = QStringLiteral("open");
        QCOMPARE((result + QLatin1Char(' ') + dialog.state()).toUtf8(), cell("outcome"));
        QVERIFY(!dialog.calendar->isVisible());
        QCOMPARE(dialog.calendarTarget, 0);
    }

    void calendar()
    {
        ShownDialog dialog;
        const QString state = dialog.state();
        dialog.OnDateStart_clicked();
        QCOMPARE(dialog.calendarTarget, 1);
        dialog.OnDateEnd_clicked();
        QCOMPARE(dialog.calendarTarget, 2);
        dialog.calendar->reject();
        dialog.calendar->showWithDate({2020, 1, 1}); // for no target
        dialog.calendar->accept();
        QCOMPARE(dialog.state(), state);
        dialog.OnDateEnd_clicked(); // stays open, for the destructor
    }

    void showWithStatus()
    {
        ShownDialog dialog;
        dialog.searchEdit->setText(QStringLiteral("at"));
        QCOMPARE(dialog.searchState(), QStringLiteral("at|Match: 3|Track of the day"));
        QCOMPARE(showAgain(dialog, [&] { dialog.showWithStatus(QStringLiteral("Report")); }), QByteArray("raised"));
        QCOMPARE(dialog.searchState(), QStringLiteral("at|Match: 3|Report"));
        dialog.reject();
        QCOMPARE(showAgain(dialog, [&] { dialog.showWithStatus(QString()); }), QByteArray("shown"));
        QCOMPARE(dialog.searchState(), QStringLiteral("|Find|"));
    }
};

QTEST_MAIN(TestDialogObjsFromTo)
#include "tst_dialogobjsfromto.moc"
