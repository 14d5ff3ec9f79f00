#include "receiver/morvane_input_pin.h"

#include "support/com_exception.h"

namespace mvrtpfec {

namespace {

constexpr LONG leastBuffers = 100;
constexpr LONG leastBufferSize = 1;

/// The alternative of the H.264 video subtypes. Nothing else about the pin has to do with video; hosts know
/// the pin by this offer.
constexpr GUID offeredSubtype{0x8D2D71CB, 0x243F, 0x45E3, {0xB2, 0xD8, 0x5F, 0xD7, 0x96, 0x7E, 0xC0, 0x9B}};

void throwIfFailed(HRESULT result) {
    if (FAILED(result)) throw mvn::COMException(result);
}

}  // namespace

CMorvaneInputPinBase::CMorvaneInputPinBase(CBaseFilter* filter, LPCWSTR name)
    : CInputPinWithDynamicMediaType("MorvaneInputPinObject", filter, &lock_, nullptr, name) {}

HRESULT CMorvaneInputPinBase::GetMediaType(int position, CMediaType* type) {
    if (type == nullptr) return E_POINTER;
    if (position < 0) return E_INVALIDARG;
    if (position > 0) return VFW_S_NO_MORE_ITEMS;
    *type = CMediaType(MEDIATYPE_Video, offeredSubtype);
    return S_OK;
}

HRESULT CMorvaneInputPinBase::NotifyAllocator(IMemAllocator* allocator, BOOL readOnly) {
    return guardedEntry([&] {
        throwIfFailed(CBaseInputPin::NotifyAllocator(allocator, readOnly));
        ALLOCATOR_PROPERTIES actual{};
        throwIfFailed(allocator->GetProperties(&actual));
        return actual.cBuffers < leastBuffers || actual.cbBuffer < leastBufferSize ? E_FAIL : S_OK;
    });
}

HRESULT CMorvaneInputPinBase::GetAllocatorRequirements(ALLOCATOR_PROPERTIES* properties) {
    if (properties == nullptr) return E_POINTER;
    *properties = {.cBuffers = leastBuffers, .cbBuffer = leastBufferSize, .cbAlign = 32, .cbPrefix = 0};
    return S_OK;
}

}  // namespace mvrtpfec
