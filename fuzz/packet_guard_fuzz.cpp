// Any packets through the packet guard into a receiver.
// Input: a byte of settings, then records of a kind byte and its fields:
//   0 media: number (2), SSRC (1), timestamp (1)
//   1 FEC: number (1), base (2), offset (1), count (1), bits of the direction (1)
//   2 any bytes: length (1), then as many
//   3 flush, or with the upper bit five milliseconds that pass

#include <algorithm>
#include <array>
#include <chrono>
#include <cstdlib>
#include <memory>
#include <optional>
#include <span>
#include <vector>

#include "core/fec_decoder.h"
#include "core/reorder_buffer.h"
#include "guard/packet_guard.h"

namespace {

using namespace mvrtpfec;

void require(bool condition) {
    if (!condition) std::abort();
}

/// How the guard's own FEC packets look; such packets are not put in from outside.
bool isBarren(ConstRtpPacketView packet) {
    return packet.length == fecPayloadOffset && packet.payloadType() == fecPayloadType &&
           (packet.data[0] & paddingBit) != 0 &&
           packet.data[fec_header::payloadTypeRecovery] == (fec_header::extensionFlag | 1);
}

class Receiver {
public:
    void push(std::size_t input, std::unique_ptr<RtpPacket> packet) {
        Buffer& buffer = buffers_[input];
        buffer.Push(Item(std::move(packet)));
        for (Item due; buffer.Pop(due);) {
            if (FAILED(decoder_->Feed(due->view.data, due->view.length))) decoder_ = makeDecoder();
        }
    }

private:
    using Item = std::shared_ptr<RtpPacket>;
    using Buffer = CRtpPacketReorderBuffer<Item>;

    static Buffer makeBuffer() {
        return {20, 65535, [](const Item& packet) -> std::int32_t { return packet->view.sequenceNumber(); }};
    }
    static std::unique_ptr<CFecDecoder> makeDecoder() {
        return std::make_unique<CFecDecoder>([](RtpPacket* packet) { require(packet->view.length > 0); });
    }

    std::array<Buffer, 3> buffers_{makeBuffer(), makeBuffer(), makeBuffer()};
    std::unique_ptr<CFecDecoder> decoder_ = makeDecoder();
};

/// Stands between guard and receiver and holds the guard to its word.
class Referee {
public:
    explicit Referee(const GuardSettings& settings)
        : maxHeld_(settings.window + settings.startHold + maxAside),
          guard_([this](ReceiverInput input,
                        std::unique_ptr<RtpPacket> packet) { take(input, std::move(packet)); },
                 settings) {}

    void push(std::unique_ptr<RtpPacket> packet) {
        if (packet->view.length >= fecPayloadOffset && isBarren(packet->view)) return;
        ++pushed_;
        guard_.push(std::move(packet));
        checkHeld(maxHeld_);
    }
    void passTime() {
        now_ += std::chrono::milliseconds(5);
        guard_.passTime(now_);
        checkHeld(maxHeld_);
    }
    void flush() {
        guard_.flush();
        checkHeld(maxAside);
    }

private:
    /// FEC packets that wait for the wrap and a stray media packet that waits for a follower.
    static constexpr std::size_t maxAside = 64 + 1;

    void take(ReceiverInput input, std::unique_ptr<RtpPacket> packet) {
        if (input == ReceiverInput::media)
            takeMedia(packet->view);
        else
            takeFec(nextFec_[input == ReceiverInput::rowFec], packet->view);
        receiver_.push(static_cast<std::size_t>(input), std::move(packet));
    }

    void takeMedia(ConstRtpPacketView packet) {
        if (packet.payloadType() != mediaPayloadType) return;
        const std::uint64_t run = guard_.figures().restarts;
        const std::uint16_t number = packet.sequenceNumber();
        // Only 65535 may come twice, for the decoder that is new behind it.
        const bool again = run == run_ && last_ == 65535 && number == 65535;
        const auto ahead = static_cast<std::int16_t>(number - last_.value_or(0));
        require(run != run_ || !last_ || again || ahead > 0);
        run_ = run;
        last_ = number;
        if (!again) ++handedOn_;
    }

    void takeFec(std::uint16_t& expected, ConstRtpPacketView packet) {
        require(packet.payloadType() == fecPayloadType && packet.sequenceNumber() == expected++);
        if (!isBarren(packet)) ++handedOn_;
    }

    void checkHeld(std::size_t bound) {
        const GuardFigures f = guard_.figures();
        const std::uint64_t settled = handedOn_ + f.late + f.repeated + f.fecKeptBack + f.foreign;
        require(settled <= pushed_ && pushed_ - settled <= bound);
    }

    std::size_t maxHeld_;
    std::chrono::steady_clock::time_point now_;
    std::uint64_t pushed_ = 0;
    std::uint64_t handedOn_ = 0;
    std::uint64_t run_ = 0;
    std::optional<std::uint16_t> last_;
    std::array<std::uint16_t, 2> nextFec_{};
    Receiver receiver_;
    PacketGuard guard_;
};

class Input {
public:
    explicit Input(std::span<const std::uint8_t> bytes) : bytes_(bytes) {}

    bool empty() const { return bytes_.empty(); }
    std::uint8_t byte() {
        if (bytes_.empty()) return 0;
        const std::uint8_t first = bytes_.front();
        bytes_ = bytes_.subspan(1);
        return first;
    }
    std::vector<std::uint8_t> take(std::size_t count) {
        const auto part = bytes_.first(std::min(count, bytes_.size()));
        bytes_ = bytes_.subspan(part.size());
        return {part.begin(), part.end()};
    }

private:
    std::span<const std::uint8_t> bytes_;
};

std::unique_ptr<RtpPacket> makePacket(const std::vector<std::uint8_t>& bytes) {
    return std::make_unique<RtpPacket>(bytes.data(), bytes.size());
}

std::unique_ptr<RtpPacket> readMedia(Input& input) {
    std::vector<std::uint8_t> bytes(64);
    bytes[0] = versionTwo;
    bytes[1] = mediaPayloadType;
    bytes[2] = input.byte();
    bytes[3] = input.byte();
    bytes[11] = input.byte();
    bytes[7] = input.byte();
    return makePacket(bytes);
}

std::unique_ptr<RtpPacket> readFec(Input& input) {
    std::vector<std::uint8_t> bytes(64 + fecHeaderSize);
    bytes[0] = versionTwo;
    bytes[1] = fecPayloadType;
    bytes[3] = input.byte();
    bytes[fec_header::snBase] = input.byte();
    bytes[fec_header::snBase + 1] = input.byte();
    bytes[fec_header::lengthRecovery + 1] = 64;
    bytes[fec_header::payloadTypeRecovery] = fec_header::extensionFlag | mediaPayloadType;
    bytes[fec_header::offset] = input.byte();
    bytes[fec_header::protectedCount] = input.byte();
    bytes[fec_header::direction] = input.byte();
    return makePacket(bytes);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    Input input({data, size});
    const std::uint8_t settings = input.byte();
    Referee referee({.window = 1u + settings % 32,
                     .patience = std::chrono::milliseconds(settings),
                     .startHold = 1u + settings / 32 * 20u});
    while (!input.empty()) {
        const std::uint8_t kind = input.byte();
        switch (kind % 4) {
            case 0:
                referee.push(readMedia(input));
                break;
            case 1:
                referee.push(readFec(input));
                break;
            case 2:
                referee.push(makePacket(input.take(input.byte())));
                break;
            default:
                kind < 128 ? referee.flush() : referee.passTime();
        }
    }
    referee.flush();
    return 0;
}
