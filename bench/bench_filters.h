#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

#include "core/rtp_packet.h"
#include "framework/base/base_allocator.h"
#include "framework/base/base_filter.h"
#include "framework/base/base_input_pin.h"
#include "framework/base/base_output_pin.h"

namespace mvrtpfec::bench {

/// Delivers packets where they lie, as a source does that was handed them; its samples are no copies.
class BenchSource final : public CBaseFilter {
public:
    explicit BenchSource(std::size_t pins);
    ~BenchSource() override;

    HRESULT deliver(std::size_t pin, RtpPacketView packet);

    int GetPinCount() override { return static_cast<int>(pins_.size()); }
    CBasePin* GetPin(int index) override;

private:
    class Pin;

    CCritSec lock_;
    std::vector<std::unique_ptr<Pin>> pins_;
};

/// Takes everything and does nothing with it.
class BenchSink final : public CBaseFilter {
public:
    explicit BenchSink(std::size_t pins);
    ~BenchSink() override;

    int GetPinCount() override { return static_cast<int>(pins_.size()); }
    CBasePin* GetPin(int index) override;

private:
    class Pin;

    CCritSec lock_;
    std::vector<std::unique_ptr<Pin>> pins_;
};

}  // namespace mvrtpfec::bench
