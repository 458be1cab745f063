// The periods that people ask for, how the dialog refuses those that will not do, and how times are shown.

#include "deskcolors.h"
#include "desktime.h"
#include "objectcatalog.h"
#include "period.h"
#include "perioddialog.h"

#include "testfiles.h"

#include <Pardel/dialogobjsfromto.h>
#include <Pardel/treeobjcheckable.h>

#include <QDateTimeEdit>
#include <QDialogButtonBox>
#include <QPushButton>
#include <QStandardItemModel>
#include <QTreeView>
#include <QtTest>

namespace {

QDateTime timeOf(const char* column)
{
    return QDateTime::fromString(QString::fromLatin1(cell(column)), QStringLiteral("yyyy-MM-dd hh:mm:ss"));
}

} // namespace

class TestPeriod : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase()
    {
        qputenv("TZ", "America/New_York"); // it puts its clocks forward and back
        tzset();
    }

    void presets_data() { addTableRows("periods.txt"); }
    void presets()
    {
        const QByteArrayList names = {"Today", "Yesterday", "LastHour", "LastDay", "ThisWeek"};
        const auto period = Period::of(static_cast<Period::Preset>(names.indexOf(cell("preset"))), timeOf("now"),
                                       static_cast<Qt::DayOfWeek>(cell("week").toInt()));
        const QString text = DeskTime::text(period.first.toSecsSinceEpoch()) + QStringLiteral(", ") +
                             DeskTime::text(period.second.toSecsSinceEpoch());
        QCOMPARE(text.toLatin1(), cell("period"));
    }

    void refused_data() { addTableRows("refusedperiods.txt"); }
    void refused()
    {
        const QDateTime noon(QDate(2024, 3, 6), QTime(12, 0));
        QCOMPARE(Period::complaint(timeOf("from"), timeOf("to"), noon).toLatin1(), cell("complaint"));
    }

    void dialog()
    {
        DialogObjsFromTo dialog;
        PeriodDialog extras(dialog);
        ObjectCatalog catalog;
        catalog.add(7, {QStringLiteral("Van"), QStringLiteral("Vans")});
        QStandardItemModel model;
        catalog.fillTreeModel(model);
        QList<int> none;
        dialog.tree->setModelAndCheckedO(&model, &none);
        const QPushButton* ok = dialog.findChild<QDialogButtonBox*>()->button(QDialogButtonBox::Ok);
        auto* yesterday = dialog.findChild<QPushButton*>(QStringLiteral("preset%1").arg(Period::Yesterday));
        dialog.showWithStatus(QStringLiteral("hello"));
        yesterday->click();
        QCOMPARE(dialog.statusBar.currentMessage(), QStringLiteral("Tick an object"));
        QVERIFY(!ok->isEnabled());
        QTest::keyClick(dialog.dateFrom, Qt::Key_Return);
        QVERIFY(dialog.isVisible());
        dialog.tree->setCheckedSelectAll(Qt::Checked);
        QTRY_VERIFY(ok->isEnabled());
        QCOMPARE(dialog.statusBar.currentMessage(), QString());

        const QDateTime from = dialog.dateFrom->dateTime();
        DeskTime::setUtc(true);
        extras.showZone();
        QCOMPARE(dialog.dateFrom->dateTime(), from);
        QCOMPARE(dialog.dateFrom->time(), from.toUTC().time());
        yesterday->click();
        QCOMPARE(dialog.dateFrom->time(), QTime(0, 0));
        QCOMPARE(DeskTime::text(0), QStringLiteral("1970-01-01 00:00:00 UTC"));
        QCOMPARE(DeskTime::period(0, 90), QStringLiteral("1970-01-01 00:00:00 – 00:01:30 UTC"));
        DeskTime::setUtc(false);
        constexpr qint64 winter = 1'709'960'400; // the 9th of March 2024, 0:00; the clock goes forward on the 10th
        QCOMPARE(DeskTime::period(winter, winter + 86'400),
                 QStringLiteral("2024-03-09 00:00 – 2024-03-10 00:00 -05:00"));
        QCOMPARE(DeskTime::period(winter, winter + 172'800),
                 QStringLiteral("2024-03-09 00:00 -05:00 – 2024-03-11 01:00 -04:00"));
        dialog.dateTo->setDateTime(dialog.dateFrom->dateTime());
        QVERIFY(!ok->isEnabled());
    }

    void colors()
    {
        QCOMPARE(qRound(DeskColors::contrast(Qt::black, Qt::white)), 21);
        for (const char* ground : {"#ffffff", "#efefef", "#d6d2d0", "#353535", "#2a2e32", "#000000"})
            QVERIFY2(DeskColors::contrast(DeskColors::error(QColor(QLatin1String(ground))),
                                          QColor(QLatin1String(ground))) >= 4.5,
                     ground);
    }
};

QTEST_MAIN(TestPeriod)
#include "tst_period.moc"
