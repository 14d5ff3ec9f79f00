#include "selftest/rtp_packet_reorder_tester.h"

#include <array>
#include <cstdint>
#include <string>

#include "core/reorder_buffer.h"

namespace mvrtpfec {

namespace {

constexpr std::array<const char*, 3> strings{"first", "second", "third"};

std::int32_t placeOf(const std::string& text) {
    std::int32_t place = 0;
    while (text != strings.at(static_cast<std::size_t>(place))) ++place;
    return place;
}

}  // namespace

bool CRtpPacketReorderTester::run(std::ostream& out) {
    CRtpPacketReorderBuffer<std::string> buffer(static_cast<std::int32_t>(strings.size()), 65535, placeOf);
    for (const std::size_t place : {2U, 0U, 1U}) buffer.Push(strings[place]);

    bool passed = true;
    std::size_t pops = 0;
    for (std::string popped; buffer.Pop(popped); ++pops) {
        if (pops < strings.size() && popped == strings[pops]) continue;
        out << "Fail: Error while popping string " << popped << '\n';
        passed = false;
    }
    if (pops == strings.size()) return passed;
    out << "Fail: Wrong number of pops\n";
    return false;
}

}  // namespace mvrtpfec
