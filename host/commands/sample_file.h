#pragma once

#include <filesystem>

namespace mvrtpfec {

/// The sample stream that comes with the program: where it is installed, or in the source tree it was
/// built from. Throws std::runtime_error when it is in neither place.
std::filesystem::path findSample();

}  // namespace mvrtpfec
