#include "rtp_media/audio/nal_builder_aac_adts_audio.h"
#include "rtp_media/audio/nal_builder_aac_latm_loas_audio.h"
#include "rtp_media/audio/nal_builder_aac_raw_audio.h"
#include "rtp_media/audio/nal_builder_ac3_audio.h"
#include "rtp_media/audio/nal_builder_mpeg1_audio.h"
#include "rtp_media/chain/nal_builder.h"
#include "rtp_media/data/nal_builder_mpeg2ts.h"
#include "rtp_media/data/nal_builder_scte35.h"
#include "rtp_media/data/nal_builder_sync_point_based.h"
#include "rtp_media/h264/nal_builder_h264_hevc.h"
#include "rtp_media/video/nal_builder_mpeg2.h"
#include "rtp_media/video/nal_builder_start_code_based.h"

namespace mvrtpfec {

std::unique_ptr<NALBuilder> createNALBuilder(StreamType type) {
    switch (type) {
        case StreamType::mpeg2Video:
            return std::make_unique<NALBuilderMPEG2>();
        case StreamType::mpeg1Audio:
            return std::make_unique<NALBuilderMPEG1Audio>();
        case StreamType::h264:
            return std::make_unique<NALBuilderH264>();
        case StreamType::ac3:
            return std::make_unique<NALBuilderAC3Audio>();
        case StreamType::aacAdts:
            return std::make_unique<NALBuilderAACADTSAudio>();
        case StreamType::aacLatm:
            return std::make_unique<NALBuilderAACLATMLOASAudio>();
        case StreamType::teletext:
            return std::make_unique<NALBuilderTeletext>();
        case StreamType::h263:
            return std::make_unique<NalBuilderStartCodeBased<NALH263>>();
        case StreamType::mpeg4Visual:
            return std::make_unique<NalBuilderStartCodeBased<NALMPEG4Visual>>();
        case StreamType::aacRaw:
            return std::make_unique<NALBuilderAACRawAudio>();
        case StreamType::dvbSubtitle:
            return std::make_unique<NALBuilderDVBSubtitle>();
        case StreamType::scte35:
            return std::make_unique<NALBuilderSCTE35>();
        case StreamType::mpeg2ts:
            return std::make_unique<NALBuilderMpeg2ts>();
        case StreamType::hevc:
            return std::make_unique<NALBuilderHEVC>();
        case StreamType::ttml:
            return std::make_unique<NALBuilderTtml>();
        case StreamType::klv:
            return std::make_unique<NALBuilderKLV>();
        case StreamType::webVtt:
            return std::make_unique<NALBuilderWebVtt>();
        case StreamType::proRes:
            return std::make_unique<NalBuilderStartCodeBased<NALProRes>>();
        case StreamType::syncPoint22:
            return std::make_unique<NalBuilderSyncPointBased<NalInputTypeGeneric<22>>>();
        case StreamType::syncPoint23:
            return std::make_unique<NalBuilderSyncPointBased<NalInputTypeGeneric<23>>>();
        case StreamType::syncPoint24:
            return std::make_unique<NalBuilderSyncPointBased<NalInputTypeGeneric<24>>>();
        case StreamType::fragment:
            break;
    }
    return nullptr;
}

}  // namespace mvrtpfec
