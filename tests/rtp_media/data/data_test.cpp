#include <gtest/gtest.h>

#include "rtp_media/data/nal_scte35.h"
#include "tests/rtp_media/chain/collected_packets.h"

namespace mvrtpfec::test {
namespace {

using Units = std::vector<Bytes>;

Bytes transportPackets(std::size_t count, std::uint8_t first = 0) {
    Bytes bytes;
    for (std::size_t i = 0; i < count; ++i) {
        Bytes packet(188, static_cast<std::uint8_t>(first + i));
        packet[0] = 0x47;
        bytes.insert(bytes.end(), packet.begin(), packet.end());
    }
    return bytes;
}

TEST(TransportStream, TimesTheFirstPacketThatBeginsInASample) {
    const auto parser = createNALBuilder(StreamType::mpeg2ts);
    CollectedUnits collected;
    parser->setListener(&collected);
    Bytes stream{1, 2, 3};
    const Bytes packets = transportPackets(6);
    stream.insert(stream.end(), packets.begin(), packets.end());
    REFERENCE_TIME time = 0;
    std::size_t at = 0;
    for (const std::size_t size : {2U, 100U, 377U, 100U, 276U, 275U}) {  // the last packet isn't whole
        const auto sample = sampleOf(std::span(stream).subspan(at, size));
        sample->SetTime(&(time += 10), nullptr);
        parser->input(sample.p);
        at += size;
    }
    parser->flush();
    std::vector<std::int64_t> times;
    for (const auto& unit : collected.units) times.push_back(unit->timing.hasPts ? unit->timing.pts : 0);
    // Samples hold bytes -3, -1, 99, 476, 576, 852 and on; packets begin at 0, 188, 376, 564, 752.
    EXPECT_EQ(times, (std::vector<std::int64_t>{20, 30, 0, 40, 50}));
    EXPECT_EQ(collected.units[3]->bytes()[1], 3);
}

TEST(TransportStream, SevenPacketsMakeOneAndTheEndSendsTheRest) {
    Packetizer packetizer(StreamType::mpeg2ts);
    EXPECT_TRUE(packetizer.builder().sdpReady());
    EXPECT_EQ(packetizer.builder().sdpAttributes(), "a=rtpmap:33 MP2T/90000");
    for (std::uint8_t i = 0; i < 13; ++i) {
        packetizer.give(transportPackets(1, i), 900 + i, i == 0);
        packetizer.give(transportPackets(1, 99));  // untimed
    }
    EXPECT_EQ(packetizer.sent.size(), 1U);
    packetizer.end();
    ASSERT_EQ(payloadSizes(packetizer.sent), (std::vector<std::size_t>{7 * 188, 6 * 188}));
    EXPECT_EQ(packetizer.sent[0].payload, transportPackets(7));
    EXPECT_EQ(packetizer.sent[1].pts, 907U);
    EXPECT_TRUE(packetizer.sent[0].discontinuity && !packetizer.sent[0].marker &&
                !packetizer.sent[1].discontinuity);
}

TEST(SampleQueue, AUnitRunsFromOneSyncPointToTheNext) {
    for (const auto type : {StreamType::teletext, StreamType::dvbSubtitle, StreamType::ttml, StreamType::klv,
                            StreamType::webVtt, StreamType::syncPoint22, StreamType::syncPoint24}) {
        const auto parser = createNALBuilder(type);
        CollectedUnits collected;
        parser->setListener(&collected);
        REFERENCE_TIME time = 0;
        for (const auto& [bytes, sync] :
             {std::pair{Bytes{1}, false}, std::pair{Bytes{2}, true}, std::pair{Bytes{3}, false},
              std::pair{Bytes{}, true}, std::pair{Bytes{4}, false}}) {
            const auto sample = sampleOf(bytes);
            sample->SetSyncPoint(sync);
            sample->SetTime(&(time += 10), nullptr);
            parser->input(sample.p);
        }
        parser->flush();
        EXPECT_EQ(collected.contents(), (Units{{1}, {2, 3}, {4}}));
        EXPECT_EQ(collected.units[1]->timing.pts, 20);
        EXPECT_EQ(collected.units[1]->streamType(), type);
        EXPECT_EQ(collected.endsOfStream, 1);
    }
}

std::uint32_t crcOf(const Bytes& bytes) {
    std::uint32_t crc = 0xFFFFFFFF;
    for (const auto byte : bytes) {
        for (int bit = 7; bit >= 0; --bit) {
            const bool top = (crc >> 31 ^ (byte >> bit & 1U)) != 0;
            crc = crc << 1 ^ (top ? 0x04C11DB7U : 0U);
        }
    }
    return crc;
}

/// A sample: the number, then a section around a command and descriptors.
Bytes cue(std::uint8_t type, const Bytes& command, const Bytes& descriptors = {}, bool lengthKnown = true) {
    Bytes section{0xFC, 0x30, 0, 0, 0, 0, 0, 0, 9, 0, 0xFF, 0xF0, 0, type};
    const std::size_t commandLength = lengthKnown ? command.size() : 0xFFF;
    section[11] = static_cast<std::uint8_t>(0xF0 | commandLength >> 8);
    section[12] = static_cast<std::uint8_t>(commandLength);
    section.insert(section.end(), command.begin(), command.end());
    section.push_back(0);
    section.push_back(static_cast<std::uint8_t>(descriptors.size()));
    section.insert(section.end(), descriptors.begin(), descriptors.end());
    section[2] = static_cast<std::uint8_t>(section.size() + 4 - 3);
    const std::uint32_t crc = crcOf(section);
    for (int shift = 24; shift >= 0; shift -= 8) section.push_back(static_cast<std::uint8_t>(crc >> shift));
    section.insert(section.begin(), 8, 0x77);
    return section;
}

SpliceInfoSection parsed(const Bytes& sample) {
    const auto parser = createNALBuilder(StreamType::scte35);
    CollectedUnits collected;
    parser->setListener(&collected);
    parser->input(sampleOf(sample).p);
    EXPECT_EQ(collected.contents(), Units{sample});
    return dynamic_cast<NALSCTE35&>(*collected.units.at(0)).section;
}

const Bytes insertCommand{0, 0, 0, 5, 0x7F, 0xEF, 0xFE, 0, 0, 0x30, 0x39, 0xFE, 0, 1, 0xD4, 0xC0, 0, 7, 1, 2};
const Bytes segmentation{2, 21, 'C', 'U',  'E',  'I', 0, 0,   0,   9,    0x7F, 0xD3,
                         0, 0,  1,   0x5F, 0x90, 1,   2, 'a', 'b', 0x34, 1};

TEST(Scte35, ReadsEveryCommand) {
    const auto insert = parsed(cue(5, insertCommand));
    const auto& event = std::get<SpliceInsert>(insert.command).event;
    EXPECT_TRUE(insert.crcValid && event.outOfNetwork && event.programSplice && !event.immediate);
    EXPECT_EQ(insert.ptsAdjustment, 9U);
    EXPECT_EQ(event.id, 5U);
    EXPECT_EQ(event.time, 12345U);
    EXPECT_TRUE(event.breakDuration->autoReturn);
    EXPECT_EQ(event.breakDuration->duration, 120000U);
    EXPECT_EQ(event.uniqueProgramId, 7);
    EXPECT_EQ(event.availsExpected, 2);

    EXPECT_EQ(std::get<TimeSignal>(parsed(cue(6, {0x7F})).command).time, std::nullopt);
    EXPECT_EQ(std::get<TimeSignal>(parsed(cue(6, {0xFF, 0, 0, 0, 4}, {}, false)).command).time,
              (1ULL << 32) + 4);
    const auto schedule = std::get<SpliceSchedule>(
        parsed(cue(4, {1, 0, 0, 0, 3, 0x7F, 0x1F, 1, 8, 0, 0, 0, 6, 0, 1, 2, 3})).command);
    EXPECT_EQ(schedule.events.at(0).components.at(0).utcTime, 6U);
    EXPECT_EQ(schedule.events[0].availsExpected, 3);
    EXPECT_EQ(std::get<PrivateCommand>(parsed(cue(0xFF, {0, 0, 0, 1, 7, 8})).command).bytes, (Bytes{7, 8}));
    EXPECT_TRUE(std::holds_alternative<SpliceNull>(parsed(cue(0, {})).command));
    EXPECT_TRUE(std::holds_alternative<BandwidthReservation>(parsed(cue(7, {})).command));
    Bytes wrong = cue(0, {});
    wrong.back() ^= 1;
    EXPECT_FALSE(parsed(wrong).crcValid);
}

TEST(Scte35, ReadsDescriptorsAndRefusesBadOnes) {
    Bytes loop{0, 8, 'C', 'U', 'E', 'I', 0, 0, 1, 2, 9, 5, 'X', 'Y', 'Z', 'W', 1};
    const Bytes whole{2, 23, 'C',  'U',  'E', 'I', 0,   0,   0,    9, 0x7F, 0xC7, 0,
                      0, 1,  0x5F, 0x90, 1,   2,   'a', 'b', 0x34, 1, 2,    3};
    loop.insert(loop.end(), whole.begin(), whole.end());
    const auto section = parsed(cue(6, {0x7F}, loop));
    ASSERT_EQ(section.descriptors.size(), 3U);
    EXPECT_EQ(std::get<AvailDescriptor>(section.descriptors[0]).providerAvailId, 258U);
    EXPECT_EQ(std::get<OtherDescriptor>(section.descriptors[1]).bytes, Bytes{1});
    const auto& segment = std::get<SegmentationDescriptor>(section.descriptors[2]);
    EXPECT_TRUE(segment.programSegmentation && segment.restrictions && segment.restrictions->archiveAllowed &&
                !segment.restrictions->webDeliveryAllowed);
    EXPECT_EQ(segment.duration, 90000U);
    EXPECT_EQ(segment.upid, (Bytes{'a', 'b'}));
    EXPECT_EQ(segment.typeId, 0x34);
    EXPECT_EQ(segment.expected, 2);

    const auto messageOf = [](const Bytes& sample) -> std::string {
        try {
            parsed(sample);
        } catch (const SpliceInfoException& error) {
            return error.what();
        }
        return "none";
    };
    EXPECT_EQ(messageOf(cue(6, {0x7F}, segmentation)), "Bad splice descriptor size");
    EXPECT_EQ(messageOf(cue(6, {0x7F}, {0, 3, 'C', 'U', 'E'})), "Bad splice descriptor size");
    EXPECT_EQ(messageOf(cue(6, {0x7F}, {0, 200, 'C', 'U', 'E', 'I'})), "Bad splice descriptor size");
    EXPECT_EQ(messageOf(cue(1, {})), "Unmanaged command type");
}

TEST(Scte35, SurvivesDamageAndGoesOn) {
    const auto parser = createNALBuilder(StreamType::scte35);
    CollectedUnits collected;
    parser->setListener(&collected);
    std::mt19937 random(17);
    for (int round = 0; round < 5000; ++round) {
        Bytes sample = cue(round % 2 == 0 ? 5 : 4, insertCommand, segmentation);
        for (auto flips = random() % 4; flips > 0; --flips)
            sample[random() % sample.size()] ^= static_cast<std::uint8_t>(1U << random() % 8);
        sample.resize(random() % (sample.size() + 1));
        EXPECT_NO_THROW(try { parser->input(sampleOf(sample).p); } catch (const SpliceInfoException&){})
            << round;
    }
    collected.units.clear();
    parser->input(sampleOf(cue(0, {})).p);
    EXPECT_EQ(collected.units.size(), 1U);
}

}  // namespace
}  // namespace mvrtpfec::test
