#pragma once

#include <utility>

#include "framework/base/atl_exception.h"
#include "support/com_exception.h"

namespace mvrtpfec {

/// Runs the work of an entry point: no exception leaves it. A COMException or CAtlException becomes its
/// HRESULT, anything else E_FAIL.
template <class Work>
HRESULT guardedEntry(Work&& work) noexcept {
    try {
        return std::forward<Work>(work)();
    } catch (const mvn::COMException& error) {
        return error.result();
    } catch (const CAtlException& error) {
        return error;
    } catch (...) {
        return E_FAIL;
    }
}

}  // namespace mvrtpfec
