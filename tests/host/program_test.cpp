#include <algorithm>
#include <functional>
#include <memory>

#include <fmt/format.h>
#include <gtest/gtest.h>

#include "host/io/packet_sink.h"
#include "host/io/packet_source.h"
#include "platform/files/utf8_path.h"
#include "tests/host/arrivals.h"
#include "tests/host/program_run.h"

namespace mvrtpfec {
namespace {

constexpr std::uint16_t port = 5004;

class Protected : public ProgramTest {
protected:
    /// The sample with FEC in both directions, 10 x 10.
    void protect(const std::string& options = "--mode both --columns 10 --rows 10") {
        store("in.ts", sample());
        const Outcome result = run("protect in.ts fec.pcap " + options);
        ASSERT_EQ(result.status, 0) << result.text;
    }

    /// Copies a capture without the datagrams that `lost` picks; returns how many are left.
    int lose(const std::function<bool(const Datagram&, int index)>& lost) {
        const auto source = openSource(pathOf("fec.pcap"), port);
        const auto sink = openSink(pathOf("lossy.pcap"), port, source->addressing());
        Datagram datagram;
        int left = 0;
        for (int i = 0; source->read(datagram); ++i) {
            if (lost(datagram, i)) continue;
            sink->write(datagram);
            ++left;
        }
        sink->finish();
        return left;
    }
};

bool isMedia(const Datagram& datagram, std::uint16_t from, std::uint16_t to) {
    const std::uint16_t number = viewOf(datagram.payload).sequenceNumber();
    return datagram.port == StreamPort::media && number >= from && number <= to;
}

TEST_F(Protected, StreamComesBackWholeFromACaptureWithoutLoss) {
    protect();
    for (const std::string guard : {"off", "on"}) {
        const auto json = figures("repair fec.pcap out.ts --guard " + guard);
        EXPECT_EQ(load("out.ts"), sample());
        EXPECT_EQ(json["received"], 1140);
        EXPECT_EQ(json["delivered"], 1140);
        EXPECT_EQ(json["lost"], 0);
        EXPECT_EQ(json["resets"], 0);
    }
}

TEST_F(Protected, LostColumnBurstComesBackInTsAndCapture) {
    protect();
    lose([](const Datagram& d, int) { return isMedia(d, 300, 309); });
    const auto json = figures("repair lossy.pcap out.ts");
    EXPECT_EQ(load("out.ts"), sample());
    EXPECT_EQ(json["lost"], 10);
    EXPECT_EQ(json["rebuilt"], 10);
    EXPECT_EQ(json["holes_skipped"], 1);

    ASSERT_EQ(run("repair lossy.pcap out.pcapng").status, 0);
    ASSERT_EQ(run("repair out.pcapng again.ts").status, 0);
    EXPECT_EQ(load("again.ts"), sample());
}

TEST_F(Protected, PacketsLostAtTheVeryEndAreRebuiltFromTheirRow) {
    protect("--mode row --columns 10 --rows 4");
    lose([](const Datagram& d, int) { return isMedia(d, 1139, 1139); });
    const auto json = figures("repair lossy.pcap out.ts");
    EXPECT_EQ(load("out.ts"), sample());
    EXPECT_EQ(json["received"], 1139);
    EXPECT_EQ(json["rebuilt"], 1);
}

TEST_F(Protected, WithoutGuardAHoleCostsItsSuccessorToo) {
    protect("--mode row --columns 10 --rows 4");
    lose([](const Datagram& d, int) { return isMedia(d, 500, 500); });
    const auto json = figures("repair lossy.pcap out.ts --guard off", 3);
    EXPECT_EQ(json["received"], 1138);
    EXPECT_EQ(json["lost"], 2);
    EXPECT_EQ(json["rebuilt"], 0);
    EXPECT_EQ(json["abandoned"], 2);
    EXPECT_EQ(json["delivered"], 1138);
}

TEST_F(Protected, FecPacketsFollowTheMediaPacketThatCompletesThem) {
    protect();
    const auto source = openSource(pathOf("fec.pcap"), port);
    Datagram datagram;
    std::string order;
    while (order.size() < 120 && source->read(datagram)) order += "mAB"[static_cast<int>(datagram.port)];
    // The first row ends with its tenth packet; packet 90 ends the first column, packet 99 a row, and
    // the columns then end one a row.
    EXPECT_EQ(order.substr(0, 23), "mmmmmmmmmmBmmmmmmmmmmBm");
    EXPECT_EQ(order.substr(99, 13), "mAmmmmmmmmmBm");
}

/// A source that restarts from the same number while its sender counts the matrix on: FEC packets then
/// name numbers that they don't protect, or that never were.
TEST_F(Protected, RestartBringsNothingThatWasNotSent) {
    constexpr int length = 100;
    const auto source = openSource(store("in.ts", sample()), port);
    const auto sink = openSink(pathOf("in.pcap"), port, source->addressing());
    Datagram datagram;
    for (int i = 0; i < 2 * length && source->read(datagram); ++i) {
        writeBigEndian16(&datagram.payload[2], static_cast<std::uint16_t>(i % length));
        datagram.payload[8] = static_cast<std::uint8_t>(i / length);
        sink->write(datagram);
    }
    sink->finish();
    ASSERT_EQ(run("protect in.pcap fec.pcap --mode both --columns 5 --rows 5").status, 0);
    const auto json = figures("repair fec.pcap out.ts");
    EXPECT_EQ(json["delivered"], 2 * length);
    EXPECT_EQ(json["lost"], 0);
    EXPECT_EQ(json["restarts"], 1);
    const Bytes sent = sample();
    EXPECT_EQ(load("out.ts"), Bytes(sent.begin(), sent.begin() + 2 * length * 7 * 188));

    // Without the guard a packet is lost with the old run, and padding stays out all the same.
    const auto plain = figures("repair in.pcap plain.ts --guard off", 3);
    EXPECT_EQ(plain["lost_for_good"], 1);
    EXPECT_EQ(plain["delivered"], 2 * length - 1);
    EXPECT_EQ(load("plain.ts").size(), (2 * length - 1) * 7u * 188);
}

/// FEC packets over a hole would name packets that they don't protect.
TEST_F(Protected, HolesInACaptureHaveNothingWrongRebuilt) {
    protect();
    lose([](const Datagram& d, int) { return isMedia(d, 333, 333) || isMedia(d, 700, 719); });
    const Outcome result = run("protect lossy.pcap again.pcap --mode both --columns 10 --rows 10");
    EXPECT_NE(result.text.find("FEC over holes, left out"), std::string::npos) << result.text;
    run("repair again.pcap out.ts --guard on");
    Bytes sent = sample();
    constexpr int size = 7 * 188;
    sent.erase(sent.begin() + 700 * size, sent.begin() + 720 * size);
    sent.erase(sent.begin() + 333 * size, sent.begin() + 334 * size);
    EXPECT_TRUE(load("out.ts") == sent);
    const Outcome simulated = run("simulate lossy.pcap --preset balanced --loss 0");
    EXPECT_NE(simulated.text.find("stream equals the source"), std::string::npos) << simulated.text;
}

TEST_F(Protected, BrokenCaptureIsRepairedAsFarAsItGoes) {
    protect();
    const Bytes whole = load("fec.pcap");
    store("cut.pcap", Bytes(whole.begin(), whole.begin() + 500'000));
    Bytes damaged = whole;
    std::fill_n(damaged.begin() + 499'800, 16, 0xff);  // the header of the packet that is cut there
    store("damaged.pcap", damaged);
    const Bytes sent = sample();
    for (const std::string name : {"cut.pcap", "damaged.pcap"}) {
        const Outcome result = run("repair " + name + " out.ts --guard on --log run.log");
        EXPECT_EQ(result.status, 0) << result.text;
        for (const std::string& told : {result.text, text("run.log")})
            EXPECT_NE(told.find(name + ": broken behind packet 360, at byte "), std::string::npos) << told;
        EXPECT_TRUE(load("out.ts") == Bytes(sent.begin(), sent.begin() + 309 * 7 * 188));
    }
}

/// Through whatever name, and nothing has been opened for writing.
TEST_F(Protected, NothingIsWrittenOverWhatIsRead) {
    protect();
    const Bytes before = load("fec.pcap");
    std::filesystem::create_hard_link(pathOf("fec.pcap"), pathOf("hard.pcap"));
    std::error_code isWindows;
    std::filesystem::create_symlink("fec.pcap", pathOf("link.pcap"), isWindows);
    const std::size_t files = fileCount();
    for (const std::string arguments :
         {"repair fec.pcap fec.pcap", "repair fec.pcap ./fec.pcap", "repair fec.pcap hard.pcap",
          "repair fec.pcap out.ts --json fec.pcap", "repair fec.pcap out.ts --log hard.pcap",
          "repair fec.pcap out.ts --stats-csv hard.pcap", "protect hard.pcap fec.pcap --preset lean",
          "simulate hard.pcap --preset lean --output fec.pcap",
          "packetize in.ts out.pcap --format mpeg2ts --sdp in.ts",
          "packetize in.ts out.pcap --format mpeg2ts --json ./in.ts",
          "units in.ts --format mpeg2ts --json in.ts", "stream in.ts --to 127.0.0.1:5004 --sdp in.ts",
          "plan --trace hard.pcap --json fec.pcap",
          "send in.ts --to 127.0.0.1:5004 --preset lean --log in.ts",
          "receive --from 127.0.0.1:5004 x.ts --log ./x.ts", "repair link.pcap hard.pcap"}) {
        if (isWindows && arguments.find("link") != std::string::npos) continue;
        const Outcome result = run(arguments);
        EXPECT_EQ(result.status, 2) << arguments << ": " << result.text;
        EXPECT_NE(result.text.find(" is named for "), std::string::npos) << result.text;
    }
    EXPECT_EQ(fileCount(), files);
    EXPECT_TRUE(load("fec.pcap") == before && load("in.ts") == sample());
}

TEST_F(ProgramTest, EveryCommandTellsWhatIsMissing) {
    const auto storeCapture = [this](const std::string& name, const Arrivals& arrivals) {
        const auto sink = openSink(pathOf(name), port, std::make_shared<FrameTemplate>(LinkType::ethernet));
        for (const Arrival& arrival : arrivals) {
            Datagram datagram;
            datagram.port = arrival.port;
            datagram.payload = arrival.bytes;
            sink->write(datagram);
        }
        sink->finish();
    };
    storeCapture("sent.pcap", protectedStream(63000, 5000, {fecBoth, 5, 5}));
    for (const std::uint32_t seed : {3U, 5U}) {
        const Story story = randomStory(seed);
        storeCapture("came.pcap", story.arrivals);
        const std::string channel = fmt::format(" --loss 0.2 --burst 9 --reorder 30 --seed {}", seed);
        for (const std::string guard : {"on", "off"})
            for (const std::string& command : {std::string("repair came.pcap out.pcap"),
                                               "simulate sent.pcap --preset low-delay" + channel}) {
                SCOPED_TRACE(command + " --guard " + guard);
                const auto json = figures(command + " --guard " + guard, 3);
                const std::size_t sent = json.value("sent", story.sent.size());
                const std::size_t missing = json["lost_for_good"];
                // Without the guard some come out twice.
                EXPECT_GE(missing + json["delivered"].get<std::size_t>(), sent);
                EXPECT_TRUE(guard == "off" || missing + json["delivered"].get<std::size_t>() == sent);
                EXPECT_EQ(json["lost"], json["rebuilt"].get<std::size_t>() + missing);
                EXPECT_GE(json["lost"], json["longest_burst"]);
            }
    }
    auto json = figures("repair came.pcap out.pcap", 3);
    EXPECT_EQ(json["resets"], 0) << "the guard has met the losses and restarts";
    EXPECT_GT(json["fec_packets"], 1000);
    EXPECT_EQ(json["restarts"], 2);
    Arrivals changing = protectedStream(100, 500, {fecBoth, 5, 5});
    for (const Arrival& arrival : protectedStream(600, 500, {fecRow, 10, 4})) changing.push_back(arrival);
    storeCapture("came.pcap", changing);
    json = figures("repair came.pcap out.pcap");
    EXPECT_EQ(json["resets"], 1);
    EXPECT_EQ(json["mode"], "both");
    EXPECT_EQ(json["columns"], 10);
}

TEST_F(ProgramTest, SimulationIsRepeatableAndSaysWhetherTheStreamIsWhole) {
    const std::string base = "simulate --mode both --columns 10 --rows 10 --loss 0.03 ";
    const auto first = figures(base + "--seed 4 --output out.ts");
    EXPECT_EQ(first, figures(base + "--seed 4"));
    EXPECT_NE(first["dropped_media"], figures(base + "--seed 5")["dropped_media"]);
    EXPECT_EQ(load("out.ts"), sample());
    EXPECT_TRUE(first["whole"]);
    EXPECT_EQ(first["seed"], 4);
    EXPECT_EQ(first["delivered"], first["sent"]);
    EXPECT_GT(first["dropped_media"], 20);
    EXPECT_GT(first["dropped_fec"], 0);

    const auto plain = figures(base + "--seed 4 --guard off", 3);
    EXPECT_FALSE(plain["whole"]);
    EXPECT_EQ(plain["dropped_media"], first["dropped_media"]);
    EXPECT_LT(plain["delivered"], plain["sent"]);
    EXPECT_EQ(plain["mismatched"], 0);
    EXPECT_NE(run(base + "--guard off").text.find("is not whole"), std::string::npos);
    EXPECT_NE(run(base).text.find("The repaired stream equals the source."), std::string::npos);
}

TEST_F(ProgramTest, RowModeNeedsNoRowsAndSharesMayBePercentages) {
    const std::string base = "simulate --mode row --columns 5 --seed 4 ";
    EXPECT_EQ(figures(base + "--loss 3% --duplicate 1%", 3),
              figures(base + "--rows 20 --loss 0.03 --duplicate 0.01", 3));
}

TEST_F(ProgramTest, ReorderedAndRepeatedPacketsAreSetRightByTheGuard) {
    const auto json = figures(
        "simulate --mode both --columns 5 --rows 5 --loss 0.01 --reorder 15 --duplicate 0.05 --seed 3");
    EXPECT_TRUE(json["whole"]);
    EXPECT_GT(json["repeated"], 20);
}

TEST_F(ProgramTest, WrongUsageIsRefusedWithTheReasonAndStatusTwo) {
    store("in.ts", sample());
    const std::vector<std::pair<std::string, std::string>> cases{
        {"protect in.ts out.pcap --mode both --columns 3 --rows 10",
         "number of columns must be between 4 and 20 in this mode"},
        {"protect in.ts out.pcap --mode both --columns 11 --rows 10",
         "invalid number of columns and rows (11 x 10 is 110, at most 100 are allowed)"},
        {"protect in.ts out.pcap --mode row --columns 0 --rows 10",
         "number of columns must be between 1 and 20 in this mode"},
        {"simulate --mode row --columns 5 --rows 3", "number of rows must be between 4 and 20"},
        {"simulate --mode both --columns 5 --rows 5 --loss 1.5", "the loss must be between 0 and 1"},
        {"simulate --preset lean --loss 103%", "or 0% and 100%"},
        {"plan --loss 3x", "'3x' is no share, as 0.03 or 3%"},
        {"simulate --mode both --columns 5 --rows 5 --burst 0", "mean burst length"},
        {"protect in.ts out.ts --mode both --columns 5 --rows 5", "can't carry FEC packets"},
        {"protect in.ts out.mkv --mode both --columns 5 --rows 5", "out.mkv"},
        {"protect in.ts out.pcap --mode fast --columns 5 --rows 5",
         "--mode: there is no choice 'fast', only row, column, both"},
        {"protect in.ts out.pcap --columns 5 --rows 5", "--mode is required, or --preset (low-delay, "},
        {"simulate --mode column --columns 5", "--rows is required, or --preset"},
        {"simulate --preset fast", "there is no choice 'fast', only low-delay, balanced"},
        {"selftest --data \"\"", "--data names no folder"},
        {"repair in.pcap", "OUT is required"},
        {"repair in.pcap out.ts --port 70000", "--port"},
        {"repair in.pcap out.ts --json out.ts", "named for two outputs"},
        {"simulate in.ts --mode row --columns 5 --rows 5 --seed -1", "--seed"},
        {"simulate \"\" --mode row --columns 5 --rows 5", "must end in"},
        {"packetize in.ts out.pcap", "--format is required"},
        {"packetize in.ts out.pcap --format avi", "there is no format 'avi', only h264, "},
        {"packetize in.ts out.pcap --format hevc", "mvrtpfec units IN --format hevc"},
        {"packetize in.ts out.ts --format mpeg2ts", "out.ts: packets go into a .pcap or .pcapng file"},
        {"packetize in.ts out.pcap --format mpeg2ts --payload-type 96", "goes as payload type 33"},
        {"packetize in.ts out.pcap --format h264 --frame-rate 0", "'0' is no frame rate"},
        {"packetize in.ts out.pcap --format h264 --frame-rate 25/0", "'25/0' is no frame rate"},
        {"packetize in.ts out.pcap --format h264 --payload-type 128", "--payload-type"},
        {"packetize in.ts out.pcap --format h264 --sdp out.pcap", "named for two outputs"},
        {"packetize in.ts out.pcap --format h264 --parameter-sets both", "--parameter-sets"},
        {"units in.ts --format webm", "there is no format 'webm'"},
        {"protct in.ts out.pcap", "no command 'protct'"},
        {"--verbose", "no option '--verbose'"},
        {"", "a command is required"},
    };
    for (const auto& [arguments, reason] : cases) {
        const Outcome result = run(arguments);
        EXPECT_EQ(result.status, 2) << arguments;
        EXPECT_NE(result.text.find(reason), std::string::npos) << arguments << ": " << result.text;
        EXPECT_EQ(std::count(result.text.begin(), result.text.end(), '\n'), 1) << result.text;
    }
    EXPECT_EQ(fileCount(), 1u);
}

TEST_F(Protected, BrokenFilesGiveOneLineThatNamesThemAndLeaveNoOutput) {
    protect();
    const Bytes whole = load("fec.pcap");
    store("cut.pcap", Bytes(whole.begin(), whole.begin() + 100));
    store("empty.pcap", {});
    store("foreign.pcap", Bytes(5000, 'x'));
    store("foreign.ts", Bytes(5000, 'x'));
    const std::size_t before = fileCount();
    for (const std::string in : {"cut.pcap", "empty.pcap", "foreign.pcap", "missing.pcap", "foreign.ts"}) {
        const Outcome result = run("repair " + in + " out.ts");
        EXPECT_EQ(result.status, 1) << in;
        EXPECT_NE(result.text.find("mvrtpfec: " + in + ": "), std::string::npos) << result.text;
        EXPECT_EQ(std::count(result.text.begin(), result.text.end(), '\n'), 1) << result.text;
    }
    EXPECT_NE(run("repair fec.pcap out.ts --port 9000")
                  .text.find("fec.pcap: no usable RTP media packets to UDP port 9000"),
              std::string::npos);
    EXPECT_EQ(fileCount(), before);
    EXPECT_EQ(run("repair fec.pcap nowhere/out.ts").status, 1);
}

TEST_F(Protected, FileNamesMayBeInAnyScript) {
    protect();
    const std::string in = "t\u00f6st.pcap";
    const std::string out = "\u03a9 \u0436.ts";
    std::filesystem::rename(pathOf("fec.pcap"), pathOf("") / platform::pathFromUtf8(in));
    const Outcome result = run("repair " + in + " \"" + out + "\"");
    EXPECT_EQ(result.status, 0);
    EXPECT_TRUE(result.text.starts_with(in + " -> " + out + "\n")) << result.text;
    EXPECT_TRUE(std::filesystem::exists(pathOf("") / platform::pathFromUtf8(out)));
}

TEST_F(ProgramTest, FiltersComeFromTheModuleThatIsNamed) {
    const std::string simulate = "simulate --mode both --columns 5 --rows 5 --seed 3 --json figures.json ";
    const auto module = program().replace_filename("MVRtpFec.ax");
    std::filesystem::copy_file(module, pathOf("own.ax"));
    store("broken.ax", Bytes(99, 'x'));
    EXPECT_EQ(run(simulate + "--module own.ax").text, run(simulate).text);
    for (const std::string name : {"broken.ax", "missing.ax"}) {
        const Outcome result = run(simulate + "--module " + name);
        EXPECT_EQ(result.status, 1);
        EXPECT_NE(result.text.find(name), std::string::npos) << result.text;
        EXPECT_EQ(std::count(result.text.begin(), result.text.end(), '\n'), 1) << result.text;
    }
}

TEST_F(ProgramTest, ProgramWithoutModuleSaysWhatToDo) {
    const auto alone = pathOf("bin");
    std::filesystem::create_directory(alone);
    const auto copy = alone / program().filename();
    std::filesystem::copy_file(program(), copy);
    store("in.ts", sample());
    const std::string simulate = "simulate in.ts --mode both --columns 5 --rows 5";
    const Outcome lost = runProcess(copy, simulate, pathOf(""));
    EXPECT_EQ(lost.status, 1);
    EXPECT_NE(lost.text.find("name it with --module"), std::string::npos) << lost.text;

    const auto packaged = pathOf("lib") / "mvrtpfec";
    std::filesystem::create_directories(packaged);
    std::filesystem::copy_file(program().replace_filename("MVRtpFec.ax"), packaged / "MVRtpFec.ax");
    EXPECT_EQ(runProcess(copy, simulate, pathOf("")).status, 0);
}

TEST_F(ProgramTest, HelpAndVersionAreAnswered) {
    for (const std::string command : {"protect", "repair", "simulate", "packetize", "units"}) {
        const Outcome result = run(command + " --help");
        EXPECT_EQ(result.status, 0);
        EXPECT_NE(result.text.find("Examples:"), std::string::npos);
    }
    EXPECT_EQ(run("--version").text, "mvrtpfec " MVRTPFEC_VERSION "\n");
}

}  // namespace
}  // namespace mvrtpfec
