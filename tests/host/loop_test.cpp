#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <map>
#include <sstream>

#include <gtest/gtest.h>

#include "host/io/pes_times.h"
#include "host/live/file_media_input.h"
#include "host/live/ts_continuation.h"
#include "tests/host/program_run.h"

namespace mvrtpfec {
namespace {

class LoopTest : public ProgramTest {
protected:
    /// The last packet isn't whole.
    LoopTest() {
        Bytes bytes = sample();
        bytes.insert(bytes.end(), bytes.begin(), bytes.begin() + 100);
        store("in.ts", bytes);
    }

    /// The transport packets that a looped file gives.
    std::vector<TsPacket> play(std::size_t packets) const {
        FileMediaInput input(pathOf("in.ts"), {.bitRate = {}, .loop = true, .receiving = {}});
        std::vector<TsPacket> all;
        DuePacket next;
        while (all.size() < packets && input.read(next) == MediaInput::Got::packet) {
            const auto* payload = next.packet->view.payload();
            for (unsigned i = 0; i < next.packet->view.payloadLength() / tsPacketSize; ++i)
                std::copy_n(payload + i * tsPacketSize, tsPacketSize, all.emplace_back().bytes.begin());
        }
        return all;
    }
};

TEST_F(LoopTest, PacketsLeaveEvenlyOverTheSeam) {
    for (const auto& bitRate : {std::optional<std::uint64_t>(), std::optional<std::uint64_t>(5'000'000)}) {
        FileMediaInput input(pathOf("in.ts"), {.bitRate = bitRate, .loop = true, .receiving = {}});
        DuePacket next;
        std::uint16_t number = 0;
        std::uint32_t timestamp = 0;
        SteadyTime due{};
        for (int i = 0; i < 3000; ++i) {
            ASSERT_EQ(input.read(next), MediaInput::Got::packet);
            EXPECT_EQ(next.packet->view.sequenceNumber(), number++);
            ASSERT_EQ(next.packet->view.payloadLength(), 7 * 188);
            if (i > 0) {
                const auto step = std::chrono::duration<double, std::milli>(*next.due - due).count();
                const double ticks = static_cast<std::int32_t>(next.packet->view.timestamp() - timestamp);
                EXPECT_GT(step, 0.0) << i;
                EXPECT_LT(step, 20.0) << i;
                EXPECT_NEAR(ticks / 90, step, 0.1) << i;
            }
            due = *next.due;
            timestamp = next.packet->view.timestamp();
        }
    }
}

TEST_F(LoopTest, ClocksAndCountersRunOnAndNothingElseChanges) {
    const Bytes file = sample();
    const std::size_t round = file.size() / tsPacketSize;
    std::map<int, int> counters;
    std::uint64_t clock = 0;
    std::size_t at = 0;
    std::size_t fillers = 0;
    for (TsPacket packet : play(5 * round / 2)) {
        TsPacket original;
        std::copy_n(&file[at % round * tsPacketSize], tsPacketSize, original.bytes.begin());
        if (packet.pid() == nullPid && original.pid() != nullPid) {
            EXPECT_EQ(at % round, 0U) << "fillers stand at the end";
            ++fillers;
            continue;
        }
        if (packet.hasPayload() && packet.pid() != nullPid) {
            const int count = packet.bytes[3] & 15;
            const auto [before, isFirst] = counters.try_emplace(packet.pid(), count);
            EXPECT_TRUE(isFirst || count == (before->second + 1) % 16) << at;
            before->second = count;
        }
        ASSERT_TRUE(at >= round || packet.bytes == original.bytes) << at;
        packet.bytes[3] = original.bytes[3];
        if (const auto pcr = packet.pcr()) {
            EXPECT_TRUE(clock == 0 || pcr->ticks - clock < pcrFrequency * 3 / 20) << at;
            clock = pcr->ticks;
            packet.setPcr(original.pcr()->ticks);
        }
        // What begins a unit has times, which ffprobe tells.
        EXPECT_TRUE((packet.bytes[1] & 0x40) != 0 || packet.bytes == original.bytes) << at;
        ++at;
    }
    EXPECT_GT(at, 2 * round);
    EXPECT_GT(clock, 2 * 6 * pcrFrequency);
    EXPECT_GT(fillers, 0U);
}

TEST_F(LoopTest, FfprobeFindsDecodingTimesThatRunOn) {
    if (std::system("ffprobe -version >/dev/null 2>&1") != 0) GTEST_SKIP() << "ffprobe is not installed";
    Bytes all;
    for (const TsPacket& packet : play(20'000))
        all.insert(all.end(), packet.bytes.begin(), packet.bytes.end());
    store("looped.ts", all);
    const Outcome probed = runProcess(
        "ffprobe", "-v error -show_entries packet=stream_index,dts -of default=nw=1:nk=1 looped.ts",
        pathOf(""));
    std::istringstream numbers(probed.text);
    std::map<int, std::int64_t> last;
    std::size_t packets = 0;
    int stream = 0;
    for (std::int64_t time = 0; numbers >> stream >> time; ++packets) {
        const auto [before, isFirst] = last.try_emplace(stream, time);
        if (!isFirst) {
            EXPECT_GT(time, before->second) << stream;
            EXPECT_LT(time, before->second + 12'000) << stream;
        }
        before->second = time;
    }
    EXPECT_TRUE(numbers.eof()) << probed.text.substr(0, 500);
    EXPECT_GT(packets, 700U);
}

/// With a clock reference and both times, or without them.
TsPacket unitStart(std::uint8_t counter, bool isDamaged = false) {
    TsPacket packet{};
    packet.bytes = {0x47, 0x41, 0x00, 0x30, 7,    0x10, 0xff, 0xff, 0xff, 0xff, 0xff,
                    0x00, 0,    0,    1,    0xe0, 0,    0,    0x80, 0xc0, 10,   0x3f,
                    0xff, 0xff, 0xff, 0xff, 0x1f, 0xff, 0xff, 0xff, 0xfd};
    packet.bytes[3] = static_cast<std::uint8_t>(packet.bytes[3] | counter);
    if (isDamaged) packet.bytes[1] |= 0x80;
    return packet;
}

TEST(TsContinuationTest, GoesOverTheEndsOfClocksAndCountersAndLeavesOutWhatIsDamaged) {
    TsContinuation continuation;
    TsPacket packet = unitStart(15);
    continuation.apply(packet);
    EXPECT_EQ(packet.bytes, unitStart(15).bytes);
    continuation.begin(90'000);
    packet = unitStart(15);
    continuation.apply(packet);
    EXPECT_EQ(packet.bytes[3] & 15, 0);
    EXPECT_EQ(packet.pcr()->ticks, 89'999U * 300 + 256) << "from the last tick of 90 kHz";
    EXPECT_EQ(pesTimes(packet).presentation->ticks(), 89'999U);
    EXPECT_EQ(pesTimes(packet).decoding->ticks(), 89'998U);
    const TsPacket damaged = unitStart(3, true);
    packet = damaged;
    continuation.apply(packet);
    EXPECT_EQ(packet.bytes, damaged.bytes);
    // A header that ends with the packet before its times has none.
    packet = unitStart(0);
    packet.bytes[4] = 183 - 15;
    std::ranges::copy(std::array{0, 0, 1, 0xe0, 0, 0, 0x80, 0xc0, 10}, packet.bytes.begin() + 188 - 15);
    EXPECT_TRUE(pesTimes(packet).presentation);
    EXPECT_FALSE(pesTimes(packet).decoding);
}

}  // namespace
}  // namespace mvrtpfec
