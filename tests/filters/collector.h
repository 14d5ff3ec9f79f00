#pragma once

#include <atomic>
#include <memory>
#include <mutex>
#include <vector>

#include "framework/base/base_filter.h"
#include "framework/base/base_input_pin.h"

namespace mvrtpfec {

/// A downstream filter that takes anything, keeps samples when told to, and can be slow.
class Collector : public CBaseFilter {
public:
    explicit Collector(std::size_t pins);
    ~Collector() override;

    CBaseInputPin& input(std::size_t pin);

    /// From now on samples are kept, so that upstream runs out of buffers; or let go, old ones too.
    void hold();
    void letGo();
    void setDelay(DWORD milliseconds) { delay_ = milliseconds; }

    std::size_t received() const { return received_; }
    std::size_t held() const;

    int GetPinCount() override;
    CBasePin* GetPin(int n) override;

private:
    class Pin;

    void take(IMediaSample* sample);

    CCritSec lock_;
    std::vector<std::unique_ptr<Pin>> pins_;
    std::atomic<DWORD> delay_{0};
    std::atomic<std::size_t> received_{0};
    mutable std::mutex mutex_;
    bool holding_ = false;
    std::vector<CComPtr<IMediaSample>> held_;
};

}  // namespace mvrtpfec
