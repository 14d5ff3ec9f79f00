#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "host/io/frame_layers.h"
#include "host/io/link_type.h"

namespace mvrtpfec {

/// The headers of one frame of a stream, from which further frames with the same addressing are built.
class FrameTemplate {
public:
    /// Ethernet starts with made-up headers: 192.0.2.1 to multicast 233.252.0.1, both set aside for
    /// documentation (RFC 5737, RFC 6676), in UDP over IPv4. Other link types start without headers.
    explicit FrameTemplate(LinkType linkType);

    LinkType linkType() const { return linkType_; }

    /// Takes the headers of a captured frame of this link type in place of those held so far.
    void take(std::span<const std::uint8_t> frame, const FrameLayers& layers);
    /// False as long as there are only made-up headers, or none.
    bool hasTaken() const { return hasTaken_; }

    /// Replaces `frame` by one that carries `payload` to `destinationPort`: the headers held, the source
    /// port among them, with lengths and checksums made right. An IPv4 stream that goes without UDP
    /// checksums keeps going without (RFC 768). Throws std::length_error for a payload that no
    /// IP packet holds, std::logic_error when there are no headers yet.
    void build(std::span<const std::uint8_t> payload, std::uint16_t destinationPort,
               std::vector<std::uint8_t>& frame) const;

private:
    void setIpLength(std::vector<std::uint8_t>& frame) const;
    void setUdpChecksum(std::vector<std::uint8_t>& frame) const;

    LinkType linkType_;
    bool hasTaken_ = false;
    std::vector<std::uint8_t> headers_;  ///< up to the payload
    FrameLayers layers_{};
};

}  // namespace mvrtpfec
