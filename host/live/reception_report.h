#pragma once

#include <chrono>
#include <cstdio>
#include <filesystem>
#include <memory>

#include "host/live/reception_figures.h"

namespace mvrtpfec {

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
