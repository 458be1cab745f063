#include <Pardel/tutils.h>

#include "packetrecords_p.h"
#include "sensortypes_p.h"

#include <array>
#include <bitset>
#include <cstring>
#include <optional>

namespace {

constexpr qint8 normal = 0;
constexpr qint8 raised = 15;

/// Bits of the status byte (tag 12, and byte 19 of tag 226), counted from 0.
enum StatusBit : quint8
{
    Bit0 = 0x01,
    Bit1 = 0x02,
    Bit2 = 0x04,
    Bits4And5 = 0x30,
    AlarmBit = 0x40,
};

// Speeds are sent in steps of 1.85325 km/h. Whole numbers keep the truncation and the halves exact.
constexpr quint64 speedStep = 185'325; // in units of 1/100 000 km/h
constexpr quint64 speedStepUnits = 100'000;

constexpr qint32 speedFromCode(quint8 code)
{
    return static_cast<qint32>(code * speedStep / speedStepUnits);
}

constexpr qint32 courseFromCode(quint8 code)
{
    return code * 2;
}

qint32 coordinate(quint32 sent, bool convert)
{
    const auto value = static_cast<qint32>(sent);
    return convert ? TUtils::ConvertCoordinates(value) : value;
}

template <typename Number>
void add(QList<Sensor>& sensors, qint16 type, Number value, qint8 status = normal)
{
    Sensor sensor;
    sensor.type = type;
    sensor.value = static_cast<float>(value);
    sensor.status = status;
    sensors.append(sensor);
}

/// Latitude, longitude, time, speed and course from byte @p first on, in the order of tags 226 and 231. (Tag 11 has
/// another.)
void readPosition(const Record& record, int first, bool convert, MobData& report)
{
    report.latitude = coordinate(record.little32(first), convert);
    report.longitude = coordinate(record.little32(first + 4), convert);
    report.timeUnix = static_cast<qint32>(record.little32(first + 8));
    report.speed = speedFromCode(record.byte(first + 12));
    report.course = courseFromCode(record.byte(first + 13));
}

/// The pairs of a type and a value that end a record of tag 226, read while their type byte lies inside it.
void readPairs(const Record& record, int first, int count, QList<Sensor>& sensors)
{
    int at = first;
    for (int pair = 0; pair < count && at < record.size(); ++pair) {
        const quint8 type = record.byte(at);
        const int value = at + 1;
        int valueSize = 1;
        switch (type) {
        case 65: {
            const int volts = GetExternalSupplyValue(record.byte(value));
            add(sensors, type, volts, volts < 8 ? raised : normal);
            break;
        }
        case 66: {
            const bool low = record.byte(value) <= 94;
            add(sensors, type, low, low ? raised : normal);
            break;
        }
        case 72: add(sensors, type, record.byte(value) > 16); break;
        case 117:
        case 118:
        case 119:
        case 120:
        case 121:
            valueSize = 4;
            add(sensors, type, record.big32(value));
            break;
        case 150:
        case 151:
        case 162:
        case 163:
        case 164:
        case 165:
            valueSize = 2;
            add(sensors, type, record.big16(value));
            break;
        default: add(sensors, type, record.byte(value));
        }
        at = value + valueSize;
    }
}

/// Tag 15 raises all earlier sensors of a type. It is remembered here and applied once, at the packet's end: a walk
/// over the sensors for each such record would take quadratic time, as a packet may hold nothing else. Until then the
/// list may only grow, and nobody may ask for a status.
class RaisedTypes
{
public:
    /// Raises the sensors of @p type that are in the list by now; false when there is none.
    bool raise(const QList<Sensor>& sensors, quint8 type)
    {
        for (; m_seen < sensors.size(); ++m_seen) {
            if (const int present = sensors.at(m_seen).type; isCode(present))
                m_present.set(static_cast<std::size_t>(present));
        }
        m_raisedBefore[type] = m_seen;
        return m_present.test(type);
    }

    void applyTo(QList<Sensor>& sensors) const
    {
        for (int i = 0; i < m_seen; ++i) {
            Sensor& sensor = sensors[i];
            if (isCode(sensor.type) && i < m_raisedBefore[static_cast<std::size_t>(sensor.type)])
                sensor.status = raised;
        }
    }

private:
    static constexpr int codes = 256; // tag 15 names a type in one byte
    static bool isCode(int type) { return type >= 0 && type < codes; }

    int m_seen = 0;
    std::bitset<codes> m_present;
    std::array<int, codes> m_raisedBefore{}; // index of the first sensor that came after
};

/// Decodes the records of one packet, in packet order, into the caller's report and lists.
class Decoder
{
public:
    Decoder(MobData& data, bool& statusBit, QList<MobData>* reports, QList<QByteArray>* rawRecords,
            QList<QByteArray>* rawExtra, bool convert)
        : m_data(data),
          m_statusBit(statusBit),
          m_reports(reports),
          m_rawRecords(rawRecords),
          m_rawExtra(rawExtra),
          m_convert(convert)
    {}

    void decode(const Record& record);
    quint32 finish();

private:
    void decodeStatus(quint8 status);
    void decodeOther(const Record& record);
    void decodeAdditionalReport(const Record& record) const;
    void decodeTrackBlocks(const Record& record) const;
    bool pass(const Record& record, int size) const;

    MobData& m_data;
    bool& m_statusBit;
    QList<MobData>* const m_reports;
    QList<QByteArray>* const m_rawRecords;
    QList<QByteArray>* const m_rawExtra;
    const bool m_convert;

    quint32 m_result = 0;
    bool m_armed = false; // by a status record; sensors 97 to 101 are then raised
    bool m_has49 = false;
    bool m_has76 = false;
    bool m_has106 = false;
    std::optional<RaisedTypes> m_raisedTypes;
};

// Numbers of tags, sensor types and thresholds stand here as the numbers of the format that they are: they have no
// other names, and docs/packet.md lists them in the same order.
void Decoder::decode(const Record& record)
{
    constexpr int rawHeadSize = 3;
    const quint8 tag = record.byte(0);
    const quint8 code = record.byte(1);
    QList<Sensor>& sensors = m_data.sensors;

    switch (tag) {
    case 1: m_data.timeUnix = static_cast<qint32>(record.little32(1)); break;
    case 2: m_data.latitude = coordinate(record.little32(1), m_convert); break;
    case 3: m_data.longitude = coordinate(record.little32(1), m_convert); break;
    case 4: m_data.speed = speedFromCode(code); break;
    case 5: m_data.course = courseFromCode(code); break;
    case 11:
        m_data.latitude = coordinate(record.little32(1), m_convert);
        m_data.longitude = coordinate(record.little32(5), m_convert);
        m_data.speed = speedFromCode(record.byte(9));
        m_data.course = courseFromCode(record.byte(10));
        m_data.timeUnix = static_cast<qint32>(record.little32(11));
        break;
    case 12: decodeStatus(code); break;
    case 15:
        if (!m_raisedTypes)
            m_raisedTypes.emplace();
        if (!m_raisedTypes->raise(sensors, code))
            add(sensors, code, 1, raised);
        break;
    case 20: add(sensors, tag, record.little32(1)); break;
    case 47: break;
    case 49:
        add(sensors, tag, static_cast<quint8>(code - 128));
        m_has49 = true;
        break;
    case 50: {
        add(sensors, tag, code - 21);
        Sensor precise;
        precise.type = 56;
        const quint32 bits = record.big32(2);
        std::memcpy(&precise.value, &bits, sizeof bits); // not through a number, which could change a NaN
        sensors.append(precise);
        break;
    }
    case 52: pass(record, record.size()); break;
    case 65: add(sensors, tag, GetExternalSupplyValue(code)); break;
    case 66: add(sensors, tag, code < 95); break;
    case 72: add(sensors, tag, code >= 17); break;
    case 95:
        for (qint16 bit = 1; bit <= 4; ++bit)
            add(sensors, static_cast<qint16>(56 + bit), (code >> bit) & 1);
        break;
    case 112:
    case 113:
    case 150:
    case 151:
    case 161:
    case 162:
    case 163:
    case 164:
    case 165: add(sensors, tag, record.big16(1)); break;
    case 114:
    case 115:
    case 122:
    case 123: add(sensors, tag, record.big32(1)); break;
    case 117:
    case 118:
    case 119:
    case 120:
    case 121: add(sensors, tag, record.size() == 5 ? record.big32(1) : record.size() == 3 ? record.big16(1) : 0); break;
    case 140:
        if (pass(record, record.size()))
            m_result |= TUtils::Tag140Passed;
        break;
    case 171: // ten times as fine, rounded half up
        add(sensors, tag, (record.big16(1) * speedStep + speedStepUnits / 20) / (speedStepUnits / 10));
        break;
    case 172:
    case 173:
    case 174: add(sensors, tag, record.size() == 3 ? record.big16(1) : 0); break;
    case Packet::additionalReportTag: decodeAdditionalReport(record); break;
    case 227:
    case 230:
    case 232: // nested records: for those who take everything, and decoded by them
        if (m_reports && m_rawExtra)
            pass(record, record.size());
        break;
    case 228:
        if (pass(record, rawHeadSize))
            m_result |= TUtils::Tag228Passed;
        break;
    case 229: pass(record, rawHeadSize); break;
    case 231: decodeTrackBlocks(record); break;
    default: decodeOther(record);
    }
}

void Decoder::decodeStatus(quint8 status)
{
    QList<Sensor>& sensors = m_data.sensors;
    const bool alarm = status & AlarmBit;
    add(sensors, alarmSensor, alarm, alarm ? raised : normal);
    const bool both = (status & Bits4And5) == Bits4And5;
    add(sensors, 13, both, both ? normal : raised);
    if (status & Bit2) {
        add(sensors, 14, 2);
        add(sensors, 50, 4);
    } else if (status & Bit1) {
        add(sensors, 14, 1, raised);
        m_armed = true;
    } else {
        add(sensors, 14, 0);
    }
    m_statusBit = status & Bit0;
    m_result |= TUtils::StatusSeen;
}

void Decoder::decodeOther(const Record& record)
{
    constexpr quint8 lastSensorTag = 232;
    const quint8 tag = record.byte(0);
    if (tag > lastSensorTag)
        return;
    const quint8 value = record.byte(1);
    // The order of the records counts: what came before the status that arms stays as it is.
    const bool suspect = tag >= 97 && tag <= 101 && value > 0 && m_armed;
    add(m_data.sensors, tag, value, suspect ? raised : normal);
    m_has76 = m_has76 || tag == 76;
    m_has106 = m_has106 || tag == 106;
}

void Decoder::decodeAdditionalReport(const Record& record) const
{
    if (!m_reports || !m_rawRecords)
        return;
    constexpr quint8 pairsFollow = 2;

    MobData report;
    report.idObject = m_data.idObject;
    readPosition(record, 1, m_convert, report);

    QList<Sensor>& sensors = report.sensors;
    add(sensors, 49, 3);
    add(sensors, 54, 4);
    add(sensors, 20, record.little32(15) * 1.85325 / 3600 / 100); // as double in this order: the last bit depends on it

    // Not as in a status record: only the alarm is raised, bit 2 plays no part, nothing is armed.
    const quint8 status = record.byte(19);
    const bool alarm = status & AlarmBit;
    add(sensors, alarmSensor, alarm, alarm ? raised : normal);
    add(sensors, 13, (status & Bits4And5) == Bits4And5);
    add(sensors, 14, (status & Bit1) != 0);

    if (record.byte(21) == pairsFollow)
        readPairs(record, 22, record.byte(20), sensors);
    m_reports->append(report);
}

void Decoder::decodeTrackBlocks(const Record& record) const
{
    if (!m_reports)
        return;
    constexpr int blockSize = 22;
    constexpr int firstSensorByte = 16;
    constexpr std::array<quint8, 7> types = {65, 66, 72, 112, 113, 114, 115};

    const int blocks = (record.size() - 1) / blockSize; // less than a block at the end is none
    for (int before = 0; before < blocks * blockSize; before += blockSize) {
        MobData report;
        report.idObject = m_data.idObject;
        readPosition(record, before + 1, m_convert, report);
        report.sensors.reserve(static_cast<int>(types.size()));
        for (std::size_t i = 0; i < types.size(); ++i)
            add(report.sensors, types[i], record.byte(before + firstSensorByte + static_cast<int>(i)));
        m_reports->append(report);
    }
}

/// Appends the record's first bytes to rawRecords; false when nobody wants them.
bool Decoder::pass(const Record& record, int size) const
{
    if (m_rawRecords)
        m_rawRecords->append(record.head(size));
    return m_rawRecords != nullptr;
}

quint32 Decoder::finish()
{
    if (m_raisedTypes)
        m_raisedTypes->applyTo(m_data.sensors);
    // The packet's own report always has these three. Tag 15 does not raise those added here: it is for earlier ones.
    if (!m_has49)
        add(m_data.sensors, 49, 0);
    if (!m_has76)
        add(m_data.sensors, 76, 0);
    if (!m_has106)
        add(m_data.sensors, 106, 0);
    return m_result;
}

/// Two bytes, the high one signed.
qint32 objectNumber(const uchar* bytes)
{
    return static_cast<qint8>(bytes[0]) * 0x100 + bytes[1];
}

} // namespace

quint32 TUtils::ParceOB1(QByteArray& packet, MobData& data, bool& statusBit, QList<MobData>* reports,
                         QList<QByteArray>* rawRecords, QList<QByteArray>* rawExtra, bool convert)
{
    const auto* bytes = reinterpret_cast<const uchar*>(packet.constData());
    const auto size = static_cast<int>(packet.size());
    if (size < Packet::leastSize || bytes[0] != Packet::start)
        return 0;
    if (bytes[1] == Packet::longForm && size == Packet::longFormSize) {
        data.idObject = objectNumber(bytes + 2);
        data.timeUnix = MobData::noTime;
        if (rawRecords)
            rawRecords->append(
                QByteArray(packet.constData() + Packet::longFormHeaderSize, size - Packet::longFormHeaderSize));
        return TUtils::LongForm;
    }
    if (bytes[1] != Packet::shortForm)
        return 0;
    data.idObject = objectNumber(bytes + 3);
    const int length = qFromLittleEndian<quint16>(bytes + Packet::lengthOffset);

    const std::optional<int> records = countRecords(bytes, size, length);
    if (!records)
        return 0;

    constexpr int guaranteedSensors = 3;
    data.sensors.reserve(data.sensors.size() + *records + guaranteedSensors);
    Decoder decoder(data, statusBit, reports, rawRecords, rawExtra, convert);
    forEachRecord(bytes, size, length, [&decoder](const Record& record) { decoder.decode(record); });
    return decoder.finish();
}
