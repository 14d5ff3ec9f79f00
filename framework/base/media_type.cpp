#include "framework/base/media_type.h"

#include <cstring>
#include <new>
#include <utility>

#include "platform/component/task_memory.h"

namespace mvrtpfec {

namespace {

AM_MEDIA_TYPE emptyType() noexcept {
    AM_MEDIA_TYPE type{};
    type.bFixedSizeSamples = TRUE;
    type.lSampleSize = 1;
    return type;
}

bool isOpenOrSame(REFGUID open, REFGUID value) noexcept {
    return open == GUID_NULL || open == value;
}

}  // namespace

HRESULT CopyMediaType(AM_MEDIA_TYPE* target, const AM_MEDIA_TYPE* source) noexcept {
    *target = *source;
    target->pUnk = nullptr;
    target->pbFormat = nullptr;
    target->cbFormat = 0;
    if (source->cbFormat != 0 && source->pbFormat != nullptr) {
        target->pbFormat = static_cast<BYTE*>(CoTaskMemAlloc(source->cbFormat));
        if (target->pbFormat == nullptr) return E_OUTOFMEMORY;
        std::memcpy(target->pbFormat, source->pbFormat, source->cbFormat);
        target->cbFormat = source->cbFormat;
    }
    target->pUnk = source->pUnk;
    if (target->pUnk != nullptr) target->pUnk->AddRef();
    return S_OK;
}

void FreeMediaType(AM_MEDIA_TYPE& type) noexcept {
    CoTaskMemFree(std::exchange(type.pbFormat, nullptr));
    type.cbFormat = 0;
    if (IUnknown* unknown = std::exchange(type.pUnk, nullptr)) unknown->Release();
}

AM_MEDIA_TYPE* CreateMediaType(const AM_MEDIA_TYPE* source) noexcept {
    auto* type = static_cast<AM_MEDIA_TYPE*>(CoTaskMemAlloc(sizeof(AM_MEDIA_TYPE)));
    if (type == nullptr) return nullptr;
    if (SUCCEEDED(CopyMediaType(type, source))) return type;
    CoTaskMemFree(type);
    return nullptr;
}

void DeleteMediaType(AM_MEDIA_TYPE* type) noexcept {
    if (type == nullptr) return;
    FreeMediaType(*type);
    CoTaskMemFree(type);
}

CMediaType::CMediaType() noexcept : AM_MEDIA_TYPE(emptyType()) {}

CMediaType::CMediaType(REFGUID majorType, REFGUID subType) noexcept : CMediaType() {
    majortype = majorType;
    subtype = subType;
}

CMediaType::CMediaType(const AM_MEDIA_TYPE& other) : AM_MEDIA_TYPE{} {
    if (FAILED(CopyMediaType(this, &other))) throw std::bad_alloc();
}

CMediaType::CMediaType(CMediaType&& other) noexcept : CMediaType() {
    std::swap(static_cast<AM_MEDIA_TYPE&>(*this), static_cast<AM_MEDIA_TYPE&>(other));
}

CMediaType& CMediaType::operator=(CMediaType other) noexcept {
    std::swap(static_cast<AM_MEDIA_TYPE&>(*this), static_cast<AM_MEDIA_TYPE&>(other));
    return *this;
}

HRESULT CMediaType::Set(const AM_MEDIA_TYPE& other) noexcept {
    CMediaType copy;
    const HRESULT result = CopyMediaType(&copy, &other);
    if (SUCCEEDED(result)) *this = std::move(copy);
    return result;
}

void CMediaType::ResetFormatBuffer() noexcept {
    CoTaskMemFree(std::exchange(pbFormat, nullptr));
    cbFormat = 0;
}

bool CMediaType::operator==(const CMediaType& other) const noexcept {
    return majortype == other.majortype && subtype == other.subtype && formattype == other.formattype &&
           cbFormat == other.cbFormat &&
           (cbFormat == 0 || std::memcmp(pbFormat, other.pbFormat, cbFormat) == 0);
}

bool CMediaType::IsPartiallySpecified() const noexcept {
    return majortype == GUID_NULL || formattype == GUID_NULL;
}

bool CMediaType::MatchesPartial(const CMediaType& partial) const noexcept {
    if (!isOpenOrSame(partial.majortype, majortype) || !isOpenOrSame(partial.subtype, subtype)) return false;
    if (partial.formattype == GUID_NULL) return true;
    return formattype == partial.formattype && cbFormat == partial.cbFormat &&
           (cbFormat == 0 || std::memcmp(pbFormat, partial.pbFormat, cbFormat) == 0);
}

}  // namespace mvrtpfec
