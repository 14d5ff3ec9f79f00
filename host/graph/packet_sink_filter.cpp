#include "host/graph/packet_sink_filter.h"

#include <utility>

#include "host/graph/graph_error.h"

namespace mvrtpfec {

CComPtr<PacketSinkFilter> PacketSinkFilter::create(std::size_t pins, Callback callback) {
    HRESULT result = S_OK;
    CComPtr<PacketSinkFilter> filter(
        new PacketSinkFilter(pins, std::move(callback), &result));  // NOLINT(cppcoreguidelines-owning-memory)
    requireGraph(result, "a sink filter can't be created");
    return filter;
}

PacketSinkFilter::PacketSinkFilter(std::size_t pins, Callback callback, HRESULT* result)
    : CBaseFilter("PacketSinkFilter", nullptr, &lock_, GUID_NULL), callback_(std::move(callback)) {
    for (std::size_t pin = 0; pin < pins; ++pin)
        pins_.push_back(std::make_unique<PacketInputPin>(this, &lock_, result, pin, *this));
}

int PacketSinkFilter::GetPinCount() {
    return static_cast<int>(pins_.size());
}

CBasePin* PacketSinkFilter::GetPin(int index) {
    return index >= 0 && index < GetPinCount() ? pins_[static_cast<std::size_t>(index)].get() : nullptr;
}

HRESULT PacketSinkFilter::Pause() {
    {
        const CAutoLock lock(&callbackLock_);
        if (!open_) ended_ = 0;
        open_ = true;
    }
    return CBaseFilter::Pause();
}

HRESULT PacketSinkFilter::Stop() {
    const HRESULT result = CBaseFilter::Stop();
    const CAutoLock lock(&callbackLock_);
    open_ = false;
    return result;
}

HRESULT PacketSinkFilter::take(std::size_t pin, ConstRtpPacketView packet) noexcept {
    const CAutoLock lock(&callbackLock_);
    if (!open_) return VFW_E_WRONG_STATE;
    if (failed_) return E_FAIL;
    try {
        callback_(pin, packet);
        return S_OK;
    } catch (...) {
        error_ = std::current_exception();
        failed_ = true;
        return E_FAIL;
    }
}

HRESULT PacketSinkFilter::endStream(std::size_t) noexcept {
    {
        const CAutoLock lock(&callbackLock_);
        if (++ended_ != pins_.size()) return S_OK;
    }
    return NotifyEvent(EC_COMPLETE, S_OK, reinterpret_cast<LONG_PTR>(static_cast<IBaseFilter*>(this)));
}

void PacketSinkFilter::rethrowError() const {
    if (failed_) std::rethrow_exception(error_);
}

}  // namespace mvrtpfec
