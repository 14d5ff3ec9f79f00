#pragma once

#include <cstdint>
#include <memory>
#include <span>
#include <vector>

#include "framework/base/base_filter.h"
#include "framework/base/base_output_pin.h"

namespace mvrtpfec {

/// An upstream filter: output pins of RTP packets that any thread may push through.
class Feeder : public CBaseFilter {
public:
    explicit Feeder(std::size_t pins);
    ~Feeder() override;

    /// Copies the bytes into a sample and delivers it; waits while all samples of the pin are out.
    HRESULT feed(std::size_t pin, std::span<const std::uint8_t> bytes);
    CBaseOutputPin& output(std::size_t pin);

    int GetPinCount() override;
    CBasePin* GetPin(int n) override;

private:
    class Pin;

    CCritSec lock_;
    std::vector<std::unique_ptr<Pin>> pins_;
};

}  // namespace mvrtpfec
