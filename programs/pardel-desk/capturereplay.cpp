#include "capturereplay.h"

#include <Pardel/interfaces.h>

#include <QFileInfo>
#include <QPointer>

#include <algorithm>
#include <cmath>

namespace {

constexpr qint64 pieceSize = 1 << 14;  // bytes
constexpr qint64 turnMilliseconds = 5; // of work between two looks of the event loop at everything else
constexpr double longestWait = 600;    // seconds of the capture
constexpr double longestSleep = 3600;  // seconds, then it looks again
constexpr double positionStep = 0.001;
constexpr qint64 recognisedBy = 4096; // bytes

/// Raw packets begin with a byte that no text in hex digits and comments has.
CaptureFramer::Form formOf(const QByteArray& beginning)
{
    const bool text = std::all_of(beginning.begin(), beginning.end(), [](char byte) {
        return (byte >= ' ' && byte <= '~') || (byte >= '\t' && byte <= '\r');
    });
    return text ? CaptureFramer::Hex : CaptureFramer::Raw;
}

} // namespace

CaptureReplay::CaptureReplay(DataPumpNotifyer& hub, const DecodeSettings& settings, QObject* parent)
    : QObject(parent), m_hub(hub), m_settings(settings)
{
    m_timer.setSingleShot(true);
    m_timer.setTimerType(Qt::PreciseTimer);
    connect(&m_timer, &QTimer::timeout, this, &CaptureReplay::turn);
}

bool CaptureReplay::start(const QString& path)
{
    stop();
    m_file.setFileName(path);
    if (QFileInfo info(path); info.exists() && !info.isFile()) {
        m_error = tr("cannot play %1: that is no file").arg(path); // opening a pipe would wait for its writer
        return false;
    }
    if (!m_file.open(QIODevice::ReadOnly)) {
        m_error = tr("cannot play %1: %2").arg(path, m_file.errorString());
        return false;
    }
    m_counts = DecodeCounts();
    m_decoder = std::make_unique<PacketDecoder>(formOf(m_file.peek(recognisedBy)), m_settings, m_counts);
    m_finished = false;
    m_clock = 0;
    m_position = 0;
    m_positionTold = -1;
    m_timer.start(0);
    setState(State::Running);
    Q_EMIT happened(tr("playing %1").arg(path));
    return true;
}

void CaptureReplay::pause()
{
    if (m_state != State::Running)
        return;
    m_timer.stop();
    setClock(now());
    setState(State::Paused);
}

void CaptureReplay::resume()
{
    if (m_state != State::Paused)
        return;
    setClock(m_clock);
    m_timer.start(0);
    setState(State::Running);
}

void CaptureReplay::stop()
{
    if (m_state != State::Stopped)
        end(tr("stopped"));
}

void CaptureReplay::setSpeed(double factor)
{
    setClock(now());
    m_speed = factor > 0 ? factor : asFastAsPossible;
    if (m_state == State::Running)
        m_timer.start(0);
}

void CaptureReplay::turn()
{
    if (m_turning)
        return; // within a receiver's own event loop; the outer turn goes on when that ends
    m_turning = true;
    const QPointer<CaptureReplay> self(this);
    QElapsedTimer time;
    time.start();
    bool more = true;
    while (more && time.elapsed() < turnMilliseconds) {
        more = playStep();
        if (!self)
            return;
    }
    m_turning = false;
    if (m_state == State::Stopped)
        return;
    setPosition(playedShare());
    if (self && more && m_state == State::Running)
        m_timer.start(0);
}

/// Announces a report, or reads on. @return whether there is more to do now
bool CaptureReplay::playStep()
{
    if (m_state != State::Running)
        return false;
    if (!m_decoder->ready())
        return refill();
    if (const double wait = secondsUntil(m_decoder->packetTime()); wait > 0) {
        m_timer.start(static_cast<int>(std::ceil(std::min(wait, longestSleep) * 1000)));
        return false;
    }
    MobData report = m_decoder->take();
    m_hub.OnDataRecieved(report);
    return true; // with nothing touched: the receivers may have stopped or destroyed this
}

bool CaptureReplay::refill()
{
    const QByteArray piece = m_file.read(pieceSize);
    if (!piece.isEmpty()) {
        m_decoder->feed(piece);
    } else if (m_file.error() != QFileDevice::NoError) {
        end(m_file.errorString());
        return false;
    } else if (!m_finished) {
        m_finished = true;
        m_decoder->finish();
    } else {
        const QPointer<CaptureReplay> self(this);
        setPosition(1);
        if (self && m_state != State::Stopped)
            end(tr("to its end"));
        return false;
    }
    return true;
}

/// How long to wait, in real time, for the moment of a packet.
double CaptureReplay::secondsUntil(qint32 time)
{
    if (time <= 0)
        return 0;
    const double ahead = time - now();
    if (m_clock <= 0 || m_speed <= 0 || std::abs(ahead) > longestWait)
        setClock(time);
    else if (ahead > 0)
        return ahead / m_speed;
    return 0;
}

/// The capture's time, which stands still unless the replay runs.
double CaptureReplay::now() const
{
    if (m_state != State::Running || m_clock <= 0)
        return m_clock;
    return m_clock + m_speed * static_cast<double>(m_sinceClock.elapsed()) / 1000;
}

void CaptureReplay::setClock(double time)
{
    m_clock = time;
    m_sinceClock.start();
}

/// How much of the file has been announced; all of it only at its end.
double CaptureReplay::playedShare() const
{
    const auto size = static_cast<double>(std::max<qint64>(m_file.size(), 1));
    return std::clamp(static_cast<double>(m_file.pos() - m_decoder->pendingBytes()) / size, 0.0, 0.999);
}

void CaptureReplay::setPosition(double position)
{
    m_position = position;
    if (std::abs(position - m_positionTold) < positionStep && (position < 1 || m_positionTold >= 1))
        return;
    m_positionTold = position;
    Q_EMIT positionChanged(position);
}

void CaptureReplay::setState(State state)
{
    m_state = state;
    Q_EMIT stateChanged(state);
}

void CaptureReplay::end(const QString& reason)
{
    m_timer.stop();
    m_file.close();
    m_decoder.reset();
    const QString text = tr("%1 played: %2 (%3 packets, %4 bad checksums, %5 rejected, %6 bytes skipped)")
                             .arg(m_file.fileName(), reason)
                             .arg(m_counts.packets + m_counts.rawOnly)
                             .arg(m_counts.badChecksums)
                             .arg(m_counts.rejected)
                             .arg(m_counts.skippedBytes);
    const QPointer<CaptureReplay> self(this);
    setState(State::Stopped);
    if (self)
        Q_EMIT happened(text);
}
