#include "tests/filters/state_machine.h"

namespace mvrtpfec {

namespace {

/// No step takes long; a sanitizer's build on a busy machine is slow.
constexpr std::chrono::seconds patience{60};

}  // namespace

StateMachine::StateMachine(CUnknown* filter, std::uint32_t seed)
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

void StateMachine::addStateChanges(const char* of, IBaseFilter* filter) {
    addAction(of, [filter] { filter->Pause(); });
    addAction(of, [filter] { filter->Run(0); });
    addAction(of, [filter] { filter->Stop(); });
    addAction(of, [filter] {
        FILTER_STATE state{};
        filter->GetState(0, &state);
    });
}

void StateMachine::addConnections() {
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

void StateMachine::connectAll() {
    for (std::size_t i = 0; i < inputs_.size(); ++i) source_->pin(i).Connect(inputs_[i], nullptr);
    for (std::size_t i = 0; i < outputs_.size(); ++i) outputs_[i]->Connect(&sink_->pin(i), nullptr);
}

/// Both ends of each; an index behind the last is none.
void StateMachine::disconnect(std::size_t input, std::size_t output) {
    if (input < inputs_.size()) {
        inputs_[input]->Disconnect();
        source_->pin(input).Disconnect();
    }
    if (output < outputs_.size()) {
        outputs_[output]->Disconnect();
        sink_->pin(output).Disconnect();
    }
}

void StateMachine::hold(bool on) {
    for (std::size_t i = 0; i < outputs_.size(); ++i) sink_->pin(i).hold(on);
}

void StateMachine::streamStep(std::size_t input, const Bytes& packet, std::uint32_t choice) {
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

void StateMachine::stream(std::size_t input, const PacketMaker& makePacket, std::uint32_t seed) {
    std::mt19937 random(seed);
    for (std::uint32_t n = 0; !done_; ++n)
        streamStep(input, makePacket(input, n), static_cast<std::uint32_t>(random()));
}

void StateMachine::stopAll() {
    sink_->Stop();
    filter_->Stop();
    source_->Stop();
}

void StateMachine::runAll() {
    stopAll();
    connectAll();
    sink_->Run(0);
    filter_->Run(0);
    source_->Run(0);
}

/// Until some packets have been sent, or nothing seems to go.
void StateMachine::letStreamsGoOn() {
    const std::uint64_t enough = sent_ + pick(200);
    for (int i = 0; i < 8 && sent_ < enough; ++i) Sleep(1);
}

void StateMachine::run(int actions, PacketMaker makePacket) {
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

}  // namespace mvrtpfec
