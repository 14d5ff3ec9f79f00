#include "host/stream/udp_output.h"

#include <asio/buffer.hpp>
#include <asio/ip/multicast.hpp>

namespace mvrtpfec {

namespace {

/// The longest payload of a datagram over IPv4.
constexpr std::size_t largestDatagram = 65507;

/// As session descriptions say.
constexpr int groupHops = 10;

}  // namespace

UdpOutput::UdpOutput(asio::io_context& context, const asio::ip::udp::endpoint& target)
    : socket_(context), buffer_(SimpleMediaData::create(std::vector<BYTE>(largestDatagram))) {
    socket_.open(target.protocol());
    if (target.address().is_multicast()) socket_.set_option(asio::ip::multicast::hops(groupHops));
    socket_.connect(target);
}

HRESULT UdpOutput::GetDeliveryBuffer(IMediaData** data, REFERENCE_TIME*, REFERENCE_TIME*, DWORD) {
    buffer_->AddRef();
    *data = buffer_.p;
    return S_OK;
}

HRESULT UdpOutput::Deliver(IMediaData* data) {
    BYTE* bytes = nullptr;
    const HRESULT result = data->GetPointer(&bytes);
    if (FAILED(result)) return result;
    const auto size = static_cast<std::size_t>(data->GetActualDataLength());
    asio::error_code error;
    socket_.send(asio::buffer(bytes, size), 0, error);
    // That is what became of an earlier datagram; this one hasn't left yet.
    if (error == asio::error::connection_refused) socket_.send(asio::buffer(bytes, size), 0, error);
    if (error) {
        ++refused_;
        return S_OK;
    }
    ++packets_;
    bytes_ += size;
    return S_OK;
}

std::string UdpOutput::localAddress() const {
    return socket_.local_endpoint().address().to_string();
}

}  // namespace mvrtpfec
