#include "rtp_media/chain/simple_media_data.h"

namespace mvrtpfec {

CComPtr<SimpleMediaData> SimpleMediaData::create(std::vector<BYTE> bytes) {
    CComPtr<SimpleMediaData> created;
    created.Attach(new SimpleMediaData(std::move(bytes)));  // NOLINT(cppcoreguidelines-owning-memory)
    return created;
}

SimpleMediaData::SimpleMediaData(std::vector<BYTE> bytes)
    : bytes_(std::move(bytes)), length_(static_cast<LONG>(bytes_.size())) {}

STDMETHODIMP SimpleMediaData::QueryInterface(REFIID, void**) {
    return E_NOINTERFACE;
}

STDMETHODIMP_(ULONG) SimpleMediaData::AddRef() {
    return ++references_;
}

STDMETHODIMP_(ULONG) SimpleMediaData::Release() {
    const ULONG left = --references_;
    if (left == 0) delete this;  // NOLINT(cppcoreguidelines-owning-memory)
    return left;
}

HRESULT SimpleMediaData::SetActualDataLength(LONG length) {
    if (length > GetSize()) return VFW_E_BUFFER_OVERFLOW;
    length_ = length;
    return S_OK;
}

LONG SimpleMediaData::GetActualDataLength() {
    return length_;
}

HRESULT SimpleMediaData::GetPointer(BYTE** payload) {
    if (payload == nullptr) return E_POINTER;
    *payload = bytes_.data();
    return S_OK;
}

LONG SimpleMediaData::GetSize() {
    return static_cast<LONG>(bytes_.size());
}

HRESULT SimpleMediaData::SetTime(REFERENCE_TIME* start, REFERENCE_TIME* stop) {
    start_.reset();
    stop_.reset();
    if (start == nullptr) return S_OK;
    start_ = *start;
    if (stop != nullptr) stop_ = *stop;
    return S_OK;
}

HRESULT SimpleMediaData::GetTime(REFERENCE_TIME* start, REFERENCE_TIME* stop) {
    if (start == nullptr || stop == nullptr) return E_POINTER;
    if (!start_) return VFW_E_SAMPLE_TIME_NOT_SET;
    *start = *start_;
    *stop = stop_.value_or(*start_ + 1);
    return stop_ ? S_OK : VFW_S_NO_STOP_TIME;
}

HRESULT SimpleMediaData::SetMediaTime(LONGLONG* start, LONGLONG* stop) {
    mediaTime_.reset();
    if (start == nullptr) return S_OK;
    if (stop == nullptr) return E_POINTER;
    mediaTime_ = {*start, *stop};
    return S_OK;
}

HRESULT SimpleMediaData::GetMediaTime(LONGLONG* start, LONGLONG* stop) {
    if (start == nullptr || stop == nullptr) return E_POINTER;
    if (!mediaTime_) return VFW_E_MEDIA_TIME_NOT_SET;
    *start = mediaTime_->first;
    *stop = mediaTime_->second;
    return S_OK;
}

HRESULT SimpleMediaData::SetSyncPoint(bool set) {
    syncPoint_ = set;
    return S_OK;
}

bool SimpleMediaData::IsSyncPoint() {
    return syncPoint_;
}

HRESULT SimpleMediaData::SetDiscontinuity(bool set) {
    discontinuity_ = set;
    return S_OK;
}

bool SimpleMediaData::IsDiscontinuity() {
    return discontinuity_;
}

HRESULT SimpleMediaData::SetPreroll(bool set) {
    preroll_ = set;
    return S_OK;
}

bool SimpleMediaData::IsPreroll() {
    return preroll_;
}

void SimpleMediaData::SetCuePoint(const CuePoint& cuePoint) {
    cuePoint_ = cuePoint;
}

CuePoint SimpleMediaData::GetCuePoint() {
    return cuePoint_;
}

void SimpleMediaData::SetSampleDate(const SampleDate& date) {
    sampleDate_ = date;
}

SampleDate SimpleMediaData::GetSampleDate() {
    return sampleDate_;
}

void SimpleMediaData::SetDataId(std::uint64_t id) {
    dataId_ = id;
}

bool SimpleMediaData::GetDataId(std::uint64_t& id) {
    if (dataId_) id = *dataId_;
    return dataId_.has_value();
}

void SimpleMediaData::SetDolbyMetadata(const DolbyMetadata& metadata) {
    dolbyMetadata_ = std::make_unique<DolbyMetadata>(metadata);
}

bool SimpleMediaData::GetDolbyMetadata(DolbyMetadata& metadata) {
    if (dolbyMetadata_ != nullptr) metadata = *dolbyMetadata_;
    return dolbyMetadata_ != nullptr;
}

void SimpleMediaData::SetParentalRating(const ParentalRating& rating) {
    parentalRating_ = std::make_unique<ParentalRating>(rating);
}

bool SimpleMediaData::GetParentalRating(ParentalRating& rating) {
    if (parentalRating_ != nullptr) rating = *parentalRating_;
    return parentalRating_ != nullptr;
}

void SimpleMediaData::SetRecordingEvent(const std::uint16_t& event) {
    recordingEvent_ = event;
}

bool SimpleMediaData::GetRecordingEvent(std::uint16_t& event) {
    if (recordingEvent_) event = *recordingEvent_;
    return recordingEvent_.has_value();
}

HRESULT SimpleMediaData::GetProperties(DWORD, BYTE*) {
    return E_NOTIMPL;
}

HRESULT SimpleMediaData::SetProperties(DWORD, const BYTE*) {
    return E_NOTIMPL;
}

}  // namespace mvrtpfec
