#pragma once

#include <cstddef>
#include <memory>
#include <new>

#include "framework/base/base_allocator.h"

namespace mvrtpfec {

/// The allocator of plain memory: one block for all its buffers, kept from one commit to the next while the
/// properties stay the same.
class CMemAllocator : public CBaseAllocator {
public:
    CMemAllocator(const char* name, IUnknown* outer) noexcept;

protected:
    HRESULT Alloc() override;
    std::unique_ptr<CMediaSample> MakeSample(LONG index) override;

private:
    struct AlignedDelete {
        std::align_val_t alignment;

        void operator()(BYTE* block) const noexcept { ::operator delete(block, alignment); }
    };

    using Block = std::unique_ptr<BYTE, AlignedDelete>;

    /// From one buffer to the next, prefix included.
    std::size_t stride() const noexcept;

    Block block_{nullptr, AlignedDelete{std::align_val_t{1}}};
};

/// A fresh CMemAllocator with one reference for the caller.
HRESULT CreateMemoryAllocator(IMemAllocator** allocator) noexcept;

}  // namespace mvrtpfec
