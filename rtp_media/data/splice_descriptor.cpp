#include "rtp_media/data/splice_descriptor.h"

#include "rtp_media/bits/bit_reader.h"

namespace mvrtpfec {

namespace {

/// "CUEI", the identifier of the standard's own descriptors.
constexpr std::uint32_t cueIdentifier = 0x43554549;

// ANSI/SCTE 35, table 16.
enum class Tag : std::uint8_t { avail = 0, dtmf = 1, segmentation = 2, time = 3 };

std::uint8_t readByte(BitReader& reader) {
    return static_cast<std::uint8_t>(reader.bits(8));
}

std::vector<std::uint8_t> readBytes(BitReader& reader, std::size_t count) {
    std::vector<std::uint8_t> bytes;
    for (std::size_t i = 0; i < count; ++i) bytes.push_back(readByte(reader));
    return bytes;
}

DtmfDescriptor readDtmf(BitReader& reader) {
    DtmfDescriptor dtmf;
    dtmf.preroll = readByte(reader);
    const std::size_t count = reader.bits(3);
    reader.skip(5);
    dtmf.characters = readBytes(reader, count);
    return dtmf;
}

std::optional<SegmentationDescriptor::Restrictions> readRestrictions(BitReader& reader, bool restricted) {
    SegmentationDescriptor::Restrictions restrictions;
    restrictions.webDeliveryAllowed = reader.flag();
    restrictions.noRegionalBlackout = reader.flag();
    restrictions.archiveAllowed = reader.flag();
    restrictions.deviceRestrictions = static_cast<std::uint8_t>(reader.bits(2));
    if (!restricted) return std::nullopt;  // reserved bits stood there
    return restrictions;
}

SegmentationDescriptor readSegmentation(BitReader& reader) {
    SegmentationDescriptor segmentation;
    segmentation.eventId = reader.bits(32);
    segmentation.cancelled = reader.flag();
    reader.skip(7);
    if (segmentation.cancelled) return segmentation;
    segmentation.programSegmentation = reader.flag();
    const bool hasDuration = reader.flag();
    const bool unrestricted = reader.flag();
    segmentation.restrictions = readRestrictions(reader, !unrestricted);
    if (!segmentation.programSegmentation) {
        segmentation.components.resize(readByte(reader));
        for (auto& component : segmentation.components) {
            component.tag = readByte(reader);
            reader.skip(7);
            component.ptsOffset = reader.longBits(33);
        }
    }
    if (hasDuration) segmentation.duration = reader.longBits(40);
    segmentation.upidType = readByte(reader);
    segmentation.upid = readBytes(reader, readByte(reader));
    segmentation.typeId = readByte(reader);
    segmentation.number = readByte(reader);
    segmentation.expected = readByte(reader);
    // Later editions add sub-segments to some types; writers of earlier ones leave them out.
    if (reader.remaining() >= 16) {
        segmentation.subNumber = readByte(reader);
        segmentation.subExpected = readByte(reader);
    }
    return segmentation;
}

TimeDescriptor readTime(BitReader& reader) {
    TimeDescriptor time;
    time.taiSeconds = reader.longBits(48);
    time.taiNanoseconds = reader.bits(32);
    time.utcOffset = static_cast<std::uint16_t>(reader.bits(16));
    return time;
}

SpliceDescriptor readDescriptor(std::uint8_t tag, std::span<const std::uint8_t> bytes) {
    BitReader reader(bytes);
    const std::uint32_t identifier = reader.bits(32);
    if (identifier == cueIdentifier) {
        switch (static_cast<Tag>(tag)) {
            case Tag::avail:
                return AvailDescriptor{reader.bits(32)};
            case Tag::dtmf:
                return readDtmf(reader);
            case Tag::segmentation:
                return readSegmentation(reader);
            case Tag::time:
                return readTime(reader);
        }
    }
    return OtherDescriptor{tag, identifier, readBytes(reader, reader.remaining() / 8)};
}

}  // namespace

std::vector<SpliceDescriptor> parseSpliceDescriptors(std::span<const std::uint8_t> loop) {
    std::vector<SpliceDescriptor> descriptors;
    try {
        while (!loop.empty()) {
            BitReader head(loop);
            const std::uint8_t tag = readByte(head);
            const std::size_t length = readByte(head);
            if (length * 8 > head.remaining()) throw SpliceInfoException("Bad splice descriptor size");
            descriptors.push_back(readDescriptor(tag, loop.subspan(2, length)));
            loop = loop.subspan(2 + length);
        }
    } catch (const BitstreamException&) {
        throw SpliceInfoException("Bad splice descriptor size");
    }
    return descriptors;
}

}  // namespace mvrtpfec
