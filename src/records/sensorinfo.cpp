#include <Pardel/sensorinfo.h>

#include "streamlists_p.h"

#include <QDataStream>

QDataStream& operator<<(QDataStream& stream, const SensorInfo& info)
{
    return stream << info.valueNames << info.caption << info.name << info.id << info.type << info.number;
}

QDataStream& operator>>(QDataStream& stream, SensorInfo& info)
{
    return readList(stream, info.valueNames) >> info.caption >> info.name >> info.id >> info.type >> info.number;
}

QDataStream& operator<<(QDataStream& stream, const SensorInfoX& info)
{
    return stream << static_cast<const SensorInfo&>(info) << info.unit << info.extra;
}

QDataStream& operator>>(QDataStream& stream, SensorInfoX& info)
{
    return stream >> static_cast<SensorInfo&>(info) >> info.unit >> info.extra;
}

QDataStream& operator<<(QDataStream& stream, const New_Sens& sensor)
{
    return stream << sensor.value << sensor.type;
}

QDataStream& operator>>(QDataStream& stream, New_Sens& sensor)
{
    return stream >> sensor.value >> sensor.type;
}

QDataStream& operator<<(QDataStream& stream, const MessageProp& properties)
{
    return stream << properties.id << properties.text << properties.flags;
}

QDataStream& operator>>(QDataStream& stream, MessageProp& properties)
{
    return stream >> properties.id >> properties.text >> properties.flags;
}
