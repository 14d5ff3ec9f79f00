#pragma once

#include <atomic>

#include "framework/base/base_output_pin.h"

namespace mvrtpfec {

/// An output pin whose first delivered sample carries the connection's media type.
class COutputPinWithDynamicMediaType : public CBaseOutputPin {
public:
    using CBaseOutputPin::CBaseOutputPin;

    /// S_OK for any success downstream.
    HRESULT Deliver(IMediaSample* sample) override;

private:
    HRESULT deliverAnnouncing(IMediaSample* sample);

    std::atomic<bool> m_bTypeChangePending{true};
};

}  // namespace mvrtpfec
