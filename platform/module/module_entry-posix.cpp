#include "platform/module/module_entry.h"

namespace {

/// Constructed last and destroyed first of the module's static objects, since the linker takes this file
/// after all others of the module's own.
const struct Entry {
    Entry() noexcept { platform::moduleLoaded(this); }
    ~Entry() { platform::moduleUnloading(); }

    Entry(const Entry&) = delete;
    Entry& operator=(const Entry&) = delete;
} entry;

}  // namespace
