#pragma once

#include <atomic>
#include <cstddef>
#include <exception>
#include <functional>
#include <memory>
#include <vector>

#include "core/rtp_packet.h"
#include "framework/base/base_filter.h"
#include "framework/base/com_ptr.h"
#include "host/graph/packet_input_pin.h"
#include "host/graph/packet_taker.h"

namespace mvrtpfec {

/// Takes packets out of a graph and gives them to a callback, pin by pin, on the threads that deliver them.
///
/// What the callback throws first is kept for the host, and the callback isn't called again; upstream sees
/// E_FAIL.
class PacketSinkFilter final : public CBaseFilter, public PacketTaker {
public:
    using Callback = std::function<void(std::size_t pin, ConstRtpPacketView)>;

    /// Throws GraphError.
    static CComPtr<PacketSinkFilter> create(std::size_t pins, Callback callback);

    int GetPinCount() override;
    CBasePin* GetPin(int index) override;

    STDMETHODIMP Pause() override;
    /// Waits for a callback that runs; afterwards none is called.
    STDMETHODIMP Stop() override;

    /// Host's thread: throws what the callback has thrown.
    void rethrowError() const;

    PacketSinkFilter(std::size_t pins, Callback callback, HRESULT* result);

private:
    HRESULT take(std::size_t pin, ConstRtpPacketView packet) noexcept override;
    /// Tells the graph when the last pin's stream has ended.
    HRESULT endStream(std::size_t pin) noexcept override;

    CCritSec lock_;
    Callback callback_;
    std::vector<std::unique_ptr<PacketInputPin>> pins_;

    CCritSec callbackLock_;  ///< held while the callback runs; guards what follows
    bool open_ = false;
    std::size_t ended_ = 0;
    std::exception_ptr error_;  ///< set once, before `failed_`
    std::atomic<bool> failed_{false};
};

}  // namespace mvrtpfec
