#pragma once

#include <new>
#include <utility>

#include "platform/hresult.h"

namespace platform {

/// Runs the work of an entry point of this layer: no exception leaves it.
template <class Work>
HRESULT withoutThrowing(Work&& work) noexcept {
    try {
        return std::forward<Work>(work)();
    } catch (const std::bad_alloc&) {
        return E_OUTOFMEMORY;
    } catch (...) {
        return E_FAIL;
    }
}

}  // namespace platform
