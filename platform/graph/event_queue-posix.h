#pragma once

#include <condition_variable>
#include <deque>
#include <functional>
#include <mutex>
#include <vector>

#include "platform/graph/media_graph.h"
#include "platform/threads/sync.h"

namespace platform {

struct GraphEvent {
    LONG code;
    LONG_PTR parameter1;
    LONG_PTR parameter2;
};

/// The events that filters send to the application, oldest first. Its lock is a leaf: streaming threads send
/// events while a state change waits for them.
///
/// The ends of the single streams become one EC_COMPLETE when all streams have ended. At most 1024 events are
/// kept; then new ones are lost, except those that end a run, which push the oldest out.
class EventQueue {
public:
    /// Throws std::bad_alloc.
    EventQueue();
    ~EventQueue() { CloseHandle(available_); }

    EventQueue(const EventQueue&) = delete;
    EventQueue& operator=(const EventQueue&) = delete;

    /// The streams start: none has ended, and an end of before is forgotten.
    void beginStreams(std::size_t renderers);
    /// They go on after a pause. When all had ended, all end once more: renderers say so again.
    void resumeStreams();
    /// Wakes who waits for the end of a run that is over.
    void setRunning(bool running);

    /// EC_COMPLETE has the renderer in its second parameter; one that sends it twice counts once.
    void send(const GraphEvent& event);

    /// S_OK, or E_ABORT after `milliseconds` (-1 for ever) without an event.
    HRESULT take(LONG milliseconds, GraphEvent& event);
    /// Takes events until one ends the run. S_OK; E_ABORT after `milliseconds` (-1 for ever);
    /// VFW_E_WRONG_STATE when the graph isn't or is no longer running.
    HRESULT waitForEnd(LONG milliseconds, LONG& code);

    /// Manual-reset, signalled while there are events. The queue's own.
    HANDLE available() const { return available_; }

private:
    bool isLastCompletion(const GraphEvent& event);
    void push(const GraphEvent& event);
    GraphEvent pop();
    bool waitUntil(std::unique_lock<std::mutex>& lock, LONG milliseconds, const std::function<bool()>& ready);

    std::mutex mutex_;
    std::condition_variable changed_;
    std::deque<GraphEvent> events_;
    std::size_t renderers_ = 0;
    std::vector<LONG_PTR> completed_;
    bool allCompleted_ = false;
    bool running_ = false;
    HANDLE available_;
};

}  // namespace platform
