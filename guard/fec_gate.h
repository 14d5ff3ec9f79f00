#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>

#include "core/fec_packet.h"
#include "core/rtp_packet.h"

namespace mvrtpfec {

/// Decides which FEC packets the receiver may see and numbers them by arrival, a stream for each kind,
/// so that its FEC inputs never wait for one that was lost.
class FecGate {
public:
    enum class Verdict { pass, early, repeated, keptBack };

    /// `position` is the media number handed on last; none before the first media packet. Kept back is
    /// what the decoder could only use wrongly: a group that crosses 65535 or lies before it when the
    /// media is behind it, one far ahead of the media, one without members. Early is a group behind the
    /// wrap that the media is about to reach. `fec` must be valid.
    Verdict judge(ConstRtpPacketView fec, std::optional<std::uint16_t> position);

    /// Gives the packet the next number of its kind.
    void renumber(RtpPacket& fec, FecKind kind);

private:
    static constexpr std::size_t remembered = 64;

    struct Stream {
        std::uint16_t nextNumber = 0;
        std::array<std::uint32_t, remembered> recent{};  ///< number and base of packets that passed
        std::size_t recentCount = 0;
    };

    static Verdict place(const ProtectedRange& range, std::optional<std::uint16_t> position);
    bool isRepeated(const Stream& stream, std::uint32_t identity) const;
    Stream& streamOf(FecKind kind) { return streams_[kind == FecKind::row ? 1 : 0]; }

    std::array<Stream, 2> streams_;
};

}  // namespace mvrtpfec
