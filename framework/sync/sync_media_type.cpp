#include "framework/sync/sync_media_type.h"

namespace mvrtpfec {

HRESULT checkSyncMediaType(const CMediaType* type) noexcept {
    if (type == nullptr) return E_POINTER;
    return type->majortype == MEDIATYPE_Sync && type->subtype == MEDIASUBTYPE_Sync ? S_OK : S_FALSE;
}

}  // namespace mvrtpfec
