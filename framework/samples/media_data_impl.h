#pragma once

#include <atomic>

#include "framework/base/com_ptr.h"
#include "framework/samples/media_data.h"

namespace mvrtpfec {

/// A wrapper of one framework sample, on which it holds a reference. Its count starts at 1, the creator's.
/// The sample may be null: forwarders then give E_POINTER, 0 or false.
template <class Interface>
class MediaDataOver : public Interface {
public:
    explicit MediaDataOver(IMediaSample* sample) noexcept : sample_(sample) {}

    MediaDataOver(const MediaDataOver&) = delete;
    MediaDataOver& operator=(const MediaDataOver&) = delete;

    /// E_NOINTERFACE whatever is asked for, `object` unwritten.
    STDMETHODIMP QueryInterface(REFIID riid, void** object) override;
    STDMETHODIMP_(ULONG) AddRef() override;
    STDMETHODIMP_(ULONG) Release() override;

    HRESULT SetActualDataLength(LONG length) override;
    LONG GetActualDataLength() override;
    HRESULT GetPointer(BYTE** payload) override;
    LONG GetSize() override;
    HRESULT SetTime(REFERENCE_TIME* start, REFERENCE_TIME* stop) override;
    HRESULT GetTime(REFERENCE_TIME* start, REFERENCE_TIME* stop) override;
    HRESULT SetMediaTime(LONGLONG* start, LONGLONG* stop) override;
    HRESULT GetMediaTime(LONGLONG* start, LONGLONG* stop) override;
    HRESULT SetSyncPoint(bool set) override;
    bool IsSyncPoint() override;
    HRESULT SetDiscontinuity(bool set) override;
    bool IsDiscontinuity() override;
    HRESULT SetPreroll(bool set) override;
    bool IsPreroll() override;

    void SetCuePoint(const CuePoint& cuePoint) override;
    CuePoint GetCuePoint() override;
    void SetSampleDate(const SampleDate& date) override;
    SampleDate GetSampleDate() override;
    void SetDataId(std::uint64_t id) override;
    bool GetDataId(std::uint64_t& id) override;
    void SetDolbyMetadata(const DolbyMetadata& metadata) override;
    bool GetDolbyMetadata(DolbyMetadata& metadata) override;
    void SetParentalRating(const ParentalRating& rating) override;
    bool GetParentalRating(ParentalRating& rating) override;
    void SetRecordingEvent(const std::uint16_t& event) override;
    bool GetRecordingEvent(std::uint16_t& event) override;

protected:
    /// The wrapped sample, no reference added.
    IMediaSample* sample() const noexcept { return sample_; }

private:
    std::atomic<std::uint32_t> references_{1};
    CComPtr<IMediaSample> sample_;
};

class MediaData final : public MediaDataOver<IMediaData> {
public:
    using MediaDataOver::MediaDataOver;

    /// The wrapped sample, no reference added.
    virtual IMediaSample* GetSample();
};

/// Only over samples that answer IMediaSample2.
class MediaData2 final : public MediaDataOver<IMediaData2> {
public:
    using MediaDataOver::MediaDataOver;

    HRESULT GetProperties(DWORD size, BYTE* properties) override;
    HRESULT SetProperties(DWORD size, const BYTE* properties) override;

    /// The wrapped sample, no reference added.
    virtual IMediaSample* GetSample();
};

/// The sample under a wrapper of either kind, no reference added; null for what wraps none.
IMediaSample* sampleOf(IMediaData* data) noexcept;

/// The caller owns the wrapper's one reference; null when there is no memory.
void CreateMediaData(IMediaSample* sample, IMediaData** mediaData) noexcept;
void CreateMediaData2(IMediaSample* sample, IMediaData2** mediaData) noexcept;

}  // namespace mvrtpfec
