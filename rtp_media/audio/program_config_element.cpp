#include "rtp_media/audio/program_config_element.h"

namespace mvrtpfec {

namespace {

/// A flag, and behind a set one `count` bits.
void skipOptional(BitReader& bits, std::size_t count) {
    if (bits.flag()) bits.skip(count);
}

}  // namespace

void skipProgramConfigElement(BitReader& bits, std::size_t configStart) {
    // element_instance_tag, object_type, sampling_frequency_index
    bits.skip(4 + 2 + 4);
    const std::size_t front = bits.bits(4);
    const std::size_t side = bits.bits(4);
    const std::size_t back = bits.bits(4);
    const std::size_t lfe = bits.bits(2);
    const std::size_t associatedData = bits.bits(3);
    const std::size_t couplingChannels = bits.bits(4);
    skipOptional(bits, 4);  // mono_mixdown_element_number
    skipOptional(bits, 4);  // stereo_mixdown_element_number
    skipOptional(bits, 3);  // matrix_mixdown_idx, pseudo_surround_enable
    bits.skip((front + side + back + couplingChannels) * 5 + (lfe + associatedData) * 4);
    bits.skip((8 - (bits.position() - configStart) % 8) % 8);
    const std::size_t commentBytes = bits.bits(8);
    bits.skip(commentBytes * 8);
}

}  // namespace mvrtpfec
