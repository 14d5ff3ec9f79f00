#pragma once

#include <string_view>

namespace mvrtpfec {

/// Tells a person something. That nobody reads it, or can any more, is no error.
void tellPerson(std::string_view text) noexcept;

}  // namespace mvrtpfec
