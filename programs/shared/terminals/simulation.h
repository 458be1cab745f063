#pragma once

#include <QByteArray>
#include <QtGlobal>

#include <random>
#include <vector>

/** What is simulated; the same settings give the same packets. */
struct SimulationSettings
{
    int terminals = 1; ///< Numbered from 1; at most maximumTerminals.
    int minutes = 1;   ///< Every terminal sends one packet a minute.
    quint32 seed = 1;

    static constexpr int maximumTerminals = 32767; ///< A packet has no larger object numbers.
};

/**
 * One vehicle with its terminal: drives, halts, burns fuel and reports.
 *
 * It speeds up and brakes within bounds, turns the less the faster it goes, stays below 110 km/h, and turns back when
 * it gets too far from where it began.
 */
class Terminal
{
public:
    Terminal(qint16 number, quint32 seed);

    /** Drives on for more than 0 and at most 60 seconds. @return the sealed packet sent at their end */
    QByteArray drive(double seconds);
    /** The same, with an end at this time (Unix seconds), whatever the terminal's clock said before. */
    QByteArray driveUntil(double time, double seconds);

private:
    struct Point
    {
        double time; // Unix seconds
        double latitude;
        double longitude; // both in degrees
        double speed;     // km/h
        double course;    // degrees from north, clockwise
    };

    void step(double seconds);
    quint32 draw(quint32 below) { return static_cast<quint32>(m_random()) % below; }
    /// Evenly between @p from and @p to.
    double draw(double from, double to);

    std::minstd_rand m_random;
    qint16 m_number;
    Point m_now;
    Point m_home;
    double m_haltSeconds = 0; // still to stand
    double m_fuel;            // litres
    double m_fuelUsed = 0;
    double m_temperature = 20;  // degrees Celsius
    std::vector<Point> m_track; // the points passed since the last packet
};

/** Terminals that report in turn, minute after minute, from 2026-01-01 00:00 UTC on. */
class Simulation
{
public:
    explicit Simulation(const SimulationSettings& settings);

    /** The next packet in the order of sending; empty when all have been sent. */
    QByteArray next();

private:
    std::vector<Terminal> m_terminals;
    std::size_t m_turn = 0;
    int m_minutesLeft;
};
