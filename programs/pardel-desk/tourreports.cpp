// The part of the tour that is in the past.

#include "alarmpanel.h"
#include "deskwindow.h"
#include "mapview.h"
#include "objectspanel.h"
#ifdef PARDEL_DESK_PLOTS
#include "plotview.h"
#endif
#include "reporttable.h"
#include "statetable.h"
#include "tour.h"
#include "trackplayer.h"

#include <Pardel/treeobjcheckable.h>

#include <QAction>
#include <QApplication>
#include <QComboBox>
#include <QDateTimeEdit>
#include <QDialogButtonBox>
#include <QFileInfo>
#include <QPrintDialog>
#include <QPushButton>
#include <QRadioButton>
#include <QSlider>
#include <QTabWidget>
#include <QTableView>
#include <QTimer>
#include <QTreeView>

void Tour::choosePeriod()
{
    m_desk.askForPeriod();
    DialogObjsFromTo& dialog = m_desk.dialog;
    dialog.tree->setCheckedSelectAll(Qt::Unchecked);
    const auto accepts = [&] {
        return dialog.findChild<QDialogButtonBox*>()->button(QDialogButtonBox::Ok)->isEnabled();
    };
    await([&] { return !accepts(); }, "no Ok until an object is ticked");
    for (const int id : {2, 3, 4, 5}) {
        const QModelIndex index = indexOf(*dialog.tree, id);
        dialog.tree->getTreeView()->model()->setData(index, Qt::Checked, Qt::CheckStateRole);
    }
    const QDateTime to = dialog.dateTo->dateTime();
    dialog.dateTo->setDateTime(dialog.dateFrom->dateTime().addSecs(-60));
    expect(!accepts() && !dialog.statusBar.currentMessage().isEmpty(), "what is wrong with the period");
    save(dialog, "period-refused");
    dialog.dateTo->setDateTime(to);
    await(accepts, "Ok for objects and a period");
    dialog.showWithStatus(DeskWindow::tr("Objects and period of the report"));
    dialog.tree->getTreeView()->scrollTo(indexOf(*dialog.tree, 3), QAbstractItemView::PositionAtCenter);
    save(dialog, "period");
}

void Tour::replay()
{
    m_desk.dialog.rbPlayerWithReports->setChecked(true);
    m_desk.dialog.accept();
    TrackPlayer& player = *m_desk.player;
    expect(player.isVisible() && m_desk.tabs->isTabVisible(1), "the player with the report");
    const QAbstractItemModel& rows = *m_desk.report->table->model();
    expect(rows.rowCount() == 5, "a row of the report for each object, and the totals");
    expect(rows.index(0, 1).data().toDouble() > 0, "a distance in the report");

    const qint64 begin = player.time();
    await([&] { return player.time() > begin; }, "that the replay goes on by itself");
    player.setPlaying(false);
    player.slider->setValue(player.slider->maximum() / 10);
    const auto early = m_desk.map->markOf(clickedObject);
    player.slider->setValue(player.slider->maximum() * 6 / 10);
    const auto late = m_desk.map->markOf(clickedObject);
    expect(early && late && *early != *late, "the object elsewhere at another time");
    m_desk.report->table->selectRow(1);
    save(m_desk, "replay");
    hearMeanwhile();
    tellStretches();
    print();
    leaveViews();
}

/// The table shows now, while the map shows the past.
void Tour::hearMeanwhile()
{
    TrackPlayer& player = *m_desk.player;
    player.setPlaying(true);
    const qint64 played = player.time();
    const auto speed = [&] {
        StateTableModel& states = m_desk.table->states();
        states.flush();
        return states.index(states.rowOf(clickedObject), StateTableModel::Speed).data().toInt();
    };
    expect(speed() != sentSpeed, "another speed than is about to come");
    sendOne(clickedObject);
    await([&] { return speed() == sentSpeed && player.time() > played; }, "what comes during a replay, in the table");
    expect(m_desk.map->isReplay() && player.isPlaying(), "the replay that goes on");
    player.setPlaying(false);
    player.slider->setValue(player.slider->maximum() * 6 / 10);
}

void Tour::print()
{
    bool isShown = false;
    QTimer::singleShot(0, &m_desk, [&isShown] {
        auto* dialog = qobject_cast<QPrintDialog*>(QApplication::activeModalWidget());
        isShown = dialog && dialog->isVisible();
        if (dialog)
            dialog->reject();
    });
    m_desk.report->findChild<QAction*>(QStringLiteral("print"))->trigger();
    expect(isShown, "the dialog for printing");
}

void Tour::leaveViews()
{
    expectWayOut(*m_desk.objects->tree->getTreeView(), "a way out of the tree");
    expectWayOut(*m_desk.report->table, "a way out of the report");
    m_desk.tabs->setCurrentWidget(m_desk.table);
    expectWayOut(*m_desk.table, "a way out of the last states");
    m_desk.tabs->setCurrentWidget(m_desk.alarms);
    expectWayOut(*m_desk.alarms->table, "a way out of the alarms");
    m_desk.tabs->setCurrentWidget(m_desk.report);
}

void Tour::tellStretches()
{
    ReportTable& report = *m_desk.report;
    report.kind->setCurrentIndex(ReportModel::Trips);
    const QAbstractItemModel& rows = *report.table->model();
    expect(rows.rowCount() > 8, "trips and stops of four objects");
    const QModelIndex trip =
        rows.match(rows.index(0, 1), Qt::DisplayRole, ReportModel::tr("Trip"), 1, Qt::MatchExactly).value(0);
    expect(trip.isValid(), "a trip");
    report.table->setCurrentIndex(trip);
    Q_EMIT report.table->activated(trip);
    expect(m_desk.player->time() == trip.data(ReportModel::FromRole).toLongLong(), "the begin of the trip");
    save(m_desk, "trips");
    const QString pdf = m_folder.filePath(QStringLiteral("desk-report.pdf"));
    expect(report.savePdf(pdf).isEmpty() && QFileInfo(pdf).size() > 1000, "the report as PDF");
    report.kind->setCurrentIndex(ReportModel::Summary);
    drawPlot();
}

void Tour::drawPlot()
{
#ifdef PARDEL_DESK_PLOTS
    PlotView& plot = *m_desk.plot;
    m_desk.tabs->setCurrentWidget(&plot);
    expect(plot.pointCount() > 1000, "the speed over the day in a plot");
    plot.value->setCurrentIndex(plot.value->findData(Series::supply));
    expect(plot.pointCount() > 1000, "the supply in a plot");
    m_desk.player->slider->setValue(m_desk.player->slider->maximum() * 6 / 10);
    save(m_desk, "plot");
    m_desk.tabs->setCurrentWidget(m_desk.report);
#endif
}

void Tour::switchModes()
{
    const auto runWith = [&](QRadioButton* mode) {
        m_desk.askForPeriod();
        mode->setChecked(true);
        m_desk.dialog.accept();
    };
    runWith(m_desk.dialog.rbOnlyReports);
    expect(m_desk.player->isHidden() && m_desk.tabs->isTabVisible(1), "only the report");
    runWith(m_desk.dialog.rbOnlyPlayer);
    expect(m_desk.player->isVisible() && !m_desk.tabs->isTabVisible(1), "only the player");
    Q_EMIT m_desk.player->closed();
    expect(m_desk.player->isHidden(), "no player after its end");
}
