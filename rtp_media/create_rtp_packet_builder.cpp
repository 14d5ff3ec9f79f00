#include "rtp_media/audio/rtp_packet_builder_aac_latm_audio.h"
#include "rtp_media/audio/rtp_packet_builder_aac_raw_adts_audio.h"
#include "rtp_media/chain/rtp_packet_builder.h"
#include "rtp_media/data/rtp_packet_builder_mpeg2ts.h"
#include "rtp_media/h264/rtp_packet_builder_h264.h"
#include "rtp_media/video/rtp_packet_builder_h263.h"
#include "rtp_media/video/rtp_packet_builder_mpeg4_visual.h"

namespace mvrtpfec {

std::unique_ptr<RTPPacketBuilder> RTPPacketBuilder::create(StreamType type, std::uint32_t payloadType,
                                                           std::uint32_t port, RTPPacketListener* listener,
                                                           ParameterSetMode parameterSetMode,
                                                           TimestampMode timestampMode) {
    switch (type) {
        case StreamType::h264:
            return std::make_unique<RTPPacketBuilderH264>(payloadType, port, listener, parameterSetMode,
                                                          timestampMode);
        case StreamType::aacAdts:
        case StreamType::aacRaw:
            return std::make_unique<RTPPacketBuilderAACRAWADTSAudio>(payloadType, port, listener);
        case StreamType::aacLatm:
            return std::make_unique<RTPPacketBuilderAACLATMAudio>(payloadType, port, listener);
        case StreamType::h263:
            return std::make_unique<RTPPacketBuilderH263>(payloadType, port, listener);
        case StreamType::mpeg4Visual:
            return std::make_unique<RTPPacketBuilderMPEG4Visual>(payloadType, port, listener);
        case StreamType::mpeg2ts:
            return std::make_unique<RTPPacketBuilderMpeg2ts>(payloadType, port, listener);
        default:
            return nullptr;
    }
}

}  // namespace mvrtpfec
