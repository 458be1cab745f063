#include "deskwindow.h"

#include "alarmpanel.h"
#include "deskarchive.h"
#include "desksettings.h"
#include "desktime.h"
#include "livesource.h"
#include "maptiles.h"
#include "mapview.h"
#include "objectmenu.h"
#include "objectspanel.h"
#include "perioddialog.h"
#ifdef PARDEL_DESK_PLOTS
#include "plotview.h"
#endif
#include "reception.h"
#include "reporttable.h"
#include "statetable.h"
#include "trackplayer.h"
#include "windowmemory.h"

#include <Pardel/tlog.h>
#include <Pardel/treeobjcheckable.h>

#include <QAction>
#include <QCheckBox>
#include <QDateTimeEdit>
#include <QElapsedTimer>
#include <QFileDialog>
#include <QInputDialog>
#include <QLabel>
#include <QLineEdit>
#include <QMenuBar>
#include <QRadioButton>
#include <QScopedValueRollback>
#include <QScreen>
#include <QSettings>
#include <QSplitter>
#include <QStandardItemModel>
#include <QStatusBar>
#include <QTabBar>
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

/// Readable whatever the palette is.
QString warningStyle(QRgb background)
{
    return QStringLiteral("background: %1; color: black; font-weight: bold; padding: 0 4px")
        .arg(QColor(background).name());
}

} // namespace

DeskWindow::DeskWindow(const DeskSettings& settings, const DeskArchive& archive, TLog& log, KernelNotifyer& kernel)
    : m_settings(settings),
      m_archive(archive),
      m_log(log),
      m_kernel(kernel),
      m_announcer(m_dataHub),
      m_terminals(TerminalSettings::read(settings.ini())),
      m_catalog(archive.objects()),
      presence(ObjectStates::Thresholds::read(settings.ini())),
      objects(new ObjectsPanel(kernel, m_catalog)),
      map(new MapView(m_mapHub, kernel, m_dataHub, m_catalog)),
      objectMenu(new ObjectMenu(kernel, *map, m_catalog, map)),
      table(new StateTable(kernel, m_dataHub, m_catalog)),
      player(new TrackPlayer(kernel, m_playerHub)),
      report(new ReportTable(kernel, m_catalog)),
#ifdef PARDEL_DESK_PLOTS
      plot(new PlotView(kernel, m_catalog, archive.database())),
#else
      plot(nullptr),
#endif
      alarms(new AlarmPanel(m_catalog, archive.database(), settings.ini())),
      tabs(new QTabWidget),
      periodDialog(new PeriodDialog(dialog, this)),
      server(m_announcer, m_terminals),
      changes(archive.database()), // before the last states are read, so that none is missed
      capture(m_captureHub, m_terminals.decode),
      m_scaleLabel(new QLabel),
      m_liveLabel(new QLabel),
      m_alarmLabel(new QLabel),
      m_presenceLabel(new QLabel)
{
    layOut();
    addMenus();
    connectHubs();
    connectSources();
    connectMap();
    connectAlarms();
    fillStates();
    setWindowTitle(tr("Desk"));
    WindowMemory::restore(*this, m_settings.ini());
}

DeskWindow::~DeskWindow()
{
    WindowMemory::save(*this, m_settings.ini());
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
    tabs->addTab(alarms, tr("Alarms"));
    map->setStates(presence);
    table->setPresence(presence);
    objects->setPresence(presence);

    auto* right = new QSplitter(Qt::Vertical);
    right->addWidget(mapAndPlayer);
    right->addWidget(tabs);
    right->setStretchFactor(0, 1);
    right->setObjectName(QStringLiteral("MapAndTables"));
    auto* all = new QSplitter;
    all->addWidget(objects);
    all->addWidget(right);
    all->setStretchFactor(1, 1);
    all->setObjectName(QStringLiteral("ObjectsAndMap"));
    table->setObjectName(QStringLiteral("LastStates"));
    alarms->table->setObjectName(QStringLiteral("Alarms"));
    setCentralWidget(all);
    for (QLabel* label : {m_alarmLabel, m_presenceLabel, m_scaleLabel, m_liveLabel}) {
        label->setIndent(12);
        statusBar()->addPermanentWidget(label);
    }
    m_liveLabel->setObjectName(QStringLiteral("live"));
    // As large as text of this size wants it, if the screen is.
    const QSize wanted(fontMetrics().averageCharWidth() * 150, fontMetrics().height() * 42);
    resize(wanted.boundedTo(screen()->availableSize() * 9 / 10));
    right->setSizes({height() * 6 / 10, height() * 4 / 10});
    all->setSizes({width() / 4, width() * 3 / 4});

    for (QRadioButton* mode : {dialog.rbPlayerWithReports, dialog.rbOnlyPlayer, dialog.rbOnlyReports})
        mode->show();
    dialog.rbPlayerWithReports->setChecked(true);
}

void DeskWindow::showReportTabs(bool reports)
{
    tabs->setTabVisible(tabs->indexOf(report), reports);
#ifdef PARDEL_DESK_PLOTS
    tabs->setTabVisible(tabs->indexOf(plot), reports);
#endif
}

void DeskWindow::addMenus()
{
    QMenu* desk = menuBar()->addMenu(tr("&Desk"));
    QAction* utc = desk->addAction(tr("Times in &UTC"));
    utc->setCheckable(true);
    utc->setChecked(DeskTime::spec() == Qt::UTC);
    connect(utc, &QAction::toggled, this, &DeskWindow::showTimesInUtc);
    const auto filter = [this] {
        objects->filterEdit->setFocus(Qt::ShortcutFocusReason);
        objects->filterEdit->selectAll();
    };
    desk->addAction(tr("&Filter the objects"), this, filter, QKeySequence(QStringLiteral("Ctrl+Shift+F")));
    desk->addAction(tr("&Quit"), this, &QWidget::close, QKeySequence::Quit);
    QMenu* find = menuBar()->addMenu(tr("&Objects"));
    find->addAction(tr("&Find…"), objects, &ObjectsPanel::find, QKeySequence::Find);
    find->addAction(tr("Find &next"), objects, &ObjectsPanel::findNext, QKeySequence(Qt::Key_F3));
    find->addAction(tr("Find &previous"), objects, &ObjectsPanel::findPrevious,
                    QKeySequence(QStringLiteral("Shift+F3")));
    QMenu* live = menuBar()->addMenu(tr("&Live"));
    live->addAction(tr("Replay a &capture…"), this, &DeskWindow::askForCapture);
    QAction* stop = live->addAction(tr("&Stop the capture"), &capture, &CaptureReplay::stop);
    stop->setEnabled(false);
    connect(&capture, &CaptureReplay::stateChanged, stop,
            [stop](CaptureReplay::State state) { stop->setEnabled(state != CaptureReplay::State::Stopped); });
    QMenu* reports = menuBar()->addMenu(tr("&Reports"));
    reports->addAction(tr("&Report or replay…"), &m_playerHub, &PlayerNotifyer::OnSelectObjects,
                       QKeySequence(QStringLiteral("Ctrl+R")));
    QAction* play = reports->addAction(
        tr("&Play or pause"), player, [this] { player->setPlaying(!player->isPlaying()); },
        QKeySequence(QStringLiteral("Ctrl+Space")));
    play->setEnabled(false);
    connect(map, &MapView::replayChanged, play, &QAction::setEnabled);
    QAction* end = reports->addAction(tr("&End the replay"), this, &DeskWindow::endReplay);
    end->setEnabled(false);
    connect(map, &MapView::replayChanged, end, &QAction::setEnabled);
    QMenu* alarm = menuBar()->addMenu(tr("&Alarms"));
    const auto showList = [this] {
        tabs->setCurrentWidget(alarms);
        alarms->table->setFocus();
    };
    alarm->addAction(tr("&List of alarms"), this, showList, QKeySequence(QStringLiteral("Ctrl+L")));
    alarm->addAction(tr("&Acknowledge the selected"), alarms, &AlarmPanel::acknowledge,
                     QKeySequence(QStringLiteral("Ctrl+K")));
    QMenu* view = menuBar()->addMenu(tr("&Map"));
    view->addAction(tr("Show &all"), map, &MapView::showAll, QKeySequence(QStringLiteral("Ctrl+0")));
    view->addSeparator();
    objectMenu->addTo(*view); // of the selected object
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

void DeskWindow::connectMap()
{
    const TileSettings wanted = TileSettings::read(m_settings.ini(), m_settings.folder());
    if (!wanted.complaint().isEmpty())
        m_log.Message(wanted.complaint());
    objectMenu->addToMap();
    objectMenu->addTo(*table, StateTableModel::idRole);
    objectMenu->addTo(*objects->tree->getTreeView(), ObjectCatalog::idRole);
    connect(objectMenu, &ObjectMenu::todayWanted, this, &DeskWindow::showToday);
    connect(objectMenu, &ObjectMenu::reportWanted, this, &DeskWindow::reportOn);
    auto* tiles = new MapTiles(wanted, map);
    map->setTiles(tiles);
    connect(tiles, &MapTiles::troubleChanged, this, [this, tiles] {
        m_log.Message(tiles->trouble().isEmpty() ? tr("The map's tiles come again")
                                                 : tr("The map's tiles do not come: %1").arg(tiles->trouble()));
    });
}

void DeskWindow::connectAlarms()
{
    connect(&m_captureHub, &DataPumpNotifyer::OnDataRecievedSignal, this, [this](MobData& played) {
        const QScopedValueRollback<bool> fromCapture(m_fromCapture, true);
        m_dataHub.OnDataRecieved(played);
    });
    connect(&alarms->list, &AlarmList::markChanged, &presence, &ObjectStates::setAlarm);
    connect(&alarms->list, &AlarmList::raised, this,
            [this](const DeskAlarm& alarm) { tellSome(tr("Alarm: %1").arg(m_catalog.name(alarm.object))); });
    connect(alarms, &AlarmPanel::wanted, this, &DeskWindow::goTo);
    connect(alarms, &AlarmPanel::changed, this, &DeskWindow::showAlarms);
    connect(alarms, &AlarmPanel::troubleChanged, this, [this](const QString& trouble) {
        tell(trouble.isEmpty() ? tr("Alarms are shared with other desks again") : trouble);
    });
    connect(&presence, &ObjectStates::secondPassed, this, &DeskWindow::showPresence);
}

void DeskWindow::goTo(qint32 id)
{
    if (!player->isHidden()) {
        endReplay();
        tell(tr("The replay has ended, to show where %1 is now").arg(m_catalog.name(id)));
    }
    objects->tick(id);
    m_kernel.OnSelectIdObject(static_cast<unsigned int>(id));
    map->centreOn(id);
}

void DeskWindow::showAlarms()
{
    const int count = alarms->list.newCount();
    const int tab = tabs->indexOf(alarms);
    tabs->setTabText(tab, count == 0 ? tr("Alarms") : tr("Alarms (%1 new)").arg(count));
    tabs->setTabIcon(tab, count == 0 ? QIcon() : ObjectMark{Presence::Online, true, false}.icon());
    m_alarmLabel->setText(tr("New alarms: %1").arg(count));
    m_alarmLabel->setStyleSheet(count == 0 ? QString() : warningStyle(alarmColor));
    m_alarmLabel->setVisible(count > 0);
}

void DeskWindow::showPresence()
{
    const qint64 leftOut = m_messages.takeLeftOut();
    if (leftOut > 0)
        m_log.Message(tr("%1 more messages of new objects and alarms in a second are left out").arg(leftOut));
    const int known = static_cast<int>(m_catalog.ids().size());
    const int online = presence.onlineCount();
    QStringList parts{tr("%1 online").arg(online)};
    if (presence.heardCount() > online)
        parts += tr("%1 silent").arg(presence.heardCount() - online);
    if (known > presence.heardCount())
        parts += tr("%1 never heard").arg(known - presence.heardCount());
    m_presenceLabel->setText(parts.join(QStringLiteral(", ")));
}

void DeskWindow::tellSome(const QString& text)
{
    if (const qint64 leftOut = m_messages.takeLeftOut())
        m_log.Message(tr("%1 more messages of new objects and alarms in a second are left out").arg(leftOut));
    if (m_messages.admits())
        tell(text);
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
    alarms->setUser(name);
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
    m_liveLabel->setStyleSheet(trouble.isEmpty() ? QString() : warningStyle(silentColor));
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
        m_liveLabel->setText(tr("No terminals are let in: %1").arg(server.errorString()));
        m_liveLabel->setToolTip(m_liveLabel->text());
        m_liveLabel->setStyleSheet(warningStyle(silentColor));
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
    const int expected = m_settings.ini().value(QStringLiteral("Live/ExpectedTerminals"), 1).toInt();
    const bool tooFew = counters.open < expected;
    m_liveLabel->setStyleSheet(tooFew ? warningStyle(silentColor) : QString());
    m_liveLabel->setToolTip(tooFew ? tr("At least %1 terminals are expected").arg(expected) : QString());
}

void DeskWindow::fillStates()
{
    Tracks last;
    const QString error = m_archive.readStates([&](const MobData& state) {
        table->states().take(state);
        presence.hear(state.idObject, state.timeUnix);
        last[state.idObject] = {TrackPoint::of(state)};
    });
    alarms->start(last, [this](qint32 id, qint64 from, qint64 to) { return m_archive.track(id, from, to); });
    if (!error.isEmpty())
        tell(tr("The archive cannot be read: %1").arg(error));
    for (const qint32 id : m_catalog.ids())
        table->states().add(id);
    table->states().flush();
    showPresence();
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
        map->addHistory(id, {}); // what the archive has of it are the reports that come now
        tellSome(tr("New object: %1").arg(m_catalog.name(id)));
        if (!m_newObjects.isActive())
            m_newObjects.start();
    }
    presence.hear(id, received.timeUnix);
    alarms->list.take(id, TrackPoint::of(received), !m_fromCapture);
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
