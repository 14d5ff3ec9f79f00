#include "host/io/packet_sink.h"

#include <utility>

#include "host/io/capture_sink.h"
#include "host/io/file_format.h"
#include "host/io/ts_sink.h"

namespace mvrtpfec {

std::unique_ptr<PacketSink> openSink(const std::filesystem::path& path, std::uint16_t mediaPort,
                                     std::shared_ptr<const FrameTemplate> addressing) {
    const FileFormat format = formatOf(path);
    if (format == FileFormat::transportStream) return std::make_unique<TsSink>(path);
    return std::make_unique<CaptureSink>(path, format, mediaPort, std::move(addressing));
}

}  // namespace mvrtpfec
