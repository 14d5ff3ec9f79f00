#pragma once
// What a host puts between its network and the three inputs of a receiver filter. Standard C++ alone; link
// MvRtpFec::guard.

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <span>

namespace mvrtpfec {

/// The receiver's inputs; the decoder tells packets apart by themselves, but each input must carry one
/// stream.
enum class ReceiverInput : std::uint8_t { media = 0, columnFec = 1, rowFec = 2 };

struct GuardSettings {
    std::size_t window = 20;  ///< packets by which one may be overtaken and still be put in its place
    /// How long a missing packet is waited for at most; left out: until the window has passed it.
    std::optional<std::chrono::nanoseconds> patience;
    /// Packets held back at most at the start of a run, until a column FEC packet has told the decoder
    /// how long to keep them. More than one of our largest matrices.
    std::size_t startHold = 128;
};

/// Counters since construction, in packets; `holesSkipped` counts runs of missing numbers.
struct GuardFigures {
    std::uint64_t late = 0;
    std::uint64_t repeated = 0;
    std::uint64_t holesSkipped = 0;
    std::uint64_t longestHole = 0;  ///< most missing numbers in a row
    std::uint64_t fecKeptBack = 0;
    std::uint64_t foreign = 0;  ///< no valid media or FEC packet, or a stray one of another source
    std::uint64_t restarts = 0;
    std::uint64_t refed = 0;          ///< media packets given to the receiver twice, at a wrap
    std::uint64_t renewals = 0;       ///< decoders that the receiver was made to replace
    std::uint64_t matrixChanges = 0;  ///< within a run, each of which has a decoder replaced
};

/// Orders the packets of one protected stream and gives the receiver what it repairs well: without losing the
/// packet behind each hole, over restarts of the source and wraps of its numbers. Not thread-safe.
class ReceiverGuard {
public:
    /// One RTP packet for an input of the receiver, on the caller's thread; the bytes are good until it
    /// returns.
    using Output = std::function<void(ReceiverInput, std::span<const std::uint8_t>)>;

    static constexpr std::size_t largestWindow = 1000;

    /// Throws std::invalid_argument for a window or a start hold outside 1 to largestWindow.
    explicit ReceiverGuard(Output output, const GuardSettings& settings = {});
    ~ReceiverGuard();

    ReceiverGuard(const ReceiverGuard&) = delete;
    ReceiverGuard& operator=(const ReceiverGuard&) = delete;

    /// A datagram as it came, from any of the three ports: anything. Media packets have payload type 33, FEC
    /// packets 96.
    void push(std::span<const std::uint8_t> datagram);
    /// Tells the time, which only the settings' patience needs: every few milliseconds.
    void passTime(std::chrono::steady_clock::time_point now);
    /// Hands on every packet still held, at the end of a stream.
    void flush();

    GuardFigures figures() const;

private:
    struct Inside;
    std::unique_ptr<Inside> inside_;
};

}  // namespace mvrtpfec
