#include "simulation.h"

#include "packetbuilder.h"

#include <Pardel/tutils.h>

#include <algorithm>
#include <cmath>
#include <cstring>

namespace {

constexpr quint32 startTime = 1'767'225'600; // 2026-01-01 00:00 UTC
constexpr double packetSeconds = 60;
constexpr int stepsAPacket = 6;
constexpr double topSpeed = 110;    // km/h
constexpr double usualStep = 10;    // seconds; speedChange and sharpestTurn are per such a step
constexpr double speedChange = 15;  // km/h, at most
constexpr double sharpestTurn = 60; // degrees, at walking pace
constexpr double range = 0.5;       // degrees from home
constexpr double metersADegree = 111'320;
constexpr double tankSize = 400; // litres
constexpr double radian = 3.14159265358979323846 / 180;

constexpr double speedStep = 1.85325; // km/h, in which terminals send speeds

quint8 speedCode(double speed)
{
    return static_cast<quint8>(std::lround(speed / speedStep));
}

quint32 wholeSeconds(double time)
{
    return static_cast<quint32>(time);
}

quint8 courseCode(double course)
{
    return static_cast<quint8>(course / 2);
}

/// Degrees times 10 000 000 plus minutes times 100 000, as terminals send coordinates.
quint32 packed(double degrees)
{
    const double whole = std::trunc(degrees);
    return static_cast<quint32>(static_cast<qint32>(whole * 1e7 + std::round((degrees - whole) * 60 * 1e5)));
}

} // namespace

Terminal::Terminal(qint16 number, quint32 seed) : m_number(number)
{
    std::seed_seq sequence{seed, static_cast<quint32>(number)};
    m_random.seed(sequence);
    const double begin = startTime + draw(60U) - 60;
    m_now = {begin, draw(54.5, 56.5), draw(36.0, 39.0), draw(0.0, 60.0), draw(0.0, 360.0)};
    m_home = m_now;
    m_fuel = draw(0.3, 1.0) * tankSize;
}

double Terminal::draw(double from, double to)
{
    return from + (to - from) * (static_cast<double>(m_random()) / static_cast<double>(std::minstd_rand::max()));
}

void Terminal::step(double seconds)
{
    const double share = seconds / usualStep;
    m_now.time += seconds;
    if (m_haltSeconds > 0) {
        m_haltSeconds -= seconds;
        m_now.speed = std::max(0.0, m_now.speed - speedChange * share);
        if (m_haltSeconds <= 0 && m_fuel < 0.15 * tankSize)
            m_fuel = tankSize;
    } else {
        m_now.speed = std::clamp(m_now.speed + share * draw(-speedChange, speedChange * 1.1), 5.0, topSpeed);
        if (draw(static_cast<quint32>(150 / share)) == 0)
            m_haltSeconds = (6 + draw(120U)) * usualStep;
    }
    if (m_now.speed > 0) {
        const double mostTurn = share * sharpestTurn / (1 + m_now.speed / 10);
        double turn = draw(-mostTurn, mostTurn);
        const double north = m_home.latitude - m_now.latitude;
        const double east = m_home.longitude - m_now.longitude;
        if (std::hypot(north, east) > range)
            turn =
                std::clamp(std::remainder(std::atan2(east, north) / radian - m_now.course, 360.0), -mostTurn, mostTurn);
        m_now.course = std::fmod(m_now.course + turn + 360, 360);
        const double degrees = m_now.speed / 3.6 * seconds / metersADegree;
        m_now.latitude += degrees * std::cos(m_now.course * radian);
        m_now.longitude += degrees * std::sin(m_now.course * radian) / std::cos(m_now.latitude * radian);
    }
    const double burnt = (2 + m_now.speed * 0.28) * seconds / 3600;
    m_fuel = std::max(0.0, m_fuel - burnt);
    m_fuelUsed += burnt;
    m_temperature = std::clamp(m_temperature + share * draw(-0.2, 0.2), -15.0, 35.0);
    m_track.push_back(m_now);
}

QByteArray Terminal::driveUntil(double time, double seconds)
{
    m_now.time = time - seconds;
    return drive(seconds);
}

QByteArray Terminal::drive(double seconds)
{
    const double stepSeconds = seconds / stepsAPacket;
    m_track.clear();
    for (int i = 0; i < stepsAPacket; ++i)
        step(stepSeconds);

    const bool halted = m_now.speed <= 0;
    const bool alarm = draw(400U) == 0;
    const bool disturbed = draw(100U) == 0;
    const bool truck = m_number % 2 == 0; // 24 V on board, else 12 V
    const quint8 status = static_cast<quint8>(0x31 | (alarm ? 0x40 : 0) | (disturbed ? 0x02 : 0) | (halted ? 0x04 : 0));
    const auto volts = static_cast<quint8>((truck ? 176U : 88U) + draw(8U));

    RecordBuilder place(11);
    place.little32(packed(m_now.latitude)).little32(packed(m_now.longitude));
    place.byte(speedCode(m_now.speed)).byte(courseCode(m_now.course)).little32(wholeSeconds(m_now.time));
    const auto precise = static_cast<float>(m_temperature);
    quint32 preciseBits = 0;
    std::memcpy(&preciseBits, &precise, sizeof preciseBits);
    RecordBuilder temperature(50);
    temperature.byte(static_cast<quint8>(std::lround(m_temperature) + 21)).big32(preciseBits);

    PacketBuilder packet(m_number);
    packet.group({place});
    packet.group({RecordBuilder(12).byte(status), RecordBuilder(65).byte(volts),
                  RecordBuilder(72).byte(halted ? 4 : static_cast<quint8>(30 + draw(4U))), RecordBuilder(49).byte(129),
                  RecordBuilder(76).byte(static_cast<quint8>(10 + draw(20U))),
                  RecordBuilder(106).byte(static_cast<quint8>(5 + draw(9U)))});
    packet.group({RecordBuilder(112).big16(static_cast<quint16>(m_fuel * 10)),
                  RecordBuilder(113).big16(static_cast<quint16>(std::fmod(m_fuelUsed * 10, 65536)))});
    packet.group({temperature});
    if (disturbed)
        packet.group({RecordBuilder(97).byte(1)});
    if (alarm)
        packet.group({RecordBuilder(15).byte(15)});

    if (draw(16U) == 0) { // a report that could not be sent in time
        const Point& late = m_track.at(2);
        RecordBuilder report(226);
        report.little32(packed(late.latitude)).little32(packed(late.longitude)).little32(wholeSeconds(late.time));
        report.byte(speedCode(late.speed)).byte(courseCode(late.course));
        report.little32(static_cast<quint32>(late.speed * stepSeconds)).byte(status);
        report.byte(3).byte(2); // three pairs
        report.byte(65).byte(volts).byte(72).byte(halted ? 4 : 30).byte(150).big16(static_cast<quint16>(m_fuel * 10));
        packet.group({report});
    }
    if (draw(16U) == 0) { // the track between the packets
        RecordBuilder track(231);
        for (std::size_t i = 0; i + 1 < m_track.size(); ++i) {
            const Point& point = m_track[i];
            track.little32(packed(point.latitude)).little32(packed(point.longitude)).little32(wholeSeconds(point.time));
            track.byte(speedCode(point.speed)).byte(courseCode(point.course)).byte(0);
            track.byte(static_cast<quint8>(GetExternalSupplyValue(volts))); // there no code, but the value itself
            track.byte(120).byte(30).byte(0).byte(0).byte(0).byte(0);
        }
        packet.group({track});
    }
    return packet.sealed();
}

Simulation::Simulation(const SimulationSettings& settings) : m_minutesLeft(settings.minutes)
{
    m_terminals.reserve(static_cast<std::size_t>(settings.terminals));
    for (int number = 1; number <= settings.terminals; ++number)
        m_terminals.emplace_back(static_cast<qint16>(number), settings.seed);
}

QByteArray Simulation::next()
{
    if (m_turn == m_terminals.size()) {
        m_turn = 0;
        --m_minutesLeft;
    }
    if (m_minutesLeft <= 0)
        return QByteArray();
    return m_terminals[m_turn++].drive(packetSeconds);
}
