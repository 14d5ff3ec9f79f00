#include "framework/samples/metadata_access.h"

#include <cstring>
#include <type_traits>

namespace mvrtpfec {

namespace {

template <class Value>
void store(IMediaSample3* sample, MetaDataType key, const Value& value) {
    static_assert(std::is_trivially_copyable_v<Value>);
    sample->SetMetaData(key, reinterpret_cast<const BYTE*>(&value), sizeof(Value));
}

template <class Value>
bool load(IMediaSample3* sample, MetaDataType key, Value& value) {
    static_assert(std::is_trivially_copyable_v<Value>);
    const BYTE* bytes = nullptr;
    ULONG count = 0;
    if (FAILED(sample->GetMetaData(key, &bytes, &count)) || count < sizeof(Value)) return false;
    std::memcpy(&value, bytes, sizeof(Value));
    return true;
}

}  // namespace

void SetCuePoint(IMediaSample3* sample, const CuePoint& cuePoint) {
    store(sample, MetaData_CuePoint, cuePoint);
}

bool GetCuePoint(IMediaSample3* sample, CuePoint& cuePoint) {
    return load(sample, MetaData_CuePoint, cuePoint);
}

void SetSampleDate(IMediaSample3* sample, const SampleDate& date) {
    store(sample, MetaData_SampleDate, date);
}

bool GetSampleDate(IMediaSample3* sample, SampleDate& date) {
    return load(sample, MetaData_SampleDate, date);
}

void SetDataId(IMediaSample3* sample, std::uint64_t id) {
    store(sample, MetaData_DataId, id);
}

bool GetDataId(IMediaSample3* sample, std::uint64_t& id) {
    return load(sample, MetaData_DataId, id);
}

void RemoveDataId(IMediaSample3* sample) {
    sample->RemoveMetaData(MetaData_DataId);
}

void SetDolbyMetadata(IMediaSample3* sample, const DolbyMetadata& metadata) {
    store(sample, MetaData_DolbyMetadata, metadata);
}

bool GetDolbyMetadata(IMediaSample3* sample, DolbyMetadata& metadata) {
    return load(sample, MetaData_DolbyMetadata, metadata);
}

void SetParentalRating(IMediaSample3* sample, const ParentalRating& rating) {
    store(sample, MetaData_ParentalRating, rating);
}

bool GetParentalRating(IMediaSample3* sample, ParentalRating& rating) {
    return load(sample, MetaData_ParentalRating, rating);
}

void SetRecordingEvent(IMediaSample3* sample, const std::uint16_t& event) {
    store(sample, MetaData_RecordingEvent, event);
}

bool GetRecordingEvent(IMediaSample3* sample, std::uint16_t& event) {
    return load(sample, MetaData_RecordingEvent, event);
}

void RemoveRecordingEvent(IMediaSample3* sample) {
    sample->RemoveMetaData(MetaData_RecordingEvent);
}

}  // namespace mvrtpfec
