#pragma once

#include "platform/graph/media_samples.h"

namespace mvrtpfec {

/// The kinds of metadata a sample carries. Their records are in metadata_records.h.
enum MetaDataType : LONG {
    MetaData_CuePoint = 0,
    MetaData_SampleDate = 1,
    MetaData_DataId = 2,  ///< an unsigned 64-bit number
    MetaData_DolbyMetadata = 3,
    MetaData_ParentalRating = 4,
    MetaData_RecordingEvent = 5,  ///< an unsigned 16-bit number
};

inline constexpr IID IID_IMediaSample3{
    0x5D8CEC5F, 0x63DA, 0x46A1, {0x92, 0x37, 0xA2, 0xF3, 0x58, 0x7B, 0x32, 0x3C}};

/// A sample that carries side data besides its payload, as raw bytes by key. metadata_access.h has the typed
/// access.
struct IMediaSample3 : IMediaSample2 {
    /// The stored bytes stay the sample's; they hold until the entry is changed or removed. E_FAIL, the
    /// outputs untouched, when there is no entry.
    virtual HRESULT STDMETHODCALLTYPE GetMetaData(MetaDataType key, const BYTE** bytes, ULONG* count) = 0;
    /// Replaces the entry by a copy of the bytes; a count of 0 leaves an entry that is empty. Throws
    /// std::bad_alloc, the entry as it was.
    virtual void STDMETHODCALLTYPE SetMetaData(MetaDataType key, const BYTE* bytes, LONG count) = 0;
    virtual void STDMETHODCALLTYPE RemoveMetaData(MetaDataType key) = 0;

protected:
    ~IMediaSample3() = default;
};

}  // namespace mvrtpfec
