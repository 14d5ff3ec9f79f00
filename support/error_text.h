#pragma once

#include <string>

#include "platform/hresult.h"

namespace mvn {

/// The media framework's text for a code (platform/component/error_text.h), at most 160 characters;
/// "Invalid error code" when it has none.
std::string errorText(HRESULT code);

}  // namespace mvn
