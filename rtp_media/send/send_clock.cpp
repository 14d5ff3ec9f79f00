#include "rtp_media/send/send_clock.h"

#include <chrono>

#include "support/com_exception.h"

namespace mvrtpfec {

std::uint64_t systemWallTime() {
    const auto sinceEpoch = std::chrono::system_clock::now().time_since_epoch();
    return static_cast<std::uint64_t>(
        std::chrono::duration_cast<std::chrono::milliseconds>(sinceEpoch).count());
}

SendClock::SendClock(IReferenceClock* clock, const WallClock& wallClock)
    : clock_(clock), wallStart_(wallClock()), start90k_(read()), now90k_(start90k_) {}

void SendClock::refresh() {
    now90k_ = read();
}

std::uint64_t SendClock::read() const {
    REFERENCE_TIME time = 0;
    const HRESULT result = clock_->GetTime(&time);
    if (FAILED(result)) throw mvn::COMException(result);
    const auto ticks = static_cast<std::uint64_t>(time) * 9 / 1000;
    return ticks - ticks % 90;
}

}  // namespace mvrtpfec
