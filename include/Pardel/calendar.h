#pragma once

#include <Pardel/pardel_export.h>

#include <QDate>
#include <QDialog>
#include <QIcon>
#include <QPixmap>

QT_BEGIN_NAMESPACE
class QCalendarWidget;
class QLabel;
class QPushButton;
class QVBoxLayout;
QT_END_NAMESPACE

/**
 * A small modeless dialog that picks a day: a month, a button that goes to today, the line "Today is ", Ok and Cancel.
 *
 * @code
 * auto* calendar = new Calendar(this);
 * connect(calendar, &QDialog::finished, this, [=](int result) {
 *     if (result == QDialog::Accepted)
 *         dateEdit->setDate(calendar->calendarWidget->selectedDate());
 * });
 * calendar->showWithDate(dateEdit->date());
 * @endcode
 *
 * Enter among the days accepts the dialog, like Ok does, and Escape rejects it; Enter in the year and clicks only go to
 * other days.
 *
 * The widgets are for reading and presetting (a range of days, say); all of them belong to the dialog.
 */
class PARDEL_EXPORT Calendar : public QDialog
{
    Q_OBJECT

public:
    QCalendarWidget* calendarWidget; ///< The month; its selected date is the dialog's result.
    QVBoxLayout* mainLayout;         ///< All of the dialog, from top to bottom.
    QLabel* todayLabel;       ///< "Today is " and the day, "dd.MM.yyyy" in every locale; as old as the last showing.
    QPixmap todayPixmap;      ///< 32 x 32, plain blue.
    QIcon todayIcon;          ///< Holds todayPixmap.
    QPushButton* todayButton; ///< Selects today, without closing the dialog.

    /** A hidden dialog, with today selected; @p parent may be null and owns the dialog otherwise. */
    explicit Calendar(QWidget* parent = nullptr);

    /**
     * Selects @p date, brings the line up to date, and shows the dialog; one that is visible already is not hidden but
     * raised and activated.
     *
     * A date outside of calendarWidget's range becomes the nearest one inside; an invalid date leaves the selection.
     */
    void showWithDate(QDate date);

protected:
    /** Makes Enter among the days accept the dialog, which QCalendarWidget keeps for itself. */
    bool eventFilter(QObject* watched, QEvent* event) override;

private Q_SLOTS:
    void onToday(bool);
};
