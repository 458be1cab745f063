#include "tour.h"

#include "alarmpanel.h"
#include "deskarchive.h"
#include "deskcolors.h"
#include "desksettings.h"
#include "deskwindow.h"
#include "login.h"
#include "mapview.h"
#include "objectspanel.h"
#include "simulation.h"
#include "statetable.h"

#include <Pardel/fdpassword.h>
#include <Pardel/treeobjcheckable.h>

#include <QApplication>
#include <QElapsedTimer>
#include <QEventLoop>
#include <QLabel>
#include <QLineEdit>
#include <QMouseEvent>
#include <QPixmap>
#include <QPushButton>
#include <QSettings>
#include <QTabWidget>
#include <QTableView>
#include <QTemporaryFile>
#include <QTextStream>
#include <QTreeView>

#include <algorithm>
#include <utility>

namespace {

constexpr int patience = 60'000; // milliseconds
constexpr int mostObjects = 65'536;
constexpr int mostlyDark = 60; // percent of the pixels

void click(QWidget& widget, const QPointF& place)
{
    for (const auto& [type, buttons] :
         {std::pair{QEvent::MouseButtonPress, Qt::LeftButton}, std::pair{QEvent::MouseButtonRelease, Qt::NoButton}}) {
        QMouseEvent event(type, place, Qt::LeftButton, buttons, Qt::NoModifier);
        QCoreApplication::sendEvent(&widget, &event);
    }
}

} // namespace

Tour::Tour(LoginFlow& login, DeskWindow& desk, const Plan& plan)
    : m_login(login),
      m_desk(desk),
      m_terminals(plan.terminals),
      m_objects(std::clamp(plan.objects, 0, mostObjects)),
      m_isDark(plan.isDark),
      m_folder(plan.folder)
{
    if (m_isDark)
        QApplication::setPalette(darkPalette());
}

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
    QCoreApplication::sendPostedEvents(nullptr, QEvent::LayoutRequest);
    expectWhole(widget, step);
    const QPixmap picture = widget.grab();
    expect(!m_isDark || darkShare(picture.toImage()) > mostlyDark, "a dark picture");
    expect(picture.save(m_folder.filePath(QStringLiteral("desk-%1.png").arg(QLatin1String(step)))), step);
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
    const bool isLargeScale = m_desk.devicePixelRatioF() > 1;
    m_desk.resize(isLargeScale ? smallScreen : QSize(1100, 760)); // of the pictures
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
