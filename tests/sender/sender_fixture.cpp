#include "tests/sender/sender_fixture.h"

#include <optional>

#include "platform/process/runtime_rand.h"

namespace mvrtpfec {

Bytes mediaPacket(unsigned n, std::size_t length) {
    Bytes packet(length != 0 ? length : 188 + n * 7 % 400);
    for (std::size_t i = 0; i < packet.size(); ++i) packet[i] = static_cast<std::uint8_t>(n * 31 + i);
    if (packet.size() < rtpHeaderSize) return packet;
    packet[0] = versionTwo;
    packet[1] = mediaPayloadType;
    writeBigEndian16(&packet[2], static_cast<std::uint16_t>(65'530 + n));
    return packet;
}

std::vector<Arrival> expectedFec(const Matrix& matrix, const std::vector<Bytes>& media, bool aConnected,
                                 bool bConnected) {
    struct Unconnected {};
    std::vector<Arrival> fec;
    const auto sink = [&fec](int pin, bool connected) {
        return [&fec, pin, connected](const std::shared_ptr<RtpPacket>& packet) {
            if (!connected) throw Unconnected();
            fec.push_back({pin, Bytes(packet->view.data, packet->view.data + packet->view.length)});
        };
    };
    for (int draw = 0; draw < 4; ++draw) platform::runtimeRand();
    CFecComposer a(sink(0, aConnected), matrix.mode == fecRow ? fecRow : fecColumn, matrix.columns,
                   matrix.rows);
    std::optional<CFecComposer> b;
    if (matrix.mode == fecBoth) b.emplace(sink(1, bConnected), fecRow, matrix.columns, matrix.rows);
    for (const Bytes& packet : media) {
        const ConstRtpPacketView view{packet.data(), static_cast<std::uint16_t>(packet.size())};
        try {
            a.protect(view);
            if (b) b->protect(view);
        } catch (const Unconnected&) {
        }
    }
    return fec;
}

Sender::Sender() : feeder_(new Feeder(1)), sink_(new PacketSink) {
    HRESULT result = E_FAIL;
    filter_ = static_cast<CRtpFecFilter*>(CRtpFecFilter::CreateInstance(nullptr, &result));
    EXPECT_EQ(result, S_OK);
    filterReference_ = filter_;
    feederReference_ = feeder_;
    sinkReference_ = sink_;
    config_ = queryFor<IFECoverRTPConfig>(static_cast<IBaseFilter*>(filter_), IID_IFECoverRTPConfig);
}

Sender::~Sender() {
    stop();
    // Connected pins hold each other's filters.
    for (CBaseFilter* filter : {static_cast<CBaseFilter*>(feeder_), static_cast<CBaseFilter*>(filter_),
                                static_cast<CBaseFilter*>(sink_)})
        for (int n = 0; n < filter->GetPinCount(); ++n) filter->GetPin(n)->Disconnect();
}

void Sender::connect(bool a, bool b) {
    const auto join = [](CBasePin& from, CBasePin& to) { EXPECT_EQ(from.Connect(&to, nullptr), S_OK); };
    join(feeder_->output(0), *filter_->GetPin(0));
    if (a) join(*filter_->GetPin(1), *sink_->input(0));
    if (b) join(*filter_->GetPin(2), *sink_->input(1));
}

HRESULT Sender::configure(const Matrix& matrix) {
    const HRESULT results[] = {config_->SetMode(matrix.mode), config_->SetColumns(matrix.columns),
                               config_->SetRows(matrix.rows)};
    for (const HRESULT result : results)
        if (FAILED(result)) return result;
    return S_OK;
}

HRESULT Sender::pause() {
    sink_->Pause();
    const HRESULT result = filter_->Pause();
    feeder_->Pause();
    return result;
}

void Sender::run() {
    sink_->Run(0);
    EXPECT_EQ(filter_->Run(0), S_OK);
    feeder_->Run(0);
}

void Sender::stop() {
    sink_->Stop();
    filter_->Stop();
    feeder_->Stop();
}

void Sender::feed(const std::vector<Bytes>& packets) {
    for (const Bytes& packet : packets) EXPECT_EQ(feed(packet), S_OK);
}

}  // namespace mvrtpfec
