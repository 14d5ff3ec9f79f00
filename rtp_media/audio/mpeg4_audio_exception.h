#pragma once

#include <stdexcept>
#include <string>

#include "support/errors.h"

namespace mvrtpfec {

struct AudioSpecificConfig;
/// A configuration of ISO/IEC 14496-3 that isn't supported.
using Mpeg4AudioException = mvn::ExceptionTemplate<AudioSpecificConfig, std::runtime_error>;

/// "mpeg4_audio(LINE): not implemented" with the caller's line.
std::string notImplementedText(int line = __builtin_LINE());

/// Throws Mpeg4AudioException with this text.
[[noreturn]] void throwNotImplemented(int line = __builtin_LINE());

}  // namespace mvrtpfec
