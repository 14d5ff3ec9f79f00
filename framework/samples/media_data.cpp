#include <memory>
#include <new>
#include <stdexcept>
#include <string>

#include "framework/samples/media_data_impl.h"
#include "framework/samples/metadata_access.h"

namespace mvrtpfec {

namespace {

constexpr const char* cuePointKind = "Cue Point";
constexpr const char* sampleDateKind = "Sample Date";
constexpr const char* dataIdKind = "DataId";
constexpr const char* dolbyKind = "DolbyMetadata";
constexpr const char* parentalRatingKind = "\"Parental Rating\"";
constexpr const char* recordingEventKind = "recording event";

/// The metadata carrier of a sample; throws, naming the kind of metadata, when it is none.
CComPtr<IMediaSample3> carrierOf(IMediaSample* sample, const char* kind) {
    auto carrier = queryFor<IMediaSample3>(sample, IID_IMediaSample3);
    if (carrier == nullptr)
        throw std::runtime_error(std::string(kind) + " management needs IMediaSample3 interface");
    return carrier;
}

/// What an operation of the sample answers, or the given answer when there is no sample.
template <class Answer, class Operation>
Answer ask(IMediaSample* sample, Answer whenNone, Operation operation) {
    return sample != nullptr ? operation(*sample) : whenNone;
}

template <class Wrapper, class Interface>
void create(IMediaSample* sample, Interface** mediaData) noexcept {
    *mediaData = new (std::nothrow) Wrapper(sample);  // NOLINT(cppcoreguidelines-owning-memory)
}

}  // namespace

template <class Interface>
STDMETHODIMP MediaDataOver<Interface>::QueryInterface(REFIID, void**) {
    return E_NOINTERFACE;
}

template <class Interface>
STDMETHODIMP_(ULONG)
MediaDataOver<Interface>::AddRef() {
    return ++references_;
}

template <class Interface>
STDMETHODIMP_(ULONG)
MediaDataOver<Interface>::Release() {
    const std::uint32_t left = --references_;
    if (left == 0) delete this;  // NOLINT(cppcoreguidelines-owning-memory)
    return left;
}

template <class Interface>
HRESULT MediaDataOver<Interface>::SetActualDataLength(LONG length) {
    return ask(sample_, E_POINTER, [&](auto& sample) { return sample.SetActualDataLength(length); });
}

template <class Interface>
LONG MediaDataOver<Interface>::GetActualDataLength() {
    return ask(sample_, LONG{0}, [](auto& sample) { return sample.GetActualDataLength(); });
}

template <class Interface>
HRESULT MediaDataOver<Interface>::GetPointer(BYTE** payload) {
    return ask(sample_, E_POINTER, [&](auto& sample) { return sample.GetPointer(payload); });
}

template <class Interface>
LONG MediaDataOver<Interface>::GetSize() {
    return ask(sample_, LONG{0}, [](auto& sample) { return sample.GetSize(); });
}

template <class Interface>
HRESULT MediaDataOver<Interface>::SetTime(REFERENCE_TIME* start, REFERENCE_TIME* stop) {
    return ask(sample_, E_POINTER, [&](auto& sample) { return sample.SetTime(start, stop); });
}

template <class Interface>
HRESULT MediaDataOver<Interface>::GetTime(REFERENCE_TIME* start, REFERENCE_TIME* stop) {
    return ask(sample_, E_POINTER, [&](auto& sample) { return sample.GetTime(start, stop); });
}

template <class Interface>
HRESULT MediaDataOver<Interface>::SetMediaTime(LONGLONG* start, LONGLONG* stop) {
    return ask(sample_, E_POINTER, [&](auto& sample) { return sample.SetMediaTime(start, stop); });
}

template <class Interface>
HRESULT MediaDataOver<Interface>::GetMediaTime(LONGLONG* start, LONGLONG* stop) {
    return ask(sample_, E_POINTER, [&](auto& sample) { return sample.GetMediaTime(start, stop); });
}

template <class Interface>
HRESULT MediaDataOver<Interface>::SetSyncPoint(bool set) {
    return ask(sample_, E_POINTER, [&](auto& sample) { return sample.SetSyncPoint(set); });
}

template <class Interface>
bool MediaDataOver<Interface>::IsSyncPoint() {
    return ask(sample_, false, [](auto& sample) { return sample.IsSyncPoint() == S_OK; });
}

template <class Interface>
HRESULT MediaDataOver<Interface>::SetDiscontinuity(bool set) {
    return ask(sample_, E_POINTER, [&](auto& sample) { return sample.SetDiscontinuity(set); });
}

template <class Interface>
bool MediaDataOver<Interface>::IsDiscontinuity() {
    return ask(sample_, false, [](auto& sample) { return sample.IsDiscontinuity() == S_OK; });
}

template <class Interface>
HRESULT MediaDataOver<Interface>::SetPreroll(bool set) {
    return ask(sample_, E_POINTER, [&](auto& sample) { return sample.SetPreroll(set); });
}

template <class Interface>
bool MediaDataOver<Interface>::IsPreroll() {
    return ask(sample_, false, [](auto& sample) { return sample.IsPreroll() == S_OK; });
}

template <class Interface>
void MediaDataOver<Interface>::SetCuePoint(const CuePoint& cuePoint) {
    mvrtpfec::SetCuePoint(carrierOf(sample_, cuePointKind), cuePoint);
}

template <class Interface>
CuePoint MediaDataOver<Interface>::GetCuePoint() {
    CuePoint cuePoint{};
    mvrtpfec::GetCuePoint(carrierOf(sample_, cuePointKind), cuePoint);
    return cuePoint;
}

template <class Interface>
void MediaDataOver<Interface>::SetSampleDate(const SampleDate& date) {
    mvrtpfec::SetSampleDate(carrierOf(sample_, sampleDateKind), date);
}

template <class Interface>
SampleDate MediaDataOver<Interface>::GetSampleDate() {
    SampleDate date{};
    mvrtpfec::GetSampleDate(carrierOf(sample_, sampleDateKind), date);
    return date;
}

template <class Interface>
void MediaDataOver<Interface>::SetDataId(std::uint64_t id) {
    mvrtpfec::SetDataId(carrierOf(sample_, dataIdKind), id);
}

template <class Interface>
bool MediaDataOver<Interface>::GetDataId(std::uint64_t& id) {
    return mvrtpfec::GetDataId(carrierOf(sample_, dataIdKind), id);
}

template <class Interface>
void MediaDataOver<Interface>::SetDolbyMetadata(const DolbyMetadata& metadata) {
    mvrtpfec::SetDolbyMetadata(carrierOf(sample_, dolbyKind), metadata);
}

/// Names the wrong kind when it throws; callers and logs match on that text.
template <class Interface>
bool MediaDataOver<Interface>::GetDolbyMetadata(DolbyMetadata& metadata) {
    return mvrtpfec::GetDolbyMetadata(carrierOf(sample_, dataIdKind), metadata);
}

template <class Interface>
void MediaDataOver<Interface>::SetParentalRating(const ParentalRating& rating) {
    mvrtpfec::SetParentalRating(carrierOf(sample_, parentalRatingKind), rating);
}

template <class Interface>
bool MediaDataOver<Interface>::GetParentalRating(ParentalRating& rating) {
    return mvrtpfec::GetParentalRating(carrierOf(sample_, parentalRatingKind), rating);
}

template <class Interface>
void MediaDataOver<Interface>::SetRecordingEvent(const std::uint16_t& event) {
    mvrtpfec::SetRecordingEvent(carrierOf(sample_, recordingEventKind), event);
}

template <class Interface>
bool MediaDataOver<Interface>::GetRecordingEvent(std::uint16_t& event) {
    return mvrtpfec::GetRecordingEvent(carrierOf(sample_, recordingEventKind), event);
}

template class MediaDataOver<IMediaData>;
template class MediaDataOver<IMediaData2>;

IMediaSample* MediaData::GetSample() {
    return sample();
}

HRESULT MediaData2::GetProperties(DWORD size, BYTE* properties) {
    return ask(sample(), E_POINTER, [&](IMediaSample& sample) {
        return static_cast<IMediaSample2&>(sample).GetProperties(size, properties);
    });
}

HRESULT MediaData2::SetProperties(DWORD size, const BYTE* properties) {
    return ask(sample(), E_POINTER, [&](IMediaSample& sample) {
        return static_cast<IMediaSample2&>(sample).SetProperties(size, properties);
    });
}

IMediaSample* MediaData2::GetSample() {
    return sample();
}

IMediaSample* sampleOf(IMediaData* data) noexcept {
    if (auto* wrapper = dynamic_cast<MediaData*>(data)) return wrapper->GetSample();
    if (auto* wrapper = dynamic_cast<MediaData2*>(data)) return wrapper->GetSample();
    return nullptr;
}

void CreateMediaData(IMediaSample* sample, IMediaData** mediaData) noexcept {
    create<MediaData>(sample, mediaData);
}

void CreateMediaData2(IMediaSample* sample, IMediaData2** mediaData) noexcept {
    create<MediaData2>(sample, mediaData);
}

}  // namespace mvrtpfec
