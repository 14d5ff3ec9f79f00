#include <thread>

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include "tests/host/program_run.h"
#include "tests/host/sample_streams.h"

namespace mvrtpfec {
namespace {

/// Sanitizers keep freed memory for a while, the more the longer the program runs.
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr bool sanitized = true;
#else
constexpr bool sanitized = false;
#endif

class ProgramMemory : public ProgramTest {
protected:
    /// A capture of the sample `copies` times over, with its FEC.
    void protectLong(int copies, const std::string& name) {
        Bytes stream;
        for (const Bytes once = sample(); copies > 0; --copies)
            stream.insert(stream.end(), once.begin(), once.end());
        store("long.ts", stream);
        const Outcome result = run("protect long.ts " + name + " --mode both --columns 10 --rows 10");
        ASSERT_EQ(result.status, 0) << result.text;
    }

    /// A stream of the samples `copies` times over.
    void repeat(const std::string& name, int copies, const std::string& as) const {
        Bytes stream;
        for (const Bytes once = streamBytes(name); copies > 0; --copies)
            stream.insert(stream.end(), once.begin(), once.end());
        store(as, stream);
    }

    std::int64_t repairPeak(const std::string& capture) const {
        return peak({"repair", pathOf(capture).string(), pathOf("out.ts").string(), "--guard", "on"});
    }

    std::int64_t packetizePeak(const std::string& stream, const std::string& format) const {
        return peak({"packetize", pathOf(stream).string(), pathOf("out.pcap").string(), "--format", format});
    }

private:
    /// Peak resident memory of one run, in KiB.
    static std::int64_t peak(std::vector<std::string> words) {
        words.insert(words.begin(), "mvrtpfec");
        std::vector<char*> arguments;
        for (std::string& word : words) arguments.push_back(word.data());
        arguments.push_back(nullptr);
        const pid_t child = fork();
        if (child == 0) {
            close(STDOUT_FILENO);
            static_cast<void>(open("/dev/null", O_WRONLY));
            execv(program().c_str(), arguments.data());
            _exit(127);
        }
        int status = -1;
        rusage usage{};
        EXPECT_EQ(wait4(child, &status, 0, &usage), child);
        EXPECT_EQ(status, 0);
        return usage.ru_maxrss;
    }
};

TEST_F(ProgramMemory, DoesNotGrowWithTheCapture) {
    if (sanitized) GTEST_SKIP() << "a sanitized program keeps what it frees";
    protectLong(2, "short.pcap");
    protectLong(20, "long.pcap");
    EXPECT_LT(repairPeak("long.pcap"), repairPeak("short.pcap") + 1024);
}

/// Pictures that no unit parts, and frames.
TEST_F(ProgramMemory, DoesNotGrowWithTheStream) {
    if (sanitized) GTEST_SKIP() << "a sanitized program keeps what it frees";
    for (const std::string name : {"h264_plain.264", "aac_lc.aac", "mpeg4.m4v"}) {
        const std::string format(formatOfStream(name)->name);
        repeat(name, 4, "short");
        repeat(name, 400, "long");
        EXPECT_LT(packetizePeak("long", format), packetizePeak("short", format) + 1024) << name;
    }
}

class ProgramOutput : public ProgramTest {
protected:
    ProgramOutput() { store("in.ts", sample()); }

    /// What a terminal shows of a shell's line.
    std::string onTerminal(const std::string& line) const {
        const int terminal = posix_openpt(O_RDWR | O_NOCTTY);
        EXPECT_TRUE(grantpt(terminal) == 0 && unlockpt(terminal) == 0);
        const std::string name = ptsname(terminal);
        const int side = open(name.c_str(), O_RDWR | O_NOCTTY);
        std::string shown;
        std::thread reader([&] {
            for (char c = 0; read(terminal, &c, 1) == 1;) shown += c;
        });
        runProcess("/bin/sh", "-c '" + line + "' >" + name + " 2>&1 #", pathOf(""));
        close(side);
        reader.join();
        close(terminal);
        return shown;
    }
};

TEST_F(ProgramOutput, FullDeviceFailsTheRun) {
    for (const std::string command :
         {"simulate --preset lean --json /dev/full 2>&1 #", "simulate --preset lean --json -",
          "simulate --preset lean", "units in.ts --format mpeg2ts", "selftest", "--version",
          "receive --help"}) {
        const Outcome result = run(command + " 2>&1 >/dev/full #");
        EXPECT_EQ(result.status, 1) << command;
        EXPECT_NE(result.text.find("No space left on device"), std::string::npos) << result.text;
    }
}

TEST_F(ProgramOutput, AReaderWhoHasEnoughIsNoError) {
    const std::string units = program().string() + " units in.ts --format mpeg2ts";
    EXPECT_EQ(
        runProcess("/bin/sh", "-c '(" + units + "; echo status $? >&2) | head -n 1 >first'", pathOf("")).text,
        "status 0\n");
    EXPECT_EQ(load("first").size(), 40U);
}

TEST_F(ProgramOutput, AMessageEndsTheStatusLineAndLeavesNoColour) {
    const std::string send =
        program().string() + " send in.ts --preset lean --bitrate 100M --to 127.0.0.1:47316; ";
    const std::string shown =
        onTerminal("(sleep 0.4; " + send + send + ") >/dev/null 2>&1 & timeout -s INT 2.5 " +
                   program().string() + " receive --from 127.0.0.1:47316 null --stats 0.1 --log -");
    EXPECT_NE(shown.find(" the source began anew"), std::string::npos) << shown;
    const std::string status = "\033[?7h";
    for (auto at = shown.find(status); at != std::string::npos; at = shown.find(status, at + 1))
        EXPECT_EQ(shown.at(at + status.size()), '\r') << shown.substr(at);
    EXPECT_TRUE(shown.ends_with("ends\r\n\033[0m")) << shown;
}

TEST_F(ProgramOutput, TheProgressBarFitsIntoFortyColumns) {
    ASSERT_EQ(run("protect in.ts fec.pcap --preset low-delay").status, 0);
    const std::string shown = onTerminal(
        "mkfifo slow.pcap; (head -c 99999 fec.pcap; sleep 1.2; tail -c +100000 fec.pcap) >slow.pcap & " +
        program().string() + " repair slow.pcap out.ts");
    const auto begins = shown.find("\033[?7l");
    ASSERT_NE(begins, std::string::npos) << shown;
    EXPECT_LT(shown.find("\033[?7h") - begins - 5, 40U) << shown;
}

}  // namespace
}  // namespace mvrtpfec
