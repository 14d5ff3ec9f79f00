#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <vector>

#include "core/rtp_packet.h"
#include "guard/control_packets.h"
#include "guard/fec_gate.h"
#include "guard/media_orderer.h"
#include "mvrtpfec/receiver_guard.h"

namespace mvrtpfec {

/// Stands in front of a receiver's three inputs and gives it a stream it repairs well.
///
/// A receiver orders each input with a small buffer that gives up, with every hole, the packet behind
/// it too and holds the stream back until twenty packets wait. The guard orders the media itself, and
/// when it gives up a hole it makes that buffer start afresh; it numbers FEC packets by arrival, so that
/// their inputs never see a hole; it keeps back FEC packets from which the decoder would rebuild a wrong
/// packet, and has the decoder replaced where one of them may be left in it: when the source restarts,
/// and at the wrap of the sequence numbers unless the decoder has been without a hole for a whole
/// window.
///
/// Packets are sorted by payload type and FEC direction, whatever port they came from. Not thread-safe;
/// the output is called on the caller's thread and must take each packet before it returns.
class PacketGuard {
public:
    using Output = std::function<void(ReceiverInput, std::unique_ptr<RtpPacket>)>;

    /// Throws std::invalid_argument for settings out of range.
    explicit PacketGuard(Output output, const GuardSettings& settings = {});

    PacketGuard(const PacketGuard&) = delete;
    PacketGuard& operator=(const PacketGuard&) = delete;

    void push(std::unique_ptr<RtpPacket> packet);
    /// Tells the time, which only the settings' patience needs: every few milliseconds, by any clock that
    /// doesn't go back.
    void passTime(std::chrono::steady_clock::time_point now);
    /// Hands on every packet still held, at the end of a stream.
    void flush();

    GuardFigures figures() const;

private:
    void pushFec(std::unique_ptr<RtpPacket> fec);
    void handOnFec(std::unique_ptr<RtpPacket> fec, FecKind kind);
    void handOnMedia(std::unique_ptr<RtpPacket> media, bool afterHole);
    void learnMatrix(FecKind kind, const ProtectedRange& range);
    bool isBegun(FecKind kind);
    void holdEarly(std::unique_ptr<RtpPacket> fec);
    void handOnEarly();
    bool mayHoldFec() const;
    void startAfresh(std::uint16_t next);
    void renewDecoder(std::uint16_t next);
    void renewAtWrap(std::uint16_t next);
    void teachMatrix(std::uint16_t base);
    void onRestart();

    Output output_;
    std::optional<std::chrono::nanoseconds> patience_;
    MediaOrderer orderer_;
    FecGate gate_;
    MatrixSize matrix_;                              ///< of this run
    unsigned rowsAlone_ = 0;                         ///< row FEC packets before any column FEC packet of it
    std::optional<std::uint8_t> usualRows_;          ///< of runs before it; 0 for rows alone
    std::optional<std::uint16_t> previous_;          ///< media number handed on last in this run
    bool restarted_ = false;                         ///< nothing handed on since a restart
    std::uint64_t unbroken_ = 0;                     ///< media packets handed on since a hole or a new matrix
    std::unique_ptr<RtpPacket> last_;                ///< a copy of 65535 when that was handed on last
    std::vector<std::unique_ptr<RtpPacket>> early_;  ///< FEC packets of groups behind the wrap ahead
    std::uint64_t repeatedFec_ = 0;
    std::uint64_t fecKeptBack_ = 0;
    std::uint64_t foreign_ = 0;
    std::uint64_t refed_ = 0;
    std::uint64_t renewals_ = 0;
    std::uint64_t matrixChanges_ = 0;
};

}  // namespace mvrtpfec
