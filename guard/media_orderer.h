#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <vector>

#include "core/rtp_packet.h"
#include "core/sequence_set.h"

namespace mvrtpfec {

/// Puts valid media packets in sequence order within a window and leaves out what comes late or twice.
///
/// A missing number is given up when a packet `window` numbers ahead of it arrives, so a packet that is
/// overtaken by fewer than that is put back in its place. A packet far off, of another source (SSRC),
/// or with another timestamp than the one of its number had, waits for a second one that follows it (after
/// RFC 3550 appendix A.1); then the order jumps to it. The first packets of a run are collected until
/// begin(), at most `startHold` of them.
class MediaOrderer {
public:
    struct Output {
        /// The next packet in order; `afterHole` when numbers before it were given up.
        std::function<void(std::unique_ptr<RtpPacket>, bool afterHole)> packet;
        /// The source has restarted or jumped; what follows has no relation to what came before.
        std::function<void()> restart;
    };
    struct Figures {
        std::uint64_t late = 0;         ///< came after their number was given up
        std::uint64_t repeated = 0;     ///< same number as a packet handed on or held
        std::uint64_t stray = 0;        ///< far off or of another source, and nothing followed
        std::uint64_t holes = 0;        ///< runs of missing numbers given up
        std::uint64_t longestHole = 0;  ///< numbers
        std::uint64_t restarts = 0;
    };

    /// `window` and `startHold` are at least 1.
    MediaOrderer(std::size_t window, std::size_t startHold, Output output);

    void push(std::unique_ptr<RtpPacket> packet);
    /// Gives up the hole at which packets wait if it was there at a call `patience` ago.
    void passTime(std::chrono::steady_clock::time_point now, std::chrono::nanoseconds patience);
    /// Ends the collecting at the start of a run.
    void begin();
    /// Hands on everything held, over its holes.
    void flush();

    /// Where the run stands: the number handed on last, or the first one collected; none before that.
    std::optional<std::uint16_t> position() const;
    /// False when the packet of that number in this run can't have that timestamp: another one was seen,
    /// or the number is ahead and the timestamp isn't.
    bool agrees(std::uint16_t number, std::uint32_t timestamp) const;
    const Figures& figures() const { return figures_; }

private:
    void setStart(const std::vector<std::unique_ptr<RtpPacket>>& packets);
    std::size_t findRun(const std::vector<std::unique_ptr<RtpPacket>>& packets) const;
    bool isNear(const RtpPacket& one, const RtpPacket& other) const;
    int distance(const RtpPacket& packet) const;
    void place(std::unique_ptr<RtpPacket> packet);
    /// The timestamp that came with a number of this run, as far as it is remembered.
    std::optional<std::uint32_t> timestampOf(std::uint16_t number) const;
    /// Its number came before with another timestamp: this is another run.
    bool contradicts(const RtpPacket& packet) const;
    void leaveOut(std::uint16_t sequenceNumber);
    void consider(std::unique_ptr<RtpPacket> packet);
    bool followsStray(const RtpPacket& packet) const;
    bool strayIsAhead() const;
    void jumpTo(std::unique_ptr<RtpPacket> packet);
    void restartWith(std::unique_ptr<RtpPacket> packet);
    void handOnHeld();
    void handOnDue();
    void giveUpTo(std::uint16_t target);
    void step();

    struct Waiting {
        std::uint16_t number;
        std::chrono::steady_clock::time_point since;
    };

    std::size_t window_;
    std::size_t startHold_;
    Output output_;
    Figures figures_;
    bool collecting_ = true;
    std::vector<std::unique_ptr<RtpPacket>> collected_;

    std::uint32_t ssrc_ = 0;
    std::uint16_t next_ = 0;                         ///< the number waited for
    std::vector<std::unique_ptr<RtpPacket>> slots_;  ///< ring of the window, slots_[head_] for next_
    std::size_t head_ = 0;
    std::size_t held_ = 0;
    bool afterHole_ = false;
    std::uint64_t hole_ = 0;  ///< numbers given up in a row
    SequenceSet handedOn_;
    std::vector<std::uint32_t> timestamps_;  ///< of the packets handed on last, by number
    int reach_ = 0;                          ///< how far behind a packet may belong to this run
    int leftOutInARow_ = 0;
    std::unique_ptr<RtpPacket> stray_;
    std::optional<Waiting> waiting_;  ///< for a missing number, while packets behind it are held
};

}  // namespace mvrtpfec
