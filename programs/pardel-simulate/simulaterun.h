#pragma once

#include "livesender.h"

#include <optional>

/** What pardel-simulate has been asked to do. */
struct SimulateOptions
{
    SimulationSettings simulation;
    bool hex = false;                 ///< Write a packet a line in hex digits, not raw packets back to back.
    std::optional<LiveSettings> live; ///< Let the terminals send over the network instead of writing.
};

/** Writes all packets to standard output, or sends them in the application's event loop. @return an ExitStatus */
int simulate(const SimulateOptions& options);
