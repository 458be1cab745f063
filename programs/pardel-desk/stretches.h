#pragma once

#include "track.h"

QT_BEGIN_NAMESPACE
class QSettings;
QT_END_NAMESPACE

/** What counts as what in reports; the group "Report" of the settings. */
struct ReportThresholds
{
    qint64 stopSeconds = 300; ///< A shorter stand, as at traffic lights, belongs to the trip.
    qint32 movingSpeed = 3;   ///< km/h; up to that an object stands, as positions tremble.
    double tripMetres = 100;  ///< A shorter trip, as of a terminal that drifts, belongs to the stop.
    qint32 speedLimit = 90;   ///< km/h; what is above that is speeding.

    /** Values that are no numbers or below 0 become the defaults. */
    static ReportThresholds read(const QSettings& ini);
};

/** A part of a track that a report tells of. */
struct Stretch
{
    enum Kind
    {
        Trip,
        Stop,
        Silence, ///< Longer than TrackSummary::longestInterval without a point, and elsewhere after it.
        Speeding,
        Alarm
    };

    Kind kind = Stop;
    TrackPoint begin;
    TrackPoint end;
    double distance = 0; ///< Metres, along all points.
    qint32 topSpeed = 0; ///< km/h

    qint64 duration() const { return qint64(end.time) - begin.time; }
};

/**
 * Trips, stops and silences of a track; each begins with the point that ends the one before. A silence after which the
 * object is where it was is a stop. At either end of the track and beside a silence, a short stand is a stop too, as
 * nobody knows how long it was.
 */
QVector<Stretch> tripsAndStops(const Track& track, const ReportThresholds& thresholds);

/** From the first point above the limit to the first that is not, or the last before a silence. */
QVector<Stretch> speedings(const Track& track, const ReportThresholds& thresholds);

/** From the point that raises an alarm to the first without one. */
QVector<Stretch> alarmsOf(const Track& track);
