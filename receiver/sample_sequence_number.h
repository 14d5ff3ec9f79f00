#pragma once

#include <cstdint>

#include "framework/base/com_ptr.h"
#include "platform/graph/media_samples.h"

namespace mvrtpfec {

/// The RTP sequence number of the packet in a sample (RFC 3550 section 5.1); bytes that lie behind both the
/// sample's buffer and its data count as 0.
std::int32_t GetRtpSequenceNumber(CComPtr<IMediaSample> sample);

}  // namespace mvrtpfec
