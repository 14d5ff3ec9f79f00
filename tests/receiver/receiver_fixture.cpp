#include "tests/receiver/receiver_fixture.h"

#include <algorithm>

#include "core/rtp_packet.h"

namespace mvrtpfec {

Packet mediaPacket(std::uint16_t number, std::size_t length) {
    Packet packet(length != 0 ? length : 60u + number % 50, '\0');
    for (std::size_t i = 0; i < packet.size(); ++i) packet[i] = static_cast<char>(number * 7u + i * i);
    const std::array<std::uint8_t, rtpHeaderSize> header{versionTwo,
                                                         mediaPayloadType,
                                                         static_cast<std::uint8_t>(number >> 8),
                                                         static_cast<std::uint8_t>(number),
                                                         0,
                                                         static_cast<std::uint8_t>(number >> 6),
                                                         static_cast<std::uint8_t>(number << 2),
                                                         7};
    std::copy(header.begin(), header.end(), packet.begin());
    return packet;
}

std::vector<Packet> mediaPackets(std::uint16_t first, std::size_t count) {
    std::vector<Packet> packets;
    for (std::size_t n = 0; n < count; ++n)
        packets.push_back(mediaPacket(static_cast<std::uint16_t>(first + n)));
    return packets;
}

STDMETHODIMP OddAllocator::SetProperties(ALLOCATOR_PROPERTIES* request, ALLOCATOR_PROPERTIES* actual) {
    ALLOCATOR_PROPERTIES smaller = *request;
    smaller.cbAlign = 1;
    smaller.cbBuffer = std::min(smaller.cbBuffer, limit_);
    return CMemAllocator::SetProperties(&smaller, actual);
}

STDMETHODIMP OddAllocator::GetBuffer(IMediaSample** buffer, REFERENCE_TIME* start, REFERENCE_TIME* stop,
                                     DWORD flags) {
    const HRESULT result = CMemAllocator::GetBuffer(buffer, start, stop, flags);
    if (FAILED(result)) return result;
    REFERENCE_TIME times[] = {1, 2};
    (*buffer)->SetTime(&times[0], &times[1]);
    (*buffer)->SetSyncPoint(TRUE);
    (*buffer)->SetDiscontinuity(TRUE);
    return result;
}

ReceiverTest::ReceiverTest() {
    HRESULT result = E_FAIL;
    filter_ = static_cast<CRtpFecIn*>(CRtpFecIn::CreateInstance(nullptr, &result));
    EXPECT_EQ(result, S_OK);
    reference_ = CComPtr<IBaseFilter>(filter_);
    for (std::size_t i = 0; i < 3; ++i) source_->pin(i).buffers = {100, 2048, 0, 0};
    sink().behaviour.accepted = {CMediaType(MEDIATYPE_Stream, MEDIASUBTYPE_MPEG2_TRANSPORT)};
}

ReceiverTest::~ReceiverTest() {
    if (reference_ != nullptr) {
        stop();
        expectSamplesHome();
        disconnect();
    }
    reference_.Release();
    source_.release();
    sink_.release();
    EXPECT_EQ(CBaseObject::ObjectsActive(), objectsBefore_);
}

void ReceiverTest::connect() {
    for (std::size_t i = 0; i < 3; ++i)
        ASSERT_EQ(source_->pin(i).Connect(filter_->GetPin(static_cast<int>(i)), nullptr), S_OK);
    ASSERT_EQ(output().Connect(&sink(), nullptr), S_OK);
}

void ReceiverTest::disconnect() {
    for (std::size_t i = 0; i < 3; ++i) {
        source_->pin(i).Disconnect();
        filter_->GetPin(static_cast<int>(i))->Disconnect();
    }
    output().Disconnect();
    sink().Disconnect();
}

void ReceiverTest::run() {
    ASSERT_EQ(sink_->Run(0), S_OK);
    ASSERT_EQ(reference_->Run(0), S_OK);
    ASSERT_EQ(source_->Run(0), S_OK);
}

void ReceiverTest::stop() {
    EXPECT_EQ(reference_->Stop(), S_OK);
    sink_->Stop();
    source_->Stop();
}

void ReceiverTest::sendAll(std::size_t input, const std::vector<Packet>& packets) {
    for (const Packet& packet : packets) ASSERT_EQ(send(input, packet), S_OK);
}

IMemInputPin& ReceiverTest::input(std::size_t index) {
    return static_cast<CBaseInputPin&>(*filter_->GetPin(static_cast<int>(index)));
}

RtpFecInTotals ReceiverTest::totals() {
    RtpFecInTotals totals;
    EXPECT_EQ(filter_->GetTotals(&totals), S_OK);
    return totals;
}

/// Those that the worker took while the filter was being stopped come home a moment later.
void ReceiverTest::expectSamplesHome() {
    for (std::size_t i = 0; i < 3; ++i) {
        const auto pool = source_->pin(i).allocator();
        const auto counter = queryFor<IMemAllocatorCallbackTemp>(pool, IID_IMemAllocatorCallbackTemp);
        if (counter == nullptr) continue;
        EXPECT_TRUE(soon([&] {
            LONG free = 0;
            counter->GetFreeCount(&free);
            return free == 100;
        })) << "pin "
            << i;
    }
}

}  // namespace mvrtpfec
