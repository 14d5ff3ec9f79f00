#pragma once

#include "framework/base/media_type.h"
#include "mvrtpfec/rtp_media_type.h"

namespace mvrtpfec {

/// The one media type of the sender's pins. S_FALSE refuses.
inline HRESULT checkRtpPacketType(const CMediaType& type) {
    return type.majortype == MEDIATYPE_Rtp && type.subtype == MEDIASUBTYPE_Rtp ? S_OK : S_FALSE;
}

/// Offers that type at position 0, VFW_S_NO_MORE_ITEMS at any other.
inline HRESULT offerRtpPacketType(int position, CMediaType& type) {
    if (position != 0) return VFW_S_NO_MORE_ITEMS;
    type = CMediaType(MEDIATYPE_Rtp, MEDIASUBTYPE_Rtp);
    return S_OK;
}

}  // namespace mvrtpfec
