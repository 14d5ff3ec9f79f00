#include "support/log/queued_logger.h"

#include <array>
#include <chrono>
#include <condition_variable>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <mutex>
#include <regex>
#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include "support/log/file_sink.h"

namespace mvn::log {
namespace {

/// Keeps what it gets; can be held up.
class KeepingSink final : public LogSink {
public:
    struct Kept {
        std::mutex mutex;
        std::condition_variable changed;
        bool isBlocked = false;
        bool isWaiting = false;
        std::vector<LogRecord> records;

        void setBlocked(bool blocked) {
            const std::lock_guard lock(mutex);
            isBlocked = blocked;
            changed.notify_all();
        }
        void waitUntilBlocked() {
            std::unique_lock lock(mutex);
            changed.wait(lock, [this] { return isWaiting; });
        }
    };

    explicit KeepingSink(Kept& kept, std::int32_t maximumLevel = 3) : LogSink(maximumLevel), kept_(kept) {}

private:
    void write(const LogRecord& record) override {
        std::unique_lock lock(kept_.mutex);
        kept_.isWaiting = true;
        kept_.changed.notify_all();
        kept_.changed.wait(lock, [this] { return !kept_.isBlocked; });
        kept_.records.push_back(record);
    }

    Kept& kept_;
};

std::vector<std::unique_ptr<LogSink>> only(std::unique_ptr<LogSink> sink) {
    std::vector<std::unique_ptr<LogSink>> all;
    all.push_back(std::move(sink));
    return all;
}

LogTime someTime() {
    return {1'700'000'000, 7};
}

TEST(QueuedLoggerTest, MessagesAreOneLineCutToTheBufferAndOfALevelThatTheSinkTakes) {
    KeepingSink::Kept kept;
    {
        QueuedLogger logger(only(std::make_unique<KeepingSink>(kept, 2)), someTime);
        logger.Log(1, "a\r\nb %d%%", 5);
        logger.Log(3, "too chatty");
        logger.Log(0xFFFFFFFF, "signed: %s", "the gravest of all");
        logger.Log(2, "%s", std::string(2000, 'x').c_str());
    }
    ASSERT_EQ(kept.records.size(), 3U);
    EXPECT_EQ(kept.records[0].text, "a b 5%");
    EXPECT_EQ(kept.records[0].time.milliseconds, 7U);
    EXPECT_EQ(kept.records[1].text, "signed: the gravest of all");
    EXPECT_EQ(kept.records[2].text, std::string(1039, 'x'));
}

TEST(QueuedLoggerTest, ASinkThatWaitsHoldsNobodyUpAndTheOverflowIsToldOnce) {
    KeepingSink::Kept kept;
    kept.isBlocked = true;
    {
        QueuedLogger logger(only(std::make_unique<KeepingSink>(kept)), someTime);
        logger.Log(2, "taken by the sink");
        kept.waitUntilBlocked();
        for (int i = 0; i < 1100; ++i) logger.Log(2, "%d", i);
        kept.setBlocked(false);
    }
    ASSERT_EQ(kept.records.size(), 1002U);
    EXPECT_EQ(kept.records[1000].text, "999");
    EXPECT_EQ(kept.records[1001].text, "Overflowed message queue.");
    EXPECT_EQ(kept.records[1001].level, 0U);
}

TEST(QueuedLoggerTest, TakesMessagesAgainOnceTheQueueWasEmptied) {
    KeepingSink::Kept kept;
    kept.isBlocked = true;
    QueuedLogger logger(only(std::make_unique<KeepingSink>(kept)), someTime);
    for (int i = 0; i < 1500; ++i) logger.Log(2, "%d", i);
    kept.setBlocked(false);
    const auto last = [&] {
        const std::lock_guard lock(kept.mutex);
        return kept.records.empty() ? std::string() : kept.records.back().text;
    };
    while (last() != "Overflowed message queue.") std::this_thread::yield();
    logger.Log(2, "again");
    while (last() != "again") std::this_thread::yield();
}

TEST(QueuedLoggerTest, NothingIsLostOrTornBetweenManyThreads) {
    KeepingSink::Kept kept;
    {
        QueuedLogger logger(only(std::make_unique<KeepingSink>(kept)));
        std::vector<std::thread> threads;
        for (int t = 0; t < 4; ++t)
            threads.emplace_back([&logger, t] {
                for (int i = 0; i < 200; ++i) logger.Log(2, "%d:%d", t, i);
            });
        for (auto& thread : threads) thread.join();
    }
    std::array<int, 4> next{};
    for (const auto& record : kept.records) {
        const auto from = static_cast<std::size_t>(record.text[0] - '0');
        EXPECT_EQ(record.text, std::to_string(from) + ":" + std::to_string(next.at(from)++));
    }
    EXPECT_EQ(kept.records.size(), 800U);
}

class FileSinkTest : public testing::Test {
protected:
    FileSinkTest() { std::filesystem::remove(path_); }
    ~FileSinkTest() override { std::filesystem::remove(path_); }

    void log(FileSink::Opening opening, const char* text) {
        QueuedLogger logger(only(std::make_unique<FileSink>(path_, 2, opening, nullptr)), someTime);
        logger.Log(1, "%s", text);
    }
    std::string content() const {
        std::ifstream file(path_, std::ios::binary);
        return {std::istreambuf_iterator<char>(file), {}};
    }

    const std::filesystem::path path_ =
        std::filesystem::temp_directory_path() /
        ("mvrtpfec-log-" + std::to_string(std::chrono::steady_clock::now().time_since_epoch().count()));
};

TEST_F(FileSinkTest, WritesLinesAtTheEndOrAnew) {
    log(FileSink::Opening::continued, "first");
    log(FileSink::Opening::continued, "second");
    const std::regex lines(
        R"(\[Level 1\] Tue Nov 14 \d\d:\d\d:20\.007 first\n\[Level 1\] Tue Nov 14 \d\d:\d\d:20\.007 second\n)");
    const std::regex nextDay(R"((.|\n)*Wed Nov 15(.|\n)*)");
    EXPECT_TRUE(std::regex_match(content(), lines) || std::regex_match(content(), nextDay)) << content();
    log(FileSink::Opening::replaced, "third");
    EXPECT_EQ(content().find("first"), std::string::npos);
    EXPECT_THROW(FileSink(path_ / "none", 2, FileSink::Opening::continued, nullptr), std::system_error);
}

}  // namespace
}  // namespace mvn::log
