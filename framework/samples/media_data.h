#pragma once

#include <cstdint>

#include "framework/samples/metadata_records.h"
#include "platform/graph/media_samples.h"

namespace mvrtpfec {

/// What filter code handles instead of a framework sample: payload, times and flags in plain types, and the
/// typed metadata. Never queried, only passed around. The metadata operations throw std::exception when the
/// sample carries no metadata; nothing else throws. The order of the operations is an ABI.
struct IMediaData : IUnknown {
    virtual ~IMediaData() = default;

    virtual HRESULT SetActualDataLength(LONG length) = 0;
    virtual LONG GetActualDataLength() = 0;
    virtual HRESULT GetPointer(BYTE** payload) = 0;
    virtual LONG GetSize() = 0;
    virtual HRESULT SetTime(REFERENCE_TIME* start, REFERENCE_TIME* stop) = 0;
    virtual HRESULT GetTime(REFERENCE_TIME* start, REFERENCE_TIME* stop) = 0;
    virtual HRESULT SetMediaTime(LONGLONG* start, LONGLONG* stop) = 0;
    virtual HRESULT GetMediaTime(LONGLONG* start, LONGLONG* stop) = 0;
    virtual HRESULT SetSyncPoint(bool set) = 0;
    virtual bool IsSyncPoint() = 0;
    virtual HRESULT SetDiscontinuity(bool set) = 0;
    virtual bool IsDiscontinuity() = 0;
    virtual HRESULT SetPreroll(bool set) = 0;
    virtual bool IsPreroll() = 0;

    virtual void SetCuePoint(const CuePoint& cuePoint) = 0;
    /// All zero when absent.
    virtual CuePoint GetCuePoint() = 0;
    virtual void SetSampleDate(const SampleDate& date) = 0;
    /// Zero when absent.
    virtual SampleDate GetSampleDate() = 0;
    // These give false and leave the output untouched when absent.
    virtual void SetDataId(std::uint64_t id) = 0;
    virtual bool GetDataId(std::uint64_t& id) = 0;
    virtual void SetDolbyMetadata(const DolbyMetadata& metadata) = 0;
    virtual bool GetDolbyMetadata(DolbyMetadata& metadata) = 0;
    virtual void SetParentalRating(const ParentalRating& rating) = 0;
    virtual bool GetParentalRating(ParentalRating& rating) = 0;
    virtual void SetRecordingEvent(const std::uint16_t& event) = 0;
    virtual bool GetRecordingEvent(std::uint16_t& event) = 0;
};

/// Adds the framework's record of a sample's properties.
struct IMediaData2 : IMediaData {
    virtual HRESULT GetProperties(DWORD size, BYTE* properties) = 0;
    virtual HRESULT SetProperties(DWORD size, const BYTE* properties) = 0;
};

}  // namespace mvrtpfec
