#pragma once

#include <atomic>
#include <chrono>
#include <cstdarg>
#include <cstdint>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include "core/big_endian.h"
#include "rtp_media/send/rtp_scheduler.h"
#include "tests/rtp_media/chain/collected_units.h"
#include "tests/rtp_media/send/hand_scheduler.h"

namespace mvrtpfec::test {

/// An output that keeps what it gets, and fails or blocks when told.
class KeepingOutput : public IOutputPin {
public:
    struct Kept {
        Bytes bytes;
        REFERENCE_TIME time;
    };

    HRESULT Deliver(IMediaData* data) override {
        if (const HRESULT failure = result; FAILED(failure)) return failure;
        BYTE* bytes = nullptr;
        data->GetPointer(&bytes);
        REFERENCE_TIME start = -1;
        REFERENCE_TIME stop = -1;
        const HRESULT timed = data->GetTime(&start, &stop);
        EXPECT_TRUE(timed == VFW_S_NO_STOP_TIME || timed == VFW_E_SAMPLE_TIME_NOT_SET);
        const std::lock_guard guard(mutex_);
        kept_.push_back({Bytes(bytes, bytes + data->GetActualDataLength()), start});
        return S_OK;
    }
    HRESULT DeliverEndOfStream() override {
        ++ends;
        return result;
    }
    HRESULT GetDeliveryBuffer(IMediaData** data, REFERENCE_TIME*, REFERENCE_TIME*, DWORD) override {
        while (isBlocked) std::this_thread::sleep_for(std::chrono::milliseconds(1));
        if (const HRESULT refusal = bufferResult; refusal != S_OK) return refusal;
        *data = SimpleMediaData::create(Bytes(bufferSize)).Detach();
        return S_OK;
    }
    HRESULT DecideBufferSize(IMemAllocator*, ALLOCATOR_PROPERTIES*) override { return S_OK; }
    HRESULT Active() override { return S_OK; }
    HRESULT Inactive() override { return S_OK; }

    std::vector<Kept> take() {
        const std::lock_guard guard(mutex_);
        return std::exchange(kept_, {});
    }

    std::size_t bufferSize = 1500;
    std::atomic<HRESULT> result{S_OK};
    std::atomic<HRESULT> bufferResult{S_OK};
    std::atomic<bool> isBlocked{false};
    std::atomic<int> ends{0};

private:
    std::mutex mutex_;
    std::vector<Kept> kept_;
};

/// Keeps the log lines, "LEVEL text", and the latenesses.
class KeepingLog : public mvn::log::DummyLogPerf {
public:
    [[gnu::format(printf, 3, 4)]] void Log(std::uint32_t level, const char* format, ...) override {
        char text[512];
        va_list arguments;
        va_start(arguments, format);
        std::vsnprintf(text, sizeof text, format, arguments);
        va_end(arguments);
        lines.push_back(std::to_string(level) + " " + text);
    }
    void AddPoliticChoices(std::int32_t amount) override { latenesses.push_back(amount); }

    std::vector<std::string> lines;
    std::vector<std::int32_t> latenesses;
};

/// A parser that gives out what it is told to.
class HandParser : public NALBuilder {
public:
    void input(IMediaData*) override {}
    void flush() override { endOfStream(); }

    /// A picture of MPEG-4 Visual, one packet of `size` payload bytes.
    void picture(REFERENCE_TIME time, std::size_t size = 20, bool discontinuity = false) {
        Bytes bytes(size, 0x55);
        bytes[0] = bytes[1] = 0;
        bytes[2] = 1;
        bytes[3] = 0xB6;
        give(StreamType::mpeg4Visual, bytes, time, discontinuity);
    }
    /// A frame of ADTS, 48 kHz, its packet 4 + 9 bytes.
    void frame(REFERENCE_TIME time) {
        give(StreamType::aacAdts, {0xFF, 0xF1, 0x4C, 0x80, 0x02, 0x1F, 0xFC, 1, 2, 3, 4, 5, 6, 7, 8, 9}, time,
             false);
    }

private:
    void give(StreamType type, const Bytes& bytes, REFERENCE_TIME time, bool discontinuity) {
        auto unit = std::make_unique<NAL>(type, static_cast<std::int32_t>(bytes.size()));
        unit->append(bytes);
        unit->timing.hasPts = 1;
        unit->timing.pts = time;
        unit->timing.discontinuity = discontinuity;
        emit(std::move(unit));
    }
};

struct SchedulerTest : testing::Test {
    struct Lane {
        HandParser parser;
        KeepingOutput media;
        KeepingOutput reports;
    };

    static RTPSchedulerSettings settings() {
        RTPSchedulerSettings made;
        made.names = {"enc.01 main", "10.0.0.1", "session", std::nullopt, "239.1.2.3"};
        made.cname = "me";
        made.wallClock = [] { return std::uint64_t{1'700'000'000'250}; };
        return made;
    }

    void add(std::uint32_t id, StreamType type, Lane& lane) {
        scheduler.addStream(id, type, 5000 + id, 96, &lane.media, &lane.reports, &lane.parser, 64000,
                            ParameterSetMode::sdp);
    }

    /// `ms` after the clock's start.
    REFERENCE_TIME at(std::int64_t ms) const {
        return 1000 * HandClock::second + ms * HandClock::millisecond;
    }
    void roundAt(std::int64_t ms) {
        clock.now = at(ms);
        scheduler.round();
    }

    HandClock clock;
    KeepingLog log;
    Lane video;
    Lane audio;
    HandScheduler scheduler{&clock, settings()};

    SchedulerTest() { scheduler.setLogger(&log); }
};

}  // namespace mvrtpfec::test
