#pragma once

#include "reception.h"
#include "terminalserver.h"

#include <QByteArray>
#include <QHash>
#include <QString>

/** What a receiver has seen and done since it started. */
struct ReceiverState
{
    qint64 started = 0; ///< Milliseconds since 1970.
    qint64 now = 0;
    qint64 running = 0; ///< Milliseconds since the start, whatever the clock was set to.
    TerminalCounters terminals;
    ReceptionCounters reception;
    qint64 longestStall = 0; ///< Of the event loop, in milliseconds.
};

/**
 * The state in the text form of Prometheus (version 0.0.4); every name begins with pardel_receive_.
 *
 * Counters begin anew with each start, as Prometheus expects it.
 */
QByteArray metricsText(const ReceiverState& state);

/** Replaces the file as a whole, so that nobody reads half of it. @return what went wrong, or nothing */
QString writeMetrics(const QString& file, const QByteArray& text);

/** The values of such a text by name, with its labels as they are written. */
QHash<QByteArray, double> readMetrics(const QByteArray& text);

/** One line for a journal; rates are those since @p before. */
QString statusLine(const ReceiverState& state, const ReceiverState& before);
