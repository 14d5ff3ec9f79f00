#include <algorithm>
#include <chrono>
#include <filesystem>
#include <iterator>
#include <thread>

#include <link.h>
#include <malloc.h>

#include "tests/registration/footprint.h"

namespace {

std::size_t entriesOf(const char* folder) {
    const std::filesystem::directory_iterator entries(folder);
    return static_cast<std::size_t>(std::distance(begin(entries), end(entries)));
}

std::size_t modules() {
    std::size_t count = 0;
    const auto counting = [](dl_phdr_info*, std::size_t, void* counter) {
        ++*static_cast<std::size_t*>(counter);
        return 0;
    };
    dl_iterate_phdr(counting, &count);
    return count;
}

/// A thread that has been joined may still be listed for a moment.
std::size_t threads() {
    std::size_t least = entriesOf("/proc/self/task");
    for (int i = 0; i < 10; ++i) {
        std::this_thread::sleep_for(std::chrono::milliseconds(2));
        least = std::min(least, entriesOf("/proc/self/task"));
    }
    return least;
}

/// What the allocator has given out; a sanitizer's own says 0, and looks for leaks itself.
std::size_t memory() {
    const struct mallinfo2 heap = mallinfo2();
    return heap.uordblks + heap.hblkhd;
}

}  // namespace

Footprint footprint() {
    return {memory(), entriesOf("/proc/self/fd"), modules(), threads()};
}
