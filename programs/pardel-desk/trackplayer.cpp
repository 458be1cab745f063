#include "trackplayer.h"

#include "desktime.h"

#include <Pardel/interfaces.h>

#include <QComboBox>
#include <QEvent>
#include <QHBoxLayout>
#include <QLabel>
#include <QPainter>
#include <QScopedValueRollback>
#include <QSlider>
#include <QToolButton>

#include <algorithm>

namespace {

constexpr int tickInterval = 50; // milliseconds

} // namespace

TrackPlayer::TrackPlayer(KernelNotifyer& kernel, PlayerNotifyer& player, QWidget* parent)
    : QWidget(parent),
      slider(new QSlider(Qt::Horizontal)),
      speed(new QComboBox),
      play(new QToolButton),
      m_kernel(kernel),
      m_timeLabel(new QLabel)
{
    auto* layout = new QHBoxLayout(this);
    layout->setContentsMargins(4, 2, 4, 2);
    connect(play, &QToolButton::clicked, this, [this] { setPlaying(!isPlaying()); });
    layout->addWidget(play);
    layout->addWidget(slider, 1);
    layout->addWidget(m_timeLabel);
    for (const int factor : {1, 10, 60, 300, 1800})
        speed->addItem(tr("× %1").arg(factor), factor);
    speed->setCurrentIndex(3);
    speed->setToolTip(tr("Speed"));
    layout->addWidget(speed);
    auto* choose = new QToolButton;
    choose->setText(tr("C&hoose…"));
    choose->setToolTip(tr("Other objects or another period"));
    connect(choose, &QToolButton::clicked, &player, &PlayerNotifyer::OnSelectObjects);
    layout->addWidget(choose);
    auto* close = new QToolButton;
    close->setIcon(QIcon(QStringLiteral(":/pic/pic/clear2.png")));
    close->setToolTip(tr("End the replay"));
    connect(close, &QToolButton::clicked, this, [this] {
        setPlaying(false);
        Q_EMIT closed();
    });
    layout->addWidget(close);

    m_tick.setInterval(tickInterval);
    connect(&m_tick, &QTimer::timeout, this, &TrackPlayer::tick);
    connect(slider, &QSlider::valueChanged, this, [this](int seconds) {
        if (m_from + seconds != m_time)
            m_kernel.OnTimeSelectedByReport(static_cast<unsigned int>(m_from + seconds));
    });
    connect(&kernel, &KernelNotifyer::OnTimeSelectedByReportSignal, this, &TrackPlayer::goTo);
    connect(
        &kernel, &KernelNotifyer::OnDataToReportSignal, this,
        [this](unsigned int from, unsigned int to, const QList<int>&, unsigned int now) { setPeriod(from, to, now); });
    setPlaying(false);
}

void TrackPlayer::setPlaying(bool playing)
{
    if (playing && m_time >= m_to)
        m_kernel.OnTimeSelectedByReport(static_cast<unsigned int>(m_from));
    if (playing)
        m_tick.start();
    else
        m_tick.stop();
    showPlaying();
    play->setToolTip(playing ? tr("Pause") : tr("Play"));
}

/// Drawn here, as the style's picture is black on dark, too.
void TrackPlayer::showPlaying()
{
    const QSize size = play->iconSize();
    QPixmap picture(size * devicePixelRatioF());
    picture.setDevicePixelRatio(devicePixelRatioF());
    picture.fill(Qt::transparent);
    QPainter painter(&picture);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    painter.setBrush(palette().buttonText());
    const double unit = size.height() / 8.0;
    if (isPlaying()) {
        for (const double x : {1.5, 4.5})
            painter.drawRect(QRectF(x * unit, unit, 2 * unit, 6 * unit));
    } else {
        painter.drawPolygon(QPolygonF({{2 * unit, unit}, {7 * unit, 4 * unit}, {2 * unit, 7 * unit}}));
    }
    painter.end();
    play->setIcon(picture);
}

void TrackPlayer::changeEvent(QEvent* event)
{
    QWidget::changeEvent(event);
    if (event->type() == QEvent::PaletteChange)
        showPlaying();
}

void TrackPlayer::setPeriod(qint64 from, qint64 to, qint64 now)
{
    setPlaying(false);
    m_from = from;
    m_to = to;
    m_time = now;
    slider->setRange(0, static_cast<int>(to - from));
    m_kernel.OnTimeSelectedByReport(static_cast<unsigned int>(now));
}

void TrackPlayer::goTo(qint64 time)
{
    m_time = std::clamp(time, m_from, m_to);
    slider->setValue(static_cast<int>(m_time - m_from));
    m_timeLabel->setText(DeskTime::text(m_time));
}

void TrackPlayer::tick()
{
    m_fraction += speed->currentData().toInt() * tickInterval / 1000.0;
    const auto seconds = static_cast<qint64>(m_fraction);
    m_fraction -= static_cast<double>(seconds);
    if (seconds > 0)
        m_kernel.OnTimeSelectedByReport(static_cast<unsigned int>(std::min(m_time + seconds, m_to)));
    if (m_time >= m_to)
        setPlaying(false);
}
