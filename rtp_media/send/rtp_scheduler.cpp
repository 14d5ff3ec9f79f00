#include "rtp_media/send/rtp_scheduler.h"

#include <utility>

#include "support/errors.h"
#include "support/string_format.h"

namespace mvrtpfec {

namespace {

constexpr std::int64_t sendDelay = 2 * 90000;
constexpr std::int64_t lateBeyond = 80 * 90;

}  // namespace

RTPScheduler::RTPScheduler(IReferenceClock* clock, RTPSchedulerSettings settings)
    : referenceClock_(clock),
      settings_(std::move(settings)),
      thread_([this] { RTPScheduler::threadBody(); }) {
    if (thread_.Handle() == nullptr) throwLastError();
    // Not by its slot: a derived class may still be under construction.
    thread_.Start();
}

RTPScheduler::~RTPScheduler() {
    {
        const CAutoLock lock(&lock_);
        streams_.clear();
    }
    quitEvent_.Set();
    WaitForSingleObject(thread_.Handle(), INFINITE);
}

void RTPScheduler::setLogger(mvn::log::ILogPerf* logger) {
    logger_.SetTarget(logger);
}

void RTPScheduler::addStream(std::uint32_t streamId, StreamType streamType, std::uint32_t port,
                             std::uint32_t payloadType, IOutputPin* mediaOutput, IOutputPin* reportOutput,
                             NALBuilder* unitParser, std::uint32_t bitRate,
                             ParameterSetMode parameterSetMode) {
    auto stream = std::make_unique<RTPStream>(
        streamId, streamType, RTPStreamTarget{mediaOutput, reportOutput, port, bitRate}, settings_.cname);
    auto packetizer = RTPPacketBuilder::create(streamType, payloadType, port, stream.get(), parameterSetMode,
                                               settings_.timestampMode);
    if (packetizer == nullptr)
        throw mvn::MorvaneException(
            mvn::stringFormat("no packetizer for stream type %d", static_cast<int>(streamType)));
    removeStream(streamId);
    stream->start(std::move(packetizer));
    if (unitParser != nullptr) unitParser->setListener(&stream->packetizer());
    const CAutoLock lock(&lock_);
    streams_[streamId] = std::move(stream);
    streamsChanged();
}

void RTPScheduler::removeStream(std::uint32_t streamId) {
    const CAutoLock lock(&lock_);
    streams_.erase(streamId);
    streamsChanged();
}

/// The first video stream is the master, without one the first stream.
void RTPScheduler::streamsChanged() {
    sdpReady_ = false;
    sdpText_.clear();
    RTPStream* master = streams_.empty() ? nullptr : streams_.begin()->second.get();
    for (const auto& [id, stream] : streams_) {
        stream->setMaster(false);
        if (stream->isVideo() && !master->isVideo()) master = stream.get();
    }
    if (master != nullptr) master->setMaster(true);
}

bool RTPScheduler::isSdpReady() const {
    const CAutoLock lock(&lock_);
    return sdpReady_;
}

std::string RTPScheduler::getSdp() const {
    const CAutoLock lock(&lock_);
    return sdpText_;
}

void RTPScheduler::round() {
    LateStreams late;
    try {
        sendDue(late);
    } catch (const std::exception& error) {
        logger_.Target().Log(0, "Error: %s", error.what());
    }
    try {
        if (!late.empty()) logLate(late);
    } catch (const std::bad_alloc&) {
        // The next round may have room for the line.
    }
}

void RTPScheduler::sendDue(LateStreams& late) {
    const CAutoLock lock(&lock_);
    if (clock_) clock_->refresh();
    while (pass(late)) {
    }
}

/// Looks at the first packet of each stream once; true when it sent any, or gave one up on the way.
bool RTPScheduler::pass(LateStreams& late) {
    idle_ = true;
    if (!sdpReady_) {
        if (auto text = sessionDescription(settings_.names, streams_, settings_.wallClock)) {
            sdpText_ = std::move(*text);
            sdpReady_ = true;
        }
    }
    bool sent = false;
    for (const auto& [id, stream] : streams_) {
        if (stream->firstPacket() != nullptr && serve(*stream, late)) sent = true;
    }
    return sent;
}

/// Deals with the first packet of a stream; true when the next one has its turn.
bool RTPScheduler::serve(RTPStream& stream, LateStreams& late) {
    RTPMediaPacket& packet = *stream.firstPacket();
    if (!clock_) clock_.emplace(referenceClock_, settings_.wallClock);
    idle_ = false;
    const bool reportDue = stream.isReportDue(packet, clock_->now90k());
    if (!packet.timestampWritten() && isDroppedAsOutside(stream, packet)) return false;
    if (reportDue) stream.sendReport(*clock_);

    const std::uint64_t ptsOrDts = packet.ptsOrDts();
    const std::uint64_t due = ptsOrDts + sendDelay;
    if (static_cast<std::int64_t>(clock_->now90k() - due) < 0) return false;
    const std::size_t size = packet.serializedSize();
    if (const auto room = stream.sendFirstPacket(static_cast<REFERENCE_TIME>(due) * 1000 / 9)) {
        logger_.Log(0, "RTP Sender drops a packet of %u bytes on stream %u: the output's buffer has %d",
                    static_cast<unsigned>(size), stream.id(), static_cast<int>(*room));
        return true;
    }
    if (stream.isMaster()) ++masterPacketCount_;
    noteLateness(stream, due, late);
    return true;
}

/// A packet that is seen for the first time gets its timestamp and must be near the clock.
bool RTPScheduler::isDroppedAsOutside(RTPStream& stream, RTPMediaPacket& packet) {
    if (stream.isVideo() && packet.discontinuity())
        logger_.Log(1, "RTP Sender find discontinuity on video stream %d ", static_cast<int>(stream.id()));
    packet.writeTimestamp(stream.timestampOffset());
    const auto window = stream.checkWindow(packet, clock_->now90k());
    if (window == RTPStream::Window::inside) return false;
    if (window == RTPStream::Window::lost) {
        restartNeeded_ = true;
        logger_.Log(0, "RTP Sender need restart");
    }
    stream.dropFirstPacket();
    return true;
}

void RTPScheduler::noteLateness(const RTPStream& stream, std::uint64_t due, LateStreams& late) {
    const std::uint64_t behind = clock_->now90k() - due;
    if (behind < lateBeyond) return;
    LateStream& entry = late[stream.id()];
    ++entry.packets;
    entry.lateness = behind / 90;
    logger_.AddPoliticChoices(static_cast<std::int32_t>(entry.lateness));
}

void RTPScheduler::logLate(const LateStreams& late) {
    std::string line = "RTP late packets : ";
    for (const auto& [id, entry] : late) {
        line += "[stream#" + std::to_string(id) + ": " + std::to_string(entry.packets) + " packets, " +
                std::to_string(entry.lateness) + "ms late]";
    }
    logger_.Target().Log(1, "%s", line.c_str());
}

}  // namespace mvrtpfec
