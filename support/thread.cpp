#include "support/thread.h"

namespace mvn {

namespace {

constexpr std::size_t stackSize = 0x10000;
constexpr DWORD notResumed = 0xFFFFFFFF;

constexpr DWORD creationFlags() {
    return CREATE_SUSPENDED;
}

}  // namespace

Thread::Thread(const std::function<void()>& callable)
    : callable_(std::make_unique<Callable>(callable)),
      handle_(CreateThread(nullptr, stackSize, &Thread::ThreadProc, callable_.get(), creationFlags(), &id_)) {
}

Thread::~Thread() {
    WaitForSingleObject(handle_, 0);
    CloseHandle(handle_);
}

void Thread::Start() noexcept {
    // Given up first: once resumed, the thread may end, and this be gone, at any moment.
    Callable* given = callable_.release();
    if (ResumeThread(handle_) == notResumed) callable_.reset(given);
}

DWORD WINAPI Thread::ThreadProc(LPVOID callable) noexcept {
    const std::unique_ptr<Callable> mine(static_cast<Callable*>(callable));
    (*mine)();
    return 0;
}

}  // namespace mvn
