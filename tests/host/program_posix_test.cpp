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

TEST_F(ProgramTest, FullDeviceFailsTheRun) {
    const Outcome result = run("simulate --mode both --columns 5 --rows 5 --json /dev/full");
    EXPECT_EQ(result.status, 1);
    EXPECT_NE(result.text.find("No space left on device"), std::string::npos) << result.text;
}

}  // namespace
}  // namespace mvrtpfec
