#pragma once

#include <cstdint>

#include "framework/samples/media_sample3.h"
#include "framework/samples/metadata_records.h"

namespace mvrtpfec {

// Typed access to a sample's metadata. Setters throw std::bad_alloc. Getters give false and leave the output
// untouched when the entry is absent or shorter than its record; of a longer one they take the beginning.

void SetCuePoint(IMediaSample3* sample, const CuePoint& cuePoint);
bool GetCuePoint(IMediaSample3* sample, CuePoint& cuePoint);

void SetSampleDate(IMediaSample3* sample, const SampleDate& date);
bool GetSampleDate(IMediaSample3* sample, SampleDate& date);

void SetDataId(IMediaSample3* sample, std::uint64_t id);
bool GetDataId(IMediaSample3* sample, std::uint64_t& id);
void RemoveDataId(IMediaSample3* sample);

void SetDolbyMetadata(IMediaSample3* sample, const DolbyMetadata& metadata);
bool GetDolbyMetadata(IMediaSample3* sample, DolbyMetadata& metadata);

void SetParentalRating(IMediaSample3* sample, const ParentalRating& rating);
bool GetParentalRating(IMediaSample3* sample, ParentalRating& rating);

void SetRecordingEvent(IMediaSample3* sample, const std::uint16_t& event);
bool GetRecordingEvent(IMediaSample3* sample, std::uint16_t& event);
void RemoveRecordingEvent(IMediaSample3* sample);

}  // namespace mvrtpfec
