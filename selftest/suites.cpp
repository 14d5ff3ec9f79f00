#include "selftest/suites.h"

#include <array>
#include <exception>
#include <span>

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

/// Packets counted from the sizes of the units alone: of a slice one for each 1300 bytes begun, of AAC one a
/// frame.
constexpr std::array<StreamFile, 9> sampleFiles{{
    {"h264_slices_aud.264", StreamType::h264, 100},
    {"h264_fields.264", StreamType::h264, 20},
    {"h264_plain.264", StreamType::h264, 30},
    {"h264_large.264", StreamType::h264, 22},
    {"h264_3byte.264", StreamType::h264, 13},
    {"aac_lc.aacraw", StreamType::aacRaw, 20},
    {"aac_latm.latm", StreamType::aacLatm, 45},
    {"aac_he_v1.latm", StreamType::aacLatm, 20},
    {"aac_he_v2.latm", StreamType::aacLatm, 20},
}};

/// A test that throws has failed, and the next one has its turn.
bool runs(ITest& test, std::ostream& out) {
    try {
        return test.run(out);
    } catch (const std::exception& error) {
        out << "Fail: " << error.what() << '\n';
        return false;
    }
}

TestSuite suiteOf(const std::string& directory, std::span<const StreamFile> files) {
    TestSuite suite;
    for (const auto& file : files)
        suite.push_back(
            std::make_unique<CRtpPacketBuilderTester>(directory + file.name, file.type, file.packets));
    suite.push_back(std::make_unique<CRtpPacketReorderTester>());
    return suite;
}

}  // namespace

TestSuite libRtpSuite(const std::string& directory) {
    return suiteOf(directory, libRtpFiles);
}

TestSuite samplesSuite(const std::string& directory) {
    return suiteOf(directory, sampleFiles);
}

bool runTest(ITest& test, std::ostream& out) {
    out << test.getName() << '\n';
    const bool passed = runs(test, out);
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
