#pragma once

#include <thread>

#include <gtest/gtest.h>

#include "framework/base/com_ptr.h"
#include "sender/rtp_fec_filter.h"
#include "tests/filters/feeder.h"
#include "tests/sender/packet_sink.h"

namespace mvrtpfec {

struct Matrix {
    std::int32_t mode;
    std::int32_t columns;
    std::int32_t rows;
};

/// The n-th media packet; payload and length vary.
Bytes mediaPacket(unsigned n, std::size_t length = 0);

/// What the sender is to deliver for these packets, told by composers of its own: on "FECA" (pin 0) and
/// "FECB" (pin 1), where they are connected. It must run on a fresh thread, as the sender's run must, so that
/// both draw the same first sequence numbers.
std::vector<Arrival> expectedFec(const Matrix& matrix, const std::vector<Bytes>& media,
                                 bool aConnected = true, bool bConnected = true);

/// Calls the function on a thread that has drawn no random numbers yet.
template <class Work>
void onFreshThread(Work work) {
    std::thread(work).join();
}

/// A sender between a feeder and a sink.
class Sender {
public:
    Sender();
    ~Sender();

    void connect(bool a = true, bool b = true);
    HRESULT configure(const Matrix& matrix);
    /// The filters around go first, or last.
    HRESULT pause();
    void run();
    void stop();

    HRESULT feed(const Bytes& packet) { return feeder_->feed(0, packet); }
    void feed(const std::vector<Bytes>& packets);

    CRtpFecFilter& filter() { return *filter_; }
    IFECoverRTPConfig& config() { return *config_; }
    Feeder& feeder() { return *feeder_; }
    PacketSink& sink() { return *sink_; }

private:
    CRtpFecFilter* filter_ = nullptr;
    Feeder* feeder_;
    PacketSink* sink_;
    CComPtr<IBaseFilter> filterReference_;
    CComPtr<IBaseFilter> feederReference_;
    CComPtr<IBaseFilter> sinkReference_;
    CComPtr<IFECoverRTPConfig> config_;
};

class SenderTest : public testing::Test {
protected:
    void SetUp() override { before_ = CBaseObject::ObjectsActive(); }
    void TearDown() override { EXPECT_EQ(CBaseObject::ObjectsActive(), before_); }

private:
    LONG before_ = 0;
};

}  // namespace mvrtpfec
