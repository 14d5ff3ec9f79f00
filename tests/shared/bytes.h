#pragma once

#include <cstdint>
#include <vector>

namespace mvrtpfec {

using Bytes = std::vector<std::uint8_t>;

}  // namespace mvrtpfec
