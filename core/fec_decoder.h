#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

#include "core/fec_packet.h"
#include "core/media_packet_store.h"
#include "core/rtp_packet.h"
#include "platform/hresult.h"

namespace mvrtpfec {

/// Rebuilds lost media packets from row and column FEC packets and releases media packets, received
/// and rebuilt alike, in sequence order, more than 2 x columns x rows numbers behind the newest, a window
/// that counts modulo 65536.
///
/// The matrix is learnt from the first column and the first row FEC packet and holds for the decoder's
/// life; before that it counts as 1 x 1. An FEC packet whose group lacks two packets is kept while the
/// group is inside the window, so that rows and columns help each other over several passes. Numbers
/// are unfolded across the wrap in plain arithmetic: a group that crosses 65535 can't be combined, and one
/// before the wrap that is still kept, or comes, when the newest number has wrapped counts as a cycle ahead
/// and may meet the next cycle's packets. Hosts put a PacketGuard in front.
///
/// After E_FAIL the owner replaces the decoder. Not thread-safe; onPacket runs on the feeding thread.
class CFecDecoder {
public:
    /// FEC packets kept at once. A window of our largest matrix needs a tenth of it; a flood of packets
    /// that name numbers still to come must not grow memory.
    static constexpr std::size_t maxKeptFecPackets = 1024;

    explicit CFecDecoder(PacketCallback onPacket);
    /// Releases the stored packets from the window start up to number 65534, in order; a packet
    /// numbered 65535 and packets behind a wrap are lost.
    ~CFecDecoder();

    CFecDecoder(const CFecDecoder&) = delete;
    CFecDecoder& operator=(const CFecDecoder&) = delete;

    /// Takes one RTP packet, its length modulo 65536; the bytes are copied where they are kept. S_OK, or
    /// E_FAIL for a packet too short for its header (12 bytes; 28 with payload type 96), a payload type other
    /// than 33 and 96, an FEC packet that contradicts the matrix learnt, more kept FEC packets than the
    /// limit, and, after a media packet, more missing numbers than the window holds (the packet stays
    /// stored). What a std::exception of onPacket loses is the packet released; std::bad_alloc comes out, and
    /// the decoder stays usable.
    HRESULT Feed(const std::uint8_t* bytes, std::size_t length);
    /// The same for a packet that may be kept as it is; it holds as many bytes as its view says.
    HRESULT Feed(std::unique_ptr<RtpPacket> packet);

    std::uint64_t lostCount() const { return store_.lostCount(); }
    std::uint64_t rebuiltCount() const { return rebuiltCount_; }
    std::uint64_t abandonedCount() const { return abandonedCount_; }
    std::uint64_t receivedCount() const { return store_.receivedCount(); }

private:
    /// Where a group lies relative to the window, and how far the window may move before that changes.
    struct Placement {
        bool begunBeforeWindow = false;
        bool complete = false;
        std::uint32_t stepsToComplete = 0;
        std::uint32_t stepsToLeave = 0;
    };
    struct KeptFecPacket {
        std::unique_ptr<RtpPacket> packet;
        ProtectedRange range;
        std::uint64_t searchedAt;  ///< store_.changes(), which never repeats, at the last search
    };
    struct Recovery {
        std::unique_ptr<RtpPacket> rebuilt;
        bool keep = false;
    };
    /// The state in which the last pass left the kept FEC packets: while the store's changes stand and
    /// the window moves less than this on, another pass would find nothing new.
    struct CalmState {
        bool valid = false;
        std::uint64_t changes = 0;
        std::uint16_t newest = 0;
        std::uint16_t oldest = 0;
        std::uint32_t newestSteps = 0;
        std::uint32_t oldestSteps = 0;
    };

    static constexpr std::uint64_t neverSearched = ~std::uint64_t{0};

    bool learnMatrix(FecKind kind, const ProtectedRange& range);
    template <class MakePacket>
    HRESULT feed(ConstRtpPacketView packet, MakePacket makePacket);
    HRESULT feedMedia(std::unique_ptr<RtpPacket> packet);
    template <class MakePacket>
    HRESULT feedFec(ConstRtpPacketView fec, MakePacket makePacket);
    template <class MakePacket>
    HRESULT InsertFecPacket(ConstRtpPacketView fec, const ProtectedRange& range, MakePacket makePacket);
    void insertRebuilt(std::unique_ptr<RtpPacket> packet);

    Placement place(const ProtectedRange& range) const;
    Recovery TryRecover(ConstRtpPacketView fec, const ProtectedRange& range, const Placement& placement,
                        std::uint64_t& searchedAt) const;
    Recovery searchGroup(ConstRtpPacketView fec, const ProtectedRange& range) const;

    std::uint16_t windowSize() const;
    void moveWindow();
    bool isCalm() const;
    bool isDone(KeptFecPacket& kept);
    void RunRecoveryPass();
    void Advance(std::uint16_t target);

    PacketCallback onPacket_;
    bool columnsPending_ = true;
    bool rowsPending_ = true;
    std::int32_t columns_ = 1;
    std::int32_t rows_ = 1;
    CMediaPacketStore store_;
    std::vector<KeptFecPacket> fecPackets_;
    CalmState calm_;
    std::uint64_t abandonedCount_ = 0;
    std::uint64_t rebuiltCount_ = 0;
};

}  // namespace mvrtpfec
