#pragma once

#include "messagelimit.h"
#include "metrics.h"
#include "reception.h"
#include "terminalserver.h"

#include <QElapsedTimer>
#include <QObject>
#include <QString>
#include <QTimer>

struct ReceiverSettings;

/** The service: terminals' packets through the spool into the archive, and what is told about it. */
class Receiver : public QObject
{
    Q_OBJECT

public:
    explicit Receiver(const ReceiverSettings& settings, QObject* parent = nullptr);

    /** Begins. @return what keeps it from that and what to do, or nothing; another time it may work */
    QString start();
    /**
     * Listens no more, takes what the terminals have sent, and stores it; within 10 s.
     *
     * @return whether everything that was begun has ended; if not, the process has to be ended without destroying this
     */
    bool stop();

private:
    ReceiverState state() const;
    void tell(const QString& text);
    void tellStatus();
    void showMetrics();
    void handlePulse();

    const QString m_metrics; // the file
    Reception m_reception;
    TerminalServer m_server;
    const qint64 m_started;
    ReceiverState m_toldLast;
    bool m_metricsTrouble = false; // has been told
    qint64 m_longestStall = 0;
    QElapsedTimer m_running;
    qint64 m_untold = 0; // messages that nobody took
    QElapsedTimer m_sincePulse;
    QTimer m_pulseTimer; // whose delays are the event loop's stalls
    QTimer m_statusTimer;
    QTimer m_metricsTimer;
    QTimer m_watchdogTimer;
};
