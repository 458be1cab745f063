#include <Pardel/calendar.h>
#include <Pardel/dialogobjsfromto.h>
#include <Pardel/treeobjcheckable.h>

#include "treetext.h"
#include "widgettext.h"

#include <QApplication>
#include <QCalendarWidget>
#include <QCheckBox>
#include <QDateTimeEdit>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QSignalSpy>
#include <QStandardItemModel>
#include <QTest>
#include <QToolButton>
#include <QTreeView>

namespace {

const QDateTime from(QDate(2024, 2, 29), QTime(7, 30));
const QDateTime to(QDate(2024, 3, 9), QTime(18, 45));

/// A dialog with objects and a period, shown and active.
class ShownDialog : public DialogObjsFromTo
{
public:
    ShownDialog()
    {
        QStandardItemModel objects;
        readTree(&objects, "Trucks(Atlas:1 Bison:2 ATOM:3) Vans(Cat:4 atlantic:5)");
        tree->setModelAndCheckedO(&objects, nullptr);
        dateFrom->setDateTime(from);
        dateTo->setDateTime(to);
        showWithStatus(QStringLiteral("Track of the day"));
        QVERIFY(QTest::qWaitForWindowActive(this));
    }

    QString selectedName() const
    {
        return tree->getTreeView()->selectionModel()->selectedRows().value(0).data().toString();
    }

    QPushButton* calendarButton(int row) const
    {
        return qobject_cast<QPushButton*>(layout()->itemAt(row)->layout()->itemAt(2)->widget());
    }
};

} // namespace

class TestDialogObjsFromTo : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void layout()
    {
        DialogObjsFromTo dialog;
        QCOMPARE(dialog.windowTitle(), QStringLiteral("Select objects"));
        QVERIFY(!dialog.isVisible() && !dialog.isModal() && !dialog.parent());
        QCOMPARE(dialog.calendar->parent(), &dialog);
        QCOMPARE(dialog.calendarTarget, 0);
        dialog.dateFrom->setDisplayFormat(QStringLiteral("yyyy"));
        dialog.dateTo->setDisplayFormat(QStringLiteral("yyyy"));
        QCOMPARE(layoutText(dialog.layout()),
                 QByteArray("[QLabel 'From', QDateTimeEdit '2000', QPushButton 'Calendar'], "
                            "[QLabel 'To', QDateTimeEdit '2000', QPushButton 'Calendar'], "
                            "[QLabel 'Find', spacer, QLineEdit, QToolButton, QToolButton, QToolButton], "
                            "TreeObjCheckable, QCheckBox 'Remember selection', "
                            "QRadioButton 'Player with Reports' hidden, QRadioButton 'Only Player' hidden, "
                            "QRadioButton 'Only Reports' hidden, QCheckBox 'View logs' hidden, "
                            "QCheckBox 'View packets' hidden, QDialogButtonBox, QStatusBar"));
        QCOMPARE(slotNames(DialogObjsFromTo::staticMetaObject),
                 QByteArray("OnDateStart_clicked(), OnDateEnd_clicked(), onFinishedCalendar(int), onFinished(int), "
                            "OnSearchTree(QString), ClearFind()"));

        QCOMPARE(dialog.layout()->itemAt(2)->layout(), dialog.searchLayout);
        QCOMPARE(dialog.searchLayout->contentsMargins(), QMargins());
        QCOMPARE(dialog.searchLayout->itemAt(0)->widget(), dialog.findLabel);
        const QSpacerItem* spacer = dialog.searchLayout->itemAt(1)->spacerItem();
        QCOMPARE(spacer->sizeHint(), QSize(0, 0));
        QCOMPARE(spacer->sizePolicy(), QSizePolicy(QSizePolicy::MinimumExpanding, QSizePolicy::Minimum));
        QCOMPARE(dialog.searchEdit->toolTip(), QStringLiteral("Search objects"));
        int place = 3;
        for (const auto& [button, image, text] : {std::tuple(dialog.btnPrevious, "left2", "Previous"),
                                                  {dialog.btnNext, "right2", "Next"},
                                                  {dialog.btnClear, "clear2", "Clear"}}) {
            QCOMPARE(dialog.searchLayout->itemAt(place++)->widget(), button);
            const QIcon icon(QStringLiteral(":/pic/pic/%1.png").arg(QLatin1String(image)));
            QVERIFY(!icon.pixmap(16).isNull());
            QCOMPARE(button->icon().pixmap(16).toImage(), icon.pixmap(16).toImage());
            QCOMPARE(button->toolTip(), QLatin1String(text));
            QCOMPARE(button->accessibleName(), QLatin1String(text));
        }
        for (const int row : {0, 1}) {
            const QLayout* dates = dialog.layout()->itemAt(row)->layout();
            QCOMPARE(dates->itemAt(1)->widget(), row ? dialog.dateTo : dialog.dateFrom);
            QCOMPARE(qobject_cast<QLabel*>(dates->itemAt(0)->widget())->buddy(), dates->itemAt(1)->widget());
        }
        QCOMPARE(dialog.layout()->itemAt(3)->widget(), dialog.tree);
        QCOMPARE(dialog.layout()->itemAt(11)->widget(), &dialog.statusBar);
    }

    void switches()
    {
        ShownDialog dialog;
        const QList<QAbstractButton*> modes = {dialog.rbPlayerWithReports, dialog.rbOnlyPlayer, dialog.rbOnlyReports};
        const auto checked = [&] {
            QStringList texts;
            for (const auto* button : dialog.findChildren<QAbstractButton*>())
                texts +=
                    button->parent() == &dialog && button->isChecked() ? QStringList(button->text()) : QStringList();
            return texts.join(QLatin1Char(','));
        };
        QVERIFY(dialog.cbRemember->isVisible());
        QCOMPARE(checked(), QStringLiteral("Only Reports"));
        for (QAbstractButton* mode : modes)
            mode->show();
        dialog.layout()->activate();
        for (QAbstractButton* mode : modes) {
            QTest::mouseClick(mode, Qt::LeftButton, {},
                              QPoint(10, mode->height() / 2)); // beside a text, nothing happens
            QCOMPARE(checked(), mode->text());
        }
    }

    void usableSize()
    {
        const ShownDialog dialog;
        QCOMPARE(dialog.searchEdit->width(), 70);
        QVERIFY(dialog.tree->height() >= 200);
        QVERIFY(dialog.dateFrom->width() >= dialog.dateFrom->sizeHint().width());
        QCOMPARE(dialog.dateFrom->x(), dialog.dateTo->x());
        QVERIFY(dialog.rect().contains(dialog.statusBar.geometry()));
    }

    void search_data()
    {
        QTest::addColumn<QByteArray>("keys");   // in the search
        QTest::addColumn<QByteArray>("clicks"); // on Previous, Next, Clear
        QTest::addColumn<QString>("label");
        QTest::addColumn<QString>("selected");
        QTest::newRow("a prefix in any case") << QByteArray("aT") << QByteArray() << "Match: 3"
                                              << "Atlas";
        QTest::newRow("a group") << QByteArray("va") << QByteArray() << "Match: 1"
                                 << "Vans";
        QTest::newRow("none") << QByteArray("atz") << QByteArray() << "Match not found"
                              << "";
        QTest::newRow("erased") << QByteArray("a\b") << QByteArray() << "Find"
                                << "";
        QTest::newRow("cleared") << QByteArray("at") << QByteArray("C") << "Find"
                                 << "";
        QTest::newRow("next") << QByteArray("at") << QByteArray("N") << "Match: 3"
                              << "ATOM";
        QTest::newRow("next, around") << QByteArray("at") << QByteArray("NNN") << "Match: 3"
                                      << "Atlas";
        QTest::newRow("previous, around") << QByteArray("at") << QByteArray("P") << "Match: 3"
                                          << "atlantic";
        QTest::newRow("Return") << QByteArray("at\r") << QByteArray() << "Match: 3"
                                << "ATOM";
        QTest::newRow("Enter") << QByteArray("at\n\n") << QByteArray() << "Match: 3"
                               << "atlantic";
        QTest::newRow("Shift+Return") << QByteArray("at^") << QByteArray() << "Match: 3"
                                      << "atlantic";
    }

    void search()
    {
        QFETCH(const QByteArray, keys);
        QFETCH(const QByteArray, clicks);
        ShownDialog dialog;
        dialog.searchEdit->setFocus();
        type(dialog, keys);
        for (const char button : clicks)
            QTest::mouseClick(button == 'P'   ? dialog.btnPrevious
                              : button == 'N' ? dialog.btnNext
                                              : dialog.btnClear,
                              Qt::LeftButton);
        QTEST(dialog.findLabel->text(), "label");
        QTEST(dialog.selectedName(), "selected");
        QVERIFY(dialog.isVisible());
    }

    void calendar_data()
    {
        QTest::addColumn<QByteArray>("clicks"); // on the buttons "Calendar": From, To
        QTest::addColumn<QByteArray>("keys");   // in the calendar
        QTest::addColumn<QDateTime>("start");
        QTest::addColumn<QDateTime>("end");
        QTest::newRow("start") << QByteArray("F") << QByteArray(">\r") << from.addDays(1) << to;
        QTest::newRow("end") << QByteArray("T") << QByteArray("<\r") << from << to.addDays(-1);
        QTest::newRow("cancelled") << QByteArray("F") << QByteArray(">\x1b") << from << to;
        QTest::newRow("the later button counts") << QByteArray("FT") << QByteArray(">\r") << from << to.addDays(1);
    }

    void calendar()
    {
        QFETCH(const QByteArray, clicks);
        QFETCH(const QByteArray, keys);
        ShownDialog dialog;
        for (const char button : clicks) {
            QTest::mouseClick(dialog.calendarButton(button == 'F' ? 0 : 1), Qt::LeftButton);
            QCOMPARE(dialog.calendarTarget, button == 'F' ? 1 : 2);
            QCOMPARE(dialog.calendar->calendarWidget->selectedDate(), (button == 'F' ? from : to).date());
        }
        QTRY_COMPARE(QApplication::activeWindow(), dialog.calendar);
        type(*dialog.calendar, keys);
        QTRY_VERIFY(!dialog.calendar->isVisible());
        QTEST(dialog.dateFrom->dateTime(), "start");
        QTEST(dialog.dateTo->dateTime(), "end");
        QCOMPARE(dialog.calendarTarget, 0);

        // Without a target, an accepted day goes nowhere.
        dialog.calendar->showWithDate({2020, 1, 1});
        dialog.calendar->accept();
        QTEST(dialog.dateFrom->dateTime(), "start");
        QTEST(dialog.dateTo->dateTime(), "end");
    }

    void finishing_data()
    {
        QTest::addColumn<QByteArray>("keys");
        QTest::addColumn<QString>("button");
        QTest::addColumn<int>("result");
        QTest::newRow("Ok") << QByteArray() << "OK" << 1;
        QTest::newRow("Cancel") << QByteArray() << "Cancel" << 0;
        QTest::newRow("Enter in a date") << QByteArray("\n") << "" << 1;
        QTest::newRow("Enter in the tree") << QByteArray("\t\t\t\t\t\t\t\t\r") << "" << 1;
        QTest::newRow("Escape") << QByteArray("\x1b") << "" << 0;
        QTest::newRow("the window is closed") << QByteArray() << "" << 0;
    }

    void finishing()
    {
        QFETCH(const QByteArray, keys);
        QFETCH(const QString, button);
        ShownDialog dialog;
        const QSignalSpy finished(&dialog, &QDialog::finished);
        QTest::mouseClick(dialog.calendarButton(1), Qt::LeftButton);
        QTRY_COMPARE(QApplication::activeWindow(), dialog.calendar);
        dialog.activateWindow();
        QTRY_COMPARE(QApplication::activeWindow(), &dialog);
        dialog.dateFrom->setFocus();
        type(dialog, keys);
        if (!button.isEmpty())
            clickButton(dialog, button);
        else if (keys.isEmpty())
            dialog.close();
        QCOMPARE(finished.count(), 1);
        QTEST(finished.first().first().toInt(), "result");
        QVERIFY(!dialog.isVisible());
        QVERIFY(!dialog.calendar->isVisible());
        QCOMPARE(dialog.calendarTarget, 0);
        QCOMPARE(dialog.dateFrom->dateTime(), from);
        QCOMPARE(dialog.dateTo->dateTime(), to);
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
            type(dialog, "\t");
        } while (!dialog.dateFrom->hasFocus() && stops.size() < 30);
        QCOMPARE(stops.join(QStringLiteral(", ")),
                 QStringLiteral("2024, Calendar, 2024, Calendar, Search objects, Previous, Next, Clear, , "
                                "Select/Deselect all, Remember selection, Only Reports, View logs, View packets, OK, "
                                "Cancel"));
    }

    void showWithStatus()
    {
        ShownDialog dialog;
        QCOMPARE(dialog.statusBar.currentMessage(), QStringLiteral("Track of the day"));
        dialog.searchEdit->setText(QStringLiteral("at"));
        QWidget other;
        other.show();
        other.activateWindow();
        QVERIFY(QTest::qWaitForWindowActive(&other));
        const EventCounter hidden(&dialog, QEvent::Hide);
        const EventCounter raised(&dialog, QEvent::ZOrderChange);
        dialog.showWithStatus(QStringLiteral("Report"));
        QVERIFY(QTest::qWaitForWindowActive(&dialog));
        QCOMPARE(dialog.statusBar.currentMessage(), QStringLiteral("Report"));
        QCOMPARE(dialog.searchEdit->text(), QStringLiteral("at"));
        QCOMPARE(dialog.findLabel->text(), QStringLiteral("Match: 3"));
        QCOMPARE(raised.count, 1);
        QCOMPARE(hidden.count, 0);

        dialog.reject();
        dialog.showWithStatus(QString());
        QVERIFY(dialog.isVisible());
        QCOMPARE(dialog.statusBar.currentMessage(), QString());
        QCOMPARE(dialog.searchEdit->text() + dialog.findLabel->text(), QStringLiteral("Find"));
    }

    void calendarIcon()
    {
        QVERIFY(!ShownDialog().calendarButton(0)->icon().pixmap(16).isNull());
        Q_CLEANUP_RESOURCE(common);
        QVERIFY(ShownDialog().calendarButton(0)->icon().isNull());
        Q_INIT_RESOURCE(common);
    }
};

QTEST_MAIN(TestDialogObjsFromTo)
#include "tst_dialogobjsfromto.moc"
