#include "platform/files/path_text-posix.h"
#include "platform/files/placement.h"

namespace platform {

std::filesystem::path standardPath(std::string_view path) {
    return nativePath(path);
}

}  // namespace platform
