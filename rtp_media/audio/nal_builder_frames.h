#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <vector>

#include "rtp_media/chain/nal_builder.h"
#include "rtp_media/chain/pending_samples.h"

namespace mvrtpfec {

/// Base of the parsers for frames that tell their length in their header: hunts for a header, counts the
/// frame down and gives it out, one unit a frame, timed by the sample that holds its first byte. What lies
/// between frames is passed over. A header that can't be one costs a single byte: the hunt goes on behind its
/// first. A frame whose end never comes is dropped by flush.
class NALBuilderFrames : public NALBuilder {
public:
    void input(IMediaData* sample) override;
    void flush() override;

protected:
    /// What the bytes at the start of a possible frame tell.
    struct Finding {
        /// Bytes of header that it takes to tell; more than there are: ask again with that many.
        std::size_t headerSize = 0;
        /// Of the frame with its header, at least headerSize; 0: no frame begins here.
        std::size_t frameSize = 0;
    };
    static constexpr Finding noFrame() { return {}; }

    /// `firstByte`: what every frame begins with. `mostHeader`: an upper bound for the header.
    NALBuilderFrames(std::uint8_t firstByte, std::size_t mostHeader);

    /// Looks at `header`, at least one byte; any further bytes of the stream may follow in it.
    virtual Finding inspect(std::span<const std::uint8_t> header) const = 0;

    /// Makes the unit of the first `size` pending bytes and gives them up.
    virtual std::unique_ptr<NAL> takeUnit(PendingSamples& pending, std::size_t size) const = 0;

private:
    void scan(std::span<const std::uint8_t> bytes);
    std::size_t skipToFirstByte(std::span<const std::uint8_t> bytes);
    std::size_t collectHeader(std::span<const std::uint8_t> bytes);
    std::size_t collectFrame(std::span<const std::uint8_t> bytes);
    void judgeHeader();
    void giveUpHeader(std::size_t count);
    void reset();

    std::uint8_t firstByte_;
    PendingSamples pending_;            ///< from the first byte of the possible frame on
    std::vector<std::uint8_t> header_;  ///< what was seen of it; empty while a frame is counted down
    std::size_t headerWanted_ = 1;      ///< bytes of header_ with which to ask again
    std::size_t frameSize_ = 0;         ///< of the open frame; 0 while hunting
    std::size_t missing_ = 0;           ///< bytes that the open frame still waits for
};

}  // namespace mvrtpfec
