#include "rtp_media/bits/emulation_prevention.h"

#include "rtp_media/bits/start_code_search.h"

namespace mvrtpfec {

namespace {

void appendTo(std::vector<std::uint8_t>& out, std::span<const std::uint8_t> bytes) {
    out.insert(out.end(), bytes.begin(), bytes.end());
}

std::size_t countZeros(std::span<const std::uint8_t> bytes, std::size_t from) {
    std::size_t end = from;
    while (end < bytes.size() && bytes[end] == 0) ++end;
    return end - from;
}

}  // namespace

void removeEmulationPrevention(std::span<const std::uint8_t> unit, std::vector<std::uint8_t>& out) {
    out.clear();
    out.reserve(unit.size());
    while (!unit.empty()) {
        const std::size_t zerosAt = findZeroPair(unit);
        const std::size_t zeros = countZeros(unit, zerosAt);
        const std::size_t next = zerosAt + zeros;
        appendTo(out, unit.first(next));
        const bool prevention = zeros == 2 && next + 1 < unit.size() && unit[next] == 3 && unit[next + 1] < 4;
        unit = unit.subspan(prevention ? next + 1 : next);
    }
}

std::vector<std::uint8_t> insertEmulationPrevention(std::span<const std::uint8_t> rbsp) {
    std::vector<std::uint8_t> out;
    out.reserve(rbsp.size() + rbsp.size() / 2);
    std::size_t zeros = 0;
    for (const std::uint8_t byte : rbsp) {
        if (zeros == 2 && byte < 4) {
            out.push_back(3);
            zeros = 0;
        }
        out.push_back(byte);
        zeros = byte == 0 ? zeros + 1 : 0;
    }
    return out;
}

}  // namespace mvrtpfec
