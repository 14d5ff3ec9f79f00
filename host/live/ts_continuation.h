#pragma once

#include <cstdint>
#include <optional>
#include <unordered_map>

#include "host/io/ts_packet.h"

namespace mvrtpfec {

/// Makes the packets of a transport stream that is played again go on from the play before: continuity
/// counters, clock references, presentation and decoding times (ISO/IEC 13818-1
/// sections 2.4.3.3, 2.4.3.5, 2.4.3.7). The first play stays as it is. What is scrambled keeps its times.
class TsContinuation {
public:
    /// The next play begins, so many ticks of 90 kHz behind the first.
    void begin(std::uint64_t ticks);
    void apply(TsPacket& packet);

    /// What the longest of its streams played in the first play, by its own times; 0 where none has any.
    std::uint64_t length() const;

private:
    struct Stream {
        bool isNew = true;  ///< in this play
        std::optional<std::uint8_t> counter;
        std::uint8_t counterShift = 0;
        // Decoding times of the first play, from the first one on.
        std::optional<std::uint64_t> firstTime;
        std::uint64_t lastTime = 0;
        std::uint64_t timeStep = 0;
    };

    void count(TsPacket& packet, Stream& stream) const;
    void shiftTimes(TsPacket& packet) const;
    void note(TsPacket& packet, Stream& stream) const;

    std::unordered_map<std::uint16_t, Stream> streams_;  ///< by PID
    std::uint64_t shift_ = 0;                            ///< 90 kHz
};

}  // namespace mvrtpfec
