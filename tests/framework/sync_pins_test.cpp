#include <cstring>
#include <functional>
#include <random>
#include <thread>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "framework/sync/sync_input_pin.h"
#include "framework/sync/sync_output_pin.h"
#include "platform/component/component_runtime.h"
#include "platform/graph/media_graph.h"
#include "tests/shared/test_filters.h"

namespace mvrtpfec {
namespace {

constexpr std::uint64_t systemClock = 90'000;
constexpr std::uint64_t wrap33 = std::uint64_t{1} << 33;

// The text of the conversion in integers that are wide enough for anything.
__extension__ using Wide = __int128;

Wide converted(std::uint64_t rate, std::uint64_t modulus, std::uint64_t reference, std::int64_t time,
               std::uint64_t clock) {
    const auto roundedTime = [&](Wide ticks) { return (ticks * 20'000'000 + rate) / (2 * Wide{rate}); };
    const auto distance = [&](std::uint64_t from, std::uint64_t to) {
        return (Wide{to} - from + modulus) % modulus;
    };
    const Wide before = distance(clock, reference);
    const Wide after = distance(reference, clock);
    const Wide result = before < after ? time - roundedTime(before) : time + roundedTime(after);
    return result < 0 ? result + roundedTime(modulus) : result;
}

TEST(SynchronizerTest, AgreesWithWideArithmetic) {
    std::mt19937_64 random(1);
    // 192 kHz and above 10 MHz there are halves to round.
    const std::vector<std::uint64_t> rates{1,          3,          1'000,         8'000,      44'100,
                                           48'000,     90'000,     192'000,       9'999'999,  10'000'000,
                                           20'000'000, 27'000'000, 1'000'000'007, 0xFFFFFFFF, 0x100000000};
    for (const std::uint64_t rate : rates) {
        for (int bits = 8; bits <= 63; ++bits) {
            const std::uint64_t modulus = (std::uint64_t{1} << bits) - (bits % 2 == 0 ? 0 : random() % 100);
            // What the result's 63 bits hold.
            if (Wide{modulus} * 10'000'000 / rate >= Wide{1} << 62) continue;
            CSynchronizer synchronizer(rate, modulus);
            for (int i = 0; i < 200; ++i) {
                const std::uint64_t reference = i % 3 == 0 ? modulus - 1 - random() % 5 : random() % modulus;
                const std::uint64_t clock = i % 5 == 0   ? random() % 5
                                            : i % 7 == 0 ? (reference + modulus / 2) % modulus
                                                         : random() % modulus;
                const auto size = static_cast<std::int64_t>(random() % (std::uint64_t{1} << (i % 60)));
                const std::int64_t time = i % 4 == 0 ? -size : size;
                synchronizer.SetReference(reference, time);
                ASSERT_EQ(Wide{synchronizer.ClockToReferenceTime(clock)},
                          converted(rate, modulus, reference, time, clock))
                    << rate << " " << modulus << " " << reference << " " << time << " " << clock;
            }
        }
    }
}

class SourcePin final : public CSyncOutputPin {
public:
    SourcePin(CBaseFilter* filter, CCritSec* lock, HRESULT* result, LPCWSTR name)
        : CSyncOutputPin("SourcePin", filter, lock, result, name) {}
};

/// What comes in can be looked at, and what happens amid a Receive arranged.
class WatchedPin final : public CSyncInputPin {
public:
    WatchedPin(CBaseFilter* filter, CCritSec* lock, HRESULT* result, LPCWSTR name)
        : CSyncInputPin("WatchedPin", filter, lock, result, name, wrap33, systemClock) {}

    std::function<void()> onceChecked = [] {};
    REFERENCE_TIME lastDuration = -1;

    STDMETHODIMP Receive(IMediaSample* sample) override {
        REFERENCE_TIME start = 0;
        REFERENCE_TIME stop = 0;
        if (sample->GetTime(&start, &stop) == S_OK) lastDuration = stop - start;
        return CSyncInputPin::Receive(sample);
    }
    HRESULT CheckStreaming() override {
        const HRESULT result = CSyncInputPin::CheckStreaming();
        std::exchange(onceChecked, [] {})();
        return result;
    }
};

class SyncPinsTest : public ::testing::Test {
protected:
    void SetUp() override {
        ASSERT_EQ(platform::createFilterGraph(&graph_), S_OK);
        control_ = queryFor<IMediaControl>(graph_, IID_IMediaControl);
        events_ = queryFor<IMediaEvent>(graph_, IID_IMediaEvent);
        ASSERT_EQ(graph_->AddFilter(source_, nullptr), S_OK);
        ASSERT_EQ(graph_->AddFilter(sink_, nullptr), S_OK);
        ASSERT_EQ(graph_->ConnectDirect(&source_->pin(), &sink_->pin(), nullptr), S_OK);
    }

    void run() {
        ASSERT_GE(control_->Run(), 0);
        OAFilterState state = -1;
        ASSERT_GE(control_->GetState(5000, &state), 0);
    }

    /// Hands the input pin a sample as somebody else might.
    HRESULT receive(const std::vector<BYTE>& bytes, REFERENCE_TIME start) {
        CComPtr<IMemAllocator> allocator;
        CComPtr<IMediaSample> sample;
        BYTE* buffer = nullptr;
        REFERENCE_TIME stop = start + 1;
        EXPECT_EQ(sink_->pin().GetAllocator(&allocator), S_OK);
        EXPECT_EQ(allocator->GetBuffer(&sample, nullptr, nullptr, 0), S_OK);
        EXPECT_EQ(sample->GetPointer(&buffer), S_OK);
        std::memcpy(buffer, bytes.data(), bytes.size());
        EXPECT_EQ(sample->SetActualDataLength(static_cast<LONG>(bytes.size())), S_OK);
        EXPECT_EQ(sample->SetTime(&start, &stop), S_OK);
        return sink_->pin().Receive(sample);
    }

    int syncEvents() const {
        int count = 0;
        LONG code = 0;
        LONG_PTR first = -1;
        LONG_PTR second = -1;
        while (events_->GetEvent(&code, &first, &second, 100) == S_OK) {
            if (code == EC_SYNC_READY && first == 0 && second == 0) ++count;
            events_->FreeEventParams(code, first, second);
        }
        return count;
    }

    const platform::ComponentRuntime runtime_;
    CComPtr<IGraphBuilder> graph_;
    CComPtr<IMediaControl> control_;
    CComPtr<IMediaEvent> events_;
    CComPtr<TestFilter<SourcePin>> source_{new TestFilter<SourcePin>(1)};
    CComPtr<TestFilter<WatchedPin>> sink_{new TestFilter<WatchedPin>(1)};
};

TEST_F(SyncPinsTest, ReferencesReachTheOtherFilterAndTheGraphHearsOfTheFirst) {
    EXPECT_FALSE(sink_->pin().IsSynchronized());
    for (int round = 0; round < 2; ++round) {
        run();
        std::thread streaming([&] {
            for (int i = 0; i < 20; ++i)
                source_->pin().SetReference(wrap33 - 900 + 90 * static_cast<std::uint64_t>(i),
                                            1'000'000 + 10'000 * i);
        });
        streaming.join();
        EXPECT_TRUE(sink_->pin().IsSynchronized());
        EXPECT_EQ(sink_->pin().ClockToReferenceTime(0), 1'100'000);
        EXPECT_EQ(sink_->pin().ClockToReferenceTime(0xFFFFFFFF % wrap33),
                  1'100'000 + 0xFFFFFFFFLL * 1000 / 9);
        EXPECT_EQ(sink_->pin().lastDuration, 1);
        EXPECT_EQ(syncEvents(), 1);
        ASSERT_EQ(control_->Stop(), S_OK);
        EXPECT_FALSE(sink_->pin().IsSynchronized());
        source_->pin().SetReference(5, 5);
        EXPECT_FALSE(sink_->pin().IsSynchronized()) << "stopped";
    }
}

TEST_F(SyncPinsTest, AgreeOnClockSamplesAloneAndOnTheirBuffers) {
    const CMediaType type(MEDIATYPE_Sync, MEDIASUBTYPE_Sync);
    EXPECT_EQ(source_->pin().CheckMediaType(&type), S_OK);
    EXPECT_EQ(sink_->pin().CheckMediaType(nullptr), E_POINTER);
    const CMediaType other(MEDIATYPE_Sync, MEDIATYPE_Sync);
    EXPECT_EQ(sink_->pin().CheckMediaType(&other), S_FALSE);
    CMediaType offered;
    EXPECT_EQ(sink_->pin().GetMediaType(0, &offered), S_OK);
    EXPECT_TRUE(offered == type);
    EXPECT_EQ(sink_->pin().GetMediaType(1, &offered), VFW_S_NO_MORE_ITEMS);

    CComPtr<IMemAllocator> allocator;
    ASSERT_EQ(sink_->pin().GetAllocator(&allocator), S_OK);
    ALLOCATOR_PROPERTIES request{1, 100, 0, 7};
    ALLOCATOR_PROPERTIES set{};
    ASSERT_EQ(source_->pin().DecideBufferSize(allocator, &request), S_OK);
    ASSERT_EQ(allocator->GetProperties(&set), S_OK);
    EXPECT_EQ(set.cBuffers, 4);
    EXPECT_EQ(set.cbBuffer, 100);
    EXPECT_EQ(set.cbAlign, 1);
    EXPECT_EQ(set.cbPrefix, 0);
}

TEST_F(SyncPinsTest, ASampleOfAnotherLengthChangesNothing) {
    run();
    EXPECT_EQ(receive({9, 8, 7, 6, 1, 0, 0}, 70), E_FAIL);
    EXPECT_FALSE(sink_->pin().IsSynchronized());
    EXPECT_EQ(receive({9, 8, 7, 6, 1, 0, 0, 0}, 7), S_OK);
    EXPECT_EQ(receive({1, 0, 0, 0, 0, 0, 0, 0, 0}, 90), E_FAIL);
    EXPECT_EQ(sink_->pin().ClockToReferenceTime(0x0106070809), 7);
    EXPECT_EQ(syncEvents(), 1);
    ASSERT_EQ(control_->Stop(), S_OK);
}

TEST_F(SyncPinsTest, AReferenceTakenAmidAStopIsForgottenAtTheNextStart) {
    run();
    sink_->pin().onceChecked = [&] { sink_->Stop(); };
    source_->pin().SetReference(5, 5);
    ASSERT_EQ(control_->Stop(), S_OK);
    syncEvents();
    run();
    EXPECT_FALSE(sink_->pin().IsSynchronized());
    source_->pin().SetReference(6, 6);
    EXPECT_EQ(syncEvents(), 1);
    ASSERT_EQ(control_->Stop(), S_OK);
}

}  // namespace
}  // namespace mvrtpfec
