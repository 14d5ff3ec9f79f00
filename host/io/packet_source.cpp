#include "host/io/packet_source.h"

#include "host/io/capture_source.h"
#include "host/io/file_format.h"
#include "host/io/input_file.h"
#include "host/io/ts_source.h"

namespace mvrtpfec {

std::unique_ptr<PacketSource> openSource(const std::filesystem::path& path, std::uint16_t mediaPort) {
    const FileFormat format = formatOf(path);
    if (format == FileFormat::transportStream) return std::make_unique<TsSource>(InputFile(path));
    return std::make_unique<CaptureSource>(InputFile(path), mediaPort);
}

}  // namespace mvrtpfec
