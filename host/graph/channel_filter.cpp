#include "host/graph/channel_filter.h"

#include "core/fec_packet.h"
#include "framework/guarded_entry.h"
#include "host/graph/graph_error.h"

namespace mvrtpfec {

CComPtr<ChannelFilter> ChannelFilter::create(const ChannelConfig& config) {
    HRESULT result = S_OK;
    CComPtr<ChannelFilter> filter(
        new ChannelFilter(config, &result));  // NOLINT(cppcoreguidelines-owning-memory)
    requireGraph(result, "a network filter can't be created");
    return filter;
}

ChannelFilter::ChannelFilter(const ChannelConfig& config, HRESULT* result)
    : CBaseFilter("ChannelFilter", nullptr, &lock_, GUID_NULL),
      channel_(config,
               [this](StreamPort port, const std::vector<std::uint8_t>& packet) { letOut(port, packet); }) {
    for (std::size_t pin = 0; pin < pinCount; ++pin) {
        inputs_.at(pin) = std::make_unique<PacketInputPin>(this, &lock_, result, pin, *this);
        outputs_.at(pin) = std::make_unique<PacketOutputPin>(this, &lock_, result, pin);
    }
}

CBasePin* ChannelFilter::GetPin(int index) {
    if (index < 0 || index >= GetPinCount()) return nullptr;
    const auto pin = static_cast<std::size_t>(index);
    if (pin < pinCount) return inputs_.at(pin).get();
    return outputs_.at(pin - pinCount).get();
}

HRESULT ChannelFilter::take(std::size_t pin, ConstRtpPacketView packet) noexcept {
    return guardedEntry([&] {
        const auto port = static_cast<StreamPort>(pin);
        delivered_ = S_OK;
        if (isSent(port, packet)) channel_.push(port, {packet.data, packet.data + packet.length});
        return delivered_;
    });
}

/// No sender lets out an FEC packet over a hole in its input.
bool ChannelFilter::isSent(StreamPort port, ConstRtpPacketView packet) {
    if (port != StreamPort::media) return sent_.agree(packet);
    if (isProtectable(packet)) sent_.note(packet);
    return true;
}

HRESULT ChannelFilter::endStream(std::size_t) noexcept {
    if (++ended_ != pinCount) return S_OK;
    return guardedEntry([&] {
        delivered_ = S_OK;
        channel_.finish();
        for (const auto& output : outputs_) output->DeliverEndOfStream();
        return delivered_;
    });
}

void ChannelFilter::letOut(StreamPort port, const std::vector<std::uint8_t>& packet) {
    auto owned = std::make_unique<RtpPacket>(packet.data(), packet.size());
    const HRESULT result = outputs_.at(static_cast<std::size_t>(port))->deliver(std::move(owned));
    if (SUCCEEDED(delivered_)) delivered_ = result;
}

}  // namespace mvrtpfec
