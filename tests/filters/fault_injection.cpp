#include "tests/filters/fault_injection.h"

#include <array>
#include <atomic>
#include <cstdlib>
#include <new>

namespace mvrtpfec {

namespace {

struct Plan {
    bool armed = false;
    bool fired = false;
    Resource resource = Resource::memory;
    std::size_t left = 0;
};

thread_local constinit Plan plan;
std::atomic<std::ptrdiff_t> blocks{0};

bool isRefused(Resource resource) {
    if (!plan.armed || plan.resource != resource) return false;
    if (plan.left > 0) {
        --plan.left;
        return false;
    }
    plan.fired = true;
    SetLastError(FaultInjection::error);
    return true;
}

void* allocate(std::size_t size, std::size_t alignment) {
    if (isRefused(Resource::memory)) return nullptr;
    void* block = alignment == 0
                      ? std::malloc(size == 0 ? 1 : size)
                      : std::aligned_alloc(alignment, (size + alignment - 1) / alignment * alignment);
    if (block != nullptr) ++blocks;
    return block;
}

void* allocateOrThrow(std::size_t size, std::size_t alignment) {
    if (void* block = allocate(size, alignment)) return block;
    throw std::bad_alloc();
}

void release(void* block) {
    if (block == nullptr) return;
    --blocks;
    std::free(block);  // NOLINT(cppcoreguidelines-owning-memory)
}

}  // namespace

FaultInjection::FaultInjection(Resource resource, std::size_t n) {
    plan = {true, false, resource, n};
}

FaultInjection::~FaultInjection() {
    plan.armed = false;
}

bool FaultInjection::fired() const {
    return plan.fired;
}

std::ptrdiff_t blocksInUse() {
    return blocks;
}

}  // namespace mvrtpfec

using mvrtpfec::allocate;
using mvrtpfec::allocateOrThrow;
using mvrtpfec::isRefused;
using mvrtpfec::Resource;

void* operator new(std::size_t size) {
    return allocateOrThrow(size, 0);
}
void* operator new(std::size_t size, std::align_val_t alignment) {
    return allocateOrThrow(size, static_cast<std::size_t>(alignment));
}
void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
    return allocate(size, 0);
}
void* operator new(std::size_t size, std::align_val_t alignment, const std::nothrow_t&) noexcept {
    return allocate(size, static_cast<std::size_t>(alignment));
}
void operator delete(void* block) noexcept {
    mvrtpfec::release(block);
}
void operator delete(void* block, std::size_t) noexcept {
    mvrtpfec::release(block);
}
void operator delete(void* block, std::align_val_t) noexcept {
    mvrtpfec::release(block);
}
void operator delete(void* block, std::size_t, std::align_val_t) noexcept {
    mvrtpfec::release(block);
}

// The linker sends every call of NAME to __wrap_NAME (see CMakeLists.txt).
extern "C" {

HANDLE __real_CreateEventW(SECURITY_ATTRIBUTES*, BOOL, BOOL, LPCWSTR);
HANDLE __real_CreateSemaphoreW(SECURITY_ATTRIBUTES*, LONG, LONG, LPCWSTR);
HANDLE __real_CreateThread(SECURITY_ATTRIBUTES*, std::size_t, LPTHREAD_START_ROUTINE, LPVOID, DWORD, DWORD*);
BOOL __real_InitializeCriticalSectionAndSpinCount(CRITICAL_SECTION*, DWORD);

HANDLE __wrap_CreateEventW(SECURITY_ATTRIBUTES* attributes, BOOL manual, BOOL initial, LPCWSTR name) {
    return isRefused(Resource::event) ? nullptr : __real_CreateEventW(attributes, manual, initial, name);
}
HANDLE __wrap_CreateSemaphoreW(SECURITY_ATTRIBUTES* attributes, LONG initial, LONG maximum, LPCWSTR name) {
    return isRefused(Resource::semaphore) ? nullptr
                                          : __real_CreateSemaphoreW(attributes, initial, maximum, name);
}
HANDLE __wrap_CreateThread(SECURITY_ATTRIBUTES* attributes, std::size_t stack, LPTHREAD_START_ROUTINE start,
                           LPVOID parameter, DWORD flags, DWORD* id) {
    return isRefused(Resource::thread) ? nullptr
                                       : __real_CreateThread(attributes, stack, start, parameter, flags, id);
}
BOOL __wrap_InitializeCriticalSectionAndSpinCount(CRITICAL_SECTION* section, DWORD spinCount) {
    return isRefused(Resource::criticalSection)
               ? FALSE
               : __real_InitializeCriticalSectionAndSpinCount(section, spinCount);
}

}  // extern "C"
