#include "tests/filters/state_machine.h"

#include <memory>

namespace mvrtpfec {

namespace {

/// No step takes long; a sanitizer's build on a busy machine is slow.
constexpr std::chrono::seconds patience{60};

/// Owned by its reference count from here on.
template <class Filter>
Filter* makeCounted(CComPtr<IBaseFilter>& reference, std::size_t pins) {
    auto filter = std::make_unique<Filter>(pins);
    reference = CComPtr<IBaseFilter>(filter.get());
    return filter.release();
}

}  // namespace

StateMachine::StateMachine(CUnknown* filter, std::uint32_t seed) : random_(seed), watchdog_(patience) {
    void* found = nullptr;
    filter->NonDelegatingQueryInterface(IID_IBaseFilter, &found);
    filter_.Attach(static_cast<IBaseFilter*>(found));

    CComPtr<IEnumPins> pins;
    filter_->EnumPins(&pins);
    for (CComPtr<IPin> pin; pins->Next(1, &pin, nullptr) == S_OK; pin.Release()) {
        PIN_DIRECTION direction{};
        pin->QueryDirection(&direction);
        (direction == PINDIR_INPUT ? inputs_ : outputs_).push_back(pin);
    }
    feeder_ = makeCounted<Feeder>(feederReference_, inputs_.size());
    collector_ = makeCounted<Collector>(collectorReference_, outputs_.size());

    addStateChanges("filter", filter_);
    addStateChanges("filter again", filter_);
    addStateChanges("feeder", feeder_);
    addStateChanges("collector", collector_);
    addConnections();
    addAction("hold", [this] { collector_->hold(); });
    addAction("let go", [this] { collector_->letGo(); });
    for (int often = 0; often < 4; ++often) addAction("run all", [this] { runAll(); });
    addAction("delay", [this] { collector_->setDelay(static_cast<DWORD>(pick(3))); });
}

StateMachine::~StateMachine() = default;

void StateMachine::addAction(const char* name, std::function<void()> action) {
    actions_.push_back({name, std::move(action)});
}

void StateMachine::addReader(std::function<void()> action) {
    readers_.push_back(std::move(action));
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
    addAction("disconnect an input", [this] {
        const std::size_t i = pick(inputs_.size());
        inputs_[i]->Disconnect();
        feeder_->output(i).Disconnect();
    });
    addAction("disconnect an output", [this] {
        const std::size_t i = pick(outputs_.size());
        outputs_[i]->Disconnect();
        collector_->input(i).Disconnect();
    });
    addAction("reconnect", [this] {
        const std::size_t i = pick(inputs_.size());
        CMediaType type;
        if (SUCCEEDED(feeder_->output(i).ConnectionMediaType(&type)))
            inputs_[i]->ReceiveConnection(&feeder_->output(i), &type);
    });
}

void StateMachine::connectAll() {
    for (std::size_t i = 0; i < inputs_.size(); ++i) feeder_->output(i).Connect(inputs_[i], nullptr);
    for (std::size_t i = 0; i < outputs_.size(); ++i) outputs_[i]->Connect(&collector_->input(i), nullptr);
}

void StateMachine::streamStep(std::size_t input, const std::vector<std::uint8_t>& packet,
                              std::uint32_t choice) {
    CBaseOutputPin& pin = feeder_->output(input);
    switch (choice % 200) {
        case 0:
            pin.DeliverEndOfStream();
            break;
        case 1:
            pin.DeliverBeginFlush();
            feeder_->feed(input, packet);
            pin.DeliverEndFlush();
            break;
        case 2:
            pin.DeliverNewSegment(0, 1, 1.0);
            break;
        default:
            if (SUCCEEDED(feeder_->feed(input, packet)))
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

void StateMachine::runAll() {
    for (const auto& each : {collectorReference_, filter_, feederReference_}) each->Stop();
    connectAll();
    for (const auto& each : {collectorReference_, filter_, feederReference_}) each->Run(0);
}

void StateMachine::disconnectAll() {
    for (std::size_t i = 0; i < inputs_.size(); ++i) {
        inputs_[i]->Disconnect();
        feeder_->output(i).Disconnect();
    }
    for (std::size_t i = 0; i < outputs_.size(); ++i) {
        outputs_[i]->Disconnect();
        collector_->input(i).Disconnect();
    }
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
        for (; !done_; Sleep(20)) collector_->letGo();
    });

    for (int i = 0; i < actions; ++i) {
        const Action& action = actions_[pick(actions_.size())];
        watchdog_.alive(action.name);
        action.run();
        letStreamsGoOn();
    }

    watchdog_.alive("last stop");
    done_ = true;
    collector_->setDelay(0);
    for (const auto& each : {collectorReference_, filter_, feederReference_}) each->Stop();
    collector_->letGo();
    watchdog_.alive("join");
    for (std::thread& thread : threads) thread.join();
    disconnectAll();
    collector_->letGo();
    watchdog_.alive("end");
}

}  // namespace mvrtpfec
