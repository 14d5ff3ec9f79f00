#pragma once

#include <cstdint>

#include "framework/base/com_ptr.h"
#include "platform/graph/media_samples.h"

namespace mvrtpfec {

class CRtpFecIn;

/// What an input pin forwards to: the filter, told which input it is.
class CRtpFecInInputPin {
public:
    CRtpFecInInputPin(std::int32_t index, CRtpFecIn* owner) noexcept : index_(index), owner_(owner) {}

    void Receive(CComPtr<IMediaSample> sample);
    void EndOfStream();

private:
    std::int32_t index_;
    CRtpFecIn* owner_;
};

}  // namespace mvrtpfec
