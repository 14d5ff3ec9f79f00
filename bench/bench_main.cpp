#include <algorithm>
#include <cstdio>
#include <exception>
#include <string>
#include <string_view>
#include <vector>

#include <benchmark/benchmark.h>

#include "bench/live_bench.h"
#include "bench/pacing.h"
#include "bench/targets.h"

// mvrtpfec_bench [--json FILE] [--benchmark_...]: measures everything in one run, interleaved, and holds
// the ratios against their targets. Ends with 1 when one is short.

namespace {

using mvrtpfec::bench::Measurements;

/// Prints as the library does and remembers the median of the repetitions, per media packet.
class Recorder : public benchmark::ConsoleReporter {
public:
    void ReportRuns(const std::vector<Run>& runs) override {
        ConsoleReporter::ReportRuns(runs);
        for (const Run& run : runs) {
            if (run.error_occurred || run.aggregate_name != "median") continue;
            const auto rate = run.counters.find("items_per_second");
            measured_[run.run_name.function_name] =
                rate == run.counters.end() ? run.GetAdjustedCPUTime() : 1e9 / rate->second.value;
        }
    }

    const Measurements& measured() const { return measured_; }

private:
    Measurements measured_;
};

std::string takeJsonOption(std::vector<char*>& arguments) {
    for (std::size_t i = 1; i + 1 < arguments.size(); ++i) {
        if (std::string(arguments[i]) != "--json") continue;
        std::string path = arguments[i + 1];
        arguments.erase(arguments.begin() + static_cast<std::ptrdiff_t>(i),
                        arguments.begin() + static_cast<std::ptrdiff_t>(i) + 2);
        return path;
    }
    return {};
}

/// Whoever asks for some of the benchmarks wants those alone.
bool isFiltered(const std::vector<char*>& arguments) {
    return std::any_of(arguments.begin(), arguments.end(), [](const char* argument) {
        return std::string_view(argument).starts_with("--benchmark_filter");
    });
}

}  // namespace

int main(int argc, char** argv) {
    std::vector<char*> arguments(argv, argv + argc);
    const std::string json = takeJsonOption(arguments);
    std::string repetitions = "--benchmark_repetitions=5";
    std::string interleaving = "--benchmark_enable_random_interleaving=true";
    std::string shortened = "--benchmark_min_time=0.1";
    std::string aggregates = "--benchmark_report_aggregates_only=true";
    arguments.insert(arguments.begin() + 1,
                     {repetitions.data(), interleaving.data(), shortened.data(), aggregates.data()});

    const bool filtered = isFiltered(arguments);
    int count = static_cast<int>(arguments.size());
    benchmark::Initialize(&count, arguments.data());
    if (benchmark::ReportUnrecognizedArguments(count, arguments.data())) return 2;
    mvrtpfec::bench::registerComposerBenchmarks();
    mvrtpfec::bench::registerDecoderBenchmarks();
    mvrtpfec::bench::registerReorderBenchmarks();
    mvrtpfec::bench::registerGraphBenchmarks();
    mvrtpfec::bench::registerPacketizeBenchmarks();
    mvrtpfec::bench::registerScheduleBenchmarks();
    try {
        Recorder recorder;
        benchmark::RunSpecifiedBenchmarks(&recorder);
        Measurements measured = recorder.measured();
        if (!filtered) mvrtpfec::bench::measureLive(measured);
        const bool held = mvrtpfec::bench::reportTargets(measured, json);
        mvrtpfec::bench::printPacing();
        return held ? 0 : 1;
    } catch (const std::exception& error) {
        std::fprintf(stderr, "mvrtpfec_bench: %s\n", error.what());
        return 2;
    }
}
