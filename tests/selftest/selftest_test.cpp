#include <filesystem>
#include <sstream>

#include <gtest/gtest.h>

#include "selftest/rtp_packet_builder_tester.h"
#include "selftest/suites.h"

namespace mvrtpfec {
namespace {

const std::string streams = MVRTPFEC_SAMPLES "/streams/";

std::string outcomeOf(const std::string& file, StreamType type, std::uint32_t packets) {
    CRtpPacketBuilderTester test(streams + file, type, packets);
    std::ostringstream out;
    const bool passed = test.run(out);
    EXPECT_EQ(passed, out.str().empty());
    return out.str();
}

TEST(SelfTest, SamplesPass) {
    for (const auto& test : samplesSuite(streams)) {
        std::ostringstream out;
        EXPECT_TRUE(runTest(*test, out)) << out.str();
    }
}

TEST(SelfTest, TellsWhatIsWrong) {
    EXPECT_EQ(outcomeOf("h264_fields.264", StreamType::h264, 21),
              "Received 20 packets\nFail: wrong number of packets\n");
    EXPECT_EQ(outcomeOf("aac_he_v1.aacraw", StreamType::aacRaw, 0), "Fail: SDP could not be built.\n");
    EXPECT_EQ(outcomeOf("nothing.264", StreamType::h264, 0), "Fail: Can't open file\n");
    EXPECT_EQ(outcomeOf("../sample.ts", StreamType::mpeg2ts, 0),
              "Fail: SDP format line is missing (\"a=fmtp:\")\n");
    EXPECT_EQ(outcomeOf("klv.bin", StreamType::klv, 0),
              "Fail: no parser or no packetizer for stream type 19\n");
    EXPECT_EQ(outcomeOf("klv.bin", StreamType{8}, 0), "Fail: no parser or no packetizer for stream type 8\n");
    // B pictures go out before those that are shown earlier.
    EXPECT_NE(
        outcomeOf("h264_bframes_hrd.264", StreamType::h264, 28).find("Fail: non increasing timestamp\n"),
        std::string::npos);
}

TEST(SelfTest, LibRtpIsTheSuiteInItsOrder) {
    std::vector<std::string> names;
    for (const auto& test : libRtpSuite("d\\")) names.push_back(test->getName());
    EXPECT_EQ(names,
              (std::vector<std::string>{
                  "RtpPacketBuilder_d\\\\PureField.h264", "RtpPacketBuilder_d\\AAC-RAW-UnitTest.raw.aac",
                  "RtpPacketBuilder_d\\Matrix2_Morvane_H264_HD_2997.h264",
                  "RtpPacketBuilder_d\\AAC-LATM-UnitTest-LC.latm.aac",
                  "RtpPacketBuilder_d\\AAC-LATM-UnitTest-HEv1.latm.aac",
                  "RtpPacketBuilder_d\\AAC-LATM-UnitTest-HEv2.latm.aac", "RTP packet reorder"}));
}

TEST(SelfTest, LibRtpFindsItsFirstFileAndGoesOnBehindWhatCannotBeRead) {
    const std::filesystem::path folder = std::filesystem::path(testing::TempDir()) / "LibRtp";
    std::filesystem::create_directories(folder / "AAC-RAW-UnitTest.raw.aac");
    std::filesystem::copy_file(streams + "h264_fields.264", folder / "PureField.h264",
                               std::filesystem::copy_options::overwrite_existing);
    std::vector<std::string> outcomes;
    for (const auto& test : libRtpSuite((folder / "").string())) {
        std::ostringstream out;
        runTest(*test, out);
        outcomes.push_back(out.str().substr(test->getName().size() + 1));
        auto* const stream = dynamic_cast<CRtpPacketBuilderTester*>(test.get());
        EXPECT_EQ(stream != nullptr && stream->hasFile(), outcomes.size() == 1) << test->getName();
    }
    std::filesystem::remove_all(folder);
    std::vector<std::string> expected(7, "Fail: Can't open file\nKO\n");
    expected.front() = "Received 20 packets\nFail: wrong number of packets\nKO\n";
    expected.back() = "OK\n";
    EXPECT_EQ(outcomes, expected);
}

TEST(SelfTest, TheListenerHoldsEachPacketAgainstTheOneBefore) {
    std::ostringstream out;
    CRtpPacketBuilderTester::PacketListener listener(out);
    for (const std::uint64_t sequence : {0U, 1U, 3U}) {
        auto packet = std::make_unique<RTPMediaPacket>(std::make_unique<NAL>(StreamType::fragment, 0), 0,
                                                       std::vector<std::uint8_t>(), 96);
        packet->stamp(sequence, sequence == 1, 90000, 0, 0, false);
        listener.onPacket(std::move(packet));
    }
    EXPECT_EQ(out.str(), "Fail: non increasing timestamp\nFail: discontinuous sequence number\n");
    EXPECT_EQ(listener.packetCount(), 3U);
    EXPECT_TRUE(listener.hasFailures());
}

TEST(SelfTest, AnExpectedFailureThatDoesNotComeIsReported) {
    struct Expected : ITest {
        explicit Expected(bool passes) : passes_(passes) {}
        bool run(std::ostream&) override {
            if (!passes_) throw std::runtime_error("broken");
            return true;
        }
        std::string getName() override { return "expected"; }
        std::string getExpectedError() override { return "no file"; }
        bool passes_;
    };
    std::ostringstream out;
    Expected failing(false);
    EXPECT_TRUE(runTest(failing, out));
    Expected passing(true);
    EXPECT_FALSE(runTest(passing, out));
    EXPECT_EQ(out.str(), "expected\nFail: broken\nOK\nexpected\nKO test succeeded with no file\n");
}

}  // namespace
}  // namespace mvrtpfec
