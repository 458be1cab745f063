// The desk's live data: from terminals of its own, which it stores, or from the archive.

#include "alarmpanel.h"
#include "deskarchive.h"
#include "deskcolors.h"
#include "desksettings.h"
#include "desktime.h"
#include "deskwindow.h"
#include "livesource.h"
#include "mapview.h"
#include "objectspanel.h"
#include "reception.h"
#include "statetable.h"

#include <Pardel/tlog.h>

#include <QElapsedTimer>
#include <QLabel>
#include <QSettings>

namespace {

constexpr int historyTurn = 20; // milliseconds of reading in one turn of the event loop

} // namespace

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
    m_liveLabel->setStyleSheet(trouble.isEmpty() ? QString() : DeskColors::warningStyle(silentColor));
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
        m_liveLabel->setStyleSheet(DeskColors::warningStyle(silentColor));
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
    m_liveLabel->setStyleSheet(tooFew ? DeskColors::warningStyle(silentColor) : QString());
    m_liveLabel->setToolTip(tooFew ? tr("At least %1 terminals are expected").arg(expected) : QString());
    fitStatusBar();
}

void DeskWindow::fillStates()
{
    Tracks last;
    const QString error = m_archive.readStates([&](const MobData& state) {
        table->states().take(state);
        presence.hear(state.idObject, state.timeUnix);
        const TrackPoint point = TrackPoint::of(state);
        map->take(point, state.idObject); // where all are; how they got there is read bit by bit
        last[state.idObject] = {point};
    });
    map->showWhatCame();
    alarms->start(last, [this](qint32 id, qint64 from, qint64 to) { return m_archive.track(id, from, to); });
    if (!error.isEmpty())
        tell(tr("The archive cannot be read: %1").arg(error));
    const QList<qint32> ids = m_catalog.ids();
    for (const qint32 id : ids)
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
        const qint64 last = map->lastTime(id);
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
    noteTime(id, received.timeUnix);
    presence.hear(id, received.timeUnix);
    alarms->list.take(id, TrackPoint::of(received), !m_fromCapture);
}

/// What the views leave out for its time is counted, and told of each object once, until its reports have a time again.
void DeskWindow::noteTime(qint32 id, qint32 time)
{
    if (isCredible(time)) {
        m_wrongTimes.remove(id);
        return;
    }
    m_presenceLabel->setToolTip(tr("Reports not shown, as their time cannot be right: %1").arg(++m_withWrongTime));
    if (m_wrongTimes.contains(id))
        return;
    m_wrongTimes.insert(id);
    const QString name = m_catalog.name(id);
    tellSome(
        time == MobData::noTime
            ? tr("%1: reports without a time are not shown").arg(name)
            : tr("%1: reports of %2 are not shown, as that is no time of now: look at the clocks of terminal and desk")
                  .arg(name, DeskTime::text(static_cast<quint32>(time))));
}
