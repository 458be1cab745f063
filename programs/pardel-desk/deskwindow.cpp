#include "deskwindow.h"

#include "deskarchive.h"
#include "desksettings.h"
#include "desktime.h"
#include "livesource.h"
#include "mapview.h"
#include "objectspanel.h"
#include "perioddialog.h"
#ifdef PARDEL_DESK_PLOTS
#include "plotview.h"
#endif
#include "reception.h"
#include "reporttable.h"
#include "statetable.h"
#include "trackplayer.h"

#include <Pardel/tlog.h>
#include <Pardel/treeobjcheckable.h>
#include <Pardel/tutils.h>

#include <QAction>
#include <QCheckBox>
#include <QDateTimeEdit>
#include <QElapsedTimer>
#include <QFileDialog>
#include <QInputDialog>
#include <QLabel>
#include <QMenuBar>
#include <QRadioButton>
#include <QSettings>
#include <QSplitter>
#include <QStandardItemModel>
#include <QStatusBar>
#include <QTabWidget>
#include <QTreeView>
#include <QVBoxLayout>

#include <algorithm>

namespace {

constexpr int historyTurn = 20;         // milliseconds of reading in one turn of the event loop
constexpr int newObjectsInterval = 250; // milliseconds in which new objects are gathered
constexpr qint64 oneDay = 24 * 60 * 60;
constexpr int messageTime = 10'000;                 // milliseconds
constexpr std::chrono::milliseconds drainTime{200}; // at the end, for what terminals have sent
constexpr std::chrono::milliseconds storeTime{3000};

} // namespace

DeskWindow::DeskWindow(const DeskSettings& settings, const DeskArchive& archive, TLog& log, KernelNotifyer& kernel)
    : m_settings(settings),
      m_archive(archive),
      m_log(log),
      m_kernel(kernel),
      m_announcer(m_dataHub),
      m_terminals(TerminalSettings::read(settings.ini())),
      m_catalog(archive.objects()),
      objects(new ObjectsPanel(kernel, m_catalog)),
      map(new MapView(m_mapHub, kernel, m_dataHub, m_catalog)),
      table(new StateTable(kernel, m_dataHub, m_catalog)),
      player(new TrackPlayer(kernel, m_playerHub)),
      report(new ReportTable(kernel, m_catalog)),
#ifdef PARDEL_DESK_PLOTS
      plot(new PlotView(kernel, m_catalog, archive.database())),
#else
      plot(nullptr),
#endif
      tabs(new QTabWidget),
      periodDialog(new PeriodDialog(dialog, this)),
      server(m_announcer, m_terminals),
      changes(archive.database()), // before the last states are read, so that none is missed
      capture(m_dataHub, m_terminals.decode),
      m_scaleLabel(new QLabel),
      m_liveLabel(new QLabel)
{
    layOut();
    addMenus();
    connectHubs();
    connectSources();
    fillStates();
    setWindowTitle(tr("Desk"));
}

DeskWindow::~DeskWindow()
{
    if (m_reception) {
        server.drain(drainTime);
        m_announcer.setKeeper(nullptr);
        m_reception->finish(storeTime);
    }
    delete takeCentralWidget(); // the modules use the hubs and the catalog to their end
}

void DeskWindow::layOut()
{
    auto* mapAndPlayer = new QWidget;
    auto* column = new QVBoxLayout(mapAndPlayer);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(0);
    column->addWidget(map, 1);
    column->addWidget(player);
    player->hide();
    tabs->addTab(table, tr("Last states"));
    tabs->addTab(report, tr("Report"));
#ifdef PARDEL_DESK_PLOTS
    tabs->addTab(plot, tr("Plot"));
    connect(plot, &PlotView::saved, this, [this](const QString& file) { tell(tr("Plot saved: %1").arg(file)); });
#endif
    showReportTabs(false);

    auto* right = new QSplitter(Qt::Vertical);
    right->addWidget(mapAndPlayer);
    right->addWidget(tabs);
    right->setStretchFactor(0, 1);
    right->setSizes({450, 250});
    auto* all = new QSplitter;
    all->addWidget(objects);
    all->addWidget(right);
    all->setStretchFactor(1, 1);
    all->setSizes({210, 890});
    setCentralWidget(all);
    for (QLabel* label : {m_scaleLabel, m_liveLabel})
        label->setIndent(12);
    m_liveLabel->setObjectName(QStringLiteral("live"));
    statusBar()->addPermanentWidget(m_scaleLabel);
    statusBar()->addPermanentWidget(m_liveLabel);
    resize(1100, 760);

    for (QRadioButton* mode : {dialog.rbPlayerWithReports, dialog.rbOnlyPlayer, dialog.rbOnlyReports})
        mode->show();
    dialog.rbPlayerWithReports->setChecked(true);
}

void DeskWindow::showReportTabs(bool reports)
{
    for (int tab = 1; tab < tabs->count(); ++tab)
        tabs->setTabVisible(tab, reports);
}

void DeskWindow::addMenus()
{
    QMenu* desk = menuBar()->addMenu(tr("&Desk"));
    QAction* utc = desk->addAction(tr("Times in &UTC"));
    utc->setCheckable(true);
    utc->setChecked(DeskTime::spec() == Qt::UTC);
    connect(utc, &QAction::toggled, this, &DeskWindow::showTimesInUtc);
    desk->addAction(tr("&Quit"), this, &QWidget::close, QKeySequence::Quit);
    QMenu* live = menuBar()->addMenu(tr("&Live"));
    live->addAction(tr("Replay a &capture…"), this, &DeskWindow::askForCapture);
    live->addAction(tr("&Stop the capture"), &capture, &CaptureReplay::stop);
    QMenu* reports = menuBar()->addMenu(tr("&Reports"));
    reports->addAction(tr("&Report or replay…"), &m_playerHub, &PlayerNotifyer::OnSelectObjects,
                       QKeySequence(QStringLiteral("Ctrl+R")));
    reports->addAction(tr("&End the replay"), this, &DeskWindow::endReplay);
    QMenu* view = menuBar()->addMenu(tr("&Map"));
    view->addAction(tr("Show &all"), map, &MapView::showAll, QKeySequence(QStringLiteral("Ctrl+0")));
}

void DeskWindow::connectHubs()
{
    connect(&m_kernel, &KernelNotifyer::OnSetInformationAboutCurrentUserSignal, this, &DeskWindow::showUser);
    connect(&m_kernel, &KernelNotifyer::OnWindowSetTitleSignal, this, &QWidget::setWindowTitle);
    connect(&m_mapHub, &Notifyer::OnObjectsClickedSignal, this, [this](const QList<qint64>* ids) {
        m_kernel.OnSelectIdObject(static_cast<unsigned int>(ids->constFirst()));
    });
    connect(&m_mapHub, &Notifyer::OnMapScaleChangedSignal, this,
            [this](int scale) { m_scaleLabel->setText(tr("1 : %1").arg(scale)); });
    connect(&m_playerHub, &PlayerNotifyer::OnSelectObjectsSignal, this, &DeskWindow::askForPeriod);
    connect(&m_dataHub, &DataPumpNotifyer::OnDataRecievedSignal, this, &DeskWindow::takeReport);

    m_newObjects.setSingleShot(true);
    m_newObjects.setInterval(newObjectsInterval);
    connect(&m_newObjects, &QTimer::timeout, &m_kernel, &KernelNotifyer::OnObjectsReceived);
    connect(&m_historyTimer, &QTimer::timeout, this, &DeskWindow::readSomeHistory);
    const auto showTicked = [this](const QList<int>& ids) {
        map->setTicked(ids);
        m_withoutHistory.clear();
        std::copy_if(ids.cbegin(), ids.cend(), std::back_inserter(m_withoutHistory),
                     [this](int id) { return !map->hasHistory(id); });
        m_historyTimer.start();
    };
    connect(objects, &ObjectsPanel::tickedChanged, this, showTicked);
    showTicked(objects->tickedObjects());

    connect(&dialog, &QDialog::accepted, this, &DeskWindow::runReport);
    connect(player, &TrackPlayer::closed, this, &DeskWindow::endReplay);
    connect(report, &ReportTable::stretchChosen, this, &DeskWindow::showStretch);
    connect(report, &ReportTable::saved, this, [this](const QString& file) { tell(tr("Report saved: %1").arg(file)); });
}

void DeskWindow::connectSources()
{
    connect(&server, &TerminalServer::happened, this, [this](const QString& text) { m_log.Message(text); });
    connect(&server, &TerminalServer::countersChanged, this, &DeskWindow::showServer);
    connect(&changes, &ArchiveChanges::statesChanged, this, &DeskWindow::takeStates);
    connect(&changes, &ArchiveChanges::troubleChanged, this, &DeskWindow::showReading);
    connect(&capture, &CaptureReplay::happened, this, &DeskWindow::tell);
}

void DeskWindow::tell(const QString& text)
{
    statusBar()->showMessage(text, messageTime);
    m_log.Message(text);
}

void DeskWindow::showUser(CurrentUser& user)
{
    m_common.currentUser = user;
    const QString name = m_common.Get_DispFIO().simplified();
    m_kernel.OnWindowSetTitle(tr("%1 – Desk").arg(name));
    tell(tr("Logged in: %1").arg(name));
    show();
    startLive();
}

void DeskWindow::startLive()
{
    QString complaint;
    const LiveSource source = chooseLiveSource(m_settings.ini(), m_archive.database(), &complaint);
    if (!complaint.isEmpty())
        tell(complaint);
    if (source == LiveSource::Archive)
        startReading();
    else
        startServer();
}

void DeskWindow::startReading()
{
    m_log.Message(tr("Live data come from the archive"));
    changes.start();
    showReading(QString());
}

void DeskWindow::takeStates(const QVector<MobData>& states)
{
    for (MobData state : states)
        m_dataHub.OnDataRecieved(state);
}

void DeskWindow::showReading(const QString& trouble)
{
    const QSqlDatabase& db = m_archive.database();
    m_kernel.OnConnectionStateChanged(trouble.isEmpty(), db.hostName().isEmpty() ? db.databaseName() : db.hostName());
    m_liveLabel->setText(trouble.isEmpty() ? tr("live from the archive") : tr("no live data from the archive"));
    m_liveLabel->setToolTip(trouble);
    if (!trouble.isEmpty())
        tell(trouble);
}

void DeskWindow::startServer()
{
    for (const QString& complaint : m_terminals.complaints)
        m_log.Message(complaint);
    const bool listens = server.listen();
    if (!listens)
        tell(server.errorString());
    else if (m_settings.ini().value(QStringLiteral("Live/Store"), true).toBool())
        startStoring();
    m_kernel.OnConnectionStateChanged(listens, m_terminals.address);
    showServer();
}

void DeskWindow::startStoring()
{
    ReceptionSettings storing;
    storing.spool = m_settings.folder() + QLatin1String("/spool");
    storing.store = DeskArchive::storing(m_settings);
    storing.store.decode = m_terminals.decode;
    m_reception = std::make_unique<Reception>(storing);
    connect(m_reception.get(), &Reception::happened, this, &DeskWindow::tell);
    connect(m_reception.get(), &Reception::roomChanged, &server, &TerminalServer::setReading);
    const QString error = m_reception->start();
    if (error.isEmpty())
        m_announcer.setKeeper(m_reception.get());
    else
        tell(tr("What terminals send is shown, but not stored: %1").arg(error));
}

void DeskWindow::showServer()
{
    if (server.port() == 0) {
        m_liveLabel->setText(tr("no terminals are let in"));
        return;
    }
    const TerminalCounters counters = server.counters();
    const DecodeCounts& decoded = counters.decoded;
    m_liveLabel->setText(tr("%1:%2  ·  %3 connected  ·  %4 packets, %5 bad")
                             .arg(m_terminals.address)
                             .arg(server.port())
                             .arg(counters.open)
                             .arg(decoded.packets)
                             .arg(decoded.badChecksums + decoded.rejected));
}

void DeskWindow::fillStates()
{
    const QString error = m_archive.readStates([this](const MobData& state) {
        table->states().take(state);
        if (TUtils::isAlarm(state))
            m_alarmed.insert(state.idObject);
    });
    if (!error.isEmpty())
        tell(tr("The archive cannot be read: %1").arg(error));
    table->states().flush();
}

void DeskWindow::readSomeHistory()
{
    const qint64 period = m_settings.ini().value(QStringLiteral("Map/TrackMinutes"), 60).toLongLong() * 60;
    QElapsedTimer turn;
    turn.start();
    while (!m_withoutHistory.isEmpty() && turn.elapsed() < historyTurn) {
        const qint32 id = m_withoutHistory.takeFirst();
        const qint64 last = m_archive.lastTime(id);
        map->addHistory(id, last > 0 ? m_archive.track(id, last - period, last) : Track());
    }
    if (!m_withoutHistory.isEmpty())
        return;
    m_historyTimer.stop();
    map->showWhatCame();
}

void DeskWindow::takeReport(const MobData& received)
{
    const qint32 id = received.idObject;
    if (!m_catalog.contains(id)) {
        m_catalog.add(id, {QString(), tr("New terminals")});
        m_log.Message(tr("New object: %1").arg(m_catalog.name(id)));
        if (!m_newObjects.isActive())
            m_newObjects.start();
    }
    if (!TUtils::isAlarm(received)) {
        m_alarmed.remove(id);
    } else if (!m_alarmed.contains(id)) {
        m_alarmed.insert(id);
        tell(tr("Alarm: %1").arg(m_catalog.name(id)));
    }
}

void DeskWindow::askForPeriod()
{
    if (dialog.isHidden()) {
        const QString remembered = QStringLiteral("Report/Objects");
        if (m_chosen.isEmpty()) { // for the first time
            for (const QString& id : m_settings.ini().value(remembered).toStringList())
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

    m_common.Set_CursorIcon_Sandglass(true);
    Tracks tracks;
    QString error;
    for (const int id : qAsConst(m_chosen))
        tracks.emplace(id, m_archive.track(id, from, to, &error));
    m_common.Set_CursorIcon_Sandglass(false);
    if (!error.isEmpty())
        return tell(tr("The archive cannot be read: %1").arg(error));

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

void DeskWindow::askForCapture()
{
    const QString file = QFileDialog::getOpenFileName(this, tr("Replay a capture"));
    if (file.isEmpty())
        return;
    bool ok = false;
    const double speed = QInputDialog::getDouble(this, tr("Replay a capture"), tr("Times as fast as it was sent"), 60,
                                                 0.1, 100'000, 1, &ok);
    if (ok)
        replayCapture(file, speed);
}

void DeskWindow::replayCapture(const QString& file, double speed)
{
    capture.setSpeed(speed);
    if (!capture.start(file))
        tell(capture.errorString());
}
