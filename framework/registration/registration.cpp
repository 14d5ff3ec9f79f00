#include "framework/registration/registration.h"

#include <array>
#include <string>

#include "framework/registration/class_keys.h"
#include "framework/registration/filter_list.h"
#include "platform/text/ansi_text.h"

namespace mvrtpfec {

using platform::RegistrationSystem;

namespace {

constexpr std::size_t longestPath = 260;

HRESULT pathOf(RegistrationSystem& system, platform::ModuleHandle module, std::basic_string<WCHAR>& path) {
    std::array<char, longestPath> narrow{};
    const DWORD length = system.moduleFileName(module, narrow);
    if (length == 0) {
        const DWORD error = system.lastError();
        return HRESULT_FROM_WIN32(error);
    }
    path = platform::wideFromAnsi({narrow.data(), length});
    return S_OK;
}

}  // namespace

HRESULT enterModule(RegistrationSystem& system, platform::ModuleHandle module,
                    std::span<const FactoryTemplate> rows) {
    std::basic_string<WCHAR> path;
    HRESULT result = pathOf(system, module, path);
    for (const FactoryTemplate& row : rows)
        if (SUCCEEDED(result)) result = writeClassKeys(system, row, path);
    return FAILED(result) ? result : listFilters(system, rows, Listing::replace);
}

HRESULT removeModule(RegistrationSystem& system, platform::ModuleHandle module,
                     std::span<const FactoryTemplate> rows) {
    std::basic_string<WCHAR> path;
    HRESULT result = pathOf(system, module, path);
    if (SUCCEEDED(result)) result = listFilters(system, rows, Listing::remove);
    if (FAILED(result)) return result;
    for (const FactoryTemplate& row : rows) deleteClassKeys(system, row);
    return S_OK;
}

}  // namespace mvrtpfec
