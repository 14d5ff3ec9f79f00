#pragma once

#include <array>
#include <cstring>

#include "framework/base/media_type.h"
#include "platform/graph/media_samples.h"

namespace mvrtpfec::testing {

/// A sample of somebody else's making, on the stack: no metadata, IMediaSample2 only when told so, and every
/// answer can be a failure.
class ForeignSample final : public IMediaSample2 {
public:
    STDMETHODIMP QueryInterface(REFIID riid, void** object) override {
        const bool known = riid == IID_IUnknown || riid == IID_IMediaSample ||
                           (answersMediaSample2 && riid == IID_IMediaSample2);
        *object = known ? this : nullptr;
        if (known) ++references;
        return known ? S_OK : E_NOINTERFACE;
    }
    STDMETHODIMP_(ULONG) AddRef() override { return static_cast<ULONG>(++references); }
    STDMETHODIMP_(ULONG) Release() override { return static_cast<ULONG>(--references); }

    STDMETHODIMP GetPointer(BYTE** buffer) override {
        *buffer = payload.data();
        return S_OK;
    }
    STDMETHODIMP_(LONG) GetSize() override { return static_cast<LONG>(payload.size()); }
    STDMETHODIMP GetTime(REFERENCE_TIME* start, REFERENCE_TIME* stop) override {
        *start = 100;
        *stop = 200;
        return timeResult;
    }
    STDMETHODIMP SetTime(REFERENCE_TIME*, REFERENCE_TIME*) override { return E_ACCESSDENIED; }
    STDMETHODIMP IsSyncPoint() override { return S_OK; }
    STDMETHODIMP SetSyncPoint(BOOL) override { return E_ACCESSDENIED; }
    STDMETHODIMP IsPreroll() override { return S_FALSE; }
    STDMETHODIMP SetPreroll(BOOL) override { return E_ACCESSDENIED; }
    STDMETHODIMP_(LONG) GetActualDataLength() override { return length; }
    STDMETHODIMP SetActualDataLength(LONG newLength) override {
        length = newLength;
        return S_OK;
    }
    STDMETHODIMP GetMediaType(AM_MEDIA_TYPE** type) override {
        *type = attachedType == nullptr ? nullptr : CreateMediaType(attachedType);
        return attachedType == nullptr ? typeResult : S_OK;
    }
    STDMETHODIMP SetMediaType(AM_MEDIA_TYPE*) override { return E_ACCESSDENIED; }
    STDMETHODIMP IsDiscontinuity() override { return S_OK; }
    STDMETHODIMP SetDiscontinuity(BOOL) override { return E_ACCESSDENIED; }
    STDMETHODIMP GetMediaTime(LONGLONG* start, LONGLONG* stop) override {
        *start = 7;
        *stop = 9;
        return mediaTimeResult;
    }
    STDMETHODIMP SetMediaTime(LONGLONG*, LONGLONG*) override { return E_ACCESSDENIED; }
    STDMETHODIMP GetProperties(DWORD size, BYTE* properties) override {
        AM_SAMPLE2_PROPERTIES record{};
        record.cbData = sizeof(record);
        record.dwStreamId = 5;
        record.dwSampleFlags = propertyFlags;
        record.pbBuffer = payload.data();
        record.cbBuffer = GetSize();
        record.lActual = length;
        std::memcpy(properties, &record, size);
        return propertiesResult;
    }
    STDMETHODIMP SetProperties(DWORD, const BYTE*) override { return E_ACCESSDENIED; }

    std::array<BYTE, 8> payload{};
    LONG length = 3;
    LONG references = 0;
    bool answersMediaSample2 = false;
    DWORD propertyFlags = 0;
    HRESULT timeResult = S_OK;
    HRESULT mediaTimeResult = S_OK;
    const AM_MEDIA_TYPE* attachedType = nullptr;  ///< told by GetMediaType alone
    HRESULT typeResult = S_FALSE;
    HRESULT propertiesResult = S_OK;
};

}  // namespace mvrtpfec::testing
