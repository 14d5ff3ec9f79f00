#include "host/live/json_lines.h"

#include <cerrno>
#include <cstdint>
#include <span>
#include <system_error>
#include <utility>

#include <fmt/format.h>

#include "host/io/file_error.h"
#include "host/io/standard_error.h"
#include "platform/files/files.h"

namespace mvrtpfec {

JsonLines::JsonLines(const std::filesystem::path& path) {
    if (path.empty()) return;
    constexpr int standardOutput = 1;
    descriptor_ =
        path == "-" ? platform::duplicateDescriptor(standardOutput) : platform::openForAppending(path, true);
    if (descriptor_ < 0) throw FileError(path, "cannot create", errno);
}

JsonLines::~JsonLines() {
    close();
}

bool JsonLines::write(std::string_view line, std::chrono::milliseconds patience) {
    if (!platform::waitUntilWritable(descriptor_, patience)) return false;
    std::span rest(reinterpret_cast<const std::uint8_t*>(line.data()), line.size());
    while (!rest.empty()) {
        const std::ptrdiff_t written = platform::writeSome(descriptor_, rest);
        if (written >= 0) {
            rest = rest.subspan(static_cast<std::size_t>(written));
        } else if (errno != EINTR) {
            failed_ = !platform::meansClosedPipe(errno);
            tellPerson(
                fmt::format("mvrtpfec: no more JSON lines: {}\n", std::generic_category().message(errno)),
                patience);
            close();
            break;
        }
    }
    return true;
}

void JsonLines::close() noexcept {
    if (descriptor_ >= 0) platform::closeDescriptor(std::exchange(descriptor_, -1));
}

}  // namespace mvrtpfec
