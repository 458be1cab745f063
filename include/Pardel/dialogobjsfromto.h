#pragma once

#include <Pardel/pardel_export.h>

#include <QDialog>
#include <QStatusBar>
#include <QString>

class Calendar;
class TreeObjCheckable;

QT_BEGIN_NAMESPACE
class QCheckBox;
class QDateTimeEdit;
class QHBoxLayout;
class QLabel;
class QLineEdit;
class QRadioButton;
class QToolButton;
QT_END_NAMESPACE

/**
 * The dialog in which objects and a period are picked before a report or a track replay: two times with calendars, a
 * search over the tree of objects, the tree, switches that each application shows or hides, Ok, Cancel, a status bar.
 *
 * @code
 * m_dialog->tree->setModelAndCheckedO(objects, &checked);
 * m_dialog->dateFrom->setDateTime(yesterday);
 * m_dialog->dateTo->setDateTime(now);
 * m_dialog->rbOnlyReports->show();
 * m_dialog->rbPlayerWithReports->show();
 * connect(m_dialog, &QDialog::accepted, this, [this] { m_dialog->tree->getCheckedObjs(&checked, QModelIndex()); ... });
 * m_dialog->showWithStatus(tr("Track of the day"));
 * @endcode
 *
 * It is modeless, is made once and shown again and again; it stores nothing, so that the fields and ticks stay as they
 * were left, also by Cancel. The period is not checked: "From" may be later than "To". Times are shown in the locale's
 * format; an application may set its own.
 *
 * Enter accepts (on a button, it presses that) and Escape rejects, except that Enter in the search goes to the next
 * match and Shift+Enter to the previous one, so that looking for an object does not close the dialog.
 *
 * The widgets are for presetting and reading; all of them belong to the dialog. The buttons "Calendar" bear an icon if
 * the application has ":/Pic/resources/calendar1.png" among its resources when the dialog is made.
 */
class PARDEL_EXPORT DialogObjsFromTo : public QDialog
{
    Q_OBJECT

public:
    QDateTimeEdit* dateFrom; ///< Start of the period.
    QDateTimeEdit* dateTo;   ///< End of the period.
    TreeObjCheckable* tree;  ///< The objects to choose.
    /// What to make. One of the three is checked, at first rbOnlyReports. Hidden until an application shows them.
    /// @{
    QRadioButton* rbOnlyPlayer;
    QRadioButton* rbOnlyReports;
    QRadioButton* rbPlayerWithReports;
    /// @}
    QCheckBox* cbRemember;     ///< Whether the application should store the choice; unchecked at first.
    QCheckBox* cbViewLogs;     ///< Unchecked and hidden at first.
    QCheckBox* cbViewPackets;  ///< Unchecked and hidden at first.
    int calendarTarget;        ///< What the open calendar will set: 1 dateFrom, 2 dateTo; 0 while it is closed.
    Calendar* calendar;        ///< Picks the day for both times; a child of the dialog.
    QStatusBar statusBar;      ///< The caller's message.
    QLineEdit* searchEdit;     ///< The beginning of the names to look for.
    QToolButton* btnPrevious;  ///< Goes to the previous match.
    QToolButton* btnNext;      ///< Goes to the next match.
    QToolButton* btnClear;     ///< Does what ClearFind does.
    QLabel* findLabel;         ///< "Match: 3", "Match not found", or "Find" while nothing is looked for.
    QHBoxLayout* searchLayout; ///< The row of findLabel, searchEdit and the three buttons.

    /** A hidden dialog without a parent, with an empty tree and Qt's default times. */
    DialogObjsFromTo();

    /**
     * Shows the dialog with @p message in its status bar, which stays there until the next one.
     *
     * From hidden, the search text is cleared, which collapses the tree if there was one; a visible dialog keeps its
     * search and is raised and activated.
     */
    void showWithStatus(QString message);

public Q_SLOTS:
    /** Opens the calendar at the day of dateFrom; one that is open already goes there, and will set dateFrom. */
    void OnDateStart_clicked();
    /** The same for dateTo. */
    void OnDateEnd_clicked();
    /** Takes the calendar's day over if @p result is 1, leaving the time of day; sets calendarTarget to 0 always. */
    void onFinishedCalendar(int result);
    /** Closes the calendar as if by Cancel, whatever the result: a calendar does not stay open without its dialog. */
    void onFinished(int result);
    /**
     * Goes to the first item whose name begins with @p text in any case, and counts all of them in findLabel; an empty
     * text ends the search. Groups count like objects.
     */
    void OnSearchTree(QString text);
    /** Clears searchEdit, and with it the search. */
    void ClearFind();

protected:
    /** Makes Enter in the search go to the next or previous match. */
    bool eventFilter(QObject* watched, QEvent* event) override;
    /** Makes Enter anywhere else press this dialog's own default button, also beside an open calendar. */
    void keyPressEvent(QKeyEvent* event) override;
};
