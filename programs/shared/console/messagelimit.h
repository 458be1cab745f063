#pragma once

#include <QElapsedTimer>

#include <utility>

/**
 * Keeps messages of one kind down to 20 a second: what comes beyond is counted, to be told when the second is over.
 *
 * @code
 * if (const qint64 count = limit.takeLeftOut())
 *     say("%1 more are left out", count);
 * if (limit.admits())
 *     say(...);
 * @endcode
 */
class MessageLimit
{
public:
    static constexpr int mostASecond = 20;

    /** Whether a message may be told now; if not, it is counted. */
    bool admits()
    {
        if (!m_second.isValid() || isOver())
            begin();
        if (m_told < mostASecond) {
            ++m_told;
            return true;
        }
        ++m_leftOut;
        return false;
    }

    /** How many were not admitted in a second that is over, or so far with @p now; from then on they are told of. */
    qint64 takeLeftOut(bool now = false) { return now || isOver() ? std::exchange(m_leftOut, 0) : 0; }

private:
    bool isOver() const { return m_second.isValid() && m_second.elapsed() >= 1000; }
    void begin()
    {
        m_second.start();
        m_told = 0;
    }

    QElapsedTimer m_second;
    int m_told = 0; // in it
    qint64 m_leftOut = 0;
};
