#include "platform/files/placement.h"

#include <system_error>

namespace platform {

namespace fs = std::filesystem;

namespace {

/// Without links, as far as the path is there.
fs::path resolved(const fs::path& path) {
    std::error_code error;
    fs::path canonical = fs::weakly_canonical(path, error);
    return error ? path.lexically_normal() : canonical;
}

/// Compares what is there, so that neither case nor short names matter where the system ignores them.
bool isAtOrUnder(fs::path path, const fs::path& place) {
    for (;;) {
        std::error_code error;
        if (path == place || fs::equivalent(path, place, error)) return true;
        const fs::path above = path.parent_path();
        if (above == path) return false;
        path = above;
    }
}

}  // namespace

bool leadsInto(std::string_view path, std::string_view place) {
    std::error_code error;
    const fs::path from = fs::absolute(standardPath(path), error);
    const fs::path to = resolved(fs::absolute(standardPath(place), error));
    if (isAtOrUnder(resolved(from), to)) return true;
    // A link stands where it stands too.
    return fs::is_symlink(from, error) && isAtOrUnder(resolved(from.parent_path()), to);
}

}  // namespace platform
