#include <Pardel/tutils.h>

#include "sensortypes_p.h"

#include <algorithm>

namespace {

auto ofType(qint16 type)
{
    return [type](const Sensor& sensor) { return sensor.type == type; };
}

} // namespace

int TUtils::lSensorAdd(MobData* data, Sensor* sensor)
{
    if (!data || !sensor)
        return 0;
    const Sensor added = *sensor; // it may stand in the list itself
    bool found = false;
    for (Sensor& present : data->sensors) {
        if (present.type == added.type) {
            present = added;
            found = true;
        }
    }
    if (!found)
        data->sensors.append(added);
    return 0;
}

bool SensorExist(MobData data, short type)
{
    return std::any_of(data.sensors.cbegin(), data.sensors.cend(), ofType(type));
}

bool TUtils::isAlarm(const MobData& data)
{
    const auto alarm = std::find_if(data.sensors.cbegin(), data.sensors.cend(), ofType(alarmSensor));
    return alarm != data.sensors.cend() && alarm->status != 0;
}
