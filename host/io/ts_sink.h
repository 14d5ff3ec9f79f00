#pragma once

#include "host/io/output_file.h"
#include "host/io/packet_sink.h"

namespace mvrtpfec {

/// Writes the payloads of media packets one behind the other: the transport stream again.
class TsSink : public PacketSink {
public:
    explicit TsSink(const std::filesystem::path& path) : path_(path), file_(path) {}

    /// Throws FileError for an FEC packet: a transport stream has no place for it.
    void write(const Datagram& datagram) override;
    void finish() override { file_.finish(); }

private:
    std::filesystem::path path_;
    OutputFile file_;
};

}  // namespace mvrtpfec
