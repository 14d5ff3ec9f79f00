#include "host/commands/sample_file.h"

#include <stdexcept>
#include <system_error>

namespace mvrtpfec {

namespace fs = std::filesystem;

fs::path findSample() {
    std::error_code error;
    const fs::path program = fs::read_symlink("/proc/self/exe", error);
    const fs::path installed = program.parent_path().parent_path() / "share" / "mvrtpfec" / "sample.ts";
    for (const fs::path& candidate : {installed, fs::path(MVRTPFEC_SAMPLE)}) {
        if (fs::is_regular_file(candidate, error)) return candidate;
    }
    throw std::runtime_error("the sample stream is not installed: name a file to simulate with");
}

}  // namespace mvrtpfec
