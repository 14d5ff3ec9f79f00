#include "rtp_media/audio/audio_mux_element.h"

namespace mvrtpfec {

namespace {

/// The bytes up to the end that the header tells.
std::span<const std::uint8_t> requireFrame(std::span<const std::uint8_t> unit) {
    constexpr std::size_t shortest = 6;
    if (unit.size() < shortest || !isLoasSync(unit[0], unit[1]))
        throw BitstreamException("a LOAS frame begins with 2B7");
    const std::size_t length = loasFrameLength(unit);
    if (unit.size() < length) throw BitstreamException("a LOAS frame ends too early");
    return unit.first(length);
}

void readConfig(BitReader& bits, LoasFrame& frame, const StreamMuxConfig* previous) {
    const bool useSameStreamMux = bits.flag();
    frame.configPresent = !useSameStreamMux;
    if (frame.configPresent) {
        frame.configStart = bits.position();
        frame.config = parseStreamMuxConfig(bits);
        frame.configEnd = bits.position();
    } else {
        if (previous == nullptr) throw BitstreamException("no StreamMuxConfig yet");
        frame.config = *previous;
    }
}

/// PayloadLengthInfo and PayloadMux (ISO/IEC 14496-3, 1.7.3.1) for frameLengthType 0.
void skipSubframe(BitReader& bits) {
    std::size_t length = 0;
    std::uint32_t part = 0;
    do {
        part = bits.bits(8);
        length += part;
    } while (part == 255);
    bits.skip(length * 8);
}

}  // namespace

LoasFrame parseLoasFrame(std::span<const std::uint8_t> unit, const StreamMuxConfig* previous) {
    BitReader bits(requireFrame(unit));
    bits.skip(LoasFrame::headerSize * 8);
    LoasFrame frame;
    readConfig(bits, frame, previous);
    frame.payloadStart = bits.position();
    for (std::size_t i = 0; i < frame.config.subframes; ++i) skipSubframe(bits);
    if (frame.config.otherDataPresent) bits.skip(frame.config.otherDataLenBits);
    frame.payloadEnd = bits.position();
    return frame;
}

}  // namespace mvrtpfec
