#include "host/io/capture_sink.h"

#include <utility>

namespace mvrtpfec {

CaptureSink::CaptureSink(const std::filesystem::path& path, FileFormat format, std::uint16_t mediaPort,
                         std::shared_ptr<const FrameTemplate> addressing)
    : addressing_(std::move(addressing)),
      writer_(openCapture(path, format, addressing_->linkType())),
      mediaPort_(mediaPort) {}

void CaptureSink::write(const Datagram& datagram) {
    if (!datagram.frame.empty()) {
        writer_->writeFrame(datagram.time, datagram.frame);
        return;
    }
    const auto port = static_cast<std::uint16_t>(udpPortOf(datagram.port, mediaPort_));
    addressing_->build(datagram.payload, port, built_);
    writer_->writeFrame(datagram.time, built_);
}

}  // namespace mvrtpfec
