#include <stdexcept>

#include <gtest/gtest.h>

#include "host/io/frame_layers.h"
#include "host/io/frame_template.h"
#include "tests/host/io_test_frames.h"

namespace mvrtpfec {
namespace {

const std::vector<Wrapping> wrappings = allWrappings();
const std::size_t ethernetIp = 14;
const Bytes packet = rtpPacket(1, 20);

Bytes payloadOf(const Bytes& frame, const FrameLayers& layers) {
    const auto at = frame.begin() + static_cast<std::ptrdiff_t>(layers.payload);
    return Bytes(at, at + static_cast<std::ptrdiff_t>(layers.payloadSize));
}

TEST(FrameLayers, FindsTheDatagramAndKnowsWhetherItIsWhole) {
    const std::size_t padding = 6;
    for (const Wrapping& how : wrappings) {
        const Bytes padded = join({wrap(how, 5006, packet), Bytes(padding, 0xee)});
        const std::size_t whole = padded.size() - padding;
        for (std::size_t length = 0; length <= padded.size(); ++length) {
            SCOPED_TRACE(how.name + ", " + std::to_string(length));
            const Bytes frame(padded.begin(), padded.begin() + static_cast<std::ptrdiff_t>(length));
            const auto layers = locateUdp(how.linkType, frame);
            ASSERT_EQ(layers.has_value(), length >= whole - packet.size());
            if (!layers) continue;
            EXPECT_EQ(layers->destinationPort, 5006);
            ASSERT_EQ(layers->complete, length >= whole);
            if (layers->complete) {
                EXPECT_EQ(payloadOf(frame, *layers), packet);
            }
        }
    }
}

TEST(FrameLayers, StaysInsideFramesWithAnyByteDamaged) {
    for (const Wrapping& how : wrappings) {
        const Bytes whole = wrap(how, 5004, packet);
        for (std::size_t i = 0; i < whole.size() * 256; ++i) {
            Bytes frame = whole;
            frame[i / 256] = static_cast<std::uint8_t>(i);
            const auto layers = locateUdp(how.linkType, frame);
            if (!layers) continue;
            const std::size_t inside = layers->complete ? layers->payloadSize : 0;
            ASSERT_LE(layers->payload + inside, frame.size());
            FrameTemplate model(how.linkType);
            model.take(frame, *layers);
            model.build(Bytes(9), 5008, frame);
            ASSERT_EQ(frame.size(), layers->payload + 9);
        }
    }
}

struct Damage {
    const char* what;
    std::size_t offset;
    std::uint8_t value;
};

void expectLeftOut(const Wrapping& how, std::initializer_list<Damage> damages) {
    for (const Damage& damage : damages) {
        Bytes frame = wrap(how, 5004, packet);
        frame[damage.offset] = damage.value;
        EXPECT_FALSE(locateUdp(how.linkType, frame)) << damage.what;
    }
}

TEST(FrameLayers, LeavesOutWhatIsNoWholeDatagram) {
    expectLeftOut(wrappings[0], {{"ARP", 13, 6},
                                 {"wrong version", ethernetIp, 0x65},
                                 {"header of 16 bytes", ethernetIp, 0x44},
                                 {"total length behind the UDP header only", ethernetIp + 3, 20 + 8},
                                 {"more fragments", ethernetIp + 6, 0x20},
                                 {"later fragment", ethernetIp + 7, 1},
                                 {"TCP", ethernetIp + 9, 6},
                                 {"UDP length below its header", ethernetIp + 20 + 5, 7},
                                 {"UDP longer than IP", ethernetIp + 20 + 5, 29}});
    expectLeftOut(wrappings[2], {{"wrong version", ethernetIp, 0x40},
                                 {"jumbogram", ethernetIp + 5, 0},
                                 {"fragment", ethernetIp + 6, 44},
                                 {"no next header", ethernetIp + 6, 59}});
    const std::size_t segmentsLeft = ethernetIp + 40 + 8 + 3;
    expectLeftOut(wrappings[3],
                  {{"hops left", segmentsLeft, 1}, {"extension too long", segmentsLeft - 2, 9}});
    Wrapping tagged = wrappings[0];
    for (int i = 0; i < 5; ++i) tagged.link.insert(tagged.link.begin() + 12, {0x81, 0, 0, 5});
    expectLeftOut(tagged, {{"five tags", 0, 1}});
}

TEST(FrameTemplate, SendsAZeroChecksumOnlyWhereTheStreamDoes) {
    Bytes frame = wrap(wrappings[0], 5004, packet);
    frame[40] = frame[41] = 0;
    FrameTemplate without(LinkType::ethernet);
    without.take(frame, locateUdp(LinkType::ethernet, frame).value());
    without.build(rtpPacket(2, 20), 5006, frame);
    EXPECT_EQ(readBigEndian16(&frame[40]), 0);

    // The first two payload bytes are all that differs: one pair of them brings the sum to zero.
    const FrameTemplate model(LinkType::ethernet);
    model.build(Bytes(2), 5004, frame);
    const Bytes payload = {frame[40], frame[41]};
    model.build(payload, 5004, frame);
    EXPECT_EQ(readBigEndian16(&frame[40]), 0xffff);
}

TEST(FrameTemplate, RefusesWhatItCannotBuild) {
    Bytes frame;
    EXPECT_THROW(FrameTemplate(LinkType::raw).build(Bytes(9), 5004, frame), std::logic_error);
    const FrameTemplate model(LinkType::ethernet);
    model.build(Bytes(65535 - 28), 5004, frame);
    EXPECT_THROW(model.build(Bytes(65535 - 27), 5004, frame), std::length_error);
}

}  // namespace
}  // namespace mvrtpfec
