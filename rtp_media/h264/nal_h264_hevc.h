#pragma once

#include "rtp_media/chain/nal.h"

namespace mvrtpfec {

/// A NAL unit with its start code, of either standard.
class NALH264_HEVC : public NAL {
protected:
    using NAL::NAL;
};

class NALH264 final : public NALH264_HEVC {
public:
    explicit NALH264(std::int32_t capacity) : NALH264_HEVC(StreamType::h264, capacity) {}
};

class NALHEVC final : public NALH264_HEVC {
public:
    explicit NALHEVC(std::int32_t capacity) : NALH264_HEVC(StreamType::hevc, capacity) {}
};

}  // namespace mvrtpfec
