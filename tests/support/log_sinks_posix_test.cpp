#include <array>
#include <csignal>
#include <fstream>
#include <regex>
#include <string>
#include <thread>

#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <unistd.h>

#include "platform/process/system_figures.h"
#include "support/log/file_sink.h"
#include "support/log/network_sink.h"
#include "support/log/queued_logger.h"

namespace mvn::log {
namespace {

using namespace std::chrono_literals;

class NetworkSinkTest : public testing::Test {
protected:
    NetworkSinkTest() { EXPECT_EQ(socketpair(AF_UNIX, SOCK_DGRAM, 0, ends_.data()), 0); }
    ~NetworkSinkTest() override {
        close(ends_[0]);
        close(ends_[1]);
    }

    /// With the zero byte.
    std::string receive() const {
        std::array<char, 2000> buffer{};
        const auto count = recv(ends_[1], buffer.data(), buffer.size(), MSG_DONTWAIT);
        return count < 0 ? "" : std::string(buffer.data(), static_cast<std::size_t>(count));
    }

    std::array<int, 2> ends_{};
};

TEST_F(NetworkSinkTest, SendsSyslogLinesWithTheirZeroByte) {
    NetworkSink sink(static_cast<platform::SocketHandle>(ends_[0]), "encoder", 10, 9999);
    const LogTime time{1'700'000'000, 7};
    const std::array<const char*, 5> priorities{"131", "132", "134", "135", "135"};
    const std::array<const char*, 5> counters{"9999", "0000", "0001", "0002", "0003"};
    for (std::uint32_t level = 0; level < priorities.size(); ++level) {
        sink.log({level, "text", time});
        const std::string line = receive();
        const std::regex expected(std::string("<") + priorities.at(level) +
                                  R"(>Nov 1[45] \d\d:\d\d:20 encoder )" + counters.at(level) + " text");
        ASSERT_FALSE(line.empty());
        EXPECT_EQ(line.back(), '\0');
        EXPECT_TRUE(std::regex_match(line.c_str(), expected)) << line;
    }
    sink.log({0, std::string(1039, 'x'), time});
    EXPECT_EQ(receive().size(), 1025U);
}

/// Files can't grow beyond a few bytes while it lives, as on a full disk.
class SmallFiles {
public:
    explicit SmallFiles(rlim_t most) {
        std::signal(SIGXFSZ, SIG_IGN);
        getrlimit(RLIMIT_FSIZE, &before_);
        rlimit limit = before_;
        limit.rlim_cur = most;
        setrlimit(RLIMIT_FSIZE, &limit);
    }
    ~SmallFiles() { setrlimit(RLIMIT_FSIZE, &before_); }

private:
    rlimit before_{};
};

TEST(FileSinkPosixTest, WaitsForRoomTellsItOnceAndLosesNothing) {
    std::string path = testing::TempDir() + "mvrtpfec-log-XXXXXX";
    close(mkstemp(path.data()));
    int complaints = 0;
    {
        std::vector<std::unique_ptr<LogSink>> sinks;
        sinks.push_back(std::make_unique<FileSink>(path, 2, FileSink::Opening::continued,
                                                   [&](const std::string&) { ++complaints; }));
        QueuedLogger logger(std::move(sinks));
        {
            const SmallFiles full(20);
            for (int i = 0; i < 3; ++i) logger.Log(1, "line %d", i);
            std::this_thread::sleep_for(1200ms);
        }
        std::this_thread::sleep_for(1200ms);
    }
    std::ifstream file(path);
    std::string line;
    for (int i = 0; i < 3; ++i) {
        ASSERT_TRUE(std::getline(file, line));
        EXPECT_TRUE(line.starts_with("[Level 1] ") && line.ends_with(" line " + std::to_string(i))) << line;
    }
    EXPECT_FALSE(std::getline(file, line));
    EXPECT_EQ(complaints, 1);
    unlink(path.c_str());
}

TEST(FileSinkPosixTest, AFullDeviceDoesNotHoldTheEndUp) {
    int complaints = 0;
    std::vector<std::unique_ptr<LogSink>> sinks;
    sinks.push_back(std::make_unique<FileSink>("/dev/full", 2, FileSink::Opening::continued,
                                               [&](const std::string&) { ++complaints; }));
    {
        QueuedLogger logger(std::move(sinks));
        for (int i = 0; i < 100; ++i) logger.Log(1, "line %d", i);
    }
    EXPECT_EQ(complaints, 1);
}

TEST(SystemFiguresTest, ComeFromTheKernel) {
    const auto before = platform::readSystemFigures();
    const std::string used(std::size_t{64} << 20, 'x');
    const int descriptor = dup(0);
    const auto start = std::chrono::steady_clock::now();
    while (std::chrono::steady_clock::now() - start < 100ms) {
    }
    const auto after = platform::readSystemFigures();
    close(descriptor);
    EXPECT_GE(after.workingSet, before.workingSet + used.size() / 10 * 9);
    EXPECT_GE(after.privateBytes, before.privateBytes + used.size() / 10 * 9);
    EXPECT_EQ(after.handleCount, before.handleCount + 1);
    EXPECT_GT(after.processUserTime + after.processKernelTime,
              before.processUserTime + before.processKernelTime);
    EXPECT_GT(after.kernelTime + after.userTime, before.kernelTime + before.userTime);
    EXPECT_GT(after.committedBytes, 0U);
}

}  // namespace
}  // namespace mvn::log
