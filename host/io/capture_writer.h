#pragma once

#include <chrono>
#include <cstdint>
#include <memory>
#include <span>

#include "host/io/file_format.h"
#include "host/io/link_type.h"
#include "host/io/output_file.h"

namespace mvrtpfec {

/// Writes captured frames in one of the capture formats, times in nanoseconds, numbers in little-endian
/// order on every machine. (libpcap reads both formats but writes only the older one.)
class CaptureWriter {
public:
    virtual ~CaptureWriter() = default;

    /// `time` is since the Unix epoch and not negative. Throws FileError.
    virtual void writeFrame(std::chrono::nanoseconds time, std::span<const std::uint8_t> frame) = 0;

    void finish() { file_.finish(); }

protected:
    explicit CaptureWriter(const std::filesystem::path& path) : file_(path) {}

    OutputFile file_;
};

/// Starts a file of `format`, which is pcap or pcapng. Throws FileError.
std::unique_ptr<CaptureWriter> openCapture(const std::filesystem::path& path, FileFormat format,
                                           LinkType linkType);

}  // namespace mvrtpfec
