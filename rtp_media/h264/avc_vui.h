#pragma once

#include <cstdint>
#include <optional>

#include "rtp_media/h264/avc_hrd.h"

namespace mvrtpfec {

/// Video usability information (ISO/IEC 14496-10, E.1.1).
struct AvcVui {
    static constexpr std::uint8_t extendedSar = 255;

    bool hasAspectRatio = false;
    std::uint8_t aspectRatioIdc = 0;
    std::uint16_t sarWidth = 0;
    std::uint16_t sarHeight = 0;
    bool hasOverscan = false;
    bool overscanAppropriate = false;
    bool hasSignalType = false;
    std::uint8_t videoFormat = 0;
    bool fullRange = false;
    bool hasColourDescription = false;
    std::uint8_t colourPrimaries = 0;
    std::uint8_t transferCharacteristics = 0;
    std::uint8_t matrixCoefficients = 0;
    bool hasChromaLocation = false;
    std::uint32_t chromaLocationTop = 0;
    std::uint32_t chromaLocationBottom = 0;
    bool hasTiming = false;
    std::uint32_t numUnitsInTick = 0;
    std::uint32_t timeScale = 0;
    bool fixedFrameRate = false;
    bool hasNalHrd = false;
    AvcHrd nalHrd;
    bool hasVclHrd = false;
    AvcHrd vclHrd;
    bool lowDelayHrd = false;
    bool picStructPresent = false;
    bool hasRestriction = false;
    bool motionVectorsOverBoundaries = false;
    std::uint32_t maxBytesPerPicDenominator = 0;
    std::uint32_t maxBitsPerMbDenominator = 0;
    std::uint32_t log2MaxMvLengthHorizontal = 0;
    std::uint32_t log2MaxMvLengthVertical = 0;
    std::uint32_t maxNumReorderFrames = 0;
    std::uint32_t maxDecFrameBuffering = 0;

    /// Whose lengths the SEI messages follow; null without any.
    const AvcHrd* hrd() const { return hasNalHrd ? &nalHrd : hasVclHrd ? &vclHrd : nullptr; }
};

template <class Syntax, class Vui>
void vuiPictureSyntax(Syntax& syntax, Vui& vui) {
    syntax.u(1, vui.hasAspectRatio);
    if (vui.hasAspectRatio) {
        syntax.u(8, vui.aspectRatioIdc);
        if (vui.aspectRatioIdc == AvcVui::extendedSar) {
            syntax.u(16, vui.sarWidth);
            syntax.u(16, vui.sarHeight);
        }
    }
    syntax.u(1, vui.hasOverscan);
    if (vui.hasOverscan) syntax.u(1, vui.overscanAppropriate);
    syntax.u(1, vui.hasSignalType);
    if (vui.hasSignalType) {
        syntax.u(3, vui.videoFormat);
        syntax.u(1, vui.fullRange);
        syntax.u(1, vui.hasColourDescription);
        if (vui.hasColourDescription) {
            syntax.u(8, vui.colourPrimaries);
            syntax.u(8, vui.transferCharacteristics);
            syntax.u(8, vui.matrixCoefficients);
        }
    }
    syntax.u(1, vui.hasChromaLocation);
    if (vui.hasChromaLocation) {
        syntax.ue(vui.chromaLocationTop, 5);
        syntax.ue(vui.chromaLocationBottom, 5);
    }
}

template <class Syntax, class Vui>
void vuiTimingSyntax(Syntax& syntax, Vui& vui) {
    syntax.u(1, vui.hasTiming);
    if (vui.hasTiming) {
        syntax.u(32, vui.numUnitsInTick);
        syntax.u(32, vui.timeScale);
        syntax.u(1, vui.fixedFrameRate);
    }
    syntax.u(1, vui.hasNalHrd);
    if (vui.hasNalHrd) hrdSyntax(syntax, vui.nalHrd);
    syntax.u(1, vui.hasVclHrd);
    if (vui.hasVclHrd) hrdSyntax(syntax, vui.vclHrd);
    if (vui.hasNalHrd || vui.hasVclHrd) syntax.u(1, vui.lowDelayHrd);
    syntax.u(1, vui.picStructPresent);
}

template <class Syntax, class Vui>
void vuiSyntax(Syntax& syntax, Vui& vui) {
    vuiPictureSyntax(syntax, vui);
    vuiTimingSyntax(syntax, vui);
    syntax.u(1, vui.hasRestriction);
    if (!vui.hasRestriction) return;
    syntax.u(1, vui.motionVectorsOverBoundaries);
    syntax.ue(vui.maxBytesPerPicDenominator, 16);
    syntax.ue(vui.maxBitsPerMbDenominator, 16);
    syntax.ue(vui.log2MaxMvLengthHorizontal, 16);
    syntax.ue(vui.log2MaxMvLengthVertical, 16);
    syntax.ue(vui.maxNumReorderFrames, 16);
    syntax.ue(vui.maxDecFrameBuffering, 16);
}

}  // namespace mvrtpfec
