#include "stretches.h"

#include <QSettings>
#include <QVariant>

#include <algorithm>

namespace {

/// Points between which a track is of one kind.
struct Run
{
    Stretch::Kind kind;
    int first;
    int last;
};

bool isSilent(const TrackPoint& before, const TrackPoint& after)
{
    return qint64(after.time) - before.time > TrackSummary::longestInterval;
}

Stretch stretchOf(const Track& track, const Run& run)
{
    Stretch stretch;
    stretch.kind = run.kind;
    stretch.begin = track.at(run.first);
    stretch.end = track.at(run.last);
    stretch.topSpeed = stretch.begin.speed;
    for (int i = run.first + 1; i <= run.last; ++i) {
        stretch.distance += distanceBetween(track.at(i - 1), track.at(i));
        if (i < run.last || run.kind != Stretch::Stop) // a stop ends with the speed of driving off
            stretch.topSpeed = std::max<qint32>(stretch.topSpeed, track.at(i).speed);
    }
    return stretch;
}

Stretch::Kind kindOf(const TrackPoint& before, const TrackPoint& after, const ReportThresholds& thresholds)
{
    if (isSilent(before, after))
        return distanceBetween(before, after) < thresholds.tripMetres ? Stretch::Stop : Stretch::Silence;
    return before.speed > thresholds.movingSpeed ? Stretch::Trip : Stretch::Stop;
}

/// Puts a run behind the others, as a part of the last one if that is of the same kind.
void append(QVector<Run>& runs, const Run& run)
{
    if (!runs.isEmpty() && runs.constLast().kind == run.kind)
        runs.last().last = run.last;
    else
        runs.append(run);
}

template <typename Change>
QVector<Run> changed(const QVector<Run>& runs, Change&& kindOfRun)
{
    QVector<Run> result;
    for (int i = 0; i < runs.size(); ++i)
        append(result, {kindOfRun(i), runs.at(i).first, runs.at(i).last});
    return result;
}

/// The stretches of points for which @p holds is true, up to the next point.
template <typename Condition>
QVector<Stretch> stretchesWhere(const Track& track, Stretch::Kind kind, bool endsInSilence, Condition&& holds)
{
    QVector<Stretch> found;
    for (int i = 0; i < track.size(); ++i) {
        if (!holds(track.at(i)))
            continue;
        const int first = i;
        while (i + 1 < track.size() && holds(track.at(i)) && !(endsInSilence && isSilent(track.at(i), track.at(i + 1))))
            ++i;
        found.append(stretchOf(track, {kind, first, i}));
        // The point that ends one stretch does not hold; one before a silence may, and the next begins behind it.
    }
    return found;
}

} // namespace

ReportThresholds ReportThresholds::read(const QSettings& ini)
{
    const auto setting = [&](const char* key, double standard) {
        bool good = false;
        const double value = ini.value(QLatin1String("Report/") + QLatin1String(key), standard).toDouble(&good);
        return good && value >= 0 && value <= 1e6 ? value : standard;
    };
    ReportThresholds thresholds;
    thresholds.stopSeconds = qRound64(setting("StopMinutes", 5) * 60);
    thresholds.movingSpeed = qRound(setting("MovingSpeed", thresholds.movingSpeed));
    thresholds.tripMetres = setting("TripMetres", thresholds.tripMetres);
    thresholds.speedLimit = qRound(setting("SpeedLimit", thresholds.speedLimit));
    return thresholds;
}

QVector<Stretch> tripsAndStops(const Track& track, const ReportThresholds& thresholds)
{
    QVector<Run> runs;
    for (int i = 1; i < track.size(); ++i)
        append(runs, {kindOf(track.at(i - 1), track.at(i), thresholds), i - 1, i});

    const auto isKind = [&](int i, Stretch::Kind kind) { return i >= 0 && i < runs.size() && runs.at(i).kind == kind; };
    runs = changed(runs, [&](int i) {
        const bool isShort =
            qint64(track.at(runs.at(i).last).time) - track.at(runs.at(i).first).time < thresholds.stopSeconds;
        const bool onTheWay = isKind(i - 1, Stretch::Trip) && isKind(i + 1, Stretch::Trip);
        return isKind(i, Stretch::Stop) && isShort && onTheWay ? Stretch::Trip : runs.at(i).kind;
    });
    runs = changed(runs, [&](int i) {
        const bool beside = isKind(i - 1, Stretch::Stop) || isKind(i + 1, Stretch::Stop);
        return isKind(i, Stretch::Trip) && beside && stretchOf(track, runs.at(i)).distance < thresholds.tripMetres
                   ? Stretch::Stop
                   : runs.at(i).kind;
    });

    QVector<Stretch> found;
    for (const Run& run : qAsConst(runs))
        found.append(stretchOf(track, run));
    return found;
}

QVector<Stretch> speedings(const Track& track, const ReportThresholds& thresholds)
{
    return stretchesWhere(track, Stretch::Speeding, true,
                          [&](const TrackPoint& point) { return point.speed > thresholds.speedLimit; });
}

QVector<Stretch> alarmsOf(const Track& track)
{
    return stretchesWhere(track, Stretch::Alarm, false, [](const TrackPoint& point) { return point.alarm; });
}
