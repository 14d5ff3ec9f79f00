#include "support/error_text.h"

#include <algorithm>

#include "platform/component/error_text.h"

namespace mvn {

std::string errorText(HRESULT code) {
    platform::ErrorTextBuffer buffer{};
    const std::size_t count = platform::frameworkErrorText(code, buffer);
    if (count == 0) return "Invalid error code";
    return {buffer.data(), std::min(count, buffer.size())};
}

}  // namespace mvn
