#pragma once

#include <deque>
#include <memory>
#include <span>
#include <string>

#include <asio/io_context.hpp>
#include <asio/ip/udp.hpp>

#include "host/live/input_watch.h"
#include "host/live/media_input.h"
#include "host/live/ts_wrapper.h"
#include "host/net/datagram_reader.h"

namespace mvrtpfec {

/// Media that come over the network, passed on as they come.
class UdpMediaInput final : public MediaInput {
public:
    enum class Carriage { bare, rtp };

    /// `name` is that of the input in notices. Throws UsageError, std::system_error.
    UdpMediaInput(const std::string& name, const asio::ip::udp::endpoint& local, Carriage carriage,
                  const MediaInputOptions& options);

    Got read(DuePacket& next) override;
    bool wouldWait() const override { return waiting_.empty(); }
    std::uint64_t leftOut() const override { return watch_.leftOut(); }
    std::uint64_t skippedBytes() override { return watch_.skippedBytes() + wrapper_.skipping(); }
    std::vector<std::string> takeNotices() override;

private:
    using Datagram = std::span<const std::uint8_t>;

    void wait();
    void take(Datagram datagram);
    bool isRtp(Datagram datagram) const;
    void takeBare(Datagram datagram, SteadyTime now);
    void takeRtp(Datagram datagram, SteadyTime now);

    Carriage carriage_;
    asio::io_context context_;
    asio::ip::udp::socket socket_;
    DatagramReader reader_;
    InputWatch watch_;
    TsWrapper wrapper_;
    std::deque<std::unique_ptr<RtpPacket>> waiting_;
};

}  // namespace mvrtpfec
