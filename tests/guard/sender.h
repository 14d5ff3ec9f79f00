#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <span>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "core/fec_composer.h"
#include "guard/packet_guard.h"
#include "tests/shared/random.h"

namespace mvrtpfec::testing {

using Bytes = std::span<const std::uint8_t>;

/// A datagram under way. `id` counts media packets in the order of sending; an FEC packet carries the
/// id of the first one that it protects.
struct WirePacket {
    ReceiverInput port;
    std::int64_t id;
    std::vector<std::uint8_t> bytes;
};
using Wire = std::function<void(const WirePacket&)>;

/// Remembers every media packet sent by a hash of its bytes.
class SentLog {
public:
    static constexpr std::int64_t unknown = -1;

    std::int64_t add(Bytes packet);
    std::int64_t find(Bytes packet) const;
    std::int64_t count() const { return count_; }

private:
    std::unordered_map<std::size_t, std::int64_t> ids_;
    std::int64_t count_ = 0;
};

struct Matrix {
    std::uint8_t columns;
    std::uint8_t rows;  ///< 0 for row FEC alone
};

struct Source {
    std::uint16_t firstNumber = 1000;
    std::uint32_t ssrc = 0x4d565246;
    std::size_t length = 1328;  ///< of a media packet; 0: 12 to 1400, all different
    std::uint64_t seed = 1;
};

/// What the sender does: composer A makes column FEC, then composer B row FEC, each FEC packet right
/// behind the media packet that completed it. FEC packets get numbers of our own, since those of the
/// composers depend on what ran before.
class Sender {
public:
    Sender(const Matrix& matrix, const Source& source, SentLog& log, Wire wire);

    /// Sends media packets of random content with their FEC.
    void send(int packets);
    /// Sends media packets without FEC.
    void sendBare(int packets);

    std::uint16_t nextNumber() const { return number_; }
    std::uint32_t ssrc() const { return source_.ssrc; }

private:
    WirePacket makeMedia();
    FecPacketSink sinkOf(ReceiverInput port, std::uint16_t firstNumber);

    Source source_;
    SentLog& log_;
    Wire wire_;
    Random random_;
    std::uint16_t number_;
    std::uint32_t timestamp_;
    std::int64_t lastId_ = 0;
    std::optional<CFecComposer> composerA_;
    CFecComposer composerB_;
};

}  // namespace mvrtpfec::testing
