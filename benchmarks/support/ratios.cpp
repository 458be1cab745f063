#include "ratios.h"

#include <benchmark/benchmark.h>

#include <cstdio>
#include <map>

namespace {

/// Shows and remembers the medians.
class MedianReporter : public benchmark::ConsoleReporter
{
public:
    void ReportRuns(const std::vector<Run>& runs) override
    {
        std::vector<Run> medians;
        for (const Run& run : runs) {
            if (run.aggregate_name != "median")
                continue;
            medians.push_back(run);
            // What is done in another process counts where a benchmark asks for real time.
            const bool realTime = run.run_name.time_type == "real_time";
            m_times[run.run_name.str()] = realTime ? run.GetAdjustedRealTime() : run.GetAdjustedCPUTime();
        }
        ConsoleReporter::ReportRuns(medians);
    }

    double time(const std::string& name) const
    {
        const auto found = m_times.find(name);
        return found == m_times.end() ? 0 : found->second;
    }

private:
    std::map<std::string, double> m_times;
};

} // namespace

int runWithRatios(int argc, char* argv[], const std::vector<Ratio>& ratios)
{
    std::string repetitions = "--benchmark_repetitions=5";
    std::string interleaving = "--benchmark_enable_random_interleaving=true";
    std::vector<char*> arguments(argv, argv + 1);
    arguments.push_back(repetitions.data());
    arguments.push_back(interleaving.data());
    arguments.insert(arguments.end(), argv + 1, argv + argc);
    int count = static_cast<int>(arguments.size());
    benchmark::Initialize(&count, arguments.data());

    MedianReporter reporter;
    benchmark::RunSpecifiedBenchmarks(&reporter);
    std::printf("\n");
    bool complete = true;
    for (const Ratio& ratio : ratios) {
        const double ours = reporter.time(ratio.ours);
        const double peer = reporter.time(ratio.peer);
        if (ours <= 0 || peer <= 0) {
            std::printf("ratio %s / %s: not measured\n", ratio.ours.c_str(), ratio.peer.c_str());
            complete = false;
        } else if (ratio.goal == Ratio::AtMost) {
            std::printf("ratio %s / %s: %.2f (target: at most %.2f)\n", ratio.ours.c_str(), ratio.peer.c_str(),
                        ours / peer, ratio.target);
        } else {
            std::printf("ratio %s / %s: %.2f (target: at least %.2f)\n", ratio.peer.c_str(), ratio.ours.c_str(),
                        peer / ours, ratio.target);
        }
    }
    return complete ? 0 : 1;
}
