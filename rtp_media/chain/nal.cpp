#include "rtp_media/chain/nal.h"

#include <algorithm>
#include <cstring>
#include <new>

#include "rtp_media/bits/emulation_prevention.h"

namespace mvrtpfec {

namespace {

std::shared_ptr<std::uint8_t[]> bufferOf(std::int32_t capacity) {
    if (capacity < 0) throw std::bad_alloc();
    return std::make_shared_for_overwrite<std::uint8_t[]>(static_cast<std::size_t>(capacity));
}

std::optional<NAL::Header> findHeader(std::span<const std::uint8_t> unit) {
    const auto first = std::find_if(unit.begin(), unit.end(), [](std::uint8_t byte) { return byte != 0; });
    if (first == unit.end()) return std::nullopt;
    const auto zeros = static_cast<std::int32_t>(first - unit.begin());
    if (*first != 1) return NAL::Header{*first, zeros};
    if (first + 1 == unit.end()) return std::nullopt;
    return NAL::Header{first[1], zeros + 1};
}

}  // namespace

NAL::NAL(StreamType type, std::int32_t capacity)
    : streamType_(type), capacity_(capacity), buffer_(bufferOf(capacity)), data_(buffer_.get()) {}

NAL::NAL(const NAL& unit, std::uint32_t offset, std::uint32_t count)
    : streamType_(StreamType::fragment),
      capacity_(static_cast<std::int32_t>(count)),
      buffer_(unit.buffer_),
      data_(unit.data_ + offset),
      size_(count) {}

std::unique_ptr<NAL> NAL::fragmentOf(const NAL& unit, std::uint32_t offset, std::uint32_t count) {
    return std::unique_ptr<NAL>(new NAL(unit, offset, count));
}

void NAL::append(std::span<const std::uint8_t> bytes) {
    if (bytes.empty()) return;
    std::memcpy(data_ + size_, bytes.data(), bytes.size());
    size_ += static_cast<std::uint32_t>(bytes.size());
}

const std::optional<NAL::Header>& NAL::header() {
    if (!headerKnown_) {
        header_ = findHeader(bytes());
        headerKnown_ = true;
    }
    return header_;
}

std::span<const std::uint8_t> NAL::rbsp() {
    if (!rbspKnown_) {
        removeEmulationPrevention(bytes(), rbsp_);
        rbspKnown_ = true;
    }
    return rbsp_;
}

}  // namespace mvrtpfec
