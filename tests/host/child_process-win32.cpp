#include <array>
#include <stdexcept>

#include "platform/files/utf8_path.h"
#include "platform/types.h"
#include "tests/host/child_process.h"

namespace mvrtpfec {

Outcome runProcess(const std::filesystem::path& program, const std::string& arguments,
                   const std::filesystem::path& folder) {
    SECURITY_ATTRIBUTES inherited{sizeof inherited, nullptr, TRUE};
    HANDLE readEnd = nullptr;
    STARTUPINFOW startup{};
    startup.cb = sizeof startup;
    startup.dwFlags = STARTF_USESTDHANDLES;
    if (!CreatePipe(&readEnd, &startup.hStdOutput, &inherited, 0)) throw std::runtime_error("no pipe");
    SetHandleInformation(readEnd, HANDLE_FLAG_INHERIT, 0);
    startup.hStdError = startup.hStdOutput;
    std::wstring line = L'"' + program.wstring() + L"\" " + platform::pathFromUtf8(arguments).wstring();
    PROCESS_INFORMATION process{};
    if (!CreateProcessW(program.c_str(), line.data(), nullptr, nullptr, TRUE, 0, nullptr, folder.c_str(),
                        &startup, &process))
        throw std::runtime_error("no process");
    CloseHandle(startup.hStdOutput);

    Outcome result;
    std::array<char, 4096> buffer{};
    for (DWORD count = 0; ReadFile(readEnd, buffer.data(), buffer.size(), &count, nullptr) && count > 0;)
        result.text.append(buffer.data(), count);
    WaitForSingleObject(process.hProcess, INFINITE);
    DWORD status = 0;
    GetExitCodeProcess(process.hProcess, &status);
    result.status = static_cast<int>(status);
    for (const HANDLE handle : {readEnd, process.hThread, process.hProcess}) CloseHandle(handle);
    return result;
}

}  // namespace mvrtpfec
