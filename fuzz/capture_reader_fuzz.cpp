// Any bytes as a capture file, through libpcap, and as a single frame of every link type.
// Input: a capture file as it is; anything that does not begin like one is taken for a frame.

#include <algorithm>
#include <cstdlib>
#include <span>
#include <vector>

#include <stdio.h>

#include "core/big_endian.h"
#include "host/io/capture_source.h"
#include "host/io/file_error.h"
#include "host/io/frame_layers.h"
#include "host/io/frame_template.h"

namespace {

using namespace mvrtpfec;
using Bytes = std::span<const std::uint8_t>;

constexpr std::uint16_t mediaPort = 5004;

void require(bool condition) {
    if (!condition) std::abort();
}

/// What has been found in a frame must be found again in one that is built from it.
void checkFrame(LinkType linkType, Bytes frame) {
    const auto layers = locateUdp(linkType, frame);
    if (!layers || !layers->complete) return;
    const Bytes payload = frame.subspan(layers->payload, layers->payloadSize);
    FrameTemplate model(linkType);
    model.take(frame, *layers);
    std::vector<std::uint8_t> built;
    model.build(payload, mediaPort, built);
    const auto again = locateUdp(linkType, built);
    require(again && again->complete && again->destinationPort == mediaPort);
    require(std::ranges::equal(Bytes(built).subspan(again->payload, again->payloadSize), payload));
}

void checkFile(Bytes bytes) {
    std::vector<std::uint8_t> copy(bytes.begin(), bytes.end());
    std::FILE* stream = fmemopen(copy.data(), copy.size(), "rb");
    if (stream == nullptr) return;
    try {
        CaptureSource source(InputFile(stream, "fuzz.pcap"), mediaPort);
        for (Datagram datagram; source.read(datagram);) {
            require(datagram.time.count() >= 0);
            checkFrame(source.addressing()->linkType(), datagram.frame);
        }
    } catch (const FileError&) {
        // What a broken file is for.
    }
}

bool isCaptureFile(Bytes bytes) {
    if (bytes.size() < 4) return false;
    const std::uint32_t magic = readBigEndian32(bytes.data());
    return magic == 0x0a0d0d0a || magic == 0xa1b2c3d4 || magic == 0xd4c3b2a1 || magic == 0xa1b23c4d ||
           magic == 0x4d3cb2a1;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const Bytes bytes(data, size);
    if (isCaptureFile(bytes)) {
        checkFile(bytes);
        return 0;
    }
    for (const LinkType linkType : {LinkType::null, LinkType::ethernet, LinkType::raw, LinkType::loop,
                                    LinkType::linuxSll, LinkType::ipv4, LinkType::ipv6, LinkType::linuxSll2})
        checkFrame(linkType, bytes);
    return 0;
}
