#pragma once

#include <Pardel/mobdata.h>

#include <QDateTime>

#include <array>
#include <bitset>
#include <limits>
#include <utility>
#include <vector>

/** Reports on their way into the archive, in the form in which the stores take them. */
class ArchiveBatch
{
public:
    static constexpr int typeCount = 256;

    struct Row
    {
        quint32 object;
        quint32 time;                        ///< Unix seconds; 0xFFFFFFFF is none.
        std::array<qint32, 4> position;      ///< Latitude, longitude, speed, course.
        std::array<unsigned char, 16> print; ///< The report's fingerprint.
        quint32 firstSensor = 0;             ///< Its sensors lie together, in the order of their types.
        quint32 sensorCount = 0;
        bool ahead = false; ///< Its time is too far in the future to be believed.

        /** As the archive holds it: a report without time has -1. */
        qint64 storedTime() const { return time == noTime ? -1 : qint64(time); }
        bool hasTime() const { return time != 0 && time != noTime; }
        bool hasPosition() const { return position[0] != 0 || position[1] != 0; }
    };

    /** Takes a report. Of sensors of one type the last counts; types without columns are left out. */
    void add(const MobData& report, qint64 horizon);

    /**
     * Puts the rows in the order of object, time and fingerprint, in which all writers store them, and drops those that
     * are there twice.
     */
    void sort();

    void clear();
    std::size_t size() const { return m_rows.size(); }
    bool empty() const { return m_rows.empty(); }
    /** Whether it is time to store it: rows are stored with a cell for each type that any of them has. */
    bool isFull() const { return m_rows.size() >= mostRows || m_rows.size() * m_types.count() >= mostCells; }
    const std::vector<Row>& rows() const { return m_rows; }
    const Sensor* begin(const Row& row) const { return m_sensors.data() + row.firstSensor; }
    const Sensor* end(const Row& row) const { return begin(row) + row.sensorCount; }
    /** Types of which any row has a sensor. */
    const std::bitset<typeCount>& types() const { return m_types; }

private:
    static constexpr quint32 noTime = std::numeric_limits<quint32>::max();
    static constexpr std::size_t mostRows = 50'000;
    static constexpr std::size_t mostCells = 2'500'000;

    std::vector<Row> m_rows;
    std::vector<Sensor> m_sensors;
    std::bitset<typeCount> m_types;
};
