#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "rtp_media/chain/rtp_packet_builder.h"
#include "selftest/test.h"

namespace mvrtpfec {

/// Packetizes a file in one sample and holds the packets, their number and the attributes of the description
/// against what they must be. Where no file has this very path, backslashes in it are taken for slashes.
class CRtpPacketBuilderTester : public ITest {
public:
    CRtpPacketBuilderTester(std::string filePath, StreamType streamType, std::uint32_t expectedPackets);

    bool run(std::ostream& out) override;
    std::string getName() override { return "RtpPacketBuilder_" + filePath_; }

    /// Whether there is a file that can be read; without it, run() has nothing to test.
    bool hasFile() const;
    const std::string& filePath() const noexcept { return filePath_; }

    class PacketListener;

private:
    std::string filePath_;
    StreamType streamType_;
    std::uint32_t expectedPackets_;
};

/// Holds each packet against the one before.
class CRtpPacketBuilderTester::PacketListener : public RTPPacketListener {
public:
    explicit PacketListener(std::ostream& out) : out_(out) {}

    void onPacket(std::unique_ptr<RTPMediaPacket> packet) override;
    void onEndOfStream() override {}

    std::uint32_t packetCount() const noexcept { return packetCount_; }
    bool hasFailures() const noexcept { return !failures_.empty(); }
    void fail(const std::string& failure);

private:
    struct Header {
        bool marker;
        std::uint16_t sequence;
        std::uint32_t timestamp;
    };

    Header headerOf(RTPMediaPacket& packet);

    std::ostream& out_;
    std::uint32_t packetCount_ = 0;
    Header previous_{};
    bool hasPrevious_ = false;
    std::vector<std::string> failures_;
};

}  // namespace mvrtpfec
