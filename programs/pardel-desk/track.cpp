#include "track.h"

#include <Pardel/mobdata.h>
#include <Pardel/tutils.h>

#include <QDateTime>

#include <algorithm>
#include <cmath>
#include <limits>

namespace {

constexpr double earthRadius = 6'371'008.8; // metres, the mean
constexpr qint64 oneDay = 24 * 60 * 60;     // s
constexpr double radian = 3.14159265358979323846 / 180;

Track::const_iterator firstAfter(const Track& track, qint64 time)
{
    return std::upper_bound(track.cbegin(), track.cend(), time,
                            [](qint64 moment, const TrackPoint& point) { return moment < point.time; });
}

} // namespace

TrackPoint TrackPoint::of(const MobData& report)
{
    const auto bounded = [](qint32 value) {
        using Limits = std::numeric_limits<qint16>;
        return static_cast<qint16>(std::clamp<qint32>(value, Limits::min(), Limits::max()));
    };
    return {report.timeUnix,       report.latitude,        report.longitude,
            bounded(report.speed), bounded(report.course), TUtils::isAlarm(report)};
}

double distanceBetween(const TrackPoint& from, const TrackPoint& to)
{
    const double fromLatitude = from.latitude * 1e-7 * radian;
    const double toLatitude = to.latitude * 1e-7 * radian;
    const double north = std::sin((toLatitude - fromLatitude) / 2);
    const double east = std::sin((to.longitude * 1e-7 - from.longitude * 1e-7) * radian / 2);
    const double haversine = north * north + std::cos(fromLatitude) * std::cos(toLatitude) * east * east;
    return 2 * earthRadius * std::asin(std::min(1.0, std::sqrt(haversine)));
}

bool isCredible(qint32 time)
{
    return time > 0 && time <= QDateTime::currentSecsSinceEpoch() + oneDay;
}

void insertInTime(Track& track, const TrackPoint& point)
{
    const int place = static_cast<int>(firstAfter(track, point.time) - track.cbegin());
    if (place > 0 && track.at(place - 1).time == point.time)
        track[place - 1] = point;
    else
        track.insert(place, point);
}

int indexAt(const Track& track, qint64 time)
{
    return static_cast<int>(firstAfter(track, time) - track.cbegin()) - 1;
}

TrackSummary TrackSummary::of(const Track& track)
{
    TrackSummary summary;
    bool alarm = false;
    for (int i = 0; i < track.size(); ++i) {
        const TrackPoint& point = track.at(i);
        if (i == 0 || point.speed > summary.topSpeed) {
            summary.topSpeed = point.speed;
            summary.topSpeedAt = point.time;
        }
        if (point.alarm && !alarm)
            ++summary.alarms;
        alarm = point.alarm;
        if (i == 0)
            continue;
        const TrackPoint& before = track.at(i - 1);
        summary.distance += distanceBetween(before, point);
        const qint64 interval = qint64(point.time) - before.time;
        if (before.speed > 0 && interval <= longestInterval)
            summary.moving += interval;
    }
    return summary;
}
