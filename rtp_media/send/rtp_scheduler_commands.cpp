// The worker's side and the owner's side of the commands. Each acknowledgement clears the others.

#include <array>

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
        WaitForSingleObject(exitedAck_, roundInterval);
        round();
    }
}

RTPScheduler::Poll RTPScheduler::waitForCommand() {
    const std::array<HANDLE, 3> commands{runEvent_, quitEvent_, drainEvent_};
    switch (WaitForMultipleObjects(3, commands.data(), FALSE, INFINITE)) {
        case WAIT_OBJECT_0:
            acknowledge(runningAck_);
            return Poll::goOn;
        case WAIT_OBJECT_0 + 1:
            acknowledge(exitedAck_);
            return Poll::stop;
        default:
            drainRequested_ = true;
            return Poll::goOn;
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

void RTPScheduler::acknowledge(CEvent& which) {
    for (CEvent* event : {&pausedAck_, &runningAck_, &exitedAck_, &drainedAck_}) {
        if (event != &which) event->Reset();
    }
    which.Set();
}

/// A worker that has ended acknowledges nothing any more.
void RTPScheduler::command(CEvent& event, const CEvent& acknowledgement) {
    event.Set();
    waitFor(acknowledgement);
}

void RTPScheduler::waitFor(const CEvent& acknowledgement) {
    const std::array<HANDLE, 2> either{acknowledgement, thread_.Handle()};
    WaitForMultipleObjects(2, either.data(), FALSE, INFINITE);
}

void RTPScheduler::run() {
    command(runEvent_, runningAck_);
}

void RTPScheduler::pause() {
    command(pauseEvent_, pausedAck_);
}

void RTPScheduler::drain() {
    command(drainEvent_, drainedAck_);
}

void RTPScheduler::waitForExit() {
    waitFor(exitedAck_);
}

void RTPScheduler::abort() {
    {
        const CAutoLock lock(&lock_);
        for (const auto& [id, stream] : streams_) stream->clearQueue();
    }
    quitEvent_.Set();
}

}  // namespace mvrtpfec
