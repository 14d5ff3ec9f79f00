#include "rtp_media/audio/audio_specific_config.h"

#include <gtest/gtest.h>

#include "rtp_media/audio/mpeg4_audio_exception.h"
#include "tests/rtp_media/audio/audio_frames.h"

namespace mvrtpfec::test {
namespace {

AudioSpecificConfig parse(const Bytes& bytes, std::optional<std::size_t> length = std::nullopt) {
    BitReader bits(bytes);
    return parseAudioSpecificConfig(bits, length.value_or(bytes.size() * 8));
}

TEST(AudioSpecificConfig, ReadsWhatEncodersWrite) {
    const auto lc = parse({0x11, 0x90});
    EXPECT_EQ(lc.audioObjectType, 2U);
    EXPECT_EQ(lc.samplingFrequency.hz, 48000U);
    EXPECT_EQ(lc.channelConfiguration, 2U);
    EXPECT_EQ(lc.frameSamples, 1024U);
    EXPECT_FALSE(lc.sbrPresent);

    const auto explicitSbr = parse({0x2B, 0x11, 0x88, 0x00});
    EXPECT_EQ(explicitSbr.extensionAudioObjectType, 5U);
    EXPECT_EQ(explicitSbr.samplingFrequency.hz, 24000U);
    EXPECT_EQ(explicitSbr.extensionSamplingFrequency.hz, 48000U);
    EXPECT_EQ(explicitSbr.audioObjectType, 2U);
    EXPECT_TRUE(explicitSbr.sbrPresent && !explicitSbr.psPresent);

    const auto explicitPs = parse({0xEB, 0x09, 0x88, 0x00});
    EXPECT_EQ(explicitPs.extensionAudioObjectType, 29U);
    EXPECT_TRUE(explicitPs.sbrPresent && explicitPs.psPresent);
    EXPECT_EQ(explicitPs.channelConfiguration, 1U);

    const auto behindSbr = parse({0x13, 0x90, 0x56, 0xE5, 0xA0});
    EXPECT_EQ(behindSbr.extensionAudioObjectType, 5U);
    EXPECT_EQ(behindSbr.extensionSamplingFrequency.hz, 44100U);
    EXPECT_TRUE(behindSbr.sbrPresent && !behindSbr.psPresent);
    EXPECT_TRUE(parse({0x13, 0x88, 0x56, 0xE5, 0xA5, 0x48, 0x80}).psPresent);
}

TEST(AudioSpecificConfig, LooksForAnExtensionOnlyWithinItsLength) {
    const Bytes bytes{0x13, 0x90, 0x56, 0xE5, 0xA0};
    EXPECT_FALSE(parse(bytes, 31).sbrPresent);
    BitReader bits(bytes);
    EXPECT_FALSE(parseAudioSpecificConfig(bits, std::nullopt).sbrPresent);
    EXPECT_EQ(bits.position(), 16U);
    EXPECT_THROW(parse(bytes, 33), BitstreamException) << "the extension is cut";
    EXPECT_THROW(parse(bytes, 15), BitstreamException) << "the configuration is cut";
    EXPECT_THROW(parse(bytes, 41), BitstreamException) << "more than there is";
}

TEST(AudioSpecificConfig, ReadsEscapesExplicitRatesAndResilienceFlags) {
    const auto rate = parse(packed({{2, 5}, {15, 4}, {37800, 24}, {1, 4}, {0, 3}}));
    EXPECT_EQ(rate.samplingFrequency.index, SamplingFrequency::explicitIndex);
    EXPECT_EQ(rate.samplingFrequency.hz, 37800U);

    // ER AAC LC behind SBR: core coder delay, extension flag, three resilience flags, extensionFlag3,
    // epConfig.
    const Fields er{{5, 5}, {6, 4},   {2, 4}, {15, 4}, {48001, 24}, {17, 5},
                    {1, 2}, {99, 14}, {1, 1}, {5, 3},  {0, 1},      {1, 2}};
    const auto resilient = parse(packed(er));
    EXPECT_EQ(resilient.audioObjectType, 17U);
    EXPECT_EQ(resilient.extensionSamplingFrequency.hz, 48001U);

    EXPECT_EQ(parse(packed({{2, 5}, {13, 4}, {1, 4}, {0, 3}})).samplingFrequency.hz, 0U) << "reserved";
    EXPECT_EQ(parse(packed({{2, 5}, {3, 4}, {2, 4}, {4, 3}})).frameSamples, 960U);
    EXPECT_EQ(parse(packed({{23, 5}, {3, 4}, {2, 4}, {4, 3}, {0, 2}})).frameSamples, 480U);
}

/// Three channel elements, an LFE, associated data, a matrix mixdown, a comment; aligned to the
/// configuration's own bytes.
TEST(AudioSpecificConfig, ReadsOverAProgramConfigElement) {
    const Fields config{{2, 5}, {3, 4}, {0, 4}, {0, 3}, {0, 10}, {2, 4},      {0, 4}, {1, 4},
                        {1, 2}, {1, 3}, {0, 4}, {0, 2}, {1, 1},  {5, 3},      {0, 5}, {0x11, 5},
                        {2, 5}, {3, 4}, {6, 4}, {0, 4}, {2, 8},  {0x4142, 16}};
    for (const unsigned shift : {0U, 3U}) {
        Bit_Set all;
        all.append(0, shift);
        appendFields(all, config);
        all.append(0xFF, 8);
        const Bytes bytes = all.bytes();
        BitReader bits(bytes);
        bits.skip(shift);
        EXPECT_EQ(parseAudioSpecificConfig(bits, std::nullopt).channelConfiguration, 0U);
        EXPECT_EQ(bits.position(), all.size() - 8) << "shift " << shift;
    }
}

TEST(AudioSpecificConfig, RefusesWhatItDoesNotSupport) {
    const auto refused = [](const Fields& fields) {
        try {
            parse(packed(fields));
        } catch (const std::runtime_error& error) {
            const std::string text = error.what();
            const std::string before = "mpeg4_audio(";
            const std::string behind = "): not implemented";
            if (text.size() <= before.size() + behind.size()) return false;
            const auto line = text.substr(before.size(), text.size() - before.size() - behind.size());
            return text.starts_with(before) && text.ends_with(behind) &&
                   line.find_first_not_of("0123456789") == std::string::npos;
        }
        return false;
    };
    const Fields tail{{3, 4}, {2, 4}, {0, 32}, {0, 32}};
    const auto withType = [&](Fields type) {
        type.insert(type.end(), tail.begin(), tail.end());
        return type;
    };
    for (const std::uint32_t type : {0U, 8U, 18U, 24U, 28U, 30U})
        EXPECT_TRUE(refused(withType({{type, 5}}))) << type;
    EXPECT_TRUE(refused(withType({{31, 5}, {7, 6}}))) << "39, ELD";
    EXPECT_TRUE(refused({{17, 5}, {3, 4}, {2, 4}, {0, 3}, {2, 2}})) << "error protection";
    EXPECT_TRUE(refused({{17, 5}, {3, 4}, {2, 4}, {0, 2}, {1, 1}, {0, 3}, {1, 1}})) << "extensionFlag3";
}

}  // namespace
}  // namespace mvrtpfec::test
