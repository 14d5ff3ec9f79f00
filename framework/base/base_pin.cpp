#include "framework/base/base_pin.h"

#include <algorithm>
#include <new>

#include "framework/base/base_filter.h"
#include "framework/base/enum_media_types.h"
#include "framework/base/hand_out.h"
#include "framework/guarded_entry.h"
#include "platform/component/task_memory.h"

namespace mvrtpfec {

CBasePin::CBasePin(const char* objectName, CBaseFilter* filter, CCritSec* lock, HRESULT*, LPCWSTR name,
                   PIN_DIRECTION direction)
    : CUnknown(objectName, nullptr),
      m_pFilter(filter),
      m_pLock(lock),
      name_(name != nullptr ? name : std::basic_string<WCHAR>()),
      direction_(direction) {}

HRESULT CBasePin::NonDelegatingQueryInterface(REFIID riid, void** object) {
    if (riid == IID_IPin) return GetInterface(static_cast<IPin*>(this), object);
    if (riid == IID_IQualityControl) return GetInterface(static_cast<IQualityControl*>(this), object);
    return CUnknown::NonDelegatingQueryInterface(riid, object);
}

ULONG CBasePin::NonDelegatingAddRef() {
    return m_pFilter->AddRef();
}

ULONG CBasePin::NonDelegatingRelease() {
    return m_pFilter->Release();
}

HRESULT CBasePin::ConnectedTo(IPin** pin) {
    if (pin == nullptr) return E_POINTER;
    *pin = GetConnected().Detach();
    return *pin != nullptr ? S_OK : VFW_E_NOT_CONNECTED;
}

HRESULT CBasePin::ConnectionMediaType(AM_MEDIA_TYPE* type) {
    if (type == nullptr) return E_POINTER;
    std::shared_ptr<const CMediaType> current;
    {
        const std::lock_guard lock(leafLock_);
        if (connected_ != nullptr) current = type_;
    }
    if (current) return CopyMediaType(type, current.get());
    const CMediaType empty;
    *type = empty;
    return VFW_E_NOT_CONNECTED;
}

HRESULT CBasePin::QueryPinInfo(PIN_INFO* info) {
    if (info == nullptr) return E_POINTER;
    info->pFilter = m_pFilter;
    info->pFilter->AddRef();
    info->dir = direction_;
    info->achName[name_.copy(info->achName, MAX_PIN_NAME - 1)] = 0;
    return S_OK;
}

HRESULT CBasePin::QueryDirection(PIN_DIRECTION* direction) {
    if (direction == nullptr) return E_POINTER;
    *direction = direction_;
    return S_OK;
}

HRESULT CBasePin::QueryId(LPWSTR* id) {
    if (id == nullptr) return E_POINTER;
    *id = static_cast<LPWSTR>(CoTaskMemAlloc((name_.size() + 1) * sizeof(WCHAR)));
    if (*id == nullptr) return E_OUTOFMEMORY;
    std::copy_n(name_.c_str(), name_.size() + 1, *id);
    return S_OK;
}

HRESULT CBasePin::QueryAccept(const AM_MEDIA_TYPE* type) {
    if (type == nullptr) return E_POINTER;
    return guardedEntry([&] {
               const CMediaType offered(*type);
               return CheckMediaType(&offered);
           }) == S_OK
               ? S_OK
               : S_FALSE;
}

HRESULT CBasePin::EnumMediaTypes(IEnumMediaTypes** types) {
    return guardedEntry([&] { return HandOutNew<CEnumMediaTypes>(types, this); });
}

HRESULT CBasePin::QueryInternalConnections(IPin**, ULONG*) {
    return E_NOTIMPL;
}

HRESULT CBasePin::EndOfStream() {
    return S_OK;
}

HRESULT CBasePin::NewSegment(REFERENCE_TIME start, REFERENCE_TIME stop, double rate) {
    exchanged(segment_, Segment{start, stop, rate});
    return S_OK;
}

HRESULT CBasePin::Notify(IBaseFilter*, Quality) {
    return E_NOTIMPL;
}

HRESULT CBasePin::SetSink(IQualityControl* sink) {
    exchanged(qualitySink_, sink);
    return S_OK;
}

HRESULT CBasePin::PassNotify(Quality message) {
    if (IQualityControl* sink = copied(qualitySink_)) return sink->Notify(m_pFilter, message);
    const auto upstream = queryFor<IQualityControl>(GetConnected(), IID_IQualityControl);
    return upstream == nullptr ? VFW_E_NOT_FOUND : upstream->Notify(m_pFilter, message);
}

HRESULT CBasePin::Inactive() {
    m_bRunTimeError = false;
    return S_OK;
}

HRESULT CBasePin::SetMediaType(const CMediaType* type) {
    if (type == nullptr) return E_POINTER;
    try {
        exchanged(type_, std::make_shared<const CMediaType>(*type));
        return S_OK;
    } catch (const std::bad_alloc&) {
        return E_OUTOFMEMORY;
    }
}

HRESULT CBasePin::GetMediaType(int, CMediaType*) {
    return E_UNEXPECTED;
}

CMediaType CBasePin::CurrentMediaType() const {
    const auto current = copied(type_);
    return current ? *current : CMediaType();
}

bool CBasePin::IsStopped() const noexcept {
    return m_pFilter->IsStopped();
}

bool CBasePin::IsConnectedTo(IPin* pin) const noexcept {
    const auto connected = GetConnected();
    return connected != nullptr && isSameObject(connected, pin);
}

}  // namespace mvrtpfec
