#include "support/thread.h"

namespace mvn {

namespace {

constexpr std::size_t stackSize = 0x10000;

constexpr DWORD creationFlags() {
    return CREATE_SUSPENDED;
}

}  // namespace

Thread::Thread(const std::function<void()>& callable)
    : callable_(callable),
      handle_(CreateThread(nullptr, stackSize, &Thread::ThreadProc, this, creationFlags(), &id_)) {}

Thread::~Thread() {
    WaitForSingleObject(handle_, 0);
    CloseHandle(handle_);
}

void Thread::Start() noexcept {
    ResumeThread(handle_);
}

DWORD WINAPI Thread::ThreadProc(LPVOID thread) noexcept {
    const std::function<void()> callable = static_cast<Thread*>(thread)->callable_;
    callable();
    return 0;
}

}  // namespace mvn
