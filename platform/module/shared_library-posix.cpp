#include <stdexcept>

#include <dlfcn.h>

#include "platform/module/shared_library.h"

namespace platform {

void LibraryClosing::operator()(void* library) const noexcept {
    dlclose(library);
}

SharedLibrary openLibrary(const std::filesystem::path& file) {
    // A name without a folder would be looked for among the system's libraries.
    SharedLibrary library(dlopen(std::filesystem::absolute(file).c_str(), RTLD_NOW | RTLD_LOCAL));
    if (!library) throw std::runtime_error(dlerror());
    return library;
}

LibraryFunction findFunction(const SharedLibrary& library, const char* name) {
    void* const function = dlsym(library.get(), name);
    if (function == nullptr) throw std::runtime_error(dlerror());
    return reinterpret_cast<LibraryFunction>(function);
}

}  // namespace platform
