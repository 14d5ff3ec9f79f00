#pragma once

#include "rtp_media/audio/nal_builder_frames.h"

namespace mvrtpfec {

/// Parser for frames that begin with a sync word. Format tells of its frames:
/// - Unit: the unit class;
/// - firstByte, and syncs(second): whether both bytes together are the sync word;
/// - lengthEnd: how many bytes tell the frame's length;
/// - frameLength(bytes): bytes from the sync word on, 0 when these lengthEnd bytes are no header.
template <class Format>
class NALBuilderSyncedFrames : public NALBuilderFrames {
protected:
    NALBuilderSyncedFrames() : NALBuilderFrames(Format::firstByte, Format::lengthEnd) {}

private:
    Finding inspect(std::span<const std::uint8_t> header) const final {
        if (header[0] != Format::firstByte) return noFrame();
        if (header.size() < 2) return {2, 0};
        if (!Format::syncs(header[1])) return noFrame();
        if (header.size() < Format::lengthEnd) return {Format::lengthEnd, 0};
        return {Format::lengthEnd, Format::frameLength(header.template first<Format::lengthEnd>())};
    }

    std::unique_ptr<NAL> takeUnit(PendingSamples& pending, std::size_t size) const final {
        return pending.take<typename Format::Unit>(size);
    }
};

}  // namespace mvrtpfec
