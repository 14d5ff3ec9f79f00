#include "host/io/capture_writer.h"

#include <array>
#include <cstddef>

namespace mvrtpfec {

namespace {

constexpr std::uint32_t noSnapLength = 262144;  // what tcpdump writes for "whole frames"

/// A header of `Count` 32-bit words, each written in little-endian order.
template <std::size_t Count>
void writeWords(OutputFile& file, const std::array<std::uint32_t, Count>& words) {
    std::array<std::uint8_t, 4 * Count> bytes;
    for (std::size_t i = 0; i < bytes.size(); ++i)
        bytes[i] = static_cast<std::uint8_t>(words[i / 4] >> (8 * (i % 4)));
    file.write(bytes);
}

constexpr std::uint32_t lowWord(std::uint64_t value) {
    return static_cast<std::uint32_t>(value);
}

constexpr std::uint32_t highWord(std::uint64_t value) {
    return static_cast<std::uint32_t>(value >> 32);
}

/// Classic format: https://www.ietf.org/archive/id/draft-ietf-opsawg-pcap-04.html, sections 4 and 5.
class PcapWriter : public CaptureWriter {
public:
    PcapWriter(const std::filesystem::path& path, LinkType linkType) : CaptureWriter(path) {
        constexpr std::uint32_t nanosecondMagic = 0xa1b23c4d;
        constexpr std::uint32_t version = 2 | 4 << 16;
        writeWords<6>(file_,
                      {nanosecondMagic, version, 0, 0, noSnapLength, static_cast<std::uint32_t>(linkType)});
    }

    void writeFrame(std::chrono::nanoseconds time, std::span<const std::uint8_t> frame) override {
        constexpr std::uint64_t second = 1'000'000'000;
        const auto stamp = static_cast<std::uint64_t>(time.count());
        const std::uint32_t length = lowWord(frame.size());
        writeWords<4>(file_, {lowWord(stamp / second), lowWord(stamp % second), length, length});
        file_.write(frame);
    }
};

/// https://www.ietf.org/archive/id/draft-ietf-opsawg-pcapng-02.html: section header block (4.1),
/// interface description block (4.2), enhanced packet blocks (4.3).
class PcapngWriter : public CaptureWriter {
public:
    PcapngWriter(const std::filesystem::path& path, LinkType linkType) : CaptureWriter(path) {
        constexpr std::uint32_t byteOrderMagic = 0x1a2b3c4d;
        constexpr std::uint32_t unknown = 0xffffffff;
        writeWords<7>(file_, {0x0a0d0d0a, 28, byteOrderMagic, 1, unknown, unknown, 28});
        constexpr std::uint32_t resolutionOption = 9 | 1 << 16;  // if_tsresol, one byte
        constexpr std::uint32_t nanoseconds = 9;                 // 10 to the power of minus nine
        constexpr std::uint32_t endOfOptions = 0;
        writeWords<8>(file_, {1, 32, static_cast<std::uint32_t>(linkType), noSnapLength, resolutionOption,
                              nanoseconds, endOfOptions, 32});
    }

    void writeFrame(std::chrono::nanoseconds time, std::span<const std::uint8_t> frame) override {
        static constexpr std::array<std::uint8_t, 3> zeros{};
        const auto stamp = static_cast<std::uint64_t>(time.count());
        const std::uint32_t length = lowWord(frame.size());
        const std::uint32_t padding = (4 - length % 4) % 4;
        const std::uint32_t blockLength = 32 + length + padding;
        writeWords<7>(file_, {6, blockLength, 0, highWord(stamp), lowWord(stamp), length, length});
        file_.write(frame);
        file_.write(std::span(zeros).first(padding));
        writeWords<1>(file_, {blockLength});
    }
};

}  // namespace

std::unique_ptr<CaptureWriter> openCapture(const std::filesystem::path& path, FileFormat format,
                                           LinkType linkType) {
    if (format == FileFormat::pcapng) return std::make_unique<PcapngWriter>(path, linkType);
    return std::make_unique<PcapWriter>(path, linkType);
}

}  // namespace mvrtpfec
