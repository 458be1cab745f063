#pragma once

#include "packetdecoder.h"

#include <QElapsedTimer>
#include <QFile>
#include <QObject>
#include <QString>
#include <QTimer>

#include <memory>

class DataPumpNotifyer;

/**
 * Plays a capture of terminals' packets: announces their reports through the hub at the moments at which they were
 * sent, going by the packets' own times, or faster.
 *
 * Packets come in the capture's order, each when its time has come (those that are late or have no time at once), and
 * of a packet first the further reports, then its own (PacketDecoder says more). Where the time jumps by more than ten
 * minutes, forth or back, the replay jumps with it instead of waiting.
 *
 * Everything happens in the thread's event loop, with at most 5 ms of work in every turn of it, but that a single
 * report is not interrupted. While a receiver of a report runs an event loop of its own, no further report is
 * announced. A receiver may pause, stop or destroy the replay. Of the capture no more than a piece of 16 KiB and an
 * unfinished packet are in memory.
 */
class CaptureReplay : public QObject
{
    Q_OBJECT

public:
    enum class State
    {
        Stopped,
        Running,
        Paused,
    };
    Q_ENUM(State)

    static constexpr double asFastAsPossible = 0;

    /** @p hub is not owned and has to outlive this. */
    CaptureReplay(DataPumpNotifyer& hub, const DecodeSettings& settings, QObject* parent = nullptr);

    /**
     * Plays a file from its beginning, instead of what is being played: raw packets back to back, or a packet a line in
     * hex digits, which is recognised by the first bytes.
     *
     * @return whether it could be opened; if not, errorString() says why, and the replay is stopped
     */
    bool start(const QString& path);
    void pause();  ///< Does nothing unless it is running.
    void resume(); ///< Does nothing unless it is paused.
    void stop();   ///< Closes the file. Does nothing if it is stopped.

    /**
     * How many times as fast as the terminals sent: 1 is real time, asFastAsPossible waits for nothing, and so does
     * what is negative or no number. Takes effect at once, also while it plays. At first 1.
     */
    void setSpeed(double factor);

    State state() const { return m_state; }
    double position() const { return m_position; }          ///< Of the file played last, 0 to 1.
    const DecodeCounts& counts() const { return m_counts; } ///< Of the file played last.
    QString errorString() const { return m_error; }         ///< One sentence, of the last start() that failed.

Q_SIGNALS:
    void stateChanged(CaptureReplay::State state);
    /** How much of the file has been announced, 0 to 1; with steps of 0.001 or more, and 1 only at its end. */
    void positionChanged(double position);
    /** Something to be logged: what is played, why it ended, and what was in it. */
    void happened(const QString& text);

private:
    void turn();
    bool playStep();
    bool refill();
    double secondsUntil(qint32 time);
    double now() const;
    void setClock(double time);
    double playedShare() const;
    void setPosition(double position);
    void setState(State state);
    void end(const QString& reason);

    DataPumpNotifyer& m_hub;
    const DecodeSettings m_settings;
    QString m_error;
    QFile m_file;
    DecodeCounts m_counts;
    std::unique_ptr<PacketDecoder> m_decoder; // while there is a file
    State m_state = State::Stopped;
    double m_speed = 1;
    double m_position = 0;
    double m_positionTold = 0;
    double m_clock = 0; // Unix seconds of the capture when m_sinceClock began; 0 before the first packet
    QElapsedTimer m_sinceClock;
    QTimer m_timer;
    bool m_finished = false; // the decoder knows that there is no more
    bool m_turning = false;
};
