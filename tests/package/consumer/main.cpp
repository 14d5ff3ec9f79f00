// A program of somebody else's that uses the FEC core alone: a row of four, one lost, rebuilt.

#include <array>
#include <cstdint>
#include <cstdio>
#include <memory>
#include <set>
#include <vector>

#include <core/fec_composer.h>
#include <core/fec_decoder.h>

using namespace mvrtpfec;

int main() {
    std::vector<std::shared_ptr<RtpPacket>> fec;
    CFecComposer composer([&](std::shared_ptr<RtpPacket> packet) { fec.push_back(std::move(packet)); },
                          fecRow, 4, 4);
    std::set<int> released;
    {
        CFecDecoder decoder([&](RtpPacket* packet) { released.insert(packet->view.sequenceNumber()); });
        for (std::uint16_t number = 0; number < 40; ++number) {
            std::array<std::uint8_t, 200> bytes{versionTwo, mediaPayloadType};
            writeBigEndian16(&bytes[2], number);
            composer.protect({bytes.data(), bytes.size()});
            if (number != 21 && FAILED(decoder.Feed(bytes.data(), bytes.size()))) return 1;
            for (const auto& packet : fec) {
                if (FAILED(decoder.Feed(packet->view.data, packet->view.length))) return 1;
            }
            fec.clear();
        }
    }
    std::printf("released %zu of 40\n", released.size());
    return released.size() == 40 ? 0 : 1;
}
