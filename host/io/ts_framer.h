#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <span>
#include <vector>

#include "host/io/ts_packet.h"

namespace mvrtpfec {

/// Finds the packets in the bytes of a transport stream, which come in pieces of any size and may begin
/// inside a packet.
///
/// Packets stand 188 bytes apart, 192 with 4 bytes in front of each, or 204 with 16 bytes of Reed-Solomon
/// code behind. A distance is believed when five sync bytes stand at it, or fewer at the end of a short
/// stream. Where a sync byte is missing and those behind it are in place, its packet alone is skipped;
/// otherwise the packets are searched anew, and a packet in which others begin is skipped too. What is kept
/// doesn't grow with the stream. One thread.
class TsFramer {
public:
    /// Where bytes stand that belong to no packet, from the stream's first byte on, and how many.
    using OnSkipped = std::function<void(std::uint64_t at, std::uint64_t count)>;
    /// Pieces that may be missing make each packet suspect that others don't follow in step.
    enum class Pieces { all, someMissing };

    /// With so many bytes held, or at the end, next() gives a packet or passes bytes over.
    static constexpr std::size_t lookAhead = std::size_t{7} * 204;

    explicit TsFramer(OnSkipped onSkipped, Pieces pieces = Pieces::all)
        : onSkipped_(std::move(onSkipped)), pieces_(pieces) {}

    void push(std::span<const std::uint8_t> bytes);
    /// Nothing follows.
    void end() { atEnd_ = true; }
    /// None until more bytes have come, and at the end. A packet whose last byte is the last one pushed
    /// doesn't wait for what follows.
    std::optional<TsPacket> next();

    /// Bytes pushed that are still to be looked at.
    std::size_t held() const { return at_ < bytes_.size() ? bytes_.size() - at_ : 0; }
    /// From packet to packet; 0 while they are searched.
    std::size_t distance() const { return distance_; }
    /// Bytes passed over in the search that is going on.
    std::uint64_t skipping() const { return distance_ == 0 ? position() - lostAt_ : 0; }

private:
    enum class Answer { no, yes, open };

    std::uint64_t position() const { return base_ + bytes_.size() - held(); }
    bool isSyncAt(std::size_t at) const { return bytes_[at] == tsSyncByte; }
    Answer isRun(std::size_t at, std::size_t distance, std::size_t leastAtEnd) const;
    Answer beginsRun(std::size_t at, std::size_t& distance) const;
    Answer isWhole() const;
    Answer isCut() const;
    bool find();
    bool search();
    void keepStep();
    void lose();
    void skipRest();
    void lock(std::size_t distance);
    TsPacket take();

    OnSkipped onSkipped_;
    Pieces pieces_;
    std::vector<std::uint8_t> bytes_;
    std::size_t at_ = 0;            ///< in bytes_, where the next sync byte should be; may be behind them
    std::uint64_t base_ = 0;        ///< in the stream, of bytes_
    std::size_t distance_ = 0;      ///< from packet to packet; 0 where it isn't known
    std::size_t lostDistance_ = 0;  ///< that may still hold, behind a sync byte that is missing
    std::uint64_t lostAt_ = 0;      ///< in the stream, where the search began
    bool atEnd_ = false;
};

/// From packet to packet, where these first bytes of a file, all of them or lookAhead at least, are those of
/// a transport stream; else 0.
std::size_t transportPacketDistance(std::span<const std::uint8_t> bytes);

}  // namespace mvrtpfec
