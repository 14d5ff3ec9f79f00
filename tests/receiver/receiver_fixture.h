#pragma once

#include <gtest/gtest.h>

#include "receiver/rtp_fec_in.h"
#include "tests/shared/limited_allocator.h"
#include "tests/shared/object_count.h"
#include "tests/shared/packets.h"
#include "tests/shared/rtp_filters.h"
#include "tests/shared/soon.h"

namespace mvrtpfec {

/// A receiver between a source of three pins and a sink.
class ReceiverTest : public ::testing::Test {
protected:
    ReceiverTest() {
        sink().behaviour.accepted = {CMediaType(MEDIATYPE_Stream, MEDIASUBTYPE_MPEG2_TRANSPORT)};
    }
    /// Stops, and finds every sample home.
    ~ReceiverTest() override {
        if (filter_.get() == nullptr) return;
        stop();
        for (std::size_t i = 0; i < 3; ++i) expectSamplesHome(i);
    }

    void connect() {
        for (std::size_t i = 0; i < 3; ++i)
            ASSERT_EQ(source().pin(i).Connect(filter().GetPin(static_cast<int>(i)), nullptr), S_OK);
        ASSERT_EQ(output().Connect(&sink(), nullptr), S_OK);
    }
    void run() {
        ASSERT_EQ(sink_->Run(0), S_OK);
        ASSERT_EQ(filter().Run(0), S_OK);
        ASSERT_EQ(source().Run(0), S_OK);
    }
    void start() {
        connect();
        run();
    }
    void stop() {
        EXPECT_EQ(filter().Stop(), S_OK);
        sink_->Stop();
        source().Stop();
    }
    HRESULT send(std::size_t input, const Bytes& packet) { return source().send(packet, input); }
    void sendAll(std::size_t input, const std::vector<Bytes>& packets) {
        for (const Bytes& packet : packets) ASSERT_EQ(send(input, packet), S_OK);
    }

    CRtpFecIn& filter() { return *filter_.get(); }
    /// An input as upstream sees it.
    IMemInputPin& input(std::size_t index) {
        return static_cast<CBaseInputPin&>(*filter().GetPin(static_cast<int>(index)));
    }
    CRtpFecInOutputPin& output() { return static_cast<CRtpFecInOutputPin&>(*filter().GetPin(3)); }
    TestSource& source() { return *source_.get(); }
    TestInputPin& sink() { return sink_->pin(); }
    RtpFecInTotals totals() {
        RtpFecInTotals totals;
        EXPECT_EQ(filter().GetTotals(&totals), S_OK);
        return totals;
    }
    bool received(std::uint64_t packets) {
        return soon([&] { return totals().received == packets; });
    }
    void release() { filter_.release(); }

private:
    /// Those that the worker took while the filter was being stopped come home a moment later.
    void expectSamplesHome(std::size_t input) {
        const auto counter = queryFor<IMemAllocatorCallbackTemp>(source().pin(input).allocator(),
                                                                 IID_IMemAllocatorCallbackTemp);
        if (counter == nullptr) return;
        EXPECT_TRUE(soon([&] {
            LONG free = 0;
            counter->GetFreeCount(&free);
            return free == 100;
        })) << "input "
            << input;
    }

    const ObjectCount objects_;
    Held<CRtpFecIn> filter_{static_cast<CRtpFecIn*>(CRtpFecIn::CreateInstance(nullptr, nullptr))};
    Held<RtpSource> source_{3};
    Held<AnySink> sink_{1};
};

}  // namespace mvrtpfec
