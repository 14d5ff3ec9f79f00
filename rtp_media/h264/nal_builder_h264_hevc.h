#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

#include "rtp_media/chain/nal_builder.h"
#include "rtp_media/chain/unit_cutter.h"

namespace mvrtpfec {

/// Cuts a byte stream (ISO/IEC 14496-10 and 23008-2, Annex B) into its NAL units. A unit runs from the first
/// zero of its start code, 00 00 00 01 or 00 00 01, to the first zero of the next one; zeros beyond these
/// three stay at the end of the unit before. A start code counts once a byte follows it.
class NALBuilderH264_HEVC : public NALBuilder {
public:
    /// Every sample is one unit; nothing is searched for.
    void setWholeSamples(bool on) noexcept { wholeSamples_ = on; }
    /// The end of each sample closes the open unit.
    void setUnitPerSample(bool on) noexcept { unitPerSample_ = on; }

    void input(IMediaData* sample) override;
    void flush() override;

protected:
    explicit NALBuilderH264_HEVC(bool isHevc) : isHevc_(isHevc) {}

private:
    void scan(std::span<const std::uint8_t> bytes);
    void startCodeAt(std::ptrdiff_t index);
    void noteTail(std::span<const std::uint8_t> bytes);
    std::size_t startCodeLength() const noexcept;
    std::size_t startCodePrefix() const noexcept;
    void afterSample();
    void emitUnit(std::size_t size);
    void reset();

    UnitCutter cutter_;
    /// The last four bytes: all that tells how far a start code has come.
    std::uint32_t tail_ = noTail;
    bool wholeSamples_ = false;
    bool unitPerSample_ = false;
    bool isHevc_;

    static constexpr std::uint32_t noTail = 0xFFFFFFFF;
};

class NALBuilderH264 final : public NALBuilderH264_HEVC {
public:
    NALBuilderH264() : NALBuilderH264_HEVC(false) {}
};

class NALBuilderHEVC final : public NALBuilderH264_HEVC {
public:
    NALBuilderHEVC() : NALBuilderH264_HEVC(true) {}
};

}  // namespace mvrtpfec
