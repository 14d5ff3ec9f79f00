#include "host/commands/sample_file.h"

#include <stdexcept>
#include <system_error>

#include "platform/process/process.h"

namespace mvrtpfec {

namespace fs = std::filesystem;

fs::path findSample() {
    std::error_code error;
    const fs::path prefix = platform::programPath().parent_path().parent_path();
    fs::path sample = prefix / "share" / "mvrtpfec" / "sample.ts";
    if (fs::is_regular_file(sample, error)) return sample;
    throw std::runtime_error("the sample stream is not installed: name a file to simulate with");
}

}  // namespace mvrtpfec
