#pragma once

#include <QByteArray>
#include <QString>

#include <atomic>
#include <cstddef>

/** A file descriptor written to as it is, without a buffer, whose failures are remembered. */
class Output
{
public:
    /** Writes to @p descriptor, which stays the caller's. From now on a closed pipe is an error, not a signal. */
    explicit Output(int descriptor);
    virtual ~Output() = default;
    Q_DISABLE_COPY_MOVE(Output)

    /** Writes all of it, unless an earlier write has failed. By one thread at a time; others may ask how it went. */
    virtual void write(const char* data, std::size_t size);
    void write(const QByteArray& data) { write(data.constData(), static_cast<std::size_t>(data.size())); }

    bool failed() const { return m_error != 0; }
    /** Whether it failed because nobody reads any more, which is no one's fault. */
    bool readerGone() const;
    QString errorString() const;

private:
    const int m_descriptor;
    std::atomic<int> m_error = 0; // errno
};
