#pragma once

#include <QByteArray>
#include <QThread>

#include <atomic>
#include <vector>

/**
 * Terminals that send to a port of this machine as fast as they are asked to, each over its own connection, in a thread
 * of their own. A connection that breaks is opened again; what was sent is remembered with its moment.
 *
 * Terminal i of a fleet sends reports of the object first + i, their times one second apart from firstTime on, each
 * once.
 */
class Fleet : public QThread
{
public:
    struct Report
    {
        quint32 object;
        quint32 time;
        qint64 sent; ///< Milliseconds since 1970; 0: the connection broke over it.
    };
    static constexpr quint32 firstTime = 1'790'000'000;
    static constexpr int sensor = 200; ///< Each report has it, with the value valueAt.
    static int valueAt(quint32 time) { return static_cast<int>(time % 200); }

    Fleet(quint16 port, quint32 first, int terminals, int packetsASecond);
    ~Fleet() override;

    /** The bytes that the terminal of an object sends for a time. */
    static QByteArray packetOf(quint32 object, quint32 time);

    /** Sends no more, and waits until the other side has read everything and closed, 20 s at most. */
    void finish();
    /** The same without waiting for anybody. */
    void stop();
    /** What was sent, after finish(). */
    const std::vector<Report>& reports() const { return m_reports; }

protected:
    void run() override;

private:
    struct Terminal
    {
        int descriptor = -1;
        quint32 time = firstTime;
    };

    bool isConnected(Terminal& terminal) const;

    const quint16 m_port;
    const quint32 m_first;
    const int m_rate;
    std::vector<Terminal> m_terminals;
    std::vector<Report> m_reports;
    std::atomic<bool> m_ending{false};
    std::atomic<bool> m_patient{true};
};
