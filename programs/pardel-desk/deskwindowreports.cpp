// What the desk shows of a period: reports, replays, stretches of tracks.

#include "deskarchive.h"
#include "desksettings.h"
#include "desktime.h"
#include "deskwindow.h"
#include "mapview.h"
#include "objectspanel.h"
#include "perioddialog.h"
#ifdef PARDEL_DESK_PLOTS
#include "plotview.h"
#endif
#include "reporttable.h"
#include "statetable.h"
#include "trackplayer.h"

#include <Pardel/tlog.h>
#include <Pardel/treeobjcheckable.h>

#include <QCheckBox>
#include <QDateTimeEdit>
#include <QProgressDialog>
#include <QRadioButton>
#include <QSettings>
#include <QStandardItemModel>
#include <QStatusBar>
#include <QTabWidget>
#include <QTreeView>

namespace {

constexpr qint64 oneDay = 24 * 60 * 60; // seconds

} // namespace

void DeskWindow::askForPeriod()
{
    if (dialog.isHidden()) {
        const QString remembered = QStringLiteral("Report/Objects");
        if (m_chosen.isEmpty()) { // for the first time
            const QStringList ids = m_settings.ini().value(remembered).toStringList();
            for (const QString& id : ids)
                m_chosen.append(id.toInt());
            const qint64 newest = m_archive.newestTime();
            const QDateTime end = DeskTime::at((newest / 60 + 1) * 60); // minutes are shown
            dialog.dateFrom->setDateTime(end.addSecs(-oneDay));
            dialog.dateTo->setDateTime(end);
        }
        if (m_chosen.isEmpty())
            m_chosen = objects->tickedObjects();
        QStandardItemModel model;
        m_catalog.fillTreeModel(model);
        dialog.tree->setModelAndCheckedO(&model, &m_chosen);
        dialog.tree->getTreeView()->setHeaderHidden(true);
        periodDialog->fitScreen();
    }
    dialog.showWithStatus(tr("Objects and period of the report"));
    dialog.tree->getTreeView()->expandAll();
    periodDialog->check();
}

void DeskWindow::runReport()
{
    dialog.tree->getCheckedObjs(&m_chosen);
    const qint64 from = dialog.dateFrom->dateTime().toSecsSinceEpoch();
    const qint64 to = dialog.dateTo->dateTime().toSecsSinceEpoch();
    const QString complaint = periodDialog->complaint();
    if (!complaint.isEmpty())
        return tell(complaint);
    if (dialog.cbRemember->isChecked()) {
        QStringList ids;
        std::transform(m_chosen.cbegin(), m_chosen.cend(), std::back_inserter(ids),
                       [](int id) { return QString::number(id); });
        m_settings.ini().setValue(QStringLiteral("Report/Objects"), ids);
    }

    QString error;
    const std::optional<Tracks> read = readTracks(from, to, &error);
    if (!error.isEmpty())
        return tell(tr("The archive cannot be read: %1").arg(error));
    if (!read)
        return tell(tr("The report was cancelled"));
    const Tracks& tracks = *read;

    const bool plays = !dialog.rbOnlyReports->isChecked();
    const bool reports = !dialog.rbOnlyPlayer->isChecked();
    showReportTabs(reports);
#ifdef PARDEL_DESK_PLOTS
    plot->setPeriod(m_chosen, from, to);
#endif
    if (reports) {
        report->showReport({tracks, from, to, ReportThresholds::read(m_settings.ini())});
        tabs->setCurrentWidget(report);
    }
    player->setVisible(plays);
    if (plays)
        map->startReplay(tracks);
    else
        map->stopReplay();
    m_kernel.OnDataToReport(static_cast<unsigned int>(from), static_cast<unsigned int>(to), m_chosen,
                            static_cast<unsigned int>(from));
    player->setPlaying(plays);
    statusBar()->showMessage(tr("Report of %1 objects").arg(m_chosen.size()), messageTime);
    m_log.Message(
        tr("Report of %1 objects, %2 to %3").arg(m_chosen.size()).arg(dialog.dateFrom->text(), dialog.dateTo->text()));
}

/// Of the chosen objects; nothing if somebody cancels it.
std::optional<Tracks> DeskWindow::readTracks(qint64 from, qint64 to, QString* error)
{
    m_common.Set_CursorIcon_Sandglass(true);
    QProgressDialog progress(tr("Reading the archive…"), tr("Cancel"), 0, static_cast<int>(m_chosen.size()), this);
    progress.setWindowModality(Qt::ApplicationModal); // only then it is drawn in between
    Tracks tracks;
    const QList<int> ids = m_chosen;
    for (const int id : ids) {
        tracks.emplace(id, m_archive.track(id, from, to, error));
        progress.setValue(static_cast<int>(tracks.size()));
        if (!error->isEmpty() || progress.wasCanceled())
            break;
    }
    m_common.Set_CursorIcon_Sandglass(false);
    return progress.wasCanceled() ? std::nullopt : std::optional<Tracks>(std::move(tracks));
}

void DeskWindow::showToday(qint32 id)
{
    QString error;
    const QDateTime now = DeskTime::at(QDateTime::currentSecsSinceEpoch());
    const Track track =
        m_archive.track(id, now.date().startOfDay(now.timeSpec()).toSecsSinceEpoch(), now.toSecsSinceEpoch(), &error);
    if (!error.isEmpty())
        return tell(tr("The archive cannot be read: %1").arg(error));
    map->showDay(id, track);
    const QString text = track.isEmpty() ? tr("%1: nothing in the archive today") : tr("%1: today's track");
    statusBar()->showMessage(text.arg(m_catalog.name(id)), messageTime);
}

void DeskWindow::reportOn(qint32 id)
{
    askForPeriod();
    dialog.tree->setCheckedSelectAll(Qt::Unchecked);
    QAbstractItemModel* model = dialog.tree->getTreeView()->model();
    const QModelIndexList rows =
        model->match(model->index(0, 0), ObjectCatalog::idRole, id, -1, Qt::MatchExactly | Qt::MatchRecursive);
    for (const QModelIndex& row : rows)
        model->setData(row, Qt::Checked, Qt::CheckStateRole);
    if (!rows.isEmpty())
        dialog.tree->getTreeView()->scrollTo(rows.constFirst());
}

void DeskWindow::showStretch(qint32 id, qint64 from, qint64 to, qint64 now)
{
    if (player->isHidden())
        map->startReplay(report->shown().tracks);
    player->show();
    player->setPlaying(false);
    m_kernel.OnSelectIdObject(static_cast<unsigned int>(id));
    m_kernel.OnTimeSelectedByReport(static_cast<unsigned int>(now));
    map->showStretch(id, from, to);
}

void DeskWindow::showTimesInUtc(bool utc)
{
    DeskTime::setUtc(utc);
    m_settings.ini().setValue(QStringLiteral("Desk/Times"), utc ? QStringLiteral("utc") : QStringLiteral("local"));
    periodDialog->showZone();
    table->viewport()->update();
    map->update();
    report->showReport(report->shown());
    if (player->isVisible())
        m_kernel.OnTimeSelectedByReport(static_cast<unsigned int>(player->time()));
}

void DeskWindow::endReplay()
{
    player->setPlaying(false);
    player->hide();
    map->stopReplay();
}
