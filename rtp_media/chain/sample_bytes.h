#pragma once

#include <cstdint>
#include <span>

#include "framework/samples/media_data.h"

namespace mvrtpfec {

/// The payload of a sample; empty when it has none or doesn't give its pointer away.
inline std::span<const std::uint8_t> sampleBytes(IMediaData& sample) {
    BYTE* data = nullptr;
    const LONG length = sample.GetActualDataLength();
    if (length <= 0 || FAILED(sample.GetPointer(&data)) || data == nullptr) return {};
    return {data, static_cast<std::size_t>(length)};
}

}  // namespace mvrtpfec
