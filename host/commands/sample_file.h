#pragma once

#include <filesystem>

namespace mvrtpfec {

/// The sample stream that comes with the program, in ../share/mvrtpfec from the program's folder, in a
/// build tree too. Throws std::runtime_error when it isn't there.
std::filesystem::path findSample();

}  // namespace mvrtpfec
