#include "host/io/standard_error.h"

#include <cstdio>

namespace mvrtpfec {

void tellPerson(std::string_view text) noexcept {
    // A stream that has failed once isn't tried again.
    if (std::ferror(stderr) == 0) std::fwrite(text.data(), 1, text.size(), stderr);
}

}  // namespace mvrtpfec
