#include <Pardel/calendar.h>

#include "testfiles.h"
#include "widgettext.h"

#include <QCalendarWidget>
#include <QLabel>
#include <QVBoxLayout>

class TestCalendar : public QObject
{
    Q_OBJECT

    const QDate m_leapDay{2024, 2, 29};

private Q_SLOTS:
    void layout()
    {
        const Calendar calendar;
        calendar.todayLabel->setText(QStringLiteral("line"));
        QCOMPARE(layoutLines(calendar), linesOf("calendar.layout"));
        QCOMPARE(calendar.layout(), calendar.mainLayout);
        QCOMPARE(calendar.todayPixmap.size(), QSize(32, 32));
    }

    void showing()
    {
        Calendar calendar;
        calendar.todayLabel->clear();
        QLocale::setDefault(QLocale(QLocale::Arabic, QLocale::Egypt)); // it has digits of its own
        QCOMPARE(showAgain(calendar, [&] { calendar.showWithDate(m_leapDay); }), QByteArray("shown"));
        QLocale::setDefault(QLocale::c());
        const QDate today = QDate::fromString(calendar.todayLabel->text(), QStringLiteral("'Today is 'dd.MM.yyyy"));
        QVERIFY(today.isValid() && today.daysTo(QDate::currentDate()) <= 1); // midnight may have passed
        QCOMPARE(calendar.calendarWidget->selectedDate(), m_leapDay);
        QCOMPARE(showAgain(calendar, [&] { calendar.showWithDate({2023, 12, 31}); }), QByteArray("raised"));
        QCOMPARE(calendar.calendarWidget->selectedDate(), QDate(2023, 12, 31));
    }

    void use_data() { addTableRows("calendar.txt"); }
    void use()
    {
        const QDate today = QDate::currentDate();
        Calendar calendar;
        QString result = QStringLiteral("open");
        connect(&calendar, &QDialog::finished, this, [&](int code) { result = QString::number(code); });
        calendar.showWithDate(m_leapDay);
        play(calendar, cell("keys"));
        result += calendar.calendarWidget->selectedDate().toString(QStringLiteral(" yyyy-MM-dd"));
        result += QStringLiteral(" %1").arg(calendar.calendarWidget->yearShown());
        result.replace(today.toString(Qt::ISODate), QStringLiteral("today"));
        result.replace(today.addDays(1).toString(Qt::ISODate), QStringLiteral("tomorrow"));
        QCOMPARE(result.toUtf8(), cell("outcome").replace("this", QByteArray::number(today.year())));
    }
};

QTEST_MAIN(TestCalendar)
#include "tst_calendar.moc"
