#pragma once

#include "selftest/test.h"

namespace mvrtpfec {

/// Puts three strings through a reorder buffer.
class CRtpPacketReorderTester : public ITest {
public:
    bool run(std::ostream& out) override;
    std::string getName() override { return "RTP packet reorder"; }
};

}  // namespace mvrtpfec
