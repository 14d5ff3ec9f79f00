#include "platform/graph/event_queue-posix.h"

#include <algorithm>
#include <chrono>
#include <new>

namespace platform {

namespace {

constexpr std::size_t maxEvents = 1024;

bool endsRun(LONG code) {
    return code == EC_COMPLETE || code == EC_USERABORT || code == EC_ERRORABORT;
}

}  // namespace

EventQueue::EventQueue() : available_(CreateEventW(nullptr, TRUE, FALSE, nullptr)) {
    if (available_ == nullptr) throw std::bad_alloc();
}

void EventQueue::beginStreams(std::size_t renderers) {
    const std::lock_guard lock(mutex_);
    renderers_ = renderers;
    completed_.clear();
    allCompleted_ = false;
    std::erase_if(events_, [](const GraphEvent& event) { return event.code == EC_COMPLETE; });
    if (events_.empty()) ResetEvent(available_);
}

void EventQueue::resumeStreams() {
    const std::lock_guard lock(mutex_);
    if (allCompleted_) completed_.clear();
    allCompleted_ = false;
}

void EventQueue::setRunning(bool running) {
    const std::lock_guard lock(mutex_);
    running_ = running;
    changed_.notify_all();
}

void EventQueue::send(const GraphEvent& event) {
    const std::lock_guard lock(mutex_);
    if (event.code != EC_COMPLETE)
        push(event);
    else if (isLastCompletion(event))
        push({EC_COMPLETE, event.parameter1, 0});
}

bool EventQueue::isLastCompletion(const GraphEvent& event) {
    const LONG_PTR renderer = event.parameter2;
    const bool known = renderer != 0 && std::ranges::find(completed_, renderer) != completed_.end();
    if (allCompleted_ || known) return false;
    completed_.push_back(renderer);
    allCompleted_ = completed_.size() >= renderers_;
    return allCompleted_;
}

void EventQueue::push(const GraphEvent& event) {
    if (events_.size() >= maxEvents) {
        if (!endsRun(event.code)) return;
        events_.pop_front();
    }
    events_.push_back(event);
    SetEvent(available_);
    changed_.notify_all();
}

GraphEvent EventQueue::pop() {
    const GraphEvent event = events_.front();
    events_.pop_front();
    if (events_.empty()) ResetEvent(available_);
    return event;
}

HRESULT EventQueue::take(LONG milliseconds, GraphEvent& event) {
    std::unique_lock lock(mutex_);
    if (!waitUntil(lock, milliseconds, [&] { return !events_.empty(); })) return E_ABORT;
    event = pop();
    return S_OK;
}

HRESULT EventQueue::waitForEnd(LONG milliseconds, LONG& code) {
    code = 0;
    const auto ended = [&] {
        while (running_ && !events_.empty() && code == 0) {
            const GraphEvent event = pop();
            if (endsRun(event.code)) code = event.code;
        }
        return code != 0 || !running_;
    };
    std::unique_lock lock(mutex_);
    if (!waitUntil(lock, milliseconds, ended)) return E_ABORT;
    return code != 0 ? S_OK : VFW_E_WRONG_STATE;
}

bool EventQueue::waitUntil(std::unique_lock<std::mutex>& lock, LONG milliseconds,
                           const std::function<bool()>& ready) {
    if (milliseconds >= 0) return changed_.wait_for(lock, std::chrono::milliseconds(milliseconds), ready);
    changed_.wait(lock, ready);
    return true;
}

}  // namespace platform
