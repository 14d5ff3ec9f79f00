#include "host/io/standard_error.h"

#include <cstdio>

#include "platform/files/files.h"

namespace mvrtpfec {

void tellPerson(std::string_view text, std::chrono::milliseconds patience) noexcept {
    constexpr int descriptor = 2;
    // A stream that has failed once isn't tried again.
    if (std::ferror(stderr) == 0 && platform::waitUntilWritable(descriptor, patience))
        std::fwrite(text.data(), 1, text.size(), stderr);
}

}  // namespace mvrtpfec
