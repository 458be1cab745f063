#pragma once

#include "archivechanges.h"
#include "capturereplay.h"
#include "hubannouncer.h"
#include "messagelimit.h"
#include "objectcatalog.h"
#include "objectstates.h"
#include "terminalserver.h"
#include "track.h"

#include <Pardel/commonclass.h>
#include <Pardel/dialogobjsfromto.h>
#include <Pardel/interfaces.h>

#include <QMainWindow>
#include <QSet>
#include <QTimer>

#include <memory>
#include <optional>

class AlarmPanel;
class DeskArchive;
class DeskSettings;
class MapView;
class ObjectMenu;
class ObjectsPanel;
class PeriodDialog;
class PlotView;
class Reception;
class ReportTable;
class StateTable;
class TLog;
class TrackPlayer;

QT_BEGIN_NAMESPACE
class QLabel;
class QTabWidget;
QT_END_NAMESPACE

/**
 * The console: makes the hubs and the modules, which know only these, and does what takes several of them: fills them
 * from the archive, goes over to a replay and back, tells people and the log what happens.
 */
class DeskWindow : public QMainWindow
{
    Q_OBJECT

    const DeskSettings& m_settings;
    const DeskArchive& m_archive;
    TLog& m_log;
    KernelNotifyer& m_kernel;
    Notifyer m_mapHub;
    DataPumpNotifyer m_dataHub;
    DataPumpNotifyer m_captureHub; // what comes from it is handed on to the one above
    PlayerNotifyer m_playerHub;
    HubAnnouncer m_announcer;
    const TerminalSettings m_terminals;
    ObjectCatalog m_catalog;

public:
    /**
     * All have to outlive this. Once @p kernel tells of a user, the window shows itself and receives live data: from
     * terminals, or from the archive (chooseLiveSource).
     */
    DeskWindow(const DeskSettings& settings, const DeskArchive& archive, TLog& log, KernelNotifyer& kernel);
    ~DeskWindow() override;

    /**
     * Stores what has come and how the window is arranged, ends the connections, and logs what could not be stored.
     * Takes four seconds at most.
     *
     * @return whether the database has answered; if not, deleting this waits until it does
     */
    bool finish();

    /** Plays a capture @p speed times as fast as it was sent. */
    void replayCapture(const QString& file, double speed);
    /** Opens the dialog for objects and a period; accepting that makes the report and the replay. */
    void askForPeriod();

    ObjectStates presence;
    // For reading and driving; they belong to the window.
    ObjectsPanel* const objects;
    MapView* const map;
    ObjectMenu* const objectMenu;
    StateTable* const table;
    TrackPlayer* const player;
    ReportTable* const report;
    PlotView* const plot; ///< nullptr in a build without plots
    AlarmPanel* const alarms;
    QTabWidget* const tabs; ///< The last states, while there is one the report and the plot, and the alarms.
    DialogObjsFromTo dialog;
    PeriodDialog* const periodDialog; ///< What the desk adds to the dialog.
    TerminalServer server;
    ArchiveChanges changes;
    CaptureReplay capture;

protected:
    void resizeEvent(QResizeEvent* event) override;

private:
    static constexpr int messageTime = 10'000; // milliseconds in the status bar

    void layOut();
    void addMenus();
    void showReportTabs(bool reports);
    void connectHubs();
    void connectSources();
    void connectMap();
    void connectAlarms();
    void showUser(CurrentUser& user);
    void startLive();
    void startServer();
    void startReading();
    void startStoring();
    void fillStates();
    void readSomeHistory();
    void takeReport(const MobData& received);
    void noteTime(qint32 id, qint32 time);
    /// Ends a replay, in which the object would not be shown where it is now.
    void goTo(qint32 id);
    void showAlarms();
    void showPresence();
    void fitStatusBar();
    void takeStates(const QVector<MobData>& states);
    void showServer();
    void showReading(const QString& trouble);
    void runReport();
    std::optional<Tracks> readTracks(qint64 from, qint64 to, QString* error);
    void showToday(qint32 id);
    void reportOn(qint32 id);
    void showStretch(qint32 id, qint64 from, qint64 to, qint64 now);
    void showTimesInUtc(bool utc);
    void endReplay();
    void askForCapture();
    void tell(const QString& text);
    /// The same of what may come in thousands: no more of it than the log is to hold.
    void tellSome(const QString& text);

    Commonclass m_common;
    std::unique_ptr<Reception> m_reception; // while the terminals' packets are stored
    QLabel* m_scaleLabel;
    QLabel* m_liveLabel;
    QList<int> m_chosen; // the dialog's tree keeps hold of it
    QLabel* m_alarmLabel;
    QLabel* m_presenceLabel;
    MessageLimit m_messages;
    bool m_fromCapture = false;
    QSet<qint32> m_wrongTimes; // objects whose last report had one
    qint64 m_withWrongTime = 0;
    bool m_isFinished = false;
    QList<int> m_withoutHistory; // ticked, and not read yet
    QTimer m_historyTimer;
    QTimer m_newObjects;
};
