#include "framework/base/mem_allocator.h"

#include <cstddef>
#include <new>

namespace mvrtpfec {

CMemAllocator::CMemAllocator(const char* name, IUnknown* outer) noexcept : CBaseAllocator(name, outer) {}

HRESULT CMemAllocator::Alloc() {
    if (areSamplesStale()) {
        const ALLOCATOR_PROPERTIES& properties = propertiesLocked();
        const auto bytes = stride() * static_cast<std::size_t>(properties.cBuffers);
        const std::align_val_t alignment{static_cast<std::size_t>(properties.cbAlign)};
        block_.reset();
        auto* block = static_cast<BYTE*>(::operator new(bytes, alignment, std::nothrow));
        block_ = Block(block, AlignedDelete{alignment});
        if (block == nullptr) return E_OUTOFMEMORY;
    }
    return CBaseAllocator::Alloc();
}

std::unique_ptr<CMediaSample> CMemAllocator::MakeSample(LONG index) {
    const ALLOCATOR_PROPERTIES& properties = propertiesLocked();
    BYTE* payload = block_.get() + stride() * static_cast<std::size_t>(index) + properties.cbPrefix;
    return std::make_unique<CMediaSample>("Sample", this, nullptr, payload, properties.cbBuffer);
}

std::size_t CMemAllocator::stride() const noexcept {
    const ALLOCATOR_PROPERTIES& properties = propertiesLocked();
    return static_cast<std::size_t>(properties.cbBuffer) + static_cast<std::size_t>(properties.cbPrefix);
}

HRESULT CreateMemoryAllocator(IMemAllocator** allocator) noexcept {
    if (allocator == nullptr) return E_POINTER;
    // Its reference count owns it. NOLINTNEXTLINE(cppcoreguidelines-owning-memory)
    *allocator = new (std::nothrow) CMemAllocator("Memory Allocator", nullptr);
    if (*allocator == nullptr) return E_OUTOFMEMORY;
    (*allocator)->AddRef();
    return S_OK;
}

}  // namespace mvrtpfec
