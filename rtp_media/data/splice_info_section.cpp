#include "rtp_media/data/splice_info_section.h"

#include "rtp_media/bits/bit_reader.h"
#include "rtp_media/data/splice_command.h"
#include "rtp_media/data/splice_descriptor.h"

namespace mvrtpfec {

namespace {

constexpr std::uint8_t tableId = 0xFC;
constexpr std::size_t headerSize = 3;
constexpr std::size_t crcSize = 4;
/// What was written before the command's length was known to matter.
constexpr std::size_t unknownLength = 0xFFF;

/// CRC_32 (ISO/IEC 13818-1, annex A): zero over a section with its own.
std::uint32_t crc32(std::span<const std::uint8_t> bytes) {
    std::uint32_t crc = 0xFFFFFFFF;
    for (const std::uint8_t byte : bytes) {
        crc ^= std::uint32_t{byte} << 24;
        for (int i = 0; i < 8; ++i) crc = crc << 1 ^ ((crc & 0x80000000) != 0 ? 0x04C11DB7U : 0U);
    }
    return crc;
}

/// The section alone, its length checked.
std::span<const std::uint8_t> sectionOf(std::span<const std::uint8_t> bytes, SpliceInfoSection& section) {
    BitReader header(bytes);
    if (header.bits(8) != tableId) throw SpliceInfoException("Not a splice info section");
    header.skip(2);
    section.sapType = static_cast<std::uint8_t>(header.bits(2));
    const std::size_t length = header.bits(12);
    if (headerSize + length > bytes.size() || length < crcSize)
        throw SpliceInfoException("Splice info section ends too early");
    return bytes.first(headerSize + length);
}

void parseFixedFields(BitReader& reader, SpliceInfoSection& section) {
    section.protocolVersion = static_cast<std::uint8_t>(reader.bits(8));
    section.encrypted = reader.flag();
    section.encryptionAlgorithm = static_cast<std::uint8_t>(reader.bits(6));
    section.ptsAdjustment = reader.longBits(33);
    section.cwIndex = static_cast<std::uint8_t>(reader.bits(8));
    section.tier = static_cast<std::uint16_t>(reader.bits(12));
}

std::span<const std::uint8_t> restOf(const BitReader& reader, std::span<const std::uint8_t> bytes) {
    return bytes.subspan(reader.position() / 8);
}

void parseBody(std::span<const std::uint8_t> body, SpliceInfoSection& section) {
    BitReader reader(body);
    parseFixedFields(reader, section);
    const std::size_t commandLength = reader.bits(12);
    section.commandType = static_cast<std::uint8_t>(reader.bits(8));
    if (section.encrypted) return;
    auto rest = restOf(reader, body);
    if (commandLength != unknownLength && commandLength > rest.size())
        throw SpliceInfoException("Splice info section ends too early");
    const auto command = commandLength == unknownLength ? rest : rest.first(commandLength);
    const std::size_t used = parseSpliceCommand(section.commandType, command, section.command);
    rest = rest.subspan(commandLength == unknownLength ? used : commandLength);
    BitReader loop(rest);
    const std::size_t loopLength = loop.bits(16);
    if (loopLength * 8 > loop.remaining()) throw SpliceInfoException("Bad splice descriptor size");
    section.descriptors = parseSpliceDescriptors(rest.subspan(2, loopLength));
}

}  // namespace

SpliceInfoSection parseSpliceInfoSection(std::span<const std::uint8_t> bytes) {
    SpliceInfoSection section;
    try {
        const auto whole = sectionOf(bytes, section);
        parseBody(whole.subspan(headerSize, whole.size() - headerSize - crcSize), section);
        section.crcValid = crc32(whole) == 0;
    } catch (const BitstreamException&) {
        throw SpliceInfoException("Splice info section ends too early");
    }
    return section;
}

}  // namespace mvrtpfec
