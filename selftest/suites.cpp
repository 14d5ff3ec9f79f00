#include "selftest/suites.h"

#include <array>

#include "selftest/rtp_packet_builder_tester.h"
#include "selftest/rtp_packet_reorder_tester.h"

namespace mvrtpfec {

namespace {

struct StreamFile {
    const char* name;
    StreamType type;
    std::uint32_t packets;
};

constexpr std::array<StreamFile, 6> libRtpFiles{{
    {"\\PureField.h264", StreamType::h264, 224},
    {"AAC-RAW-UnitTest.raw.aac", StreamType::aacRaw, 15402},
    {"Matrix2_Morvane_H264_HD_2997.h264", StreamType::h264, 117395},
    {"AAC-LATM-UnitTest-LC.latm.aac", StreamType::aacLatm, 363},
    {"AAC-LATM-UnitTest-HEv1.latm.aac", StreamType::aacLatm, 183},
    {"AAC-LATM-UnitTest-HEv2.latm.aac", StreamType::aacLatm, 183},
}};

}  // namespace

TestSuite libRtpSuite(const std::string& directory) {
    TestSuite suite;
    for (const auto& file : libRtpFiles)
        suite.push_back(
            std::make_unique<CRtpPacketBuilderTester>(directory + file.name, file.type, file.packets));
    suite.push_back(std::make_unique<CRtpPacketReorderTester>());
    return suite;
}

bool runTest(ITest& test, std::ostream& out) {
    out << test.getName() << '\n';
    const bool passed = test.run(out);
    const std::string expectedError = test.getExpectedError();
    if (passed && !expectedError.empty()) {
        out << "KO test succeeded with " << expectedError << '\n';
        return false;
    }
    const bool asExpected = passed || !expectedError.empty();
    out << (asExpected ? "OK\n" : "KO\n");
    return asExpected;
}

}  // namespace mvrtpfec
