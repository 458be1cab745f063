#include "series.h"

#include "track.h"

#include <Pardel/archive.h>
#include <Pardel/tutils.h>

#include <QCoreApplication>

#include <algorithm>
#include <cmath>
#include <limits>

namespace {

quint32 archiveTime(qint64 time)
{
    return static_cast<quint32>(std::clamp<qint64>(time, 0, std::numeric_limits<quint32>::max()));
}

} // namespace

Series Series::read(const QSqlDatabase& db, qint32 id, qint16 type, qint64 from, qint64 to)
{
    Series series;
    int count = 0;
    double last = 0;
    const QSqlError error = readHistory(id, archiveTime(from), archiveTime(to), {type}, db, [&](const MobData& state) {
        const double value = type == speed             ? state.speed
                             : state.sensors.isEmpty() ? std::nan("")
                                                       : double(state.sensors.constFirst().value);
        if (!std::isfinite(value)) // a status may be there without its value
            return true;
        if (++count > mostPoints) {
            series.isCut = true;
            return false;
        }
        const double time = static_cast<quint32>(state.timeUnix);
        if (series.pieces.isEmpty() || time - last > TrackSummary::longestInterval)
            series.pieces.append(QVector<QPointF>());
        series.pieces.last().append({time, value});
        last = time;
        return true;
    });
    if (error.type() != QSqlError::NoError)
        series.error = error.text();
    return series;
}

QVector<qint16> Series::typesOf(const QSqlDatabase& db)
{
    QVector<qint16> types{speed};
    QList<qint16> kept;
    readSensorTypes(kept, db);
    if (kept.removeOne(supply))
        types.append(supply);
    for (const qint16 type : qAsConst(kept))
        types.append(type);
    return types;
}

QString Series::title(qint16 type)
{
    switch (type) {
    case speed: return QCoreApplication::translate("Series", "Speed, km/h");
    case supply: return QCoreApplication::translate("Series", "Supply, V");
    default: return QCoreApplication::translate("Series", "Sensor %1").arg(type);
    }
}
