#include <atomic>
#include <chrono>
#include <cstdint>
#include <cstring>
#include <future>
#include <limits>
#include <set>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include "framework/base/com_ptr.h"
#include "framework/base/mem_allocator.h"

namespace mvrtpfec::testing {
namespace {

constexpr LONG largest = std::numeric_limits<LONG>::max();

class Allocator : public ::testing::Test {
protected:
    Allocator() { EXPECT_EQ(CreateMemoryAllocator(&allocator), S_OK); }

    HRESULT ask(ALLOCATOR_PROPERTIES request) { return allocator->SetProperties(&request, &actual); }
    void commit(LONG count, LONG size = 100, LONG align = 1, LONG prefix = 0) {
        ASSERT_EQ(ask({count, size, align, prefix}), S_OK);
        ASSERT_EQ(allocator->Commit(), S_OK);
    }
    HRESULT take(CComPtr<IMediaSample>& sample, DWORD flags = AM_GBF_NOWAIT) {
        sample.Release();
        return allocator->GetBuffer(&sample, nullptr, nullptr, flags);
    }
    std::vector<CComPtr<IMediaSample>> takeAll() {
        std::vector<CComPtr<IMediaSample>> samples;
        for (CComPtr<IMediaSample> sample; take(sample) == S_OK;) samples.push_back(sample);
        return samples;
    }
    static BYTE* payload(IMediaSample* sample) {
        BYTE* pointer = nullptr;
        sample->GetPointer(&pointer);
        return pointer;
    }
    LONG freeCount() {
        LONG count = -1;
        const auto callbacks = queryFor<IMemAllocatorCallbackTemp>(allocator, IID_IMemAllocatorCallbackTemp);
        callbacks->GetFreeCount(&count);
        return count;
    }

    CComPtr<IMemAllocator> allocator;
    ALLOCATOR_PROPERTIES actual{};
};

TEST_F(Allocator, refusesPropertiesThatMakeNoPool) {
    EXPECT_EQ(allocator->Commit(), VFW_E_SIZENOTSET);
    for (const LONG align : {LONG{0}, LONG{-1}, LONG{3}, std::numeric_limits<LONG>::min()})
        EXPECT_EQ(ask({1, 1, align, 0}), VFW_E_BADALIGN);
    const ALLOCATOR_PROPERTIES bad[] = {{0, 1, 1, 0},  {-1, 1, 1, 0},      {1, 0, 1, 0},      {1, -1, 1, 0},
                                        {1, 1, 1, -1}, {1, largest, 1, 1}, {1, largest, 2, 0}};
    for (const auto& properties : bad) EXPECT_EQ(ask(properties), E_INVALIDARG);
    ALLOCATOR_PROPERTIES good{1, 1, 1, 0};
    EXPECT_EQ(allocator->SetProperties(nullptr, &good), E_POINTER);
    EXPECT_EQ(allocator->SetProperties(&good, nullptr), E_POINTER);
    EXPECT_EQ(allocator->GetProperties(nullptr), E_POINTER);
    EXPECT_EQ(allocator->GetBuffer(nullptr, nullptr, nullptr, 0), E_POINTER);
    EXPECT_EQ(allocator->ReleaseBuffer(nullptr), E_POINTER);
    EXPECT_EQ(allocator->GetProperties(&actual), S_OK);
    EXPECT_EQ(actual.cBuffers, 0) << "refusals leave nothing behind";
}

TEST_F(Allocator, propertiesChangeOnlyWithEverySampleHome) {
    commit(2);
    CComPtr<IMediaSample> sample;
    ASSERT_EQ(take(sample), S_OK);
    EXPECT_EQ(ask({1, 1, 1, 0}), VFW_E_ALREADY_COMMITTED);
    allocator->Decommit();
    EXPECT_EQ(ask({1, 1, 1, 0}), VFW_E_BUFFERS_OUTSTANDING);
    sample.Release();
    EXPECT_EQ(ask({1, 1, 1, 0}), S_OK);
}

TEST_F(Allocator, buffersAreAlignedApartAndWhollyUsable) {
    commit(3, 100, 64, 12);
    EXPECT_EQ(actual.cbBuffer, 116);
    const auto samples = takeAll();
    ASSERT_EQ(samples.size(), 3u);
    std::set<BYTE*> starts;
    for (const auto& sample : samples) {
        EXPECT_EQ(sample->GetSize(), 116);
        BYTE* start = payload(sample) - 12;
        EXPECT_EQ(reinterpret_cast<std::uintptr_t>(start) % 64, 0u);
        std::memset(start, 0xAA, 128);
        starts.insert(start);
    }
    EXPECT_EQ(*starts.rbegin() - *starts.begin(), 256);
}

TEST_F(Allocator, memoryStaysUntilThePropertiesChange) {
    commit(1, 100);
    CComPtr<IMediaSample> sample;
    take(sample);
    const auto* first = sample.p;
    sample.Release();
    allocator->Decommit();
    EXPECT_EQ(take(sample), VFW_E_NOT_COMMITTED);
    commit(1, 100);
    take(sample);
    EXPECT_EQ(sample.p, first);
    sample.Release();
    allocator->Decommit();
    commit(3, 5000);
    EXPECT_EQ(takeAll().size(), 3u);
    EXPECT_EQ(freeCount(), 3);
}

TEST_F(Allocator, commitTakesBackAPendingDecommit) {
    commit(2);
    CComPtr<IMediaSample> kept, other;
    take(kept);
    EXPECT_EQ(freeCount(), 1);
    allocator->Decommit();
    EXPECT_EQ(take(other), VFW_E_NOT_COMMITTED);
    EXPECT_EQ(allocator->Commit(), S_OK);
    EXPECT_EQ(take(other), S_OK);
    CComPtr<IMediaSample> none;
    EXPECT_EQ(take(none), VFW_E_TIMEOUT);
    kept.Release();
    other.Release();
    EXPECT_EQ(takeAll().size(), 2u);
}

TEST_F(Allocator, livesWhileASampleIsOut) {
    const LONG before = CBaseObject::ObjectsActive();
    commit(1);
    CComPtr<IMediaSample> sample;
    take(sample);
    allocator->Decommit();
    allocator.Release();
    EXPECT_EQ(CBaseObject::ObjectsActive(), before);
    std::memset(payload(sample), 1, 100);
    sample.Release();
    EXPECT_EQ(CBaseObject::ObjectsActive(), before - 1);
}

TEST_F(Allocator, waitersAreServedInTurnOrSentAway) {
    using namespace std::chrono_literals;
    commit(1);
    CComPtr<IMediaSample> sample;
    std::vector<std::future<HRESULT>> waiters;
    const auto startWaiters = [&] {
        take(sample);
        waiters.clear();
        while (waiters.size() < 3)
            waiters.push_back(std::async(std::launch::async, [this] {
                CComPtr<IMediaSample> mine;
                return take(mine, 0);
            }));
    };
    startWaiters();
    EXPECT_EQ(waiters[0].wait_for(1ms), std::future_status::timeout);
    sample.Release();
    for (auto& waiter : waiters) EXPECT_EQ(waiter.get(), S_OK);

    startWaiters();
    for (auto& waiter : waiters) {
        // However soon the next commit follows, who waited before hears of the decommit.
        while (waiter.wait_for(1ms) == std::future_status::timeout) {
            allocator->Decommit();
            allocator->Commit();
        }
        EXPECT_EQ(waiter.get(), VFW_E_NOT_COMMITTED);
    }
}

TEST_F(Allocator, nothingIsLostAmongThreadsCommitsAndDecommits) {
    constexpr LONG pool = 3;
    commit(pool, 16);
    std::atomic<bool> stop{false};
    std::atomic<int> served{0};
    std::vector<std::thread> threads;
    for (int i = 0; i < 6; ++i) {
        threads.emplace_back([&, i] {
            CComPtr<IMediaSample> sample;
            while (!stop) {
                if (take(sample, i % 3 == 0 ? AM_GBF_NOWAIT : 0) != S_OK) continue;
                std::memset(payload(sample), i, 16);  // two owners of one buffer are a race
                ++served;
                sample.Release();
            }
        });
    }
    for (int round = 0; round < 300; ++round) {
        allocator->Decommit();
        if (round % 3 == 0) ask({pool, 16 + round % 2, 1, 0});
        ASSERT_EQ(allocator->Commit(), S_OK);
        for (const int before = served; served < before + 5;) std::this_thread::yield();
    }
    stop = true;
    allocator->Decommit();
    for (auto& thread : threads) thread.join();
    EXPECT_EQ(freeCount(), pool);
    ASSERT_EQ(allocator->Commit(), S_OK);
    EXPECT_EQ(takeAll().size(), static_cast<std::size_t>(pool));
}

/// Samples that lend a payload a use, as a program's own allocator makes them.
class LendingAllocator final : public CBaseAllocator {
public:
    LendingAllocator() : CBaseAllocator("Lending", nullptr) {}

    HRESULT lend(BYTE* payload, LONG length, CComPtr<IMediaSample>& lent) {
        CMediaSample* sample = nullptr;
        const HRESULT result = TakeSample(&sample, AM_GBF_NOWAIT);
        if (FAILED(result)) return result;
        sample->SetPointer(payload, length);
        lent.Attach(sample);
        return S_OK;
    }

    std::vector<BYTE*> home;
    int freed = 0;

protected:
    void OnRelease(CMediaSample& sample) noexcept override {
        BYTE* payload = nullptr;
        sample.GetPointer(&payload);
        home.push_back(payload);
        sample.SetPointer(nullptr, 0);
    }
    void Free() noexcept override { ++freed; }
};

TEST(DerivedAllocator, lendsPayloadsAndHearsWhenTheyComeHome) {
    CComPtr<LendingAllocator> allocator(new LendingAllocator);
    ALLOCATOR_PROPERTIES one{1, 1400, 1, 0};
    ASSERT_EQ(allocator->SetProperties(&one, &one), S_OK);
    ASSERT_EQ(allocator->Commit(), S_OK);
    BYTE payload[4]{};
    CComPtr<IMediaSample> sample, none;
    ASSERT_EQ(allocator->lend(payload, 4, sample), S_OK);
    EXPECT_EQ(sample->GetActualDataLength(), 4);
    EXPECT_EQ(allocator->lend(payload, 4, none), VFW_E_TIMEOUT);
    allocator->Decommit();
    EXPECT_EQ(allocator->freed, 0);
    EXPECT_TRUE(allocator->home.empty());
    sample.Release();
    EXPECT_EQ(allocator->home, std::vector<BYTE*>{payload});
    EXPECT_EQ(allocator->freed, 1);

    allocator->Commit();
    allocator->lend(payload, 4, sample);
    allocator->Decommit();
    allocator->Commit();
    sample.Release();
    EXPECT_EQ(allocator->freed, 1) << "the decommit was taken back";
}

/// Calls back into the allocator, as only a callback outside its lock can.
class TakingListener final : public IMemAllocatorNotifyCallbackTemp {
public:
    explicit TakingListener(IMemAllocator& allocator) : allocator_(allocator) {}

    STDMETHODIMP QueryInterface(REFIID, void**) override { return E_NOINTERFACE; }
    STDMETHODIMP_(ULONG) AddRef() override { return static_cast<ULONG>(++references); }
    STDMETHODIMP_(ULONG) Release() override { return static_cast<ULONG>(--references); }
    STDMETHODIMP NotifyRelease() override {
        ++calls;
        return allocator_.GetBuffer(&taken, nullptr, nullptr, AM_GBF_NOWAIT);
    }

    int references = 0;
    int calls = 0;
    CComPtr<IMediaSample> taken;

private:
    IMemAllocator& allocator_;
};

TEST_F(Allocator, listenerHearsOfEverySampleThatIsFreeAgain) {
    commit(1);
    TakingListener listener(*allocator.p);
    const auto callbacks = queryFor<IMemAllocatorCallbackTemp>(allocator, IID_IMemAllocatorCallbackTemp);
    callbacks->SetNotify(&listener);
    CComPtr<IMediaSample> sample;
    take(sample);
    sample.Release();
    EXPECT_EQ(listener.calls, 1);
    EXPECT_NE(listener.taken.p, nullptr);
    callbacks->SetNotify(nullptr);
    listener.taken.Release();
    EXPECT_EQ(listener.calls, 1);
    EXPECT_EQ(listener.references, 0);
}

}  // namespace
}  // namespace mvrtpfec::testing
