#include <algorithm>
#include <string_view>

#include "platform/component/error_text.h"

namespace platform {
namespace {

struct Entry {
    HRESULT code;
    std::string_view text;
};

constexpr Entry catalogue[] = {
    {E_NOTIMPL, "Not implemented"},     {E_NOINTERFACE, "Interface not supported"},
    {E_POINTER, "Invalid pointer"},     {E_ABORT, "Operation aborted"},
    {E_FAIL, "Unspecified error"},      {E_UNEXPECTED, "Unexpected failure"},
    {E_ACCESSDENIED, "Access denied"},  {E_OUTOFMEMORY, "Out of memory"},
    {E_INVALIDARG, "Invalid argument"},
};

}  // namespace

std::size_t frameworkErrorText(HRESULT code, ErrorTextBuffer& buffer) noexcept {
    for (const Entry& entry : catalogue)
        if (entry.code == code) return entry.text.copy(buffer.data(), buffer.size());
    return 0;
}

}  // namespace platform
