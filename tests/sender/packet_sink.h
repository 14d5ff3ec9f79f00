#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <vector>

#include "framework/base/base_filter.h"
#include "framework/base/base_input_pin.h"

namespace mvrtpfec {

using Bytes = std::vector<std::uint8_t>;

/// One packet that came to a pin; without bytes, the end of the stream.
struct Arrival {
    int pin;
    Bytes bytes;

    bool operator==(const Arrival&) const = default;
};

/// A filter with two inputs that writes down what arrives.
class PacketSink final : public CBaseFilter {
public:
    PacketSink();
    ~PacketSink() override;

    CBasePin* input(int n) { return GetPin(n); }

    std::vector<Arrival> arrivals() const;
    /// Keeps every sample from now on, so that upstream runs out of buffers; or gives all back.
    void hold(bool on);
    /// Done inside every Receive.
    void onReceive(std::function<void()> action) { action_ = std::move(action); }
    /// Offers allocators whose buffers are no longer than this, whatever is asked for.
    void limitBuffers(LONG bytes) { bufferLimit_ = bytes; }

    int GetPinCount() override { return static_cast<int>(pins_.size()); }
    CBasePin* GetPin(int n) override;

private:
    class Pin;

    void take(int pin, IMediaSample* sample);
    void note(Arrival arrival);

    CCritSec lock_;
    std::vector<std::unique_ptr<Pin>> pins_;
    std::function<void()> action_;
    LONG bufferLimit_ = 0;
    mutable std::mutex mutex_;
    std::vector<Arrival> arrivals_;
    bool holding_ = false;
    std::vector<CComPtr<IMediaSample>> held_;
};

}  // namespace mvrtpfec
