#pragma once

#include <chrono>
#include <string_view>

namespace mvrtpfec {

/// Tells a person something. That nobody reads it, or can any more, is no error; one who has stopped reading
/// is waited for so long.
void tellPerson(std::string_view text,
                std::chrono::milliseconds patience = std::chrono::milliseconds(2000)) noexcept;

}  // namespace mvrtpfec
