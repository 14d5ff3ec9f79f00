#include <gtest/gtest.h>

#include "rtp_media/bits/bit_reader.h"
#include "rtp_media/bits/bit_set.h"
#include "rtp_media/bits/byte_text.h"
#include "rtp_media/bits/start_code_search.h"
#include "tests/rtp_media/chain/collected_units.h"

namespace mvrtpfec::test {
namespace {

TEST(BitReader, ReadsAcrossBytesAndNeverBeyondTheEnd) {
    const Bytes bytes{0b1010'0110, 0xFF, 0x01, 0x80, 0, 0, 0, 0, 1};
    BitReader reader(bytes);
    EXPECT_EQ(reader.bits(3), 0b101U);
    EXPECT_EQ(reader.bits(7), 0b0011011U);
    EXPECT_EQ(reader.longBits(62), 0x3F01'8000'0000'0001U);
    EXPECT_EQ(reader.remaining(), 0U);
    EXPECT_THROW(reader.flag(), BitstreamException);
    BitReader shorter{std::span<const std::uint8_t>(bytes).first(1)};
    shorter.skip(6);
    EXPECT_THROW(shorter.bits(3), BitstreamException);
    EXPECT_EQ(shorter.position(), 6U);
    EXPECT_EQ(shorter.bits(2), 0b10U);
}

TEST(BitReader, ExpGolombUpTo32BitsAndNoFurther) {
    const Bytes numbers{0b1'010'011'0, 0b0100'0000};  // 0, 1, 2, 3
    BitReader reader(numbers);
    EXPECT_EQ(reader.unsignedExpGolomb(), 0U);
    EXPECT_EQ(reader.signedExpGolomb(), 1);
    EXPECT_EQ(reader.signedExpGolomb(), -1);
    EXPECT_THROW(reader.unsignedExpGolomb(2), BitstreamException);
    EXPECT_EQ(reader.unsignedExpGolomb(3), 3U);

    const Bytes largest{0, 0, 0, 0, 0x80, 0, 0, 0, 0};  // 32 zeros, 1, 32 zeros: 2^32 - 1
    EXPECT_EQ(BitReader(largest).unsignedExpGolomb(), 0xFFFFFFFFU);
    const Bytes tooLarge{0, 0, 0, 0, 0x80, 0, 0, 0, 0x80};
    EXPECT_THROW(BitReader(tooLarge).unsignedExpGolomb(), BitstreamException);
    const Bytes zeros(20, 0);
    EXPECT_THROW(BitReader(zeros).unsignedExpGolomb(), BitstreamException);
    EXPECT_THROW(BitReader({}).unsignedExpGolomb(), BitstreamException);
}

TEST(BitSet, PacksTheFirstBitHighestAndReadsNothingBeyond) {
    Bit_Set bits;
    bits.append(2, 5);
    bits.append(3, 4);
    bits.append(0xFFFFFFFF, 32);
    bits.append(false);
    EXPECT_EQ(bits.bytes(), (Bytes{0x11, 0xFF, 0xFF, 0xFF, 0xFF, 0x80}));
    testing::internal::CaptureStderr();
    EXPECT_FALSE(bits.at(42));
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "out of range\n");
}

TEST(ByteText, WritesBase64AndHex) {
    const auto base64 = [](std::string_view text) { return toBase64(Bytes(text.begin(), text.end())); };
    EXPECT_EQ(base64(""), "");
    EXPECT_EQ(base64("f"), "Zg==");
    EXPECT_EQ(base64("fo"), "Zm8=");
    EXPECT_EQ(base64("foobar"), "Zm9vYmFy");
    EXPECT_EQ(toBase64(Bytes(195, 0), "|"), std::string(256, 'A') + "|AAAA");
    EXPECT_EQ(toLowerHex(Bytes{0x0A, 0xF3}), "0af3");
    EXPECT_EQ(toUpperHex(Bytes{0x0A, 0xF3}), "0AF3");
}

TEST(StartCodeSearch, FindsTheFirstAtEveryPlace) {
    for (std::size_t size = 0; size < 200; ++size) {
        for (std::size_t at = 0; at < size; ++at) {
            Bytes bytes(size, 0xA5);
            bytes[at] = 0;
            if (at + 1 < size) bytes[at + 1] = 0;
            const bool pair = at + 1 < size;
            ASSERT_EQ(findZeroPair(bytes), pair ? at : size) << size << " " << at;
            if (at + 2 < size) bytes[at + 2] = 1;
            ASSERT_EQ(findStartCode(bytes), at + 2 < size ? at : size) << size << " " << at;
        }
    }
}

}  // namespace
}  // namespace mvrtpfec::test
