#include "rtp_media/h264/avc_syntax_writer.h"

#include <bit>

namespace mvrtpfec {

/// As many zeros as bits follow the leading one (9.1).
void avcSyntaxWriter::writeCode(std::uint64_t codePlusOne) {
    const auto length = static_cast<unsigned>(std::bit_width(codePlusOne));
    for (unsigned i = 1; i < length; ++i) bits_.append(false);
    for (unsigned i = length; i-- > 0;) bits_.append((codePlusOne >> i & 1) != 0);
}

void avcSyntaxWriter::ue(std::uint32_t field, std::uint32_t) {
    writeCode(std::uint64_t{field} + 1);
}

void avcSyntaxWriter::se(std::int32_t field, std::int32_t, std::int32_t) {
    const std::int64_t value = field;
    writeCode(static_cast<std::uint64_t>(value > 0 ? 2 * value : -2 * value + 1));
}

std::vector<std::uint8_t> avcSyntaxWriter::finish() {
    bits_.append(true);
    return bits_.bytes();
}

}  // namespace mvrtpfec
