#pragma once

#include <optional>
#include <thread>

#include <gtest/gtest.h>

#include "core/fec_composer.h"
#include "platform/process/runtime_rand.h"
#include "sender/rtp_fec_filter.h"
#include "tests/shared/object_count.h"
#include "tests/shared/packets.h"
#include "tests/shared/rtp_filters.h"

namespace mvrtpfec {

struct Matrix {
    std::int32_t mode;
    std::int32_t columns;
    std::int32_t rows;
};

/// One packet that came to a pin of the sink.
struct Arrival {
    std::size_t pin;
    Bytes bytes;

    bool operator==(const Arrival&) const = default;
};

/// What the sender is to deliver for these packets, told by composers of its own: on "FECA" (pin 0) and
/// "FECB" (pin 1), where they are connected. It must run on a fresh thread, as the sender's run must, so that
/// both draw the same first sequence numbers.
inline std::vector<Arrival> expectedFec(const Matrix& matrix, const std::vector<Bytes>& media,
                                        bool aConnected, bool bConnected) {
    struct Unconnected {};
    std::vector<Arrival> fec;
    const auto sink = [&fec](std::size_t pin, bool connected) {
        return [&fec, pin, connected](const std::shared_ptr<RtpPacket>& packet) {
            if (!connected) throw Unconnected();
            fec.push_back({pin, bytesOf(packet->view)});
        };
    };
    for (int draw = 0; draw < 4; ++draw) platform::runtimeRand();
    CFecComposer a(sink(0, aConnected), matrix.mode == fecRow ? fecRow : fecColumn, matrix.columns,
                   matrix.rows);
    std::optional<CFecComposer> b;
    if (matrix.mode == fecBoth) b.emplace(sink(1, bConnected), fecRow, matrix.columns, matrix.rows);
    for (const Bytes& packet : media) {
        try {
            a.protect(viewOf(packet));
            if (b) b->protect(viewOf(packet));
        } catch (const Unconnected&) {
        }
    }
    return fec;
}

/// A sender between a source and a sink.
class Sender {
public:
    Sender() {
        for (const std::size_t n : {0u, 1u})
            sink->pin(n).onSample = [this, n](IMediaSample* sample) {
                if (onReceive) onReceive();
                const std::lock_guard lock(mutex_);
                arrivals_.push_back({n, bytesOf(sample)});
            };
    }
    ~Sender() { stop(); }

    void connect(bool a = true, bool b = true) {
        EXPECT_EQ(source->pin().Connect(filter->GetPin(0), nullptr), S_OK);
        const auto connectOutput = [&](int n, TestInputPin& to) {
            EXPECT_EQ(filter->GetPin(n)->Connect(&to, nullptr), S_OK);
        };
        if (a) connectOutput(1, sink->pin(0));
        if (b) connectOutput(2, sink->pin(1));
    }
    HRESULT configure(const Matrix& matrix) {
        for (const HRESULT result :
             {filter->SetMode(matrix.mode), filter->SetColumns(matrix.columns), filter->SetRows(matrix.rows)})
            if (FAILED(result)) return result;
        return S_OK;
    }
    void start(const Matrix& matrix) {
        connect();
        EXPECT_EQ(configure(matrix), S_OK);
        run();
    }

    HRESULT pause() {
        sink->Pause();
        const HRESULT result = filter->Pause();
        source->Pause();
        return result;
    }
    void run() {
        sink->Run(0);
        EXPECT_EQ(filter->Run(0), S_OK);
        source->Run(0);
    }
    void stop() {
        sink->Stop();
        filter->Stop();
        source->Stop();
    }

    HRESULT feed(const Bytes& packet) { return source->send(packet); }
    void feed(const std::vector<Bytes>& packets) {
        for (const Bytes& packet : packets) EXPECT_EQ(feed(packet), S_OK);
    }
    void feed(std::size_t count) { feed(mediaPackets(65'530, count)); }
    std::vector<Arrival> arrivals() const {
        const std::lock_guard lock(mutex_);
        return arrivals_;
    }
    std::size_t delivered() const { return arrivals().size(); }

private:
    const ObjectCount objects_;
    mutable std::mutex mutex_;
    std::vector<Arrival> arrivals_;

public:
    Held<RtpSource> source{1};
    Held<CRtpFecFilter> filter{static_cast<CRtpFecFilter*>(CRtpFecFilter::CreateInstance(nullptr, nullptr))};
    Held<AnySink> sink{2};
    /// Done inside every Receive.
    std::function<void()> onReceive;
};

}  // namespace mvrtpfec
