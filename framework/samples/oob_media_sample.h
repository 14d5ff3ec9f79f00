#pragma once

#include <atomic>
#include <map>
#include <memory>
#include <vector>

#include "framework/base/media_type.h"
#include "framework/samples/media_sample3.h"

namespace mvrtpfec {

/// A free-standing sample over a payload that it does not own, with times, flags, an attached media type and
/// metadata. Its count starts at 0; the creator takes the first reference. The last release destroys it.
/// Used by one thread at a time, the reference count excepted.
class COOBMediaSample : public IMediaSample3 {
public:
    COOBMediaSample(BYTE* payload, LONG length) noexcept;

    COOBMediaSample(const COOBMediaSample&) = delete;
    COOBMediaSample& operator=(const COOBMediaSample&) = delete;

    STDMETHODIMP QueryInterface(REFIID riid, void** object) override;
    STDMETHODIMP_(ULONG) AddRef() override;
    STDMETHODIMP_(ULONG) Release() override;

    /// E_FAIL when there is no payload.
    STDMETHODIMP GetPointer(BYTE** payload) override;
    STDMETHODIMP_(LONG) GetSize() override;
    /// Without a stop time the stop is start + 1 and the result VFW_S_NO_STOP_TIME.
    STDMETHODIMP GetTime(REFERENCE_TIME* start, REFERENCE_TIME* stop) override;
    STDMETHODIMP SetTime(REFERENCE_TIME* start, REFERENCE_TIME* stop) override;
    STDMETHODIMP IsSyncPoint() override;
    STDMETHODIMP SetSyncPoint(BOOL set) override;
    STDMETHODIMP IsPreroll() override;
    STDMETHODIMP SetPreroll(BOOL set) override;
    STDMETHODIMP_(LONG) GetActualDataLength() override;
    STDMETHODIMP SetActualDataLength(LONG length) override;
    /// A copy for the caller to delete; null and S_FALSE when no type is attached.
    STDMETHODIMP GetMediaType(AM_MEDIA_TYPE** type) override;
    /// E_OUTOFMEMORY leaves no type attached.
    STDMETHODIMP SetMediaType(AM_MEDIA_TYPE* type) override;
    STDMETHODIMP IsDiscontinuity() override;
    STDMETHODIMP SetDiscontinuity(BOOL set) override;
    STDMETHODIMP GetMediaTime(LONGLONG* start, LONGLONG* stop) override;
    /// Of stop - start the lower 32 bits are kept, signed. Without both times there is none.
    STDMETHODIMP SetMediaTime(LONGLONG* start, LONGLONG* stop) override;

    /// Fills as much of an AM_SAMPLE2_PROPERTIES as `size` holds. The media type in it stays the sample's.
    STDMETHODIMP GetProperties(DWORD size, BYTE* properties) override;
    /// Takes the fields that `size` and the record's own cbData cover. A payload that is named must be the
    /// sample's own, and a sample without times gets them from a record that has both. A refusal changes
    /// nothing.
    STDMETHODIMP SetProperties(DWORD size, const BYTE* properties) override;

    STDMETHODIMP GetMetaData(MetaDataType key, const BYTE** bytes, ULONG* count) override;
    STDMETHODIMP_(void) SetMetaData(MetaDataType key, const BYTE* bytes, LONG count) override;
    STDMETHODIMP_(void) RemoveMetaData(MetaDataType key) override;

    virtual ~COOBMediaSample();

protected:
    void setPayload(BYTE* payload, LONG size, LONG actualLength) noexcept;
    /// Takes a whole record over, its payload included.
    HRESULT adoptProperties(const AM_SAMPLE2_PROPERTIES& properties) noexcept;
    /// As fresh from construction but for payload and times.
    void resetAttributes() noexcept;

private:
    struct TypeDeleter {
        void operator()(AM_MEDIA_TYPE* type) const noexcept { DeleteMediaType(type); }
    };
    using OwnedType = std::unique_ptr<AM_MEDIA_TYPE, TypeDeleter>;

    bool has(DWORD flag) const noexcept { return (flags_ & flag) != 0; }
    void put(DWORD flag, bool set) noexcept { flags_ = set ? flags_ | flag : flags_ & ~flag; }
    void attach(OwnedType type) noexcept;
    HRESULT checkProperties(const AM_SAMPLE2_PROPERTIES& properties, DWORD size) const noexcept;
    void takeProperties(const AM_SAMPLE2_PROPERTIES& properties, DWORD size, OwnedType type) noexcept;

    DWORD flags_ = 0;
    BYTE* payload_;
    LONG actualLength_;
    LONG size_;
    DWORD typeSpecificFlags_ = 0;
    REFERENCE_TIME start_ = 0;
    REFERENCE_TIME stop_ = 0;
    LONGLONG mediaStart_ = 0;
    LONG mediaDuration_ = 0;
    OwnedType mediaType_;
    DWORD streamId_ = 0;
    std::map<LONG, std::vector<BYTE>> metadata_;

protected:
    std::atomic<LONG> references_{0};
};

}  // namespace mvrtpfec
