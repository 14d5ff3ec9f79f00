#include <gtest/gtest.h>

#include "rtp_media/audio/nal_aac_adts.h"
#include "rtp_media/audio/nal_aac_raw.h"
#include "rtp_media/audio/rtp_packet_builder_aac_raw_adts_audio.h"
#include "tests/rtp_media/audio/audio_frames.h"

namespace mvrtpfec::test {
namespace {

/// A packet never carries more than its unit, and nothing is thrown, whatever the unit holds.
template <class Unit>
void feedDamaged(const Bytes& unit) {
    CollectedPackets out;
    RTPPacketBuilderAACRAWADTSAudio packetizer(96, 5000, &out);
    for (std::size_t size = 0; size < unit.size(); ++size)
        packetizer.onNAL(unitOf<Unit>({unit.begin(), unit.begin() + static_cast<std::ptrdiff_t>(size)}));
    for (std::size_t bit = 0; bit < unit.size() * 8; ++bit) {
        Bytes flipped = unit;
        flipped[bit / 8] = static_cast<std::uint8_t>(flipped[bit / 8] ^ 0x80U >> bit % 8);
        packetizer.onNAL(unitOf<Unit>(flipped));
    }
    for (std::size_t i = 0; i < out.packets.size(); ++i) EXPECT_LE(out.body(i).size(), unit.size() + 4);
}

TEST(HostileAacUnits, AreSentOrDropped) {
    feedDamaged<NALAACADTS>(adtsFrame({1, 2, 3}, true));
    const Bytes pce = packed({{2, 5}, {3, 4}, {0, 4}, {0, 3}, {0, 10}, {2, 4}, {0, 28}, {0, 32}, {0, 32}});
    feedDamaged<NALAACRaw>(rawRecord(pce, static_cast<std::uint32_t>(pce.size() * 8), {1, 2, 3}));
    const Bytes ps{0x13, 0x88, 0x56, 0xE5, 0xA5, 0x48, 0x80};
    feedDamaged<NALAACRaw>(rawRecord(ps, 56, {1, 2, 3}));
}

}  // namespace
}  // namespace mvrtpfec::test
