#pragma once

#include <atomic>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>

#include "framework/base/atl_sync.h"
#include "framework/base/com_ptr.h"
#include "framework/base/critical_section.h"
#include "rtp_media/chain/nal_builder.h"
#include "rtp_media/send/rtp_stream.h"
#include "rtp_media/send/session_description.h"
#include "support/log/dummy_log_perf.h"
#include "support/log/smart_log_perf.h"
#include "support/thread.h"

namespace mvrtpfec {

struct RTPSchedulerSettings {
    SessionNames names;
    std::string cname;
    TimestampMode timestampMode = TimestampMode::presentation;
    WallClock wallClock = systemWallTime;
};

/// Sends any number of streams, each packet two seconds after its media time on the reference clock, with a
/// sender report a second for each stream, and keeps their session description.
///
/// One worker thread goes round every 15 ms under the streams' lock. Streams are added and removed on the
/// owner's thread while no parser that feeds them runs; the packets themselves come in without a lock.
///
/// Any thread may command. run and pause come back when the worker has taken the command, which it does in
/// every state and within a round, or has ended; drain and waitForExit when it has ended. A worker that was
/// never told to run is as good as paused.
class RTPScheduler : NonCopyable {
public:
    /// Throws CAtlException, also when the system gives no worker thread, and std::bad_alloc.
    RTPScheduler(IReferenceClock* clock, RTPSchedulerSettings settings);
    /// Waits for the worker.
    virtual ~RTPScheduler();

    /// Not owned; null for the built-in one.
    virtual void setLogger(mvn::log::ILogPerf* logger);

    /// In place of a stream of the same id, which is removed. Outputs and parser aren't owned; `unitParser`
    /// feeds the stream from here on. `port` and `bitRate` (bits per second) are for the description. Throws
    /// mvn::MorvaneException for a type without a packetizer; nothing has changed then.
    virtual void addStream(std::uint32_t streamId, StreamType streamType, std::uint32_t port,
                           std::uint32_t payloadType, IOutputPin* mediaOutput, IOutputPin* reportOutput,
                           NALBuilder* unitParser, std::uint32_t bitRate, ParameterSetMode parameterSetMode);
    virtual void removeStream(std::uint32_t streamId);

    /// A stream's times have left the clock for good; stays so.
    virtual bool isRestartNeeded() const { return restartNeeded_; }
    /// Packets sent of the first video stream, or of the first stream where none is video.
    virtual std::uint32_t getMasterPacketCount() const { return masterPacketCount_; }
    virtual bool isSdpReady() const;
    /// Its lines end with a backslash each.
    virtual std::string getSdp() const;

    virtual void run();
    /// Nothing is sent from here on until run or drain.
    virtual void pause();
    /// Drops what is queued and ends the worker, for which it doesn't wait. It waits for the round that goes
    /// on.
    virtual void abort();
    virtual void waitForExit();
    /// Sends what is queued, each packet at its time, and ends the worker.
    virtual void drain();

protected:
    virtual void threadBody();
    /// One turn of the worker, without the wait before it.
    void round();

private:
    enum class Poll { stop, goOn };
    struct LateStream {
        std::uint32_t packets = 0;
        std::uint64_t lateness = 0;  ///< of the last one, ms
    };
    using LateStreams = std::map<std::uint32_t, LateStream>;

    /// The event is set until another command is acknowledged. The count tells of each for good.
    struct Acknowledgement {
        CEvent event{true, false};
        std::atomic<std::uint32_t> count{0};
    };

    Poll waitForCommand();
    Poll pollCommands();
    void acknowledge(Acknowledgement& which);
    void command(CEvent& event, Acknowledgement& acknowledgement);
    bool waitFor(Acknowledgement& acknowledgement, DWORD milliseconds);

    void sendDue(LateStreams& late);
    bool pass(LateStreams& late);
    bool serve(RTPStream& stream, LateStreams& late);
    bool isDroppedAsOutside(RTPStream& stream, RTPMediaPacket& packet);
    void noteLateness(const RTPStream& stream, std::uint64_t due, LateStreams& late);
    void logLate(const LateStreams& late);
    void streamsChanged();

    CComPtr<IReferenceClock> referenceClock_;
    mvn::log::SmartLogPerf<mvn::log::DummyLogPerf> logger_;
    RTPStreams streams_;
    RTPSchedulerSettings settings_;
    mutable CCritSec lock_;  ///< streams, description
    CEvent runEvent_{false, false};
    CEvent pauseEvent_{false, false};
    CEvent quitEvent_{false, false};
    CEvent drainEvent_{false, false};
    Acknowledgement pausedAck_;
    Acknowledgement runningAck_;
    Acknowledgement exitedAck_;
    Acknowledgement drainedAck_;
    bool drainRequested_ = false;
    bool idle_ = false;
    std::atomic<bool> restartNeeded_{false};
    std::atomic<std::uint32_t> masterPacketCount_{0};
    std::optional<SendClock> clock_;
    bool sdpReady_ = false;
    std::string sdpText_;
    std::mutex commanding_;  ///< run and pause
    mvn::Thread thread_;     ///< last, so that the last error is its own when there is none
};

}  // namespace mvrtpfec
