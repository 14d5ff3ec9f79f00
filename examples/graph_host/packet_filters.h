#pragma once
// The host's own ends of its graph: a source that it pushes packets into, and a sink that hands them back.

#include <array>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <span>
#include <vector>

#include <framework/base/base_filter.h>
#include <framework/base/base_input_pin.h>
#include <framework/base/base_output_pin.h>
#include <framework/base/com_ptr.h>

namespace example {

using namespace mvrtpfec;

using Packet = std::span<const std::uint8_t>;

/// An output pin for RTP packets of up to 1416 bytes, one a sample.
class PacketOutputPin final : public CBaseOutputPin {
public:
    using CBaseOutputPin::CBaseOutputPin;

    HRESULT CheckMediaType(const CMediaType* type) override;
    HRESULT GetMediaType(int position, CMediaType* type) override;
    HRESULT DecideBufferSize(IMemAllocator* allocator, ALLOCATOR_PROPERTIES* request) override;

    /// Copies the packet into a sample; waits while downstream holds all of them.
    HRESULT push(Packet packet);
};

/// Pins "Out 1" and so on, one for each stream.
class PacketSource final : public CBaseFilter {
public:
    PacketSource(std::size_t pins, HRESULT* result);

    int GetPinCount() override { return static_cast<int>(pins_.size()); }
    CBasePin* GetPin(int index) override;

    HRESULT push(std::size_t pin, Packet packet) { return pins_[pin]->push(packet); }

private:
    CCritSec lock_;
    std::vector<std::unique_ptr<PacketOutputPin>> pins_;
};

/// Pins "In 1" and so on. Every packet goes to the callback, on the thread that delivers it.
class PacketSink final : public CBaseFilter {
public:
    using Callback = std::function<HRESULT(std::size_t pin, Packet)>;

    PacketSink(std::size_t pins, Callback callback, HRESULT* result);

    int GetPinCount() override { return static_cast<int>(pins_.size()); }
    CBasePin* GetPin(int index) override;

private:
    class Input;

    CCritSec lock_;
    Callback callback_;
    std::vector<std::unique_ptr<CBasePin>> pins_;
};

}  // namespace example
