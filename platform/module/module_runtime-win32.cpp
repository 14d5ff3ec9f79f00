#include "platform/module/module_runtime-win32.h"

#include <atomic>
#include <cstdint>
#include <cstdlib>
#include <cstring>

#include "platform/types.h"

namespace __gnu_cxx {
/// The runtime's, which no header declares: frees the memory that it keeps for throwing without any.
void __freeres();
}  // namespace __gnu_cxx

namespace {

/// A thread-local variable as the compiler describes it to the runtime.
struct Variable {
    std::size_t size;
    std::size_t alignment;
    void* runtimesOwn;
    const void* initial;  ///< null for zeros
};

/// A thread's copy of a variable, in the list of that thread's copies. The bytes stand behind it.
struct Copy {
    Copy* next;
    const Variable* variable;

    void* bytes() {
        const auto address = reinterpret_cast<std::uintptr_t>(this + 1) + variable->alignment - 1;
        return reinterpret_cast<void*>(address / variable->alignment * variable->alignment);
    }
};

constinit std::atomic<DWORD> slot{FLS_OUT_OF_INDEXES};

/// When a thread ends, or the slot is given back.
void WINAPI freeCopies(void* first) {
    for (auto* copy = static_cast<Copy*>(first); copy != nullptr;) {
        Copy* const next = copy->next;
        std::free(copy);
        copy = next;
    }
}

DWORD takeSlot() noexcept {
    DWORD expected = FLS_OUT_OF_INDEXES;
    const DWORD taken = FlsAlloc(freeCopies);
    if (slot.compare_exchange_strong(expected, taken)) return taken;
    FlsFree(taken);
    return expected;
}

Copy* addCopy(const Variable& variable, DWORD index, Copy* first) noexcept {
    auto* const copy = static_cast<Copy*>(std::malloc(sizeof(Copy) + variable.alignment + variable.size));
    if (copy == nullptr) std::abort();
    *copy = {first, &variable};
    if (variable.initial != nullptr)
        std::memcpy(copy->bytes(), variable.initial, variable.size);
    else
        std::memset(copy->bytes(), 0, variable.size);
    if (!FlsSetValue(index, copy)) std::abort();
    return copy;
}

}  // namespace

/// In the place of the runtime's own, which has no way to give its slot back. The module has a handful of
/// such variables, so a list is quickly searched.
extern "C" void* __emutls_get_address(const Variable* variable) {
    DWORD index = slot;
    if (index == FLS_OUT_OF_INDEXES) index = takeSlot();
    auto* const first = static_cast<Copy*>(FlsGetValue(index));
    for (Copy* copy = first; copy != nullptr; copy = copy->next)
        if (copy->variable == variable) return copy->bytes();
    return addCopy(*variable, index, first)->bytes();
}

void platform::releaseModuleRuntime() noexcept {
    const DWORD index = slot.exchange(FLS_OUT_OF_INDEXES);
    if (index != FLS_OUT_OF_INDEXES) FlsFree(index);
    __gnu_cxx::__freeres();
}
