#include "host/net/packet_writer.h"

#include <algorithm>
#include <utility>

namespace mvrtpfec {

namespace {

constexpr std::size_t batch = 32;
constexpr std::size_t room = 2048;

}  // namespace

PacketWriter::PacketWriter(asio::ip::udp::socket socket)
    : socket_(std::move(socket)), storage_(batch * room) {
    waiting_.reserve(batch);
}

void PacketWriter::write(std::span<const std::uint8_t> bytes) {
    if (bytes.size() > room) {
        ++refused_;
        return;
    }
    std::uint8_t* const place = storage_.data() + waiting_.size() * room;
    std::copy(bytes.begin(), bytes.end(), place);
    waiting_.push_back({place, bytes.size()});
    if (waiting_.size() == batch) flush();
}

void PacketWriter::flush() {
    std::span<const platform::DatagramBuffer> rest(waiting_);
    bool again = false;
    while (!rest.empty()) {
        const std::size_t sent =
            platform::sendDatagrams(static_cast<platform::SocketHandle>(socket_.native_handle()), rest);
        for (const auto& datagram : rest.first(sent)) bytes_ += datagram.size;
        packets_ += sent;
        rest = rest.subspan(sent);
        if (sent > 0) again = false;
        // A refusal may be what became of an earlier datagram; the second one is this one's.
        if (!rest.empty() && std::exchange(again, true)) {
            ++refused_;
            rest = rest.subspan(1);
            again = false;
        }
    }
    waiting_.clear();
}

}  // namespace mvrtpfec
