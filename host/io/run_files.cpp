#include "host/io/run_files.h"

#include "host/usage_error.h"
#include "platform/files/files.h"
#include "platform/files/utf8_path.h"

namespace mvrtpfec {

namespace {

namespace fs = std::filesystem;

bool isFile(const fs::path& path) {
    return !path.empty() && path != "-";
}

/// The file that was given for standard input has a name there.
const fs::path& named(const fs::path& read) {
    static const fs::path standardInput = "/dev/stdin";
    return read == "-" ? standardInput : read;
}

}  // namespace

void requireDistinct(const RunFiles& files) {
    for (auto out = files.written.begin(); out != files.written.end(); ++out) {
        if (!isFile(*out)) continue;
        const std::string name = platform::utf8From(*out);
        for (const fs::path& in : files.read)
            if (!in.empty() && platform::nameOneFile(*out, named(in)))
                throw UsageError(name + " is named for an output and is the input " + platform::utf8From(in));
        for (auto other = files.written.begin(); other != out; ++other)
            if (isFile(*other) && platform::nameOneFile(*out, *other))
                throw UsageError(name + " is named for two outputs");
    }
}

}  // namespace mvrtpfec
