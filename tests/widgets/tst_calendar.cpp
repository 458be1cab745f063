#include <Pardel/calendar.h>

#include "widgettext.h"

#include <QCalendarWidget>
#include <QDialogButtonBox>
#include <QLabel>
#include <QPushButton>
#include <QSignalSpy>
#include <QSpinBox>
#include <QTest>
#include <QVBoxLayout>

namespace {

const QDate leapDay(2024, 2, 29);

bool isToday(QDate date)
{
    return qAbs(date.daysTo(QDate::currentDate())) <= 1; // midnight may have passed
}

} // namespace

class TestCalendar : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void layout()
    {
        const Calendar calendar;
        QCOMPARE(calendar.windowTitle(), QStringLiteral("Input day"));
        QCOMPARE(calendar.layout(), calendar.mainLayout);
        QCOMPARE(layoutText(calendar.mainLayout), "QCalendarWidget, [QPushButton, QLabel '" +
                                                      calendar.todayLabel->text().toUtf8() + "'], QDialogButtonBox");
        QCOMPARE(calendar.todayLabel->font().weight(), 75);
        QCOMPARE(calendar.todayButton->accessibleName(), QStringLiteral("Today"));
        QCOMPARE(calendar.todayButton->minimumSize(), QSize(32, 32));
        QCOMPARE(calendar.todayButton->maximumSize(), QSize(32, 32));
        QImage blue(32, 32, QImage::Format_RGB32);
        blue.fill(Qt::blue);
        for (const QPixmap& pixmap : {calendar.todayPixmap, calendar.todayButton->icon().pixmap(32, 32)})
            QCOMPARE(pixmap.toImage().convertToFormat(blue.format()), blue);
        const auto* buttons = calendar.findChild<QDialogButtonBox*>();
        QCOMPARE(buttons->standardButtons(), QDialogButtonBox::Ok | QDialogButtonBox::Cancel);
        QCOMPARE(buttons->orientation(), Qt::Horizontal);
        QCOMPARE(slotNames(Calendar::staticMetaObject), QByteArray("private onToday(bool)"));
    }

    void showWithDate()
    {
        Calendar calendar;
        calendar.todayLabel->clear();
        QLocale::setDefault(QLocale(QLocale::Arabic, QLocale::Egypt)); // it has digits of its own
        calendar.showWithDate(leapDay);
        QLocale::setDefault(QLocale::c());
        QVERIFY(QTest::qWaitForWindowActive(&calendar));
        QCOMPARE(calendar.calendarWidget->selectedDate(), leapDay);
        QVERIFY(calendar.findChild<QDialogButtonBox*>()->button(QDialogButtonBox::Ok)->isDefault());
        const QString line = calendar.todayLabel->text();
        QVERIFY(line.startsWith(QLatin1String("Today is ")));
        QVERIFY(isToday(QDate::fromString(line.mid(9), QStringLiteral("dd.MM.yyyy"))));

        QWidget other;
        other.show();
        other.activateWindow();
        QVERIFY(QTest::qWaitForWindowActive(&other));
        const EventCounter hidden(&calendar, QEvent::Hide);
        const EventCounter raised(&calendar, QEvent::ZOrderChange);
        calendar.todayLabel->clear();
        calendar.showWithDate({2023, 12, 31});
        QVERIFY(QTest::qWaitForWindowActive(&calendar));
        QCOMPARE(calendar.calendarWidget->selectedDate(), QDate(2023, 12, 31));
        QCOMPARE(calendar.todayLabel->text(), line);
        QCOMPARE(raised.count, 1);
        QCOMPARE(hidden.count, 0);

        calendar.showWithDate(QDate());
        QCOMPARE(calendar.calendarWidget->selectedDate(), QDate(2023, 12, 31));
    }

    void today()
    {
        Calendar calendar;
        calendar.showWithDate(leapDay);
        QVERIFY(QTest::qWaitForWindowActive(&calendar));
        const QSignalSpy finished(&calendar, &QDialog::finished);
        calendar.todayButton->setFocus();
        QTest::mouseClick(calendar.todayButton, Qt::LeftButton);
        QVERIFY(isToday(calendar.calendarWidget->selectedDate()));
        QVERIFY(calendar.calendarWidget->isAncestorOf(calendar.focusWidget()));
        QVERIFY(calendar.isVisible());
        QCOMPARE(finished.count(), 0);
    }

    void enterInTheYear()
    {
        Calendar calendar;
        calendar.showWithDate(leapDay);
        QVERIFY(QTest::qWaitForWindowActive(&calendar));
        clickButton(calendar, QStringLiteral("2024"));
        qobject_cast<QSpinBox*>(calendar.focusWidget())->selectAll();
        type(calendar, "2030\r");
        QCoreApplication::processEvents();
        QCOMPARE(calendar.calendarWidget->yearShown(), 2030);
        QCOMPARE(calendar.calendarWidget->selectedDate(), leapDay);
        QVERIFY(calendar.isVisible());
    }

    void finishing_data()
    {
        QTest::addColumn<QString>("button");
        QTest::addColumn<QByteArray>("keys");
        QTest::addColumn<QDate>("date");
        QTest::addColumn<int>("result");
        QTest::newRow("Enter") << "" << QByteArray("\n") << leapDay << 1;
        QTest::newRow("Return after an arrow") << "" << QByteArray("<\r") << leapDay.addDays(-1) << 1;
        QTest::newRow("Enter after a typed day") << "" << QByteArray("<05\n") << QDate(2024, 2, 5) << 1;
        QTest::newRow("Escape") << "" << QByteArray("\x1b") << leapDay << 0;
        QTest::newRow("Ok") << "OK" << QByteArray() << leapDay << 1;
        QTest::newRow("Cancel") << "Cancel" << QByteArray() << leapDay << 0;
    }

    void finishing()
    {
        QFETCH(const QString, button);
        QFETCH(const QByteArray, keys);
        Calendar calendar;
        calendar.showWithDate(leapDay);
        QVERIFY(QTest::qWaitForWindowActive(&calendar));
        const QSignalSpy finished(&calendar, &QDialog::finished);
        QDate date;
        connect(&calendar, &QDialog::finished, this, [&] { date = calendar.calendarWidget->selectedDate(); });
        type(calendar, keys); // without a Tab, they go to the month
        if (!button.isEmpty())
            clickButton(calendar, button);
        QTRY_COMPARE(finished.count(), 1);
        QTEST(finished.first().first().toInt(), "result");
        QTEST(date, "date");
        QVERIFY(!calendar.isVisible());
    }
};

QTEST_MAIN(TestCalendar)
#include "tst_calendar.moc"
