#pragma once

#include <cstdint>
#include <deque>
#include <memory>
#include <span>

#include "framework/base/com_ptr.h"
#include "framework/samples/media_data.h"
#include "rtp_media/chain/nal.h"

namespace mvrtpfec {

/// The samples of a stream that no unit has consumed yet, seen as one run of bytes from the first byte still
/// wanted on.
class PendingSamples {
public:
    /// Longest unit that is put together. A longer one is no unit of any format; collecting it would only
    /// take memory.
    static constexpr std::size_t maxUnitSize = 64 * 1024 * 1024;

    /// Takes a reference to the sample; `bytes` are its payload, not empty.
    void append(IMediaData* sample, std::span<const std::uint8_t> bytes);

    std::size_t size() const noexcept { return size_; }

    /// Gives up the first `count` bytes, and with them every sample that they use up.
    void discard(std::size_t count);
    void clear();

    /// Copies the first `count` bytes (at most size()) into `unit`, gives it the timing of the sample where
    /// they begin, and gives them up.
    void moveTo(NAL& unit, std::size_t count);

    template <class Unit>
    std::unique_ptr<Unit> take(std::size_t count) {
        auto unit = std::make_unique<Unit>(static_cast<std::int32_t>(count));
        moveTo(*unit, count);
        return unit;
    }

private:
    struct Entry {
        CComPtr<IMediaData> sample;
        std::span<const std::uint8_t> bytes;  ///< what is left of its payload
    };

    std::deque<Entry> entries_;
    std::size_t size_ = 0;
};

}  // namespace mvrtpfec
