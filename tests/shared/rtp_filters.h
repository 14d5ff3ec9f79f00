#pragma once

#include "mvrtpfec/rtp_media_type.h"
#include "tests/shared/test_filters.h"

namespace mvrtpfec {

/// Offers RTP on every pin, in buffers for any packet.
class RtpSource final : public TestSource {
public:
    explicit RtpSource(int pins) : TestSource(pins) {
        for (int i = 0; i < pins; ++i) {
            TestOutputPin& each = pin(static_cast<std::size_t>(i));
            each.behaviour.accepted = each.behaviour.offered = {CMediaType(MEDIATYPE_Rtp, MEDIASUBTYPE_Rtp)};
            each.buffers = {100, 2048, 0, 0};
        }
    }
};

/// Takes any type.
class AnySink final : public TestSink {
public:
    explicit AnySink(int pins) : TestSink(pins) {
        for (int i = 0; i < pins; ++i) {
            PinBehaviour& behaviour = pin(static_cast<std::size_t>(i)).behaviour;
            behaviour.accepted.clear();
            behaviour.offered.clear();
        }
    }
};

}  // namespace mvrtpfec
