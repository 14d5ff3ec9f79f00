#pragma once

#include <string_view>

namespace mvrtpfec {

/// nal_unit_type, 0 to 31 (ISO/IEC 14496-10, table 7-1).
std::string_view h264TypeName(unsigned type);
/// nal_unit_type, 0 to 63 (ISO/IEC 23008-2, table 7-1).
std::string_view hevcTypeName(unsigned type);

}  // namespace mvrtpfec
