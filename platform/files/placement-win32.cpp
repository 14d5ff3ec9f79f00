#include "platform/files/placement.h"
#include "platform/text/ansi_text.h"

namespace platform {

std::filesystem::path standardPath(std::string_view path) {
    return wideFromAnsi(path);
}

}  // namespace platform
