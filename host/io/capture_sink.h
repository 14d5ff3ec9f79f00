#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include "host/io/capture_writer.h"
#include "host/io/packet_sink.h"

namespace mvrtpfec {

/// Writes datagrams to a capture of the source's link type: a captured frame byte for byte as it was
/// (its port too), any other datagram in a frame built from the source's addressing.
class CaptureSink : public PacketSink {
public:
    CaptureSink(const std::filesystem::path& path, FileFormat format, std::uint16_t mediaPort,
                std::shared_ptr<const FrameTemplate> addressing);

    void write(const Datagram& datagram) override;
    void finish() override { writer_->finish(); }

private:
    std::shared_ptr<const FrameTemplate> addressing_;
    std::unique_ptr<CaptureWriter> writer_;
    std::uint16_t mediaPort_;
    std::vector<std::uint8_t> built_;
};

}  // namespace mvrtpfec
