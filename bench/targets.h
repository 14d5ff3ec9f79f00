#pragma once

#include <map>
#include <string>
#include <vector>

namespace mvrtpfec::bench {

/// What a figure must reach: the time of `subject` over the time of `limit`, both measured in this run. An
/// empty limit stands for a nanosecond.
struct Target {
    std::string name;
    std::string subject;
    std::string limit;
    double most;
};

/// Nanoseconds per media packet by benchmark name.
using Measurements = std::map<std::string, double>;

void addTarget(Target target);

/// Prints a line for each target and returns true when all are held. Writes the same as JSON to
/// `jsonPath` unless that is empty.
bool reportTargets(const Measurements& measured, const std::string& jsonPath);

// Each registers its benchmarks and targets.
void registerComposerBenchmarks();
void registerDecoderBenchmarks();
void registerReorderBenchmarks();
void registerGraphBenchmarks();
void registerPacketizeBenchmarks();
void registerScheduleBenchmarks();

}  // namespace mvrtpfec::bench
