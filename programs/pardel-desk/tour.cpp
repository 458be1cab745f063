#include "tour.h"

#include "alarmpanel.h"
#include "deskarchive.h"
#include "desksettings.h"
#include "deskwindow.h"
#include "livesender.h"
#include "login.h"
#include "mapview.h"
#include "objectspanel.h"
#include "packetbuilder.h"
#ifdef PARDEL_DESK_PLOTS
#include "plotview.h"
#endif
#include "reporttable.h"
#include "statetable.h"
#include "trackplayer.h"

#include <Pardel/fdpassword.h>
#include <Pardel/treeobjcheckable.h>

#include <QApplication>
#include <QComboBox>
#include <QDateTimeEdit>
#include <QDialogButtonBox>
#include <QElapsedTimer>
#include <QEventLoop>
#include <QFileInfo>
#include <QLabel>
#include <QLineEdit>
#include <QMouseEvent>
#include <QPixmap>
#include <QPushButton>
#include <QRadioButton>
#include <QSettings>
#include <QSlider>
#include <QTabWidget>
#include <QTableView>
#include <QTableWidget>
#include <QTcpSocket>
#include <QTemporaryFile>
#include <QTextStream>
#include <QTreeView>

#include <algorithm>
#include <utility>

#include <time.h>

namespace {

constexpr int patience = 60'000; // milliseconds
constexpr int packetsEach = 10;
constexpr int mostObjects = 65'536;
constexpr quint32 seed = 47; // that of the sample: known objects go on from where they live
constexpr int clickedObject = 4;

/// The longest time for which the event loop did not come round, and the longest that it worked without a break: on a
/// machine that is busy with other things the first is longer.
class PauseMeter : public QTimer
{
public:
    PauseMeter()
    {
        setTimerType(Qt::PreciseTimer);
        callOnTimeout([this] {
            m_longestPause = std::max(m_longestPause, m_since.restart() - interval());
            const double now = worked();
            m_longestWork = std::max(m_longestWork, now - std::exchange(m_worked, now));
        });
        restart();
        start(10);
    }

    /// Begins anew after what held the loop up on purpose.
    void restart()
    {
        m_since.start();
        m_worked = worked();
    }

    /// Both in milliseconds.
    qint64 longestPause() const { return m_longestPause; }
    qint64 longestWork() const { return static_cast<qint64>(m_longestWork); }

private:
    /// The processor time of this thread.
    static double worked()
    {
        timespec time{};
        clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
        return static_cast<double>(time.tv_sec) * 1e3 + static_cast<double>(time.tv_nsec) * 1e-6;
    }

    QElapsedTimer m_since;
    double m_worked = 0;
    qint64 m_longestPause = 0;
    double m_longestWork = 0;
};

QModelIndex indexOf(const TreeObjCheckable& tree, int id)
{
    const QAbstractItemModel* model = tree.getTreeView()->model();
    return model->match(model->index(0, 0), ObjectCatalog::idRole, id, 1, Qt::MatchExactly | Qt::MatchRecursive)
        .value(0);
}

void click(QWidget& widget, const QPointF& place)
{
    for (const auto& [type, buttons] :
         {std::pair{QEvent::MouseButtonPress, Qt::LeftButton}, std::pair{QEvent::MouseButtonRelease, Qt::NoButton}}) {
        QMouseEvent event(type, place, Qt::LeftButton, buttons, Qt::NoModifier);
        QCoreApplication::sendEvent(&widget, &event);
    }
}

/// A packet with no more than place and time; the objects stand in rows over some hundred kilometres.
QByteArray packetOf(int number, quint32 time)
{
    constexpr int perRow = 256;
    const auto packed = [](double degrees) { return static_cast<quint32>(degrees * 1e7); };
    RecordBuilder place(11);
    place.little32(packed(50 + number / perRow * 0.02)).little32(packed(30 + number % perRow * 0.03));
    place.byte(0).byte(0).little32(time);
    return PacketBuilder(static_cast<qint16>(number)).group({place}).sealed();
}

} // namespace

Tour::Tour(LoginFlow& login, DeskWindow& desk, int terminals, int objects, const QString& folder)
    : m_login(login),
      m_desk(desk),
      m_terminals(terminals),
      m_objects(std::clamp(objects, 0, mostObjects)),
      m_folder(folder)
{}

void Tour::adapt(const DeskSettings& settings)
{
    settings.ini().setValue(QStringLiteral("Terminals/Port"), 0);
    settings.ini().setValue(QStringLiteral("Live/Store"), false);       // the pictures are of the simulated day
    settings.ini().setValue(QStringLiteral("Terminals/PerAddress"), 0); // all terminals of the tour are on this machine
}

bool Tour::run()
{
    expect(m_folder.mkpath(QStringLiteral(".")), "the folder of the pictures");
    for (const auto step : {&Tour::logIn, &Tour::showArchive, &Tour::receive, &Tour::acknowledge, &Tour::showMap,
                            &Tour::replayCapture, &Tour::choosePeriod, &Tour::replay, &Tour::switchModes, &Tour::flood})
        (this->*step)();
    return m_good;
}

void Tour::expect(bool shown, const char* what)
{
    if (shown)
        return;
    m_good = false;
    QTextStream(stderr) << "tour: not shown: " << what << "\n";
}

void Tour::await(const std::function<bool()>& shown, const char* what)
{
    QElapsedTimer waited;
    waited.start();
    while (!shown() && waited.elapsed() < patience)
        QCoreApplication::processEvents(QEventLoop::AllEvents | QEventLoop::WaitForMoreEvents, 50);
    expect(shown(), what);
}

void Tour::save(QWidget& widget, const char* step)
{
    QCoreApplication::processEvents(); // so that all layouts are settled
    expect(widget.grab().save(m_folder.filePath(QStringLiteral("desk-%1.png").arg(QLatin1String(step)))), step);
}

void Tour::logIn()
{
    fdPassword& dialog = m_login.dialog();
    const auto enter = [&](const char* name, const char* password) {
        dialog.loginEdit->setText(QLatin1String(name));
        dialog.passwordEdit->setText(QLatin1String(password));
        dialog.accept();
        QCoreApplication::processEvents();
    };
    m_login.start();
    enter("nobody", "berg");
    const QString refusal = LoginFlow::tr("Unknown name or wrong password");
    expect(dialog.messageLabel->isVisible() && dialog.messageLabel->text() == refusal, "that the name is unknown");
    enter("berg", "wrong");
    expect(dialog.messageLabel->isVisible() && dialog.messageLabel->text() == refusal, "that the password is wrong");
    expect(m_desk.isHidden(), "nothing of the desk before the login");
    save(dialog, "login");
    enter("berg", "berg");
    expect(dialog.isHidden() && m_desk.isVisible(), "the desk after the login");
    expect(m_desk.windowTitle().contains(QStringLiteral("Berg Hanna Maria")), "the user's full name");
    const QSize least = m_desk.minimumSizeHint(); // of 1920 x 1080 at scale 2
    expect(least.width() <= 960 && least.height() <= 540, "a window that is not too large for a screen");
    m_desk.resize(1100, 760); // of the pictures
}

void Tour::showArchive()
{
    const QList<int>& ticked = m_desk.objects->tickedObjects();
    expect(!ticked.isEmpty() && m_desk.table->model()->rowCount() == ticked.size(), "a row for each object");
    await([&] { return m_desk.map->markOf(clickedObject).has_value(); }, "an object of the archive on the map");
    await(
        [&] { return std::all_of(ticked.cbegin(), ticked.cend(), [&](int id) { return m_desk.map->hasHistory(id); }); },
        "the tracks from the archive");

    m_desk.objects->filterEdit->setText(DeskArchive::tr("Truck %1").section(QLatin1Char(' '), 0, 0).toLower());
    expect(indexOf(*m_desk.objects->tree, clickedObject).isValid() && !indexOf(*m_desk.objects->tree, 1).isValid(),
           "only trucks under the filter");
    m_desk.objects->filterEdit->clear();
    m_desk.objects->searchEdit->setText(QStringLiteral("003"));
    expect(m_desk.objects->tree->Get_index_size() == 1 && m_desk.objects->tree->getCurrentObj() == 3,
           "what is searched within a name");
    m_desk.objects->searchEdit->clear();
    expect(m_desk.presence.presence(clickedObject) == Presence::Silent, "that nothing has come for long");
    m_desk.objects->tree->getTreeView()->expandAll();
    save(m_desk, "stale");
}

int Tour::alarms() const
{
    const QAbstractItemModel* model = m_desk.table->model();
    int raised = 0;
    for (int row = 0; row < model->rowCount(); ++row)
        raised += model->index(row, StateTableModel::Alarm).data(StateTableModel::sortRole).toInt();
    return raised;
}

void Tour::receive()
{
    const TerminalServer& server = m_desk.server;
    expect(server.port() != 0, "a port for terminals");
    SimulationSettings vehicles;
    vehicles.terminals = m_terminals;
    vehicles.seed = seed;
    LiveSettings live;
    live.host = QStringLiteral("127.0.0.1");
    live.port = server.port();
    live.packets = packetsEach;
    LiveSender sender(vehicles, live);
    bool done = false;
    QObject::connect(&sender, &LiveSender::finished, &sender, [&](const QString& error) {
        done = true;
        expect(error.isEmpty(), error.toUtf8().constData());
    });
    PauseMeter meter;
    sender.start();
    const qint64 all = qint64(m_terminals) * packetsEach;
    const auto counted = [&] { return server.counters().decoded.packets; };
    await([&] { return counted() > all / 2 && (alarms() > 0 || counted() > all * 9 / 10); }, "packets of terminals");
    expect(server.counters().open == m_terminals, "the connections of all terminals");
    sortTable();
    selectEverywhere();
    save(m_desk, "live");
    meter.restart();
    await([&] { return done && counted() == all; }, "that all packets are sent and counted");
    QTextStream(stdout) << "tour: " << m_terminals
                        << " terminals, a packet a second each: longest pause of the event loop "
                        << meter.longestPause() << " ms, longest work in it " << meter.longestWork() << " ms\n";

    const qint32 newest = m_terminals;
    await([&] { return m_desk.map->markOf(newest).has_value(); }, "a terminal that was not known before, on the map");
    await([&] { return indexOf(*m_desk.objects->tree, newest).isValid(); }, "the same in the tree");
}

void Tour::acknowledge()
{
    AlarmPanel& panel = *m_desk.alarms;
    expect(panel.list.newCount() > 0, "new alarms in the list");
    m_desk.tabs->setCurrentWidget(&panel);
    panel.table->selectRow(0);
    const qint32 id = panel.table->currentIndex().data(AlarmList::idRole).toInt();
    expect(m_desk.presence.hasAlarm(id), "the mark of a new alarm");
    Q_EMIT panel.wanted(id);
    const QPointF middle(m_desk.map->width() / 2.0, m_desk.map->height() / 2.0);
    expect((m_desk.map->markOf(id).value_or(QPointF()) - middle).manhattanLength() < 2,
           "the alarmed object in the middle");
    panel.remark->setText(QStringLiteral("Called the driver"));
    save(m_desk, "alarms");
    const int before = panel.list.newCount();
    panel.acknowledgeButton->click();
    expect(panel.list.newCount() == before - 1 && panel.remark->text().isEmpty(), "the alarm acknowledged");
    panel.table->selectAll();
    panel.acknowledge();
    expect(!m_desk.presence.hasAlarm(id), "no mark when all alarms are acknowledged");
    expect(panel.exchangeTrouble().isEmpty(), "the alarms in the archive");
    m_desk.tabs->setCurrentWidget(m_desk.table);
    m_desk.map->showAll();
}

void Tour::replayCapture()
{
    QTemporaryFile file;
    expect(file.open(), "a file for a capture");
    SimulationSettings vehicles;
    vehicles.terminals = 3;
    vehicles.minutes = 5;
    Simulation simulation(vehicles);
    for (QByteArray packet = simulation.next(); !packet.isEmpty(); packet = simulation.next())
        file.write(packet);
    file.flush();
    m_desk.replayCapture(file.fileName(), 600);
    await([&] { return m_desk.capture.state() == CaptureReplay::State::Stopped; }, "the end of the capture");
    expect(m_desk.capture.counts().packets == vehicles.terminals * vehicles.minutes, "every packet of the capture");
}

void Tour::sortTable()
{
    m_desk.table->states().flush();
    m_desk.table->sortByColumn(StateTableModel::Speed, Qt::DescendingOrder);
    const auto speed = [&](int row) {
        return m_desk.table->model()->index(row, StateTableModel::Speed).data().toInt();
    };
    expect(m_desk.table->model()->rowCount() >= m_terminals && speed(0) >= speed(1) &&
               speed(0) > speed(m_terminals - 1),
           "the table sorted by speed");
}

void Tour::selectEverywhere()
{
    m_desk.map->showAll();
    const auto mark = m_desk.map->markOf(clickedObject);
    expect(mark.has_value(), "the object to click");
    click(*m_desk.map, mark.value_or(QPointF()));
    const qint64 selected = m_desk.table->currentIndex().data(StateTableModel::idRole).toLongLong();
    expect(m_desk.map->objectsAt(mark.value_or(QPointF())).value(0) == selected, "the clicked object in the table");
    expect(m_desk.objects->tree->getCurrentObj() == selected, "the clicked object in the tree");
}

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
    const QSize least = m_desk.minimumSizeHint();
    expect(least.width() <= 960 && least.height() <= 540, "player and report on a small screen");
    tellStretches();
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

void Tour::flood()
{
    if (m_objects == 0)
        return;
    QByteArray packets;
    for (int number = 0; number < m_objects; ++number)
        packets += packetOf(number, static_cast<quint32>(QDateTime::currentSecsSinceEpoch()));
    const qint64 before = m_desk.server.counters().decoded.packets;
    QTcpSocket socket;
    socket.connectToHost(QStringLiteral("127.0.0.1"), m_desk.server.port());
    expect(socket.waitForConnected(), "a connection for many objects");
    PauseMeter meter;
    QElapsedTimer all;
    all.start();
    socket.write(packets);
    await([&] { return m_desk.server.counters().decoded.packets == before + m_objects; },
          "the packets of many objects");
    const qint64 taken = all.elapsed();
    await(
        [&] {
            const QAbstractItemModel& tree = *m_desk.objects->tree->getTreeView()->model();
            int rows = 0;
            for (int group = 0; group < tree.rowCount(); ++group)
                rows += tree.rowCount(tree.index(group, 0));
            return rows >= m_objects && m_desk.table->model()->rowCount() >= m_objects;
        },
        "many objects in tree and table");
    QTextStream(stdout) << "tour: " << m_objects << " objects from one connection, " << packets.size()
                        << " bytes: taken after " << taken << " ms, shown after " << all.elapsed()
                        << " ms, longest pause of the event loop " << meter.longestPause() << " ms, longest work in it "
                        << meter.longestWork() << " ms\n";
    save(m_desk, "many");
}
