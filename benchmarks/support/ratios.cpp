#include "ratios.h"

#include <benchmark/benchmark.h>

#include <cstdio>
#include <map>

namespace {

/// Shows and remembers the fastest repetition of each: what else runs on the machine only ever adds time.
class FastestReporter : public benchmark::ConsoleReporter
{
public:
    void ReportRuns(const std::vector<Run>& runs) override
    {
        const Run* fastest = nullptr;
        for (const Run& run : runs) {
            if (run.run_type == Run::RT_Iteration && !run.error_occurred &&
                (!fastest || run.GetAdjustedCPUTime() < fastest->GetAdjustedCPUTime()))
                fastest = &run;
        }
        if (!fastest)
            return;
        ConsoleReporter::ReportRuns({*fastest});
        m_times[fastest->run_name.str()] = fastest->GetAdjustedCPUTime();
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
    std::string defaults[] = {"--benchmark_repetitions=15", "--benchmark_min_time=0.1",
                              "--benchmark_enable_random_interleaving=true"};
    std::vector<char*> arguments(argv, argv + 1);
    for (std::string& option : defaults)
        arguments.push_back(option.data());
    arguments.insert(arguments.end(), argv + 1, argv + argc);
    int count = static_cast<int>(arguments.size());
    benchmark::Initialize(&count, arguments.data());

    FastestReporter reporter;
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
