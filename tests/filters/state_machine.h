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
    StateMachine(CUnknown* filter, std::uint32_t seed)
        : random_(seed),
          filter_(filterOf(filter)),
          inputs_(pinsOf(filter_, PINDIR_INPUT)),
          outputs_(pinsOf(filter_, PINDIR_OUTPUT)),
          source_(static_cast<int>(inputs_.size())),
          sink_(static_cast<int>(outputs_.size())),
          watchdog_(patience) {
        for (std::size_t i = 0; i < outputs_.size(); ++i)
            sink_->pin(i).onSample = [this](IMediaSample*) {
                ++delivered_;
                if (const DWORD delay = delay_) Sleep(delay);
            };
        addStateChanges("filter", filter_);
        addStateChanges("filter again", filter_);
        addStateChanges("source", source_.get());
        addStateChanges("sink", sink_.get());
        addConnections();
        addAction("hold", [this] { hold(true); });
        addAction("let go", [this] { hold(false); });
        for (int often = 0; often < 4; ++often) addAction("run all", [this] { runAll(); });
        addAction("delay", [this] { delay_ = static_cast<DWORD>(pick(3)); });
    }

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
    void run(int actions, PacketMaker makePacket) {
        runAll();
        std::vector<std::thread> threads;
        for (std::size_t i = 0; i < inputs_.size(); ++i)
            threads.emplace_back(
                [&, i, seed = static_cast<std::uint32_t>(random_())] { stream(i, makePacket, seed); });
        for (const auto& reader : readers_)
            threads.emplace_back([&] {
                while (!done_) reader();
            });
        // Downstream keeps samples for a while, not for ever.
        threads.emplace_back([&] {
            for (; !done_; Sleep(20)) hold(false);
        });

        for (int i = 0; i < actions; ++i) {
            const Action& action = actions_[pick(actions_.size())];
            watchdog_.alive(action.name);
            action.run();
            letStreamsGoOn();
        }

        watchdog_.alive("last stop");
        done_ = true;
        delay_ = 0;
        stopAll();
        hold(false);
        watchdog_.alive("join");
        for (std::thread& thread : threads) thread.join();
        for (std::size_t i = 0; i < inputs_.size() + outputs_.size(); ++i) disconnect(i, i);
        hold(false);
        watchdog_.alive("end");
    }

    /// Packets that the streaming threads have got rid of.
    std::uint64_t sent() const { return sent_; }
    /// How often the sink was given a sample.
    std::size_t delivered() const { return delivered_; }

private:
    /// No step takes long; a sanitizer's build on a busy machine is slow.
    static constexpr std::chrono::seconds patience{60};

    struct Action {
        const char* name;
        std::function<void()> run;
    };

    void addStateChanges(const char* of, IBaseFilter* filter) {
        addAction(of, [filter] { filter->Pause(); });
        addAction(of, [filter] { filter->Run(0); });
        addAction(of, [filter] { filter->Stop(); });
        addAction(of, [filter] {
            FILTER_STATE state{};
            filter->GetState(0, &state);
        });
    }
    void addConnections() {
        addAction("connect", [this] { connectAll(); });
        addAction("disconnect an input", [this] { disconnect(pick(inputs_.size()), outputs_.size()); });
        addAction("disconnect an output", [this] { disconnect(inputs_.size(), pick(outputs_.size())); });
        addAction("reconnect", [this] {
            const std::size_t i = pick(inputs_.size());
            CMediaType type;
            if (SUCCEEDED(source_->pin(i).ConnectionMediaType(&type)))
                inputs_[i]->ReceiveConnection(&source_->pin(i), &type);
        });
    }
    void connectAll() {
        for (std::size_t i = 0; i < inputs_.size(); ++i) source_->pin(i).Connect(inputs_[i], nullptr);
        for (std::size_t i = 0; i < outputs_.size(); ++i) outputs_[i]->Connect(&sink_->pin(i), nullptr);
    }
    /// Both ends of each; an index behind the last is none.
    void disconnect(std::size_t input, std::size_t output) {
        if (input < inputs_.size()) {
            inputs_[input]->Disconnect();
            source_->pin(input).Disconnect();
        }
        if (output < outputs_.size()) {
            outputs_[output]->Disconnect();
            sink_->pin(output).Disconnect();
        }
    }
    void runAll() {
        stopAll();
        connectAll();
        sink_->Run(0);
        filter_->Run(0);
        source_->Run(0);
    }
    void stopAll() {
        sink_->Stop();
        filter_->Stop();
        source_->Stop();
    }
    void hold(bool on) {
        for (std::size_t i = 0; i < outputs_.size(); ++i) sink_->pin(i).hold(on);
    }
    /// Until some packets have been sent, or nothing seems to go.
    void letStreamsGoOn() {
        const std::uint64_t enough = sent_ + pick(200);
        for (int i = 0; i < 8 && sent_ < enough; ++i) Sleep(1);
    }
    void stream(std::size_t input, const PacketMaker& makePacket, std::uint32_t seed) {
        std::mt19937 random(seed);
        for (std::uint32_t n = 0; !done_; ++n)
            streamStep(input, makePacket(input, n), static_cast<std::uint32_t>(random()));
    }
    void streamStep(std::size_t input, const Bytes& packet, std::uint32_t choice) {
        TestOutputPin& pin = source_->pin(input);
        switch (choice % 200) {
            case 0:
                pin.DeliverEndOfStream();
                break;
            case 1:
                pin.DeliverBeginFlush();
                source_->send(packet, input);
                pin.DeliverEndFlush();
                break;
            case 2:
                pin.DeliverNewSegment(0, 1, 1.0);
                break;
            default:
                if (SUCCEEDED(source_->send(packet, input)))
                    ++sent_;
                else
                    std::this_thread::yield();
        }
    }
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
