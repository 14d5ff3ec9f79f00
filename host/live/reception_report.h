#pragma once

#include <chrono>
#include <cstdio>
#include <filesystem>
#include <memory>

#include "host/live/reception_meter.h"
#include "host/stages/repair_chain.h"

namespace mvrtpfec {

/// Everything that a receiver counts, since its start.
struct ReceptionTotals {
    ReceptionFigures reception;
    RepairFigures repair;
    std::uint64_t tooLong = 0;    ///< datagrams
    std::uint64_t refused = 0;    ///< datagrams of the output that the system did not send
    std::uint64_t notTurned = 0;  ///< standard FEC packets that could not be turned into ours
};

/// Tells how reception goes: a line on standard error, rewritten in place on a terminal, and JSON lines.
class ReceptionReport {
public:
    /// "" for no JSON, "-" for standard output. Throws FileError.
    explicit ReceptionReport(const std::filesystem::path& json);
    ~ReceptionReport();

    ReceptionReport(const ReceptionReport&) = delete;
    ReceptionReport& operator=(const ReceptionReport&) = delete;

    /// What happened since the last call. `latency` is the longest of that time.
    void interval(const ReceptionTotals& totals, std::chrono::nanoseconds latency);

private:
    struct Closer {
        // NOLINTNEXTLINE(cppcoreguidelines-owning-memory): this is the owner
        void operator()(std::FILE* file) const { std::fclose(file); }
    };

    void writeJson(const ReceptionTotals& totals, double seconds, double latency);

    std::unique_ptr<std::FILE, Closer> json_;
    ReceptionTotals last_;
    SteadyTime lastTime_ = std::chrono::steady_clock::now();
    bool isTerminal_;
};

}  // namespace mvrtpfec
