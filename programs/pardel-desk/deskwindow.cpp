#include "deskwindow.h"

#include "alarmpanel.h"
#include "deskarchive.h"
#include "deskcolors.h"
#include "desksettings.h"
#include "desktime.h"
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
#include <QDeadlineTimer>
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
#include <QStatusBar>
#include <QTabBar>
#include <QTabWidget>
#include <QTreeView>
#include <QVBoxLayout>

#include <algorithm>
#include <utility>

namespace {

constexpr int newObjectsInterval = 250;             // milliseconds in which new objects are gathered
constexpr std::chrono::milliseconds drainTime{200}; // at the end, for what terminals have sent
constexpr std::chrono::milliseconds storeTime{3000};
constexpr int usualLetters = 150; // that the window is wide, and the lines that it is high
constexpr int usualLines = 42;

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
      report(new ReportTable(kernel, m_catalog, settings.ini())),
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
    finish();
    delete takeCentralWidget(); // the modules use the hubs and the catalog to their end
}

bool DeskWindow::finish()
{
    if (std::exchange(m_isFinished, true))
        return true;
    WindowMemory::save(*this, m_settings.ini());
    m_settings.ini().sync();
    const QDeadlineTimer deadline(storeTime);
    const auto rest = [&] { return std::chrono::milliseconds(std::max<qint64>(deadline.remainingTime(), 100)); };
    alarms->stop();
    bool ended = true;
    if (m_reception) {
        server.drain(drainTime);
        m_announcer.setKeeper(nullptr);
        ended = m_reception->finish(rest());
    }
    ended = changes.stop(rest()) && ended;
    if (const int unstored = alarms->finish(rest()))
        m_log.Message(tr("Changes of alarms that are not stored: %1. What was raised or acknowledged last is not known "
                         "to other desks, "
                         "nor to this one when it is started again")
                          .arg(unstored));
    return ended;
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
    // Beside what always stands there, little is left for a message.
    connect(statusBar(), &QStatusBar::messageChanged, statusBar(), &QWidget::setToolTip);
    for (QLabel* label : {m_alarmLabel, m_presenceLabel, m_scaleLabel, m_liveLabel}) {
        label->setIndent(12);
        statusBar()->addPermanentWidget(label);
    }
    m_liveLabel->setObjectName(QStringLiteral("live"));
    // As large as text of this size wants it, if the screen is.
    const QSize wanted(fontMetrics().averageCharWidth() * usualLetters, fontMetrics().height() * usualLines);
    resize(wanted.boundedTo(screen()->availableSize() * 9 / 10));
    right->setSizes({height() * 6 / 10, height() * 4 / 10});
    all->setSizes({width() / 4, width() * 3 / 4});

    for (QRadioButton* mode : {dialog.rbPlayerWithReports, dialog.rbOnlyPlayer, dialog.rbOnlyReports})
        mode->show();
    dialog.rbPlayerWithReports->setChecked(true);
}

void DeskWindow::resizeEvent(QResizeEvent* event)
{
    QMainWindow::resizeEvent(event);
    fitStatusBar();
}

/// The scale goes first where there is no room for all, as the map has a bar for it.
void DeskWindow::fitStatusBar()
{
    m_liveLabel->updateGeometry(); // a style sheet does not tell that it takes more room
    m_alarmLabel->updateGeometry();
    int wanted = m_scaleLabel->sizeHint().width();
    for (const QLabel* label : {m_alarmLabel, m_presenceLabel, m_liveLabel})
        wanted += label->isHidden() ? 0 : label->sizeHint().width() + fontMetrics().averageCharWidth();
    m_scaleLabel->setVisible(wanted + fontMetrics().averageCharWidth() * 20 <= width());
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
    utc->setChecked(DeskTime::base() == Qt::UTC);
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
        if (!alarms->table->currentIndex().isValid())
            alarms->table->selectRow(0);
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
    connect(&m_mapHub, &Notifyer::OnMapScaleChangedSignal, this, [this](int scale) {
        m_scaleLabel->setText(tr("1 : %1").arg(scale));
        fitStatusBar();
    });
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
    const TileSettings wanted = TileSettings::read(m_settings.ini(), m_settings.cacheFolder());
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
    m_alarmLabel->setStyleSheet(count == 0 ? QString() : DeskColors::warningStyle(alarmColor));
    m_alarmLabel->setVisible(count > 0);
    fitStatusBar();
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
    fitStatusBar();
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
