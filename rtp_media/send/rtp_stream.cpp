#include "rtp_media/send/rtp_stream.h"

#include <utility>

#include "platform/process/runtime_rand.h"
#include "rtp_media/send/sender_report.h"
#include "support/com_exception.h"

namespace mvrtpfec {

namespace {

constexpr std::size_t longestCname = 255;
constexpr std::int64_t window = 10 * 90000;
constexpr std::uint64_t reportInterval = 90000;

void check(HRESULT result) {
    if (FAILED(result)) throw mvn::COMException(result);
}

/// For an output that says yes and gives nothing.
void require(const void* given) {
    if (given == nullptr) throw mvn::COMException(E_POINTER);
}

/// An output's buffer, released however its sending ends.
class OutputBuffer {
public:
    explicit OutputBuffer(IOutputPin& output) : output_(output) {
        IMediaData* data = nullptr;
        check(output.GetDeliveryBuffer(&data, nullptr, nullptr, 0));
        require(data);
        data_.Attach(data);
    }

    IMediaData& data() const { return *data_; }

    BYTE* bytes() const {
        BYTE* pointer = nullptr;
        check(data_->GetPointer(&pointer));
        require(pointer);
        return pointer;
    }

    void setLength(std::size_t length) { check(data_->SetActualDataLength(static_cast<LONG>(length))); }

    void deliver() { check(output_.Deliver(data_.p)); }

private:
    IOutputPin& output_;
    CComPtr<IMediaData> data_;
};

}  // namespace

RTPStream::RTPStream(std::uint32_t id, StreamType type, const RTPStreamTarget& target, std::string cname)
    : streamType_(type),
      isVideo_(mvrtpfec::isVideo(type)),
      id_(id),
      mediaOutput_(target.mediaOutput),
      reportOutput_(target.reportOutput),
      bitRate_(target.bitRate),
      port_(target.port),
      cname_(std::move(cname)) {
    if (cname_.size() > longestCname) cname_.resize(longestCname);
}

void RTPStream::start(std::unique_ptr<RTPPacketBuilder> packetizer) {
    timestampOffset_ = static_cast<std::uint32_t>(platform::runtimeRand());
    packetizer_ = std::move(packetizer);
    ssrc_ = static_cast<std::uint32_t>(platform::runtimeRand());
}

void RTPStream::onEndOfStream() {
    check(mediaOutput_->DeliverEndOfStream());
    check(reportOutput_->DeliverEndOfStream());
}

bool RTPStream::isReportDue(const RTPMediaPacket& first, std::uint64_t now90k) {
    if (started_) return now90k - lastReportTime_ >= reportInterval;
    clockRate_ = first.clockRate();
    return true;
}

void RTPStream::sendReport(const SendClock& clock) {
    OutputBuffer buffer(*reportOutput_);
    const std::size_t size = senderReportSize(cname_);
    if (buffer.data().GetSize() < static_cast<LONG>(size)) {
        noteReport(clock);
        throw mvn::COMException(E_FAIL);
    }
    const std::uint32_t rtpTime = rtpTimeAt(clock.now90k(), clockRate_) + timestampOffset_;
    writeSenderReport({ssrc_, clock.wallTime(), rtpTime, packetCount_, octetCount_, cname_}, buffer.bytes());
    buffer.setLength(size);
    buffer.deliver();
    noteReport(clock);
}

void RTPStream::noteReport(const SendClock& clock) {
    lastReportTime_ = clock.now90k();
    started_ = true;
}

std::optional<LONG> RTPStream::sendFirstPacket(REFERENCE_TIME time) {
    RTPMediaPacket& packet = *queue_.front();
    OutputBuffer buffer(*mediaOutput_);
    const LONG room = buffer.data().GetSize();
    if (room < static_cast<LONG>(packet.serializedSize())) {
        dropFirstPacket();
        return room;
    }
    const auto sizes = packet.serialize(buffer.bytes(), ssrc_);
    buffer.setLength(sizes.total);
    check(buffer.data().SetTime(&time, nullptr));
    buffer.deliver();
    ++packetCount_;
    octetCount_ += static_cast<std::uint32_t>(sizes.payload);
    dropFirstPacket();
    return std::nullopt;
}

RTPStream::Window RTPStream::checkWindow(const RTPMediaPacket& packet, std::uint64_t now90k) {
    const auto ahead = static_cast<std::int64_t>(packet.ptsOrDts() - now90k);
    if (ahead >= -window && ahead <= window) {
        inWindow_ = true;
        return Window::inside;
    }
    if (inWindow_) {
        inWindow_ = false;
        outOfWindowSince_ = now90k;
        return Window::outside;
    }
    return now90k > outOfWindowSince_ + window ? Window::lost : Window::outside;
}

}  // namespace mvrtpfec
