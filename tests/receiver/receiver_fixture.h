#pragma once

#include <array>
#include <chrono>
#include <cstdint>
#include <functional>
#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include "framework/base/mem_allocator.h"
#include "receiver/rtp_fec_in.h"
#include "tests/framework/test_filters.h"

namespace mvrtpfec {

using Packet = std::string;

/// A media packet whose payload and length follow from its number; `length` 0 for a usual one.
Packet mediaPacket(std::uint16_t number, std::size_t length = 0);
std::vector<Packet> mediaPackets(std::uint16_t first, std::size_t count);

/// Waits for what another thread is about to do; false when it doesn't.
template <class Condition>
bool soon(Condition condition) {
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(20);
    while (!condition()) {
        if (std::chrono::steady_clock::now() > deadline) return false;
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    return true;
}

/// A pool that gives out buffers of at most so many bytes, with every attribute set.
class OddAllocator final : public CMemAllocator {
public:
    explicit OddAllocator(LONG limit) : CMemAllocator(nullptr, nullptr), limit_(limit) {}

    STDMETHODIMP SetProperties(ALLOCATOR_PROPERTIES* request, ALLOCATOR_PROPERTIES* actual) override;
    STDMETHODIMP GetBuffer(IMediaSample** buffer, REFERENCE_TIME* start, REFERENCE_TIME* stop,
                           DWORD flags) override;

private:
    LONG limit_;
};

/// A receiver between a source of three pins and a sink.
class ReceiverTest : public testing::Test {
protected:
    ReceiverTest();
    /// Stops, disconnects, and finds every sample home and every object gone.
    ~ReceiverTest() override;

    void connect();
    void run();
    void stop();
    HRESULT send(std::size_t input, const Packet& packet) { return source_->send(packet, input); }
    void sendAll(std::size_t input, const std::vector<Packet>& packets);

    CRtpFecIn& filter() { return *filter_; }
    /// An input as upstream sees it.
    IMemInputPin& input(std::size_t index);
    CRtpFecInOutputPin& output() { return static_cast<CRtpFecInOutputPin&>(*filter_->GetPin(3)); }
    TestSource& source() { return *source_.get(); }
    TestInputPin& sink() { return sink_->pin(); }
    std::vector<Packet> delivered() { return sink().packets(); }
    RtpFecInTotals totals();
    bool received(std::uint64_t packets) {
        return soon([&] { return totals().received == packets; });
    }
    void disconnect();
    void release() { reference_.Release(); }

    CComPtr<IBaseFilter> reference_;

private:
    void expectSamplesHome();

    LONG objectsBefore_ = CBaseObject::ObjectsActive();
    CRtpFecIn* filter_;
    Held<TestSource> source_{3};
    Held<TestSink> sink_{1};
};

}  // namespace mvrtpfec
