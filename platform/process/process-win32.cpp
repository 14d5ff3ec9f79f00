#include <memory>

// The second needs the first.
// clang-format off
#include <windows.h>
#include <shellapi.h>
// clang-format on

#include "platform/process/process.h"

namespace platform {

namespace {

struct LocalFreeing {
    void operator()(void* block) const noexcept { LocalFree(block); }
};

}  // namespace

std::filesystem::path programPath() {
    constexpr DWORD longestPath = 32767;
    std::wstring path(longestPath, L'\0');
    path.resize(GetModuleFileNameW(nullptr, path.data(), longestPath));
    return path;
}

int processId() noexcept {
    return static_cast<int>(GetCurrentProcessId());
}

std::vector<std::string> programArguments(int /*argc*/, char** /*argv*/) {
    int count = 0;
    const std::unique_ptr<LPWSTR, LocalFreeing> words(CommandLineToArgvW(GetCommandLineW(), &count));
    std::vector<std::string> arguments;
    for (int i = 0; words && i < count; ++i) {
        const LPCWSTR word = words.get()[i];
        const int size = WideCharToMultiByte(CP_UTF8, 0, word, -1, nullptr, 0, nullptr, nullptr);
        std::string& argument = arguments.emplace_back(static_cast<std::size_t>(size), '\0');
        WideCharToMultiByte(CP_UTF8, 0, word, -1, argument.data(), size, nullptr, nullptr);
        argument.resize(argument.size() - 1);
    }
    return arguments;
}

}  // namespace platform
