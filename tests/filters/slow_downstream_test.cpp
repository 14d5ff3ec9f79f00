#include <algorithm>
#include <array>
#include <atomic>
#include <chrono>
#include <memory>
#include <string>
#include <thread>

#include <gtest/gtest.h>

#include "core/rtp_packet.h"
#include "mvrtpfec/rtp_fec_filter.h"
#include "sender/rtp_fec_filter.h"
#include "tests/filters/collector.h"
#include "tests/filters/feeder.h"

namespace mvrtpfec {

namespace {

/// Every media packet makes an FEC packet, and downstream is slow to take it, with the filter lock held.
class SlowDownstream : public testing::Test {
protected:
    SlowDownstream() {
        void* found = nullptr;
        CRtpFecFilter::CreateInstance(nullptr, nullptr)->NonDelegatingQueryInterface(IID_IBaseFilter, &found);
        filter_.Attach(static_cast<IBaseFilter*>(found));
        const auto config = queryFor<IFECoverRTPConfig>(filter_, IID_IFECoverRTPConfig);
        config->SetColumns(1);
        config->SetRows(4);
        config->SetMode(1);

        auto feeder = std::make_unique<Feeder>(1);
        auto collector = std::make_unique<Collector>(1);
        collector->setDelay(2);
        feeder_ = feeder.release();
        collector_ = collector.release();
        feeder_->output(0).Connect(pin("Input"), nullptr);
        pin("FECA")->Connect(&collector_->input(0), nullptr);
        collector_->Run(0);
        feeder_->Run(0);
    }
    ~SlowDownstream() override {
        filter_->Stop();
        feeder_->Stop();
        collector_->Stop();
        pin("FECA")->Disconnect();
        collector_->input(0).Disconnect();
        feeder_->output(0).Disconnect();
        pin("Input")->Disconnect();
    }

    CComPtr<IPin> pin(const char* name) {
        const std::basic_string<WCHAR> wide(name, name + std::char_traits<char>::length(name));
        CComPtr<IPin> found;
        filter_->FindPin(wide.c_str(), &found);
        return found;
    }

    CComPtr<IBaseFilter> filter_;
    CComPtr<Feeder> feeder_;
    CComPtr<Collector> collector_;
};

/// The streaming thread lets go of the lock for a moment only between two deliveries.
TEST_F(SlowDownstream, KeepsNoStateChangeWaitingForLong) {
    std::atomic<bool> done{false};
    std::thread stream([&] {
        std::array<std::uint8_t, 100> media{versionTwo, mediaPayloadType};
        while (!done)
            if (FAILED(feeder_->feed(0, media))) std::this_thread::yield();
    });
    std::chrono::steady_clock::duration longest{};
    for (int round = 0; round < 10; ++round) {
        const std::size_t before = collector_->received();
        filter_->Run(0);
        feeder_->Stop();
        feeder_->Run(0);
        while (collector_->received() < before + 3) std::this_thread::yield();
        const auto start = std::chrono::steady_clock::now();
        round % 2 == 0 ? filter_->Stop() : filter_->Pause();
        longest = std::max(longest, std::chrono::steady_clock::now() - start);
        filter_->Stop();
    }
    done = true;
    stream.join();
    EXPECT_LT(std::chrono::duration<double>(longest).count(), 1.0);
}

TEST_F(SlowDownstream, PacketsSentWhileFlushingTakeNoPlace) {
    filter_->Run(0);
    feeder_->Stop();
    feeder_->Run(0);
    const std::array<std::uint8_t, 100> media{versionTwo, mediaPayloadType};
    feeder_->output(0).DeliverBeginFlush();
    EXPECT_EQ(feeder_->feed(0, media), S_FALSE);
    EXPECT_EQ(collector_->received(), 0u);
    feeder_->output(0).DeliverEndFlush();
    EXPECT_EQ(feeder_->feed(0, media), S_OK);
    EXPECT_EQ(collector_->received(), 1u);
}

}  // namespace

}  // namespace mvrtpfec
