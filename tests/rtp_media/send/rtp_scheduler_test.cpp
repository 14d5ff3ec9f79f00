#include <array>

#include "support/com_exception.h"
#include "tests/rtp_media/send/scheduler_fixture.h"

namespace mvrtpfec::test {
namespace {

TEST_F(SchedulerTest, SendsTwoSecondsBehindTheMediaTimeWithAReportFirst) {
    add(1, StreamType::mpeg4Visual, video);
    video.parser.picture(at(0), 30);
    roundAt(0);
    EXPECT_EQ(video.reports.take().size(), 1U) << "though the packet isn't due";
    EXPECT_TRUE(video.media.take().empty());
    roundAt(1999);
    EXPECT_TRUE(video.media.take().empty());
    roundAt(2000);
    const auto sent = video.media.take();
    ASSERT_EQ(sent.size(), 1U);
    EXPECT_EQ(sent[0].bytes.size(), 42U);
    EXPECT_EQ(sent[0].time, at(2000));
    EXPECT_EQ(scheduler.getMasterPacketCount(), 1U);
    EXPECT_TRUE(log.lines.empty());
}

TEST_F(SchedulerTest, ReportsSayTheTimesAndCountsOfTheStreamOnceASecond) {
    add(2, StreamType::aacAdts, audio);
    for (int ms = 0; ms < 4000; ms += 20) audio.parser.frame(at(ms));
    for (int ms = 0; ms <= 3500; ms += 10) roundAt(ms);
    const auto sent = audio.media.take();
    const auto reports = audio.reports.take();
    ASSERT_EQ(sent.size(), 76U);
    ASSERT_EQ(reports.size(), 4U);
    const Bytes& last = reports[3].bytes;
    ASSERT_EQ(last.size(), 44U);
    const std::uint32_t ssrc = readBigEndian32(&sent[0].bytes[8]);
    EXPECT_EQ(readBigEndian32(&last[0]), 0x80C80006U);
    EXPECT_EQ(readBigEndian32(&last[4]), ssrc);
    EXPECT_EQ(readBigEndian32(&last[8]), 2208988800U + 1'700'000'003);
    EXPECT_EQ(readBigEndian32(&last[12]), 0x40000000U) << "a quarter of a second";
    // The report's instant on the packets' own scale: they leave two seconds after it.
    const std::uint32_t firstRtp = readBigEndian32(&sent[0].bytes[4]);
    EXPECT_EQ(readBigEndian32(&last[16]) - firstRtp, 3U * 48000);
    EXPECT_EQ(readBigEndian32(&last[20]), 50U);
    EXPECT_EQ(readBigEndian32(&last[24]), 50U * 9);
    EXPECT_EQ(readBigEndian32(&last[28]), 0x81CA0003U);
    EXPECT_EQ(readBigEndian32(&last[32]), ssrc);
    EXPECT_EQ((Bytes{last.begin() + 36, last.end()}), (Bytes{1, 2, 'm', 'e', 0, 0, 0, 0}));
}

TEST_F(SchedulerTest, CountsPacketsMoreThan80MillisecondsLate) {
    add(1, StreamType::mpeg4Visual, video);
    add(2, StreamType::aacAdts, audio);
    for (const int ms : {0, 1, 2}) video.parser.picture(at(ms));
    audio.parser.frame(at(500));
    roundAt(0);
    roundAt(2081);
    EXPECT_EQ(log.latenesses, (std::vector<std::int32_t>{81, 80}));
    EXPECT_EQ(log.lines, std::vector<std::string>{"1 RTP late packets : [stream#1: 2 packets, 80ms late]"});
    EXPECT_EQ(video.media.take().size(), 3U);
}

TEST_F(SchedulerTest, TellsEveryLateStreamInOneLine) {
    std::array<Lane, 12> lanes;
    for (std::uint32_t id = 0; id < lanes.size(); ++id) {
        add(id, StreamType::aacAdts, lanes[id]);
        lanes[id].parser.frame(at(0));
    }
    roundAt(0);
    roundAt(2081);
    ASSERT_EQ(log.lines.size(), 1U);
    EXPECT_TRUE(log.lines[0].ends_with("[stream#11: 1 packets, 81ms late]")) << log.lines[0];
    for (std::uint32_t id = 0; id < lanes.size(); ++id) scheduler.removeStream(id);
}

TEST_F(SchedulerTest, DropsWhatIsFarFromTheClockAndAsksForARestartInTheEnd) {
    add(1, StreamType::mpeg4Visual, video);
    video.parser.picture(at(0), 20, true);
    video.parser.picture(at(10'002));
    video.parser.picture(at(-10'001));
    roundAt(0);
    EXPECT_EQ(log.lines, std::vector<std::string>{"1 RTP Sender find discontinuity on video stream 1 "});
    log.lines.clear();
    roundAt(2000);  // the first leaves; the second is inside by now
    EXPECT_EQ(video.media.take().size(), 1U);
    for (int ms = 12'002; ms <= 12'040; ms += 15) roundAt(ms);
    EXPECT_EQ(video.media.take().size(), 1U) << "the third was dropped";
    EXPECT_FALSE(scheduler.isRestartNeeded());
    for (int i = 0; i < 4; ++i) video.parser.picture(at(200'000));
    roundAt(22'002);
    EXPECT_FALSE(scheduler.isRestartNeeded());
    roundAt(22'003);
    EXPECT_TRUE(scheduler.isRestartNeeded());
    EXPECT_EQ(log.lines.back(), "0 RTP Sender need restart");
}

TEST_F(SchedulerTest, AnOutputThatFailsIsLoggedAndTheNextRoundTriesAgain) {
    add(1, StreamType::mpeg4Visual, video);
    video.parser.picture(at(0));
    video.reports.bufferSize = 43;
    roundAt(0);
    ASSERT_EQ(log.lines.size(), 1U);
    EXPECT_TRUE(log.lines[0].starts_with("0 Error: ") && log.lines[0].find("80004005") != std::string::npos)
        << log.lines[0];
    roundAt(15);
    EXPECT_EQ(log.lines.size(), 1U) << "a report that doesn't fit holds up nothing";
    video.reports.bufferSize = 44;
    video.media.result = VFW_E_NOT_COMMITTED;
    roundAt(2000);
    video.media.result = S_OK;
    video.media.bufferResult = S_FALSE;
    roundAt(2005);
    EXPECT_EQ(log.lines.size(), 3U) << "yes, and no buffer";
    video.media.bufferResult = S_OK;
    roundAt(2010);
    EXPECT_EQ(video.media.take().size(), 1U);
    EXPECT_EQ(video.reports.take().size(), 1U);
    video.reports.result = E_FAIL;
    EXPECT_THROW(video.parser.flush(), mvn::COMException);
    EXPECT_EQ(video.media.ends, 1);
}

TEST_F(SchedulerTest, DropsAPacketLargerThanTheOutputsBuffer) {
    add(1, StreamType::mpeg4Visual, video);
    add(2, StreamType::aacAdts, audio);
    video.media.bufferSize = 41;
    for (const std::size_t size : {30U, 29U, 31U}) video.parser.picture(at(0), size);
    audio.parser.frame(at(0));
    roundAt(2000);
    EXPECT_EQ(video.media.take().size(), 1U);
    EXPECT_EQ(audio.media.take().size(), 1U);
    EXPECT_EQ(scheduler.getMasterPacketCount(), 1U);
    const std::string drops = "0 RTP Sender drops a packet of ";
    const std::string where = " bytes on stream 1: the output's buffer has 41";
    EXPECT_EQ(log.lines, (std::vector<std::string>{drops + "42" + where, drops + "43" + where}));
}

TEST_F(SchedulerTest, TheFirstVideoStreamIsTheMasterElseTheFirst) {
    add(5, StreamType::aacAdts, audio);
    audio.parser.frame(at(0));
    roundAt(2000);
    EXPECT_EQ(scheduler.getMasterPacketCount(), 1U);
    add(7, StreamType::mpeg4Visual, video);
    audio.parser.frame(at(0));
    video.parser.picture(at(0));
    video.parser.picture(at(0));
    roundAt(2000);
    EXPECT_EQ(scheduler.getMasterPacketCount(), 3U);
    Lane again;
    video.media.take();
    video.parser.picture(at(0));
    add(7, StreamType::mpeg4Visual, again);
    again.parser.picture(at(0));
    roundAt(2000);
    EXPECT_TRUE(video.media.take().empty()) << "gone with the stream that was replaced";
    EXPECT_EQ(again.media.take().size(), 1U);
    EXPECT_EQ(scheduler.getMasterPacketCount(), 4U);
    scheduler.removeStream(7);
    audio.parser.frame(at(0));
    roundAt(2000);
    EXPECT_EQ(scheduler.getMasterPacketCount(), 5U);
    EXPECT_THROW(add(5, StreamType::hevc, video), mvn::MorvaneException);
    audio.parser.frame(at(0));
    roundAt(2000);
    EXPECT_EQ(audio.media.take().size(), 4U) << "the stream stands";
}

TEST_F(SchedulerTest, AbortDropsWhatIsDue) {
    add(1, StreamType::mpeg4Visual, video);
    for (int i = 0; i < 100; ++i) video.parser.picture(at(0));
    scheduler.abort();
    roundAt(2000);
    EXPECT_TRUE(video.media.take().empty());
}

TEST_F(SchedulerTest, DescribesItsStreamsInTheOrderOfTheirIdsOnceAllAreReady) {
    Lane transport;
    add(7, StreamType::mpeg4Visual, video);
    add(3, StreamType::aacAdts, audio);
    scheduler.addStream(9, StreamType::mpeg2ts, 6000, 33, &transport.media, &transport.reports,
                        &transport.parser, 1, ParameterSetMode::sdp);
    audio.parser.frame(at(0));
    roundAt(0);
    EXPECT_FALSE(scheduler.isSdpReady());
    scheduler.removeStream(7);
    roundAt(15);
    ASSERT_TRUE(scheduler.isSdpReady());
    EXPECT_EQ(
        scheduler.getSdp(),
        "v=0\\o=MV_enc_01_main 1700000000 1700000000 IN IP4 10.0.0.1\\s=session\\c=IN IP4 239.1.2.3/10\\"
        "b=RR:0\\t=0 0\\a=control:*\\a=range:npt=now-\\"
        "m=audio 5003 RTP/AVP 96\\b=RR:0\\b=RS:1024\\b=AS:80\\b=TIAS:64000\\"
        "a=rtpmap:96 mpeg4-generic/48000/2\\"
        "a=fmtp:96 streamtype=5; profile-level-id=15; mode=AAC-hbr; config=1190; sizeLength=13; "
        "indexLength=3; "
        "indexDeltaLength=3; constantDuration=1024; object=2\\"
        "a=control:trackID=1\\a=lang:eng\\a=maxprate:47\\"
        "m=audio 6000 RTP/AVP 33\\b=RR:0\\a=rtpmap:33 MP2T/90000\\");
    scheduler.removeStream(9);
    EXPECT_FALSE(scheduler.isSdpReady());
    EXPECT_EQ(scheduler.getSdp(), "");
}

}  // namespace
}  // namespace mvrtpfec::test
