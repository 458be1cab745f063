#pragma once

#include <QTimer>
#include <QWidget>

class KernelNotifyer;
class PlayerNotifyer;

QT_BEGIN_NAMESPACE
class QComboBox;
class QLabel;
class QSlider;
class QToolButton;
QT_END_NAMESPACE

/**
 * The controls of a replay: play and pause, a slider over the period, a speed, other objects, an end.
 *
 * It knows nothing of tracks: it tells its time through KernelNotifyer::OnTimeSelectedByReport, and goes where others
 * tell a time. OnDataToReport gives it its period.
 */
class TrackPlayer : public QWidget
{
    Q_OBJECT

public:
    TrackPlayer(KernelNotifyer& kernel, PlayerNotifyer& player, QWidget* parent = nullptr);

    bool isPlaying() const { return m_tick.isActive(); }
    void setPlaying(bool playing);
    qint64 time() const { return m_time; }

    QSlider* const slider;  ///< Seconds since the beginning of the period.
    QComboBox* const speed; ///< Its data are seconds played in a second.
    QToolButton* const play;

Q_SIGNALS:
    void closed();

protected:
    void changeEvent(QEvent* event) override;

private:
    void showPlaying();
    void setPeriod(qint64 from, qint64 to, qint64 now);
    void goTo(qint64 time);
    void tick();

    KernelNotifyer& m_kernel;
    QLabel* m_timeLabel;
    QTimer m_tick;
    qint64 m_from = 0;
    qint64 m_to = 0;
    qint64 m_time = 0;
    double m_fraction = 0; // of a second, played beyond m_time
};
