#include "framework/samples/external_metadata_media_sample.h"

#include <memory>

#include "framework/base/unknown.h"
#include "support/com_exception.h"

namespace mvrtpfec {

namespace {

void require(HRESULT result) {
    if (FAILED(result)) throw mvn::COMException(result);
}

}  // namespace

CExternalMetaDataMediaSample::CExternalMetaDataMediaSample(IMediaSample* external)
    : COOBMediaSample(nullptr, 0), external_(external) {
    if (external == nullptr) throw mvn::COMException(E_POINTER);
    if (const auto newest = queryFor<IMediaSample3>(external, IID_IMediaSample3)) {
        copyMetaData(newest);
        copyProperties(newest);
    } else if (const auto newer = queryFor<IMediaSample2>(external, IID_IMediaSample2)) {
        copyProperties(newer);
    }
    copyAttributes();
}

STDMETHODIMP CExternalMetaDataMediaSample::QueryInterface(REFIID riid, void** object) {
    if (object == nullptr) return E_POINTER;
    *object = nullptr;
    if (riid == IID_IMediaSample2 || riid == IID_IMediaSample3) {
        CComPtr<IUnknown> answer;
        const HRESULT result = external_->QueryInterface(riid, reinterpret_cast<void**>(&answer));
        if (FAILED(result)) return result;
    } else if (riid != IID_IMediaSample) {
        return E_NOINTERFACE;
    }
    return GetInterface(this, object);
}

STDMETHODIMP CExternalMetaDataMediaSample::GetPointer(BYTE** payload) {
    return external_->GetPointer(payload);
}

STDMETHODIMP_(LONG) CExternalMetaDataMediaSample::GetSize() {
    return external_->GetSize();
}

STDMETHODIMP_(LONG) CExternalMetaDataMediaSample::GetActualDataLength() {
    return external_->GetActualDataLength();
}

STDMETHODIMP CExternalMetaDataMediaSample::SetActualDataLength(LONG length) {
    const HRESULT result = external_->SetActualDataLength(length);
    // The properties record tells the same length.
    if (SUCCEEDED(result)) COOBMediaSample::SetActualDataLength(length);
    return result;
}

void CExternalMetaDataMediaSample::copyMetaData(IMediaSample3* source) {
    for (LONG number = MetaData_CuePoint; number <= MetaData_RecordingEvent; ++number) {
        const auto key = static_cast<MetaDataType>(number);
        const BYTE* bytes = nullptr;
        ULONG count = 0;
        if (SUCCEEDED(source->GetMetaData(key, &bytes, &count)))
            SetMetaData(key, bytes, static_cast<LONG>(count));
    }
}

void CExternalMetaDataMediaSample::copyProperties(IMediaSample2* source) {
    AM_SAMPLE2_PROPERTIES record{};
    require(source->GetProperties(sizeof(record), reinterpret_cast<BYTE*>(&record)));
    require(adoptProperties(record));
}

void CExternalMetaDataMediaSample::copyAttributes() {
    copyTime();
    copyMediaTime();
    copyMediaType();
    require(SetDiscontinuity(external_->IsDiscontinuity() == S_OK));
    require(SetSyncPoint(external_->IsSyncPoint() == S_OK));
    require(SetPreroll(external_->IsPreroll() == S_OK));
}

void CExternalMetaDataMediaSample::copyTime() {
    REFERENCE_TIME start = 0;
    REFERENCE_TIME stop = 0;
    const HRESULT result = external_->GetTime(&start, &stop);
    if (result == VFW_E_SAMPLE_TIME_NOT_SET) {
        require(SetTime(nullptr, nullptr));
    } else {
        require(result);
        require(SetTime(&start, result == VFW_S_NO_STOP_TIME ? nullptr : &stop));
    }
}

void CExternalMetaDataMediaSample::copyMediaTime() {
    LONGLONG start = 0;
    LONGLONG stop = 0;
    const HRESULT result = external_->GetMediaTime(&start, &stop);
    if (result == VFW_E_MEDIA_TIME_NOT_SET) {
        require(SetMediaTime(nullptr, nullptr));
    } else {
        require(result);
        require(SetMediaTime(&start, &stop));
    }
}

void CExternalMetaDataMediaSample::copyMediaType() {
    AM_MEDIA_TYPE* type = nullptr;
    require(external_->GetMediaType(&type));
    const std::unique_ptr<AM_MEDIA_TYPE, decltype(&DeleteMediaType)> owner(type, &DeleteMediaType);
    require(SetMediaType(type));
}

}  // namespace mvrtpfec
