#pragma once

#include <cstddef>
#include <span>

#include "rtp_media/chain/pending_samples.h"

namespace mvrtpfec {

/// Where the open unit of a stream stands among its samples. Units begin where a parser says, by an index
/// into the sample that came last; an index below zero lies in the samples before.
class UnitCutter {
public:
    void append(IMediaData* sample, std::span<const std::uint8_t> bytes) {
        origin_ = static_cast<std::ptrdiff_t>(pending_.size());
        pending_.append(sample, bytes);
    }

    /// Size of the open unit if it ended at `index`; what comes before is given up when none is open.
    std::size_t sizeUpTo(std::ptrdiff_t index) const { return static_cast<std::size_t>(origin_ + index); }

    bool isOpen() const noexcept { return open_; }
    std::size_t size() const noexcept { return pending_.size(); }

    /// A unit begins at `index`. The one before must have been taken, up to there.
    void beginAt(std::ptrdiff_t index) {
        const std::size_t before = sizeUpTo(index);
        pending_.discard(before);
        origin_ -= static_cast<std::ptrdiff_t>(before);
        open_ = true;
    }

    /// Takes the first `size` bytes of the open unit as a unit.
    template <class Unit>
    std::unique_ptr<Unit> take(std::size_t size) {
        origin_ -= static_cast<std::ptrdiff_t>(size);
        return pending_.take<Unit>(size);
    }

    /// To be called behind a sample: gives up a unit that is too long for one, and without an open unit all
    /// but the last `kept` bytes, with which one may turn out to have begun.
    void trim(std::size_t kept) {
        if (pending_.size() > PendingSamples::maxUnitSize) open_ = false;
        if (!open_ && pending_.size() > kept) pending_.discard(pending_.size() - kept);
    }

    void clear() {
        pending_.clear();
        open_ = false;
    }

private:
    PendingSamples pending_;
    bool open_ = false;
    std::ptrdiff_t origin_ = 0;  ///< of the last sample, counted from the first pending byte
};

}  // namespace mvrtpfec
