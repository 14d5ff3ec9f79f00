#pragma once

#include <algorithm>
#include <functional>
#include <memory>
#include <optional>
#include <string_view>
#include <unordered_map>

#include "core/fec_composer.h"
#include "guard/packet_guard.h"
#include "tests/shared/packets.h"

namespace mvrtpfec::testing {

/// A datagram under way. `id` counts media packets in the order of sending; an FEC packet carries the
/// id of the first one that it protects.
struct WirePacket {
    ReceiverInput port;
    std::int64_t id;
    Bytes bytes;
};
using Wire = std::function<void(const WirePacket&)>;

/// Remembers every media packet sent by a hash of its bytes.
class SentLog {
public:
    static constexpr std::int64_t unknown = -1;

    std::int64_t add(const Bytes& packet) {
        ids_.try_emplace(hashOf(packet), count_);
        return count_++;
    }
    std::int64_t find(const Bytes& packet) const {
        const auto found = ids_.find(hashOf(packet));
        return found == ids_.end() ? unknown : found->second;
    }
    std::int64_t count() const { return count_; }

private:
    static std::size_t hashOf(const Bytes& bytes) {
        return std::hash<std::string_view>{}({reinterpret_cast<const char*>(bytes.data()), bytes.size()});
    }

    std::unordered_map<std::size_t, std::int64_t> ids_;
    std::int64_t count_ = 0;
};

struct Matrix {
    std::uint8_t columns;
    std::uint8_t rows;  ///< 0 for row FEC alone
};

struct Source {
    std::uint16_t firstNumber = 1000;
    std::size_t length = 1328;  ///< of a media packet; 0: 12 to 1400, all different
    std::uint32_t ssrc = 0x4d565246;
    std::uint64_t seed = 1;
};

/// What the sender does: composer A makes column FEC, then composer B row FEC, each FEC packet right
/// behind the media packet that completed it. FEC packets get numbers of our own, since those of the
/// composers depend on what ran before.
class Sender {
public:
    Sender(const Matrix& matrix, const Source& source, SentLog& log, Wire wire)
        : source_(source),
          log_(log),
          wire_(std::move(wire)),
          random_(source.seed),
          number_(source.firstNumber),
          timestamp_(static_cast<std::uint32_t>(random_.bits())),
          composerB_(sinkOf(ReceiverInput::rowFec, 31000), fecRow, matrix.columns,
                     std::max<std::uint8_t>(matrix.rows, 4)) {
        if (matrix.rows != 0)
            composerA_.emplace(sinkOf(ReceiverInput::columnFec, 700), fecColumn, matrix.columns, matrix.rows);
    }

    /// Sends media packets of random content with their FEC.
    void send(int packets) {
        for (int i = 0; i < packets; ++i) {
            const WirePacket media = makeMedia();
            wire_(media);
            if (composerA_) composerA_->protect(viewOf(media.bytes));
            composerB_.protect(viewOf(media.bytes));
        }
    }
    /// Sends media packets without FEC.
    void sendBare(int packets) {
        for (int i = 0; i < packets; ++i) wire_(makeMedia());
    }

    std::uint16_t nextNumber() const { return number_; }
    std::uint32_t ssrc() const { return source_.ssrc; }

private:
    WirePacket makeMedia() {
        const std::size_t length = source_.length != 0 ? source_.length : 12 + random_.below(1389);
        Bytes bytes = randomMediaPacket(random_, number_++, length);
        writeBigEndian32(&bytes[4], timestamp_ += 300);
        writeBigEndian32(&bytes[8], source_.ssrc);
        lastId_ = log_.add(bytes);
        return {ReceiverInput::media, lastId_, std::move(bytes)};
    }
    FecPacketSink sinkOf(ReceiverInput port, std::uint16_t firstNumber) {
        return [this, port, next = firstNumber](const std::shared_ptr<RtpPacket>& fec) mutable {
            writeBigEndian16(fec->view.data + 2, next++);
            const auto back = static_cast<std::uint16_t>(number_ - 1 - protectedRange(fec->view).base);
            wire_({port, lastId_ - back, bytesOf(fec->view)});
        };
    }

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
