#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <vector>

#include "rtp_media/chain/non_copyable.h"
#include "rtp_media/chain/sample_timing.h"
#include "rtp_media/chain/stream_type.h"

namespace mvrtpfec {

/// One elementary-stream unit, with one holder at a time: parser, packetizer, packet. The bytes themselves
/// may be shared: fragments of a unit refer to them instead of copying. A unit that has fragments, or is one,
/// is only read, so units may be given up on any thread.
class NAL : NonCopyable {
public:
    /// The header byte (ISO/IEC 14496-10, 7.3.1; of MPEG-4 Visual the start code's value) and the bytes
    /// before it.
    struct Header {
        std::uint8_t value = 0;
        std::int32_t startCodeLength = 0;
    };

    /// An empty unit with room for `capacity` bytes. Throws std::bad_alloc, also for a negative capacity.
    NAL(StreamType type, std::int32_t capacity);
    virtual ~NAL() = default;

    /// A unit of type `fragment` over `count` bytes of `unit` from `offset` on; both must lie inside it.
    static std::unique_ptr<NAL> fragmentOf(const NAL& unit, std::uint32_t offset, std::uint32_t count);

    /// Adds bytes at the write cursor; the caller has seen to it that they fit into the capacity.
    void append(std::span<const std::uint8_t> bytes);

    StreamType streamType() const noexcept { return streamType_; }
    std::int32_t capacity() const noexcept { return capacity_; }
    std::uint32_t size() const noexcept { return size_; }
    std::span<const std::uint8_t> bytes() const noexcept { return {data_, size_}; }

    /// Finds the header once the unit is complete; none when every byte is zero or the unit ends behind
    /// its start code. Found once and kept.
    const std::optional<Header>& header();

    /// The unit without its emulation prevention bytes, start code included (ISO/IEC 14496-10, 7.4.1).
    /// Made once and kept.
    std::span<const std::uint8_t> rbsp();

    SampleTiming timing;

private:
    NAL(const NAL& unit, std::uint32_t offset, std::uint32_t count);

    StreamType streamType_;
    std::int32_t capacity_;
    std::shared_ptr<std::uint8_t[]> buffer_;
    std::uint8_t* data_;
    std::uint32_t size_ = 0;
    bool headerKnown_ = false;
    std::optional<Header> header_;
    bool rbspKnown_ = false;
    std::vector<std::uint8_t> rbsp_;
};

/// Where the parser puts its units; normally a packetizer. Called on the parser's thread, in stream order.
class NALListener {
public:
    virtual ~NALListener() = default;
    virtual void onNAL(std::unique_ptr<NAL> unit) = 0;
    virtual void onEndOfStream() = 0;
};

}  // namespace mvrtpfec
