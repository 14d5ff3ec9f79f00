#pragma once

#include <chrono>

namespace mvrtpfec {

/// A progress bar on standard error, where that is a terminal and the work takes more than a second.
class ProgressBar {
public:
    ProgressBar();
    /// Clears the line.
    ~ProgressBar();

    ProgressBar(const ProgressBar&) = delete;
    ProgressBar& operator=(const ProgressBar&) = delete;

    /// `share` of the work done, 0 to 1. Cheap enough to be called for every packet.
    template <class Share>
    void update(Share share) {
        if (!terminal_ || ++calls_ % callsPerLook != 0) return;
        look(share());
    }

private:
    static constexpr unsigned callsPerLook = 256;
    using Clock = std::chrono::steady_clock;

    void look(double share);

    bool terminal_;
    unsigned calls_ = 0;
    Clock::time_point next_;
    bool shown_ = false;
};

}  // namespace mvrtpfec
