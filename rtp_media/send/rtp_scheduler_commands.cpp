// The worker's side and the owner's side of the commands. Each acknowledgement clears the others.

#include <array>
#include <mutex>

#include "rtp_media/send/rtp_scheduler.h"

namespace mvrtpfec {

namespace {

constexpr DWORD roundInterval = 15;  // ms

bool isSet(const CEvent& event) {
    return WaitForSingleObject(event, 0) == WAIT_OBJECT_0;
}

}  // namespace

void RTPScheduler::threadBody() {
    if (waitForCommand() == Poll::stop) return;
    while (pollCommands() == Poll::goOn) {
        // Set only when the thread ends, so this is the tick of the rounds.
        WaitForSingleObject(exitedAck_.event, roundInterval);
        round();
    }
}

/// Before the first run, and while paused.
RTPScheduler::Poll RTPScheduler::waitForCommand() {
    const std::array<HANDLE, 4> commands{pauseEvent_, runEvent_, quitEvent_, drainEvent_};
    for (;;) {
        switch (WaitForMultipleObjects(commands.size(), commands.data(), FALSE, INFINITE)) {
            case WAIT_OBJECT_0:
                acknowledge(pausedAck_);  // left for later, it would take back the next run
                break;
            case WAIT_OBJECT_0 + 1:
                acknowledge(runningAck_);
                return Poll::goOn;
            case WAIT_OBJECT_0 + 2:
                acknowledge(exitedAck_);
                return Poll::stop;
            default:
                drainRequested_ = true;
                return Poll::goOn;
        }
    }
}

RTPScheduler::Poll RTPScheduler::pollCommands() {
    if (drainRequested_ && idle_) {
        acknowledge(drainedAck_);
        drainRequested_ = false;
        return Poll::stop;
    }
    if (isSet(pauseEvent_)) {
        acknowledge(pausedAck_);
        return waitForCommand();
    }
    if (isSet(runEvent_)) {
        acknowledge(runningAck_);
    } else if (isSet(quitEvent_)) {
        acknowledge(exitedAck_);
        return Poll::stop;
    } else if (isSet(drainEvent_)) {
        drainRequested_ = true;
    }
    return Poll::goOn;
}

void RTPScheduler::acknowledge(Acknowledgement& which) {
    for (Acknowledgement* other : {&pausedAck_, &runningAck_, &exitedAck_, &drainedAck_}) {
        if (other != &which) other->event.Reset();
    }
    ++which.count;
    which.event.Set();
}

/// One at a time, so that the acknowledgement is this command's own.
void RTPScheduler::command(CEvent& event, Acknowledgement& acknowledgement) {
    const std::lock_guard one(commanding_);
    const std::uint32_t before = acknowledgement.count;
    event.Set();
    do {
        acknowledgement.event.Reset();
    } while (acknowledgement.count == before && waitFor(acknowledgement, roundInterval));
}

/// False for a worker that has ended, which acknowledges nothing any more.
bool RTPScheduler::waitFor(Acknowledgement& acknowledgement, DWORD milliseconds) {
    const std::array<HANDLE, 2> either{acknowledgement.event, thread_.Handle()};
    return WaitForMultipleObjects(either.size(), either.data(), FALSE, milliseconds) != WAIT_OBJECT_0 + 1;
}

void RTPScheduler::run() {
    command(runEvent_, runningAck_);
}

void RTPScheduler::pause() {
    command(pauseEvent_, pausedAck_);
}

void RTPScheduler::drain() {
    drainEvent_.Set();
    waitFor(drainedAck_, INFINITE);
}

void RTPScheduler::waitForExit() {
    waitFor(exitedAck_, INFINITE);
}

void RTPScheduler::abort() {
    {
        const CAutoLock lock(&lock_);
        for (const auto& [id, stream] : streams_) stream->clearQueue();
    }
    quitEvent_.Set();
}

}  // namespace mvrtpfec
