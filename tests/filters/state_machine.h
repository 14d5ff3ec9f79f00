#pragma once

#include <random>

#include "tests/filters/watchdog.h"
#include "tests/shared/created_filter.h"
#include "tests/shared/rtp_filters.h"

namespace mvrtpfec {

/// A filter under test between a source and a sink, driven through random sequences of everything that hosts,
/// streaming threads and downstream may do, legal and not.
class StateMachine {
public:
    /// The pins are the filter's own, in its order. Takes the creation's first reference.
    StateMachine(CUnknown* filter, std::uint32_t seed);

    IBaseFilter& filter() { return *filter_; }
    std::mt19937& random() { return random_; }

    /// Something more for the application's thread to do among the rest.
    void addAction(const char* name, std::function<void()> action) {
        actions_.push_back({name, std::move(action)});
    }
    /// Something for a thread of its own to do over and over (a reader of statistics).
    void addReader(std::function<void()> action) { readers_.push_back(std::move(action)); }
    /// What the streaming threads send: the bytes of the n-th packet of an input.
    using PacketMaker = std::function<Bytes(std::size_t input, std::uint32_t n)>;

    /// Runs the threads, then that many random actions on this thread, then stops everything.
    void run(int actions, PacketMaker makePacket);

    /// Packets that the streaming threads have got rid of.
    std::uint64_t sent() const { return sent_; }
    /// How often the sink was given a sample.
    std::size_t delivered() const { return delivered_; }

private:
    struct Action {
        const char* name;
        std::function<void()> run;
    };

    void addStateChanges(const char* of, IBaseFilter* filter);
    void addConnections();
    void connectAll();
    void disconnect(std::size_t input, std::size_t output);
    void runAll();
    void stopAll();
    void hold(bool on);
    void letStreamsGoOn();
    void stream(std::size_t input, const PacketMaker& makePacket, std::uint32_t seed);
    void streamStep(std::size_t input, const Bytes& packet, std::uint32_t choice);
    std::size_t pick(std::size_t count) { return random_() % count; }

    std::mt19937 random_;
    CComPtr<IBaseFilter> filter_;
    std::vector<CComPtr<IPin>> inputs_;
    std::vector<CComPtr<IPin>> outputs_;
    Held<RtpSource> source_;
    Held<AnySink> sink_;
    std::vector<Action> actions_;
    std::vector<std::function<void()>> readers_;
    std::atomic<DWORD> delay_{0};
    std::atomic<bool> done_{false};
    std::atomic<std::uint64_t> sent_{0};
    std::atomic<std::size_t> delivered_{0};
    Watchdog watchdog_;
};

}  // namespace mvrtpfec
