#include "archivebatch.h"

#include "archiveschema.h"

#include <algorithm>
#include <cstring>
#include <tuple>

namespace {

auto keyOf(const ArchiveBatch::Row& row)
{
    return std::tie(row.object, row.time, row.print);
}

} // namespace

void ArchiveBatch::add(const MobData& report, qint64 horizon)
{
    Row row{static_cast<quint32>(report.idObject),
            static_cast<quint32>(report.timeUnix),
            {report.latitude, report.longitude, report.speed, report.course},
            {},
            static_cast<quint32>(m_sensors.size())};
    const QByteArray print = report.hash();
    std::memcpy(row.print.data(), print.constData(), row.print.size());
    row.ahead = row.hasTime() && row.time > horizon;
    for (const Sensor& sensor : report.sensors) {
        if (!ArchiveSchema::hasColumns(sensor.type))
            continue;
        const auto place = std::lower_bound(m_sensors.begin() + row.firstSensor, m_sensors.end(), sensor.type,
                                            [](const Sensor& other, qint16 type) { return other.type < type; });
        if (place != m_sensors.end() && place->type == sensor.type)
            *place = sensor;
        else
            m_sensors.insert(place, sensor);
        m_types.set(static_cast<std::size_t>(sensor.type));
    }
    row.sensorCount = static_cast<quint32>(m_sensors.size()) - row.firstSensor;
    m_rows.push_back(row);
}

void ArchiveBatch::sort()
{
    std::sort(m_rows.begin(), m_rows.end(), [](const Row& a, const Row& b) { return keyOf(a) < keyOf(b); });
    const auto same = [](const Row& a, const Row& b) { return keyOf(a) == keyOf(b); };
    m_rows.erase(std::unique(m_rows.begin(), m_rows.end(), same), m_rows.end());
}

void ArchiveBatch::clear()
{
    m_rows.clear();
    m_sensors.clear();
    m_types.reset();
}
