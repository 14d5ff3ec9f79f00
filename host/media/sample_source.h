#pragma once

#include <cstdint>
#include <filesystem>
#include <memory>
#include <vector>

#include "framework/base/com_ptr.h"
#include "host/io/skipped_bytes.h"
#include "rtp_media/chain/simple_media_data.h"
#include "rtp_media/chain/stream_type.h"

namespace mvrtpfec {

using SamplePtr = CComPtr<SimpleMediaData>;

/// A sample of these bytes, without times.
SamplePtr sampleOf(std::vector<std::uint8_t> bytes);

/// A file as the media samples that a parser takes, one by one in file order; what is kept in memory doesn't
/// grow with the file. One thread.
class SampleSource {
public:
    virtual ~SampleSource() = default;

    /// The next sample; empty at the end. Throws FileError.
    virtual SamplePtr read() = 0;
    /// Share of the file that has been read, 0 to 1; 0 when its size isn't known (a pipe).
    virtual double progress() const = 0;
    /// What of a transport stream had to be passed over; null for other formats.
    virtual SkippedBytes* skipped() { return nullptr; }
};

/// Opens a file of this format, which has a parser. Throws FileError, as for a transport stream that is to be
/// of another format.
///
/// Formats whose parser finds its units by itself come in pieces of 64 KiB without times. A transport stream
/// comes a packet a sample, timed from its clock references (TsReader). What has no boundaries but its
/// samples', or ends with them, comes a unit a sample, each a sync point.
std::unique_ptr<SampleSource> openSamples(const std::filesystem::path& path, StreamType type);

}  // namespace mvrtpfec
