#pragma once

#include <string>
#include <vector>

#include <sys/types.h>

namespace mvrtpfec::bench {

/// What a program has spent, in seconds.
struct CpuTime {
    double user = 0;
    double system = 0;

    double all() const { return user + system; }
};

/// A program that runs beside the benchmarks, its output thrown away.
class PeerProgram {
public:
    /// Throws std::runtime_error when it can't be started.
    explicit PeerProgram(const std::vector<std::string>& command);
    /// Ends it if it hasn't.
    ~PeerProgram();

    PeerProgram(const PeerProgram&) = delete;
    PeerProgram& operator=(const PeerProgram&) = delete;

    /// CPU seconds spent so far, inside the kernel and outside.
    double spent() const;
    void interrupt() const;
    /// Waits for its end. Throws std::runtime_error when it failed; one that was interrupted may.
    CpuTime finish();

private:
    pid_t process_ = 0;
    std::string name_;
    mutable bool interrupted_ = false;
};

/// Runs a program and gives the CPU seconds it spent outside the kernel, so that what it sends or writes
/// isn't held against it. Throws std::runtime_error when it can't be started or fails.
double userSecondsOf(const std::vector<std::string>& command);

}  // namespace mvrtpfec::bench
