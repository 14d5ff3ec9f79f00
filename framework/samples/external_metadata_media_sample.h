#pragma once

#include "framework/base/com_ptr.h"
#include "framework/samples/oob_media_sample.h"

namespace mvrtpfec {

/// Another sample's payload with attributes of its own, by which a media type can be attached to a sample
/// that one may not change. It starts with a copy of the other sample's attributes and metadata and holds a
/// reference on that sample all its life.
class CExternalMetaDataMediaSample : public COOBMediaSample {
public:
    /// Throws mvn::COMException with the result of the step that failed, std::bad_alloc.
    explicit CExternalMetaDataMediaSample(IMediaSample* external);

    /// IMediaSample, and the newer sample interfaces as far as the external sample answers them. Nothing
    /// else, IUnknown neither.
    STDMETHODIMP QueryInterface(REFIID riid, void** object) override;

    // These act on the external sample.
    STDMETHODIMP GetPointer(BYTE** payload) override;
    STDMETHODIMP_(LONG) GetSize() override;
    STDMETHODIMP_(LONG) GetActualDataLength() override;
    STDMETHODIMP SetActualDataLength(LONG length) override;

private:
    void copyMetaData(IMediaSample3* source);
    void copyProperties(IMediaSample2* source);
    void copyAttributes();
    void copyTime();
    void copyMediaTime();
    void copyMediaType();

    CComPtr<IMediaSample> external_;
};

}  // namespace mvrtpfec
