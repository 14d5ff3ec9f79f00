#include "platform/graph/system_clock-posix.h"

#include <algorithm>
#include <chrono>
#include <limits>
#include <ratio>

#include "platform/graph/media_graph.h"
#include "platform/no_throw.h"
#include "platform/threads/sync.h"

namespace platform {

namespace {

using Clock = std::chrono::steady_clock;
using Ticks = std::chrono::duration<REFERENCE_TIME, std::ratio<1, 10'000'000>>;

constexpr REFERENCE_TIME maxTime = std::numeric_limits<REFERENCE_TIME>::max();
/// What is due later than any wait lasts; no sum with it overflows.
constexpr Ticks longestWait = std::chrono::hours(24 * 365);

REFERENCE_TIME timeNow() {
    return std::chrono::duration_cast<Ticks>(Clock::now().time_since_epoch()).count();
}

}  // namespace

HRESULT createSystemClock(IReferenceClock** clock) noexcept {
    if (clock == nullptr) return E_POINTER;
    *clock = nullptr;
    return withoutThrowing([&] {
        *clock = new SystemClock;  // NOLINT(cppcoreguidelines-owning-memory)
        return S_OK;
    });
}

SystemClock::~SystemClock() {
    {
        const std::lock_guard lock(mutex_);
        ending_ = true;
    }
    changed_.notify_all();
    if (thread_.joinable()) thread_.join();
}

HRESULT SystemClock::QueryInterface(REFIID riid, void** object) {
    if (object == nullptr) return E_POINTER;
    *object = nullptr;
    if (riid != IID_IUnknown && riid != IID_IReferenceClock) return E_NOINTERFACE;
    *object = static_cast<IReferenceClock*>(this);
    AddRef();
    return S_OK;
}

HRESULT SystemClock::GetTime(REFERENCE_TIME* time) {
    if (time == nullptr) return E_POINTER;
    *time = timeNow();
    REFERENCE_TIME last = lastTime_;
    while (last < *time && !lastTime_.compare_exchange_weak(last, *time)) {
    }
    *time = std::max(*time, last);
    return last < *time ? S_OK : S_FALSE;
}

HRESULT SystemClock::AdviseTime(REFERENCE_TIME baseTime, REFERENCE_TIME streamTime, HEVENT event,
                                DWORD_PTR* cookie) {
    REFERENCE_TIME due = 0;
    if (__builtin_add_overflow(baseTime, streamTime, &due)) return E_INVALIDARG;
    return advise(due, 0, event, cookie);
}

HRESULT SystemClock::AdvisePeriodic(REFERENCE_TIME startTime, REFERENCE_TIME periodTime, HSEMAPHORE semaphore,
                                    DWORD_PTR* cookie) {
    return periodTime <= 0 ? E_INVALIDARG : advise(startTime, periodTime, semaphore, cookie);
}

HRESULT SystemClock::advise(REFERENCE_TIME due, REFERENCE_TIME period, DWORD_PTR object, DWORD_PTR* cookie) {
    if (cookie == nullptr) return E_POINTER;
    *cookie = 0;
    if (due <= 0 || due == maxTime || object == 0) return E_INVALIDARG;
    return withoutThrowing([&] {
        const std::lock_guard lock(mutex_);
        if (!thread_.joinable()) thread_ = std::thread(&SystemClock::work, this);
        due_.emplace(due, Advise{nextCookie_, period, reinterpret_cast<HANDLE>(object)});
        *cookie = nextCookie_++;
        changed_.notify_all();
        return S_OK;
    });
}

HRESULT SystemClock::Unadvise(DWORD_PTR cookie) {
    const std::lock_guard lock(mutex_);
    const auto found = std::ranges::find(due_, cookie, [](const auto& entry) { return entry.second.cookie; });
    if (found == due_.end()) return S_FALSE;
    due_.erase(found);
    return S_OK;
}

void SystemClock::work() {
    std::unique_lock lock(mutex_);
    while (!ending_) {
        const REFERENCE_TIME now = timeNow();
        signalDue(now);
        if (due_.empty()) {
            changed_.wait(lock);
            continue;
        }
        const Ticks wait(due_.begin()->first - now);
        changed_.wait_until(lock, Clock::time_point(Ticks(now)) + std::min(wait, longestWait));
    }
}

/// Signalling under the lock keeps Unadvise's promise; it calls nobody back.
void SystemClock::signalDue(REFERENCE_TIME now) {
    while (!due_.empty() && due_.begin()->first <= now) {
        auto entry = due_.extract(due_.begin());
        const REFERENCE_TIME next = signal(entry.mapped(), entry.key(), now);
        if (next == maxTime) continue;
        entry.key() = next;
        due_.insert(std::move(entry));
    }
}

/// When the advise is due again; maxTime for never.
REFERENCE_TIME SystemClock::signal(const Advise& advise, REFERENCE_TIME due, REFERENCE_TIME now) {
    if (advise.period == 0) {
        SetEvent(advise.object);
        return maxTime;
    }
    const REFERENCE_TIME periods = (now - due) / advise.period + 1;
    const auto units = std::min<REFERENCE_TIME>(periods, std::numeric_limits<LONG>::max());
    if (!ReleaseSemaphore(advise.object, static_cast<LONG>(units), nullptr))
        ReleaseSemaphore(advise.object, 1, nullptr);
    return periods > (maxTime - due) / advise.period ? maxTime : due + periods * advise.period;
}

}  // namespace platform
