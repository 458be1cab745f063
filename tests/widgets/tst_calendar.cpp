#include <Pardel/calendar.h>

#include "testfiles.h"
#include "widgettext.h"

#include <QCalendarWidget>
#include <QDialogButtonBox>
#include <QLabel>
#include <QPushButton>
#include <QTest>
#include <QVBoxLayout>

namespace {

const QDate leapDay(2024, 2, 29);

QByteArray dayText(QDate date, QDate today)
{
    return date == today ? "today" : date == today.addDays(1) ? "tomorrow" : date.toString(Qt::ISODate).toUtf8();
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
        calendar.todayLabel->setText(QStringLiteral("line"));
        calendar.todayButton->setObjectName(QStringLiteral("todayButton"));
        QCOMPARE(layoutText(calendar.mainLayout),
                 QByteArray("QCalendarWidget, [todayButton 'Today', QLabel 'line'], QDialogButtonBox"));
        QCOMPARE(calendar.todayLabel->font().weight(), 75);
        QCOMPARE(calendar.todayButton->text(), QString());
        QCOMPARE(calendar.todayButton->minimumSize(), QSize(32, 32));
        QCOMPARE(calendar.todayButton->maximumSize(), QSize(32, 32));
        QImage blue(32, 32, QImage::Format_RGB32);
        blue.fill(Qt::blue);
        for (const QPixmap& pixmap : {calendar.todayPixmap, calendar.todayButton->icon().pixmap(32, 32)})
            QCOMPARE(pixmap.toImage().convertToFormat(blue.format()), blue);
        QCOMPARE(calendar.findChild<QDialogButtonBox*>()->orientation(), Qt::Horizontal);
        QCOMPARE(slotNames(Calendar::staticMetaObject), QByteArray("private onToday(bool)"));
    }

    void showing()
    {
        Calendar calendar;
        const auto show = [&](QDate date) {
            return showAgain(calendar, [&] {
                calendar.todayLabel->clear();
                calendar.showWithDate(date);
            });
        };
        QLocale::setDefault(QLocale(QLocale::Arabic, QLocale::Egypt)); // it has digits of its own
        QCOMPARE(show(leapDay), QByteArray("shown"));
        QLocale::setDefault(QLocale::c());
        QCOMPARE(calendar.calendarWidget->selectedDate(), leapDay);
        const QString line = calendar.todayLabel->text();
        QVERIFY(line.startsWith(QLatin1String("Today is ")));
        const QDate today = QDate::fromString(line.mid(9), QStringLiteral("dd.MM.yyyy"));
        QVERIFY(today.isValid() && today.daysTo(QDate::currentDate()) <= 1); // midnight may have passed

        QCOMPARE(show({2023, 12, 31}), QByteArray("raised"));
        QCOMPARE(calendar.calendarWidget->selectedDate(), QDate(2023, 12, 31));
        QVERIFY(calendar.todayLabel->text().startsWith(QLatin1String("Today is ")));
        show(QDate());
        QCOMPARE(calendar.calendarWidget->selectedDate(), QDate(2023, 12, 31));
    }

    void use_data() { addTableRows("calendar.txt"); }

    void use()
    {
        QByteArray seen;
        QDate today;
        do { // once more if midnight has passed
            today = QDate::currentDate();
            Calendar calendar;
            const auto note = [&](const QByteArray& result) {
                seen = result + ' ' + dayText(calendar.calendarWidget->selectedDate(), today);
            };
            connect(&calendar, &QDialog::finished, this, [&](int result) { note(QByteArray::number(result)); });
            calendar.showWithDate(leapDay);
            play(calendar, cell(0));
            if (calendar.isVisible())
                note("open");
            const int year = calendar.calendarWidget->yearShown();
            seen += ' ' + (year == today.year() ? "this" : QByteArray::number(year));
        } while (today != QDate::currentDate());
        QCOMPARE(seen, cell(1));
    }
};

QTEST_MAIN(TestCalendar)
#include "tst_calendar.moc"
