#pragma once

#include <QVector>
#include <QtGlobal>

#include <map>

struct MobData;

/** Where an object was at one moment, and how fast; units as in MobData. Small, as there are millions of them. */
struct TrackPoint
{
    qint32 time = 0;
    qint32 latitude = 0;
    qint32 longitude = 0;
    qint16 speed = 0;
    qint16 course = 0;
    bool alarm = false;

    static TrackPoint of(const MobData& report);
    /** Whether it says when and where; what a terminal does not send is 0, and MobData::noTime is below it. */
    bool isComplete() const { return time > 0 && (latitude != 0 || longitude != 0); }
};

/** The points of one object in the order of their times. */
using Track = QVector<TrackPoint>;
/** Tracks by the numbers of their objects. */
using Tracks = std::map<qint32, Track>;

/** Metres along a great circle. */
double distanceBetween(const TrackPoint& from, const TrackPoint& to);

/**
 * Whether a live report's time can be one: there is one, and it is not more than a day ahead of the clock here. A
 * terminal whose clock is wrong would else hide all that comes after.
 */
bool isCredible(qint32 time);

/** Puts a point to its place in time; of two with one time the later one stays. */
void insertInTime(Track& track, const TrackPoint& point);

/** The index of the last point that is not after @p time; -1 before the first. */
int indexAt(const Track& track, qint64 time);

/** What a report tells of a track. */
struct TrackSummary
{
    double distance = 0;   ///< Metres, along all points.
    qint64 moving = 0;     ///< Seconds of the intervals that begin with a speed; none longer than longestInterval.
    qint32 topSpeed = 0;   ///< km/h
    qint32 topSpeedAt = 0; ///< Unix seconds of the first such point; 0 without points.
    int alarms = 0;        ///< How often the alarm was raised, not how many reports say so.

    /** A longer silence of the terminal, in seconds, tells nothing of how long the object drove. */
    static constexpr qint64 longestInterval = 600;

    static TrackSummary of(const Track& track);
};
