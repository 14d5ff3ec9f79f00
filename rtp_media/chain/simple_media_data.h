#pragma once

#include <atomic>
#include <cstdint>
#include <memory>
#include <optional>
#include <utility>
#include <vector>

#include "framework/base/com_ptr.h"
#include "framework/samples/media_data.h"

namespace mvrtpfec {

/// Media data that stands on bytes of its own instead of a framework sample. Counted from 1 for its creator;
/// never queried. What isn't set reads as absent, times as VFW_E_SAMPLE_TIME_NOT_SET and
/// VFW_E_MEDIA_TIME_NOT_SET.
class SimpleMediaData final : public IMediaData2 {
public:
    static CComPtr<SimpleMediaData> create(std::vector<BYTE> bytes);
    explicit SimpleMediaData(std::vector<BYTE> bytes);

    STDMETHODIMP QueryInterface(REFIID riid, void** object) override;
    STDMETHODIMP_(ULONG) AddRef() override;
    STDMETHODIMP_(ULONG) Release() override;

    HRESULT SetActualDataLength(LONG length) override;
    LONG GetActualDataLength() override;
    HRESULT GetPointer(BYTE** payload) override;
    LONG GetSize() override;
    /// A null start clears the times; a null stop leaves only the start set.
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

    /// There is no framework sample whose properties these could be: E_NOTIMPL.
    HRESULT GetProperties(DWORD size, BYTE* properties) override;
    HRESULT SetProperties(DWORD size, const BYTE* properties) override;

private:
    ~SimpleMediaData() override = default;

    std::atomic<ULONG> references_{1};
    std::vector<BYTE> bytes_;
    LONG length_;
    std::optional<REFERENCE_TIME> start_;
    std::optional<REFERENCE_TIME> stop_;
    std::optional<std::pair<LONGLONG, LONGLONG>> mediaTime_;
    bool syncPoint_ = false;
    bool discontinuity_ = false;
    bool preroll_ = false;
    CuePoint cuePoint_{};
    SampleDate sampleDate_{};
    std::optional<std::uint64_t> dataId_;
    std::optional<std::uint16_t> recordingEvent_;
    std::unique_ptr<DolbyMetadata> dolbyMetadata_;
    std::unique_ptr<ParentalRating> parentalRating_;
};

}  // namespace mvrtpfec
