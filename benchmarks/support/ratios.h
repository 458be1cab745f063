#pragma once

#include <string>
#include <vector>

/** What one benchmark's time is to be measured against. */
struct Ratio
{
    enum Goal
    {
        AtMost,
        AtLeast
    };

    std::string ours; ///< Name of a benchmark.
    std::string peer; ///< Name of the one beside it, in the same run.
    Goal goal;        ///< Of ours / peer, or for AtLeast of peer / ours ("so many times as fast").
    double target;
};

/**
 * Runs all registered benchmarks, fifteen times each in random order, and prints the ratios of their fastest times
 * beside the targets.
 *
 * @return the exit status: 1 when a benchmark named in @p ratios did not run, else 0, whatever the figures
 */
int runWithRatios(int argc, char* argv[], const std::vector<Ratio>& ratios);
