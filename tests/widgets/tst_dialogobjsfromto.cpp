#include <Pardel/calendar.h>
#include <Pardel/dialogobjsfromto.h>
#include <Pardel/treeobjcheckable.h>

#include "testfiles.h"
#include "treetext.h"
#include "widgettext.h"

#include <QCalendarWidget>
#include <QCheckBox>
#include <QDateTimeEdit>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QTest>
#include <QToolButton>
#include <QTreeView>

namespace {

/// A dialog with objects, a period and modes, shown and active; its members have their names as object names.
class ShownDialog : public DialogObjsFromTo
{
public:
    ShownDialog()
    {
        const std::pair<QWidget*, const char*> names[] = {
            {dateFrom, "dateFrom"},    {dateTo, "dateTo"},     {tree, "tree"},
            {&statusBar, "statusBar"}, {searchEdit, "search"}, {btnPrevious, "btnPrevious"},
            {btnNext, "btnNext"},      {btnClear, "btnClear"}, {findLabel, "findLabel"},
        };
        for (const auto& [widget, name] : names)
            widget->setObjectName(QLatin1String(name));
        QStandardItemModel objects;
        readTree(&objects, "Trucks(Atlas:1 Bison:2 ATOM:3) Vans(Cat:4 atlantic:5)");
        tree->setModelAndCheckedO(&objects, nullptr);
        dateFrom->setDisplayFormat(QStringLiteral("d.M. h:mm"));
        dateFrom->setDateTime({{2024, 2, 29}, {7, 30}});
        dateTo->setDisplayFormat(QStringLiteral("d.M. h:mm"));
        dateTo->setDateTime({{2024, 3, 9}, {18, 45}});
        showWithStatus(QStringLiteral("Track of the day"));
        QVERIFY(QTest::qWaitForWindowActive(this));
    }

    QString state() const
    {
        QStringList parts = {dateFrom->text(), dateTo->text(), findLabel->text(),
                             tree->getTreeView()->selectionModel()->selectedRows().value(0).data().toString()};
        for (const auto* mode : findChildren<QRadioButton*>()) {
            if (mode->isChecked())
                parts += mode->text();
        }
        return parts.join(QStringLiteral(", "));
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
        QCOMPARE(dialog.windowTitle(), QStringLiteral("Select objects"));
        QVERIFY(!dialog.isModal() && !dialog.parent());
        QCOMPARE(dialog.calendar->parent(), &dialog);
        QCOMPARE(layoutText(dialog.layout()),
                 QByteArray("[QLabel 'From', dateFrom '29.2. 7:30', QPushButton 'Calendar'], "
                            "[QLabel 'To', dateTo '9.3. 18:45', QPushButton 'Calendar'], "
                            "[findLabel 'Find', spacer, search 'Search objects', btnPrevious 'Previous', "
                            "btnNext 'Next', btnClear 'Clear'], tree, QCheckBox 'Remember selection', "
                            "QRadioButton 'Player with Reports' hidden, QRadioButton 'Only Player' hidden, "
                            "QRadioButton 'Only Reports' hidden, QCheckBox 'View logs' hidden, "
                            "QCheckBox 'View packets' hidden, QDialogButtonBox, statusBar"));
        for (const auto* box : {dialog.cbRemember, dialog.cbViewLogs, dialog.cbViewPackets})
            QVERIFY(!box->isChecked());
        QCOMPARE(dialog.layout()->itemAt(2)->layout(), dialog.searchLayout);
        QCOMPARE(dialog.searchLayout->contentsMargins(), QMargins());
        const QSpacerItem* spacer = dialog.searchLayout->itemAt(1)->spacerItem();
        QCOMPARE(spacer->sizeHint(), QSize(0, 0));
        QCOMPARE(spacer->sizePolicy(), QSizePolicy(QSizePolicy::MinimumExpanding, QSizePolicy::Minimum));
        const std::pair<const QToolButton*, const char*> images[] = {{dialog.btnPrevious, ":/pic/pic/left2.png"},
                                                                     {dialog.btnNext, ":/pic/pic/right2.png"},
                                                                     {dialog.btnClear, ":/pic/pic/clear2.png"}};
        for (const auto& [button, image] : images) {
            const QPixmap pixmap = QIcon(QLatin1String(image)).pixmap(16);
            QVERIFY(!pixmap.isNull());
            QCOMPARE(button->icon().pixmap(16).toImage(), pixmap.toImage());
        }
        QCOMPARE(slotNames(DialogObjsFromTo::staticMetaObject),
                 QByteArray("OnDateStart_clicked(), OnDateEnd_clicked(), onFinishedCalendar(int), onFinished(int), "
                            "OnSearchTree(QString), ClearFind()"));

        QCOMPARE(dialog.searchEdit->width(), 70);
        QVERIFY(dialog.tree->height() >= 200);
        QCOMPARE(dialog.dateFrom->x(), dialog.dateTo->x());
        QVERIFY(dialog.rect().contains(dialog.statusBar.geometry()));
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
        (cell(0) == "From" ? static_cast<QWidget*>(dialog.dateFrom) : dialog.searchEdit)->setFocus();
        play(dialog, cell(1));
        if (dialog.isVisible())
            result = QStringLiteral("open");
        QCOMPARE((result + QLatin1Char(' ') + dialog.state()).toUtf8(), cell(2));
        QVERIFY(!dialog.calendar->isVisible());
        QCOMPARE(dialog.calendarTarget, 0);
    }

    void calendar()
    {
        ShownDialog dialog;
        dialog.OnDateStart_clicked();
        QCOMPARE(dialog.calendarTarget, 1);
        QCOMPARE(dialog.calendar->calendarWidget->selectedDate(), QDate(2024, 2, 29));
        dialog.OnDateEnd_clicked();
        QCOMPARE(dialog.calendarTarget, 2);
        QCOMPARE(dialog.calendar->calendarWidget->selectedDate(), QDate(2024, 3, 9));
        dialog.calendar->reject();

        const QString state = dialog.state();
        dialog.calendar->showWithDate({2020, 1, 1}); // for no target
        dialog.calendar->accept();
        QCOMPARE(dialog.state(), state);
        dialog.OnDateEnd_clicked(); // stays open, for the destructor
    }

    void tabOrder()
    {
        ShownDialog dialog;
        for (QDateTimeEdit* date : {dialog.dateFrom, dialog.dateTo})
            date->setDisplayFormat(QStringLiteral("yyyy")); // as Tab goes through its parts
        for (QWidget* hidden : QList<QWidget*>{dialog.rbOnlyReports, dialog.cbViewLogs, dialog.cbViewPackets})
            hidden->show();
        QStringList stops;
        dialog.dateFrom->setFocus();
        do {
            const QWidget* stop = dialog.focusWidget();
            const QString name = stop->accessibleName();
            stops += name.isEmpty() ? stop->property("text").toString().remove(QLatin1Char('&')) : name;
            play(dialog, "\t");
        } while (!dialog.dateFrom->hasFocus() && stops.size() < 30);
        QCOMPARE(stops.join(QStringLiteral(", ")),
                 QStringLiteral("2024, Calendar, 2024, Calendar, Search objects, Previous, Next, Clear, , "
                                "Select/Deselect all, Remember selection, Only Reports, View logs, View packets, OK, "
                                "Cancel"));
        for (const int row : {0, 1}) {
            const QLayout* dates = dialog.layout()->itemAt(row)->layout();
            QCOMPARE(qobject_cast<QLabel*>(dates->itemAt(0)->widget())->buddy(), dates->itemAt(1)->widget());
        }
    }

    void showWithStatus()
    {
        ShownDialog dialog;
        QCOMPARE(dialog.statusBar.currentMessage(), QStringLiteral("Track of the day"));
        dialog.searchEdit->setText(QStringLiteral("at"));
        QCOMPARE(showAgain(dialog, [&] { dialog.showWithStatus(QStringLiteral("Report")); }), QByteArray("raised"));
        QCOMPARE(dialog.statusBar.currentMessage(), QStringLiteral("Report"));
        QCOMPARE(dialog.searchEdit->text() + dialog.findLabel->text(), QStringLiteral("atMatch: 3"));
        dialog.reject();
        QCOMPARE(showAgain(dialog, [&] { dialog.showWithStatus(QString()); }), QByteArray("shown"));
        QCOMPARE(dialog.statusBar.currentMessage(), QString());
        QCOMPARE(dialog.searchEdit->text() + dialog.findLabel->text(), QStringLiteral("Find"));
    }

    void calendarIcon()
    {
        for (const int withIcon : {2, 0}) {
            const DialogObjsFromTo dialog;
            int found = 0;
            for (const auto* button : dialog.findChildren<QPushButton*>())
                found += button->text() == QLatin1String("Calendar") && !button->icon().isNull();
            QCOMPARE(found, withIcon);
            Q_CLEANUP_RESOURCE(common);
        }
    }
};

QTEST_MAIN(TestDialogObjsFromTo)
#include "tst_dialogobjsfromto.moc"
