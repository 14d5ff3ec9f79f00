#pragma once

#include <memory>

#include "framework/base/base_pin.h"
#include "framework/guarded_entry.h"
#include "framework/samples/external_metadata_media_sample.h"

namespace mvrtpfec {

/// A sample that announces its pin's media type, and that type.
struct AnnouncedSample {
    CComPtr<IMediaSample> sample;
    CMediaType type;
};

/// Wraps a sample so that it carries the type of the pin's connection. VFW_E_NOT_CONNECTED, and what the
/// wrapping fails with.
inline HRESULT announceConnection(CBasePin& pin, IMediaSample* sample, AnnouncedSample& announced) noexcept {
    return guardedEntry([&] {
        const HRESULT result = pin.ConnectionMediaType(&announced.type);
        if (FAILED(result)) return result;
        auto wrapper = std::make_unique<CExternalMetaDataMediaSample>(sample);
        announced.sample = CComPtr<IMediaSample>(wrapper.get());
        return wrapper.release()->SetMediaType(&announced.type);
    });
}

}  // namespace mvrtpfec
