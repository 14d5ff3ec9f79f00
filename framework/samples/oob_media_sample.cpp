#include "framework/samples/oob_media_sample.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <utility>

#include "framework/base/unknown.h"

namespace mvrtpfec {

namespace {

/// Beside the AM_SAMPLE_... flags; no part of the properties record.
constexpr DWORD mediaTimeValid = 0x20;
constexpr DWORD propertyFlags = 0x1DF;
constexpr DWORD timesValid = AM_SAMPLE_TIMEVALID | AM_SAMPLE_STOPVALID;

using Properties = AM_SAMPLE2_PROPERTIES;

/// Whether `size` bytes of the record hold the whole field.
template <class Field>
bool covers(DWORD size, Field Properties::*field) noexcept {
    static const Properties record{};
    const auto* start = reinterpret_cast<const BYTE*>(&record);
    const auto* end = reinterpret_cast<const BYTE*>(&(record.*field) + 1);
    return size >= static_cast<DWORD>(end - start);
}

template <class Field>
void take(Field& target, const Properties& record, DWORD size, Field Properties::*field) noexcept {
    if (covers(size, field)) target = record.*field;
}

/// Sums and differences of reference times wrap: a sample may carry any value.
LONGLONG wrappingSum(LONGLONG one, LONGLONG other) noexcept {
    return static_cast<LONGLONG>(static_cast<std::uint64_t>(one) + static_cast<std::uint64_t>(other));
}

LONG lowerDifference(LONGLONG end, LONGLONG start) noexcept {
    return static_cast<LONG>(
        static_cast<ULONG>(static_cast<std::uint64_t>(end) - static_cast<std::uint64_t>(start)));
}

HRESULT yesOrNo(bool yes) noexcept {
    return yes ? S_OK : S_FALSE;
}

}  // namespace

COOBMediaSample::COOBMediaSample(BYTE* payload, LONG length) noexcept
    : payload_(payload), actualLength_(length), size_(length) {}

COOBMediaSample::~COOBMediaSample() = default;

STDMETHODIMP COOBMediaSample::QueryInterface(REFIID riid, void** object) {
    if (object == nullptr) return E_POINTER;
    if (riid == IID_IMediaSample || riid == IID_IMediaSample2 || riid == IID_IMediaSample3 ||
        riid == IID_IUnknown)
        return GetInterface(this, object);
    *object = nullptr;
    return E_NOINTERFACE;
}

STDMETHODIMP_(ULONG) COOBMediaSample::AddRef() {
    return static_cast<ULONG>(++references_);
}

STDMETHODIMP_(ULONG) COOBMediaSample::Release() {
    const LONG left = --references_;
    if (left == 0) delete this;  // NOLINT(cppcoreguidelines-owning-memory)
    return static_cast<ULONG>(left);
}

STDMETHODIMP COOBMediaSample::GetPointer(BYTE** payload) {
    if (payload == nullptr) return E_POINTER;
    if (payload_ == nullptr) return E_FAIL;
    *payload = payload_;
    return S_OK;
}

STDMETHODIMP_(LONG) COOBMediaSample::GetSize() {
    return size_;
}

STDMETHODIMP COOBMediaSample::GetTime(REFERENCE_TIME* start, REFERENCE_TIME* stop) {
    if (start == nullptr || stop == nullptr) return E_POINTER;
    const bool hasStop = has(AM_SAMPLE_STOPVALID);
    if (!hasStop && !has(AM_SAMPLE_TIMEVALID)) return VFW_E_SAMPLE_TIME_NOT_SET;
    *start = start_;
    *stop = hasStop ? stop_ : wrappingSum(start_, 1);
    return hasStop ? S_OK : VFW_S_NO_STOP_TIME;
}

STDMETHODIMP COOBMediaSample::SetTime(REFERENCE_TIME* start, REFERENCE_TIME* stop) {
    put(timesValid, false);
    if (start == nullptr) return S_OK;
    start_ = *start;
    put(AM_SAMPLE_TIMEVALID, true);
    if (stop == nullptr) return S_OK;
    stop_ = *stop;
    put(AM_SAMPLE_STOPVALID, true);
    return S_OK;
}

STDMETHODIMP COOBMediaSample::IsSyncPoint() {
    return yesOrNo(has(AM_SAMPLE_SPLICEPOINT));
}

STDMETHODIMP COOBMediaSample::SetSyncPoint(BOOL set) {
    put(AM_SAMPLE_SPLICEPOINT, set != FALSE);
    return S_OK;
}

STDMETHODIMP COOBMediaSample::IsPreroll() {
    return yesOrNo(has(AM_SAMPLE_PREROLL));
}

STDMETHODIMP COOBMediaSample::SetPreroll(BOOL set) {
    put(AM_SAMPLE_PREROLL, set != FALSE);
    return S_OK;
}

STDMETHODIMP_(LONG) COOBMediaSample::GetActualDataLength() {
    return actualLength_;
}

STDMETHODIMP COOBMediaSample::SetActualDataLength(LONG length) {
    if (length > size_) return VFW_E_BUFFER_OVERFLOW;
    actualLength_ = length;
    return S_OK;
}

STDMETHODIMP COOBMediaSample::GetMediaType(AM_MEDIA_TYPE** type) {
    if (type == nullptr) return E_POINTER;
    *type = nullptr;
    if (mediaType_ == nullptr) return S_FALSE;
    *type = CreateMediaType(mediaType_.get());
    return *type != nullptr ? S_OK : E_OUTOFMEMORY;
}

STDMETHODIMP COOBMediaSample::SetMediaType(AM_MEDIA_TYPE* type) {
    // Copied first: it may be the attached one itself, as GetProperties hands it out.
    OwnedType copy(type != nullptr ? CreateMediaType(type) : nullptr);
    const bool failed = type != nullptr && copy == nullptr;
    attach(std::move(copy));
    return failed ? E_OUTOFMEMORY : S_OK;
}

STDMETHODIMP COOBMediaSample::IsDiscontinuity() {
    return yesOrNo(has(AM_SAMPLE_DATADISCONTINUITY));
}

STDMETHODIMP COOBMediaSample::SetDiscontinuity(BOOL set) {
    put(AM_SAMPLE_DATADISCONTINUITY, set != FALSE);
    return S_OK;
}

STDMETHODIMP COOBMediaSample::GetMediaTime(LONGLONG* start, LONGLONG* stop) {
    if (start == nullptr || stop == nullptr) return E_POINTER;
    if (!has(mediaTimeValid)) return VFW_E_MEDIA_TIME_NOT_SET;
    *start = mediaStart_;
    *stop = wrappingSum(mediaStart_, mediaDuration_);
    return S_OK;
}

STDMETHODIMP COOBMediaSample::SetMediaTime(LONGLONG* start, LONGLONG* stop) {
    const bool given = start != nullptr && stop != nullptr;
    put(mediaTimeValid, given);
    if (!given) return S_OK;
    mediaStart_ = *start;
    mediaDuration_ = lowerDifference(*stop, *start);
    return S_OK;
}

STDMETHODIMP COOBMediaSample::GetProperties(DWORD size, BYTE* properties) {
    if (size == 0) return S_OK;
    if (properties == nullptr) return E_POINTER;
    Properties record{};
    record.cbData = std::min<DWORD>(size, sizeof(record));
    record.dwTypeSpecificFlags = typeSpecificFlags_;
    record.dwSampleFlags = flags_ & ~mediaTimeValid;
    record.lActual = actualLength_;
    record.tStart = start_;
    record.tStop = stop_;
    record.dwStreamId = streamId_;
    record.pMediaType = mediaType_.get();
    record.pbBuffer = payload_;
    record.cbBuffer = size_;
    std::memcpy(properties, &record, record.cbData);
    return S_OK;
}

STDMETHODIMP COOBMediaSample::SetProperties(DWORD size, const BYTE* properties) {
    if (!covers(size, &Properties::cbData)) return S_OK;
    if (properties == nullptr) return E_POINTER;
    if (size > sizeof(Properties)) return E_INVALIDARG;
    Properties record{};
    std::memcpy(&record, properties, size);
    if (record.cbData > sizeof(Properties)) return E_INVALIDARG;
    size = std::min(size, record.cbData);
    if (const HRESULT result = checkProperties(record, size); FAILED(result)) return result;

    OwnedType type;
    if (covers(size, &Properties::pMediaType) && (record.dwSampleFlags & AM_SAMPLE_TYPECHANGED) != 0) {
        type.reset(CreateMediaType(record.pMediaType));
        if (type == nullptr) return E_OUTOFMEMORY;
    }
    takeProperties(record, size, std::move(type));
    return S_OK;
}

HRESULT COOBMediaSample::checkProperties(const Properties& record, DWORD size) const noexcept {
    const bool setsFlags = covers(size, &Properties::dwSampleFlags);
    if (setsFlags && (record.dwSampleFlags & ~propertyFlags) != 0) return E_INVALIDARG;
    const bool newlyTimed = setsFlags && (record.dwSampleFlags & ~flags_ & AM_SAMPLE_TIMEVALID) != 0;
    if (newlyTimed && !covers(size, &Properties::tStop)) return E_INVALIDARG;
    if (covers(size, &Properties::lActual) && record.lActual > size_) return E_INVALIDARG;
    if (covers(size, &Properties::pMediaType) && (record.dwSampleFlags & AM_SAMPLE_TYPECHANGED) != 0 &&
        record.pMediaType == nullptr)
        return E_POINTER;
    if (covers(size, &Properties::pbBuffer) && record.pbBuffer != nullptr && record.pbBuffer != payload_)
        return E_INVALIDARG;
    if (covers(size, &Properties::cbBuffer) && record.cbBuffer != 0 && record.cbBuffer != size_)
        return E_INVALIDARG;
    return S_OK;
}

void COOBMediaSample::takeProperties(const Properties& record, DWORD size, OwnedType type) noexcept {
    take(typeSpecificFlags_, record, size, &Properties::dwTypeSpecificFlags);
    take(actualLength_, record, size, &Properties::lActual);
    take(start_, record, size, &Properties::tStart);
    take(stop_, record, size, &Properties::tStop);
    take(streamId_, record, size, &Properties::dwStreamId);
    if (!covers(size, &Properties::dwSampleFlags)) return;
    flags_ = record.dwSampleFlags | (flags_ & mediaTimeValid);
    // A record that ends before its type keeps the attached one when the flag says there is one.
    const bool keepsType = has(AM_SAMPLE_TYPECHANGED) && type == nullptr;
    attach(keepsType ? std::move(mediaType_) : std::move(type));
}

void COOBMediaSample::attach(OwnedType type) noexcept {
    mediaType_ = std::move(type);
    put(AM_SAMPLE_TYPECHANGED, mediaType_ != nullptr);
}

STDMETHODIMP COOBMediaSample::GetMetaData(MetaDataType key, const BYTE** bytes, ULONG* count) {
    if (bytes == nullptr || count == nullptr) return E_POINTER;
    const auto entry = metadata_.find(key);
    if (entry == metadata_.end()) return E_FAIL;
    *bytes = entry->second.data();
    *count = static_cast<ULONG>(entry->second.size());
    return S_OK;
}

STDMETHODIMP_(void) COOBMediaSample::SetMetaData(MetaDataType key, const BYTE* bytes, LONG count) {
    // Copied first: the bytes may be those of the entry itself.
    std::vector<BYTE> value;
    if (bytes != nullptr && count > 0) value.assign(bytes, bytes + count);
    metadata_.insert_or_assign(key, std::move(value));
}

STDMETHODIMP_(void) COOBMediaSample::RemoveMetaData(MetaDataType key) {
    metadata_.erase(key);
}

void COOBMediaSample::setPayload(BYTE* payload, LONG size, LONG actualLength) noexcept {
    payload_ = payload;
    size_ = size;
    actualLength_ = actualLength;
}

HRESULT COOBMediaSample::adoptProperties(const Properties& properties) noexcept {
    setPayload(properties.pbBuffer, properties.cbBuffer, properties.lActual);
    return SetProperties(sizeof(properties), reinterpret_cast<const BYTE*>(&properties));
}

void COOBMediaSample::resetAttributes() noexcept {
    mediaType_.reset();
    flags_ = 0;
    typeSpecificFlags_ = 0;
    streamId_ = 0;
    metadata_.clear();
}

}  // namespace mvrtpfec
