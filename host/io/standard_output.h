#pragma once

#include <string_view>

namespace mvrtpfec {

/// Prints on standard output, which may keep it for a while. That its reader has gone, as `head` does when it
/// has enough, is no error: what is printed from then on is dropped. Throws FileError when it can't be
/// written for another reason.
void print(std::string_view text);

/// Writes out what has been printed. Throws as print().
void flushPrinted();

/// Whether nobody reads standard output any more, as far as has been found out.
bool isReaderGone() noexcept;

}  // namespace mvrtpfec
