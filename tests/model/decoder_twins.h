#pragma once

#include <algorithm>
#include <iterator>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include "core/fec_decoder.h"
#include "tests/model/fec_decoder.h"

namespace mvrtpfec::model {

/// The core's decoder and its model side by side: fed the same packets, compared after each, both
/// replaced after E_FAIL as a receiver would. The first difference is kept and nothing is compared
/// after it.
class DecoderTwins {
public:
    /// Every `throwEvery`-th release makes the callback throw; 0 never.
    explicit DecoderTwins(std::size_t throwEvery = 0) : throwEvery_(throwEvery) { create(); }

    HRESULT feed(const Bytes& bytes) {
        ++step_;
        // A copy of exactly its size, so that a sanitizer sees a read past the end.
        const std::unique_ptr<std::uint8_t[]> copy(new std::uint8_t[bytes.size()]);
        std::copy(bytes.begin(), bytes.end(), copy.get());
        const HRESULT result = core_->Feed(copy.get(), bytes.size());
        compare("result", result, model_->feed(bytes));
        compareCounters();
        compareReleased();
        if (result != S_OK) {
            ++failures_;
            restart();
        }
        return result;
    }

    /// Destroys both decoders, compares what that releases, and goes on with fresh ones.
    void restart() {
        core_.reset();
        model_->destroy();
        events_.add(model_->events());
        rebuilt_ += model_->rebuiltCount();
        abandoned_ += model_->abandonedCount();
        compareReleased();
        create();
    }

    const CFecDecoder& core() const { return *core_; }
    /// Empty while the twins agree.
    const std::string& difference() const { return difference_; }

    /// All packets the core has released, as long as forgetReleased wasn't called.
    const std::vector<Bytes>& released() const { return released_; }
    void forgetReleased() { released_.clear(); }

    /// Totals of the decoders destroyed so far.
    const Events& events() const { return events_; }
    std::uint64_t rebuilt() const { return rebuilt_; }
    std::uint64_t abandoned() const { return abandoned_; }
    std::uint64_t failures() const { return failures_; }

private:
    using Releases = std::vector<Bytes>;

    void create() {
        core_ = std::make_unique<CFecDecoder>([this](RtpPacket* packet) {
            if (packet->view.length > packet->bufferSize())
                differ("released packet is shorter than its length");
            take(coreReleases_, Bytes(packet->view.data, packet->view.data + packet->view.length));
        });
        model_ = std::make_unique<FecDecoder>(
            [this](const Packet& packet) { take(modelReleases_, packet.wireBytes()); });
    }

    void take(Releases& releases, Bytes packet) const {
        releases.push_back(std::move(packet));
        if (throwEvery_ != 0 && releases.size() % throwEvery_ == 0)
            throw std::runtime_error("a receiver's own");
    }

    void compareCounters() {
        compare("lost", core_->lostCount(), model_->lostCount());
        compare("rebuilt", core_->rebuiltCount(), model_->rebuiltCount());
        compare("abandoned", core_->abandonedCount(), model_->abandonedCount());
        compare("received", core_->receivedCount(), model_->receivedCount());
    }

    void compareReleased() {
        compare("packets released", coreReleases_.size(), modelReleases_.size());
        if (coreReleases_ != modelReleases_) differ("released packets differ");
        std::move(coreReleases_.begin(), coreReleases_.end(), std::back_inserter(released_));
        coreReleases_.clear();
        modelReleases_.clear();
    }

    template <class Number>
    void compare(const char* what, Number core, Number model) {
        if (core != model)
            differ(std::string(what) + " " + std::to_string(core) + ", model " + std::to_string(model));
    }

    void differ(const std::string& what) {
        if (difference_.empty()) difference_ = "packet " + std::to_string(step_) + ": " + what;
    }

    std::size_t throwEvery_;
    std::size_t step_ = 0;
    std::string difference_;
    Releases coreReleases_;
    Releases modelReleases_;
    Releases released_;
    Events events_;
    std::uint64_t rebuilt_ = 0;
    std::uint64_t abandoned_ = 0;
    std::uint64_t failures_ = 0;
    // Behind what their callbacks write to.
    std::unique_ptr<FecDecoder> model_;
    std::unique_ptr<CFecDecoder> core_;
};

}  // namespace mvrtpfec::model
