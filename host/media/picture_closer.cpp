#include "host/media/picture_closer.h"

#include <array>
#include <utility>

#include "host/media/unit_part.h"

namespace mvrtpfec {

void PictureCloser::onNAL(std::unique_ptr<NAL> unit) {
    constexpr unsigned filler = 12;
    const UnitPart part = partOf(*unit);
    if (part == UnitPart::picture && pictureOpen_) close();
    if (part != UnitPart::other)
        pictureOpen_ = true;
    else if (unit->header() && (unit->header()->value & 0x1FU) != filler)
        pictureOpen_ = false;
    next_.onNAL(std::move(unit));
}

void PictureCloser::onEndOfStream() {
    if (pictureOpen_) close();
    next_.onEndOfStream();
}

void PictureCloser::close() {
    /// primary_pic_type 7: slices of any type.
    constexpr std::array<std::uint8_t, 6> delimiter{0, 0, 0, 1, 0x09, 0xF0};
    auto unit = std::make_unique<NAL>(StreamType::h264, static_cast<std::int32_t>(delimiter.size()));
    unit->append(delimiter);
    pictureOpen_ = false;
    next_.onNAL(std::move(unit));
}

}  // namespace mvrtpfec
