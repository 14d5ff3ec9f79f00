#pragma once

#include <mutex>

#include "core/fec_composer.h"

namespace mvrtpfec {

/// A composer that several threads may feed at once: one packet is taken in after the other. The lock is held
/// while FEC packets are delivered, so nobody waits for it but streaming threads. It is re-entrant for a
/// graph that feeds FEC packets back.
class Protection {
public:
    /// As CFecComposer's.
    Protection(FecPacketSink sink, FecMode mode, std::int32_t columns, std::int32_t rows)
        : composer_(std::move(sink), mode, columns, rows) {}

    /// As CFecComposer's.
    void protect(ConstRtpPacketView media) {
        const std::lock_guard lock(mutex_);
        composer_.protect(media);
    }

private:
    std::recursive_mutex mutex_;
    CFecComposer composer_;
};

}  // namespace mvrtpfec
