#include <random>
#include <thread>

#include <gtest/gtest.h>

#include "tests/framework/event_graph.h"
#include "tests/framework/foreign_sample.h"
#include "tests/shared/object_count.h"
#include "tests/shared/soon.h"
#include "tests/shared/test_filters.h"

namespace mvrtpfec {
namespace {

using testing::ForeignSample;

class Streaming : public ::testing::Test {
protected:
    void SetUp() override { ASSERT_EQ(output().Connect(&input(), nullptr), S_OK); }
    void run() {
        ASSERT_EQ(sink->Run(0), S_OK);
        ASSERT_EQ(source->Run(0), S_OK);
    }
    TestOutputPin& output() { return source->pin(); }
    TestInputPin& input() { return sink->pin(); }
    /// A delivery buffer with a type attached.
    CComPtr<IMediaSample> sampleOf(CMediaType type) {
        CComPtr<IMediaSample> sample;
        EXPECT_EQ(output().GetDeliveryBuffer(&sample, nullptr, nullptr, 0), S_OK);
        EXPECT_EQ(sample->SetMediaType(&type), S_OK);
        return sample;
    }

    const ObjectCount objects;
    Held<TestSource> source{1};
    Held<TestSink> sink{1};
};

TEST_F(Streaming, SamplesGoThroughOnlyWhenBothFiltersAreActive) {
    EXPECT_EQ(source->send({1}), VFW_E_NOT_COMMITTED);
    ASSERT_EQ(source->Pause(), S_OK);
    EXPECT_EQ(source->send({1}), VFW_E_WRONG_STATE);
    run();
    EXPECT_EQ(source->send({1}), S_OK);
    EXPECT_EQ(source->send({2}), S_OK);
    EXPECT_EQ(input().packets(), (std::vector<Bytes>{{1}, {2}}));
    sink->Stop();
    source->Stop();
    output().Disconnect();
    CComPtr<IMediaSample> sample;
    EXPECT_EQ(output().GetDeliveryBuffer(&sample, nullptr, nullptr, 0), E_NOINTERFACE);
    EXPECT_EQ(output().Active(), VFW_E_NO_ALLOCATOR);
}

TEST_F(Streaming, AFlushTurnsSamplesAwayUntilItEnds) {
    run();
    EXPECT_EQ(output().DeliverBeginFlush(), S_OK);
    EXPECT_EQ(source->send({1}), S_FALSE);
    EXPECT_EQ(output().DeliverEndFlush(), S_OK);
    EXPECT_EQ(source->send({2}), S_OK);
    EXPECT_EQ(input().packets(), std::vector<Bytes>{{2}});

    output().DeliverBeginFlush();
    sink->Stop();
    EXPECT_FALSE(input().IsFlushing());
}

TEST_F(Streaming, EndOfStreamSegmentsAndFlushesReachTheOtherEndOnlyWhileConnected) {
    EXPECT_EQ(output().DeliverEndOfStream(), S_OK);
    EXPECT_EQ(output().DeliverNewSegment(1, 2, 0.5), S_OK);
    EXPECT_EQ(input().CurrentStartTime(), 1);
    EXPECT_EQ(input().CurrentStopTime(), 2);
    EXPECT_EQ(input().CurrentRate(), 0.5);
    EXPECT_EQ(output().EndOfStream(), E_UNEXPECTED);
    EXPECT_EQ(output().BeginFlush(), E_UNEXPECTED);
    EXPECT_EQ(output().EndFlush(), E_UNEXPECTED);
    output().Disconnect();
    EXPECT_EQ(output().DeliverEndOfStream(), VFW_E_NOT_CONNECTED);
    EXPECT_EQ(output().DeliverBeginFlush(), VFW_E_NOT_CONNECTED);
    EXPECT_EQ(output().DeliverEndFlush(), VFW_E_NOT_CONNECTED);
    EXPECT_EQ(output().DeliverNewSegment(0, 1, 1), VFW_E_NOT_CONNECTED);
    EXPECT_EQ(input().endsOfStream, 1);
    EXPECT_EQ(input().flushesBegun + input().flushesEnded, 0);
}

TEST_F(Streaming, ARefusedTypeChangeIsARunTimeErrorUntilTheNextFlushOrStop) {
    CComPtr<EventGraph> graph(new EventGraph);
    sink->JoinFilterGraph(graph, nullptr);
    run();
    EXPECT_EQ(output().Deliver(sampleOf(testType(1))), S_OK);
    EXPECT_EQ(output().Deliver(sampleOf(testType(2))), VFW_E_INVALIDMEDIATYPE);
    EXPECT_EQ(graph->code, EC_ERRORABORT);
    EXPECT_EQ(graph->parameter1, VFW_E_TYPE_NOT_ACCEPTED);
    EXPECT_EQ(input().endsOfStream, 1);
    EXPECT_EQ(source->send({1}), VFW_E_RUNTIME_ERROR);
    output().DeliverBeginFlush();
    output().DeliverEndFlush();
    EXPECT_EQ(source->send({1}), S_OK);

    EXPECT_EQ(output().Deliver(sampleOf(testType(2))), VFW_E_INVALIDMEDIATYPE);
    sink->Stop();
    source->Stop();
    run();
    EXPECT_EQ(source->send({1}), S_OK);
    sink->JoinFilterGraph(nullptr, nullptr);
}

TEST_F(Streaming, SamplesOfOthersAreAskedForTheirTypeTheWayTheyAnswer) {
    run();
    ForeignSample sample;
    EXPECT_EQ(input().Receive(&sample), S_OK);
    sample.typeResult = E_ABORT;
    EXPECT_EQ(input().Receive(&sample), E_ABORT);
    const CMediaType accepted = testType(1);
    sample.attachedType = &accepted;
    EXPECT_EQ(input().Receive(&sample), S_OK);
    const CMediaType refused = testType(2);
    sample.attachedType = &refused;
    EXPECT_EQ(input().Receive(&sample), VFW_E_INVALIDMEDIATYPE);
    EXPECT_EQ(input().Receive(nullptr), E_POINTER);
    EXPECT_EQ(sample.references, 0);
}

TEST_F(Streaming, ReceiveMultipleStopsAtTheFirstThatIsNotTaken) {
    run();
    CComPtr<IMediaSample> good[2] = {sampleOf(testType(1)), sampleOf(testType(1))};
    CComPtr<IMediaSample> bad = sampleOf(testType(2));
    IMediaSample* samples[] = {good[0], bad, good[1]};
    LONG processed = 9;
    EXPECT_EQ(input().ReceiveMultiple(samples, 3, &processed), VFW_E_INVALIDMEDIATYPE);
    EXPECT_EQ(processed, 1);
    EXPECT_EQ(input().ReceiveMultiple(samples, 3, nullptr), E_POINTER);
    sink->Stop();
    EXPECT_EQ(input().ReceiveMultiple(samples, 3, &processed), VFW_E_WRONG_STATE);
    EXPECT_EQ(processed, 0);
}

TEST(ReceiveCanBlock, IsWhatTheConnectedReceiversDownstreamSay) {
    Held<ForkFilter> fork{2};
    Held<TestSink> sink{2};
    EXPECT_EQ(fork->input().ReceiveCanBlock(), S_OK);
    sink->pin(0).canBlock = S_FALSE;
    ASSERT_EQ(fork->pin(0).Connect(&sink->pin(0), nullptr), S_OK);
    EXPECT_EQ(fork->input().ReceiveCanBlock(), S_FALSE);
    ASSERT_EQ(fork->pin(1).Connect(&sink->pin(1), nullptr), S_OK);
    EXPECT_EQ(fork->input().ReceiveCanBlock(), S_OK);
}

/// Takes quality messages.
class QualityTaker final : public IQualityControl {
public:
    int notified = 0;

    STDMETHODIMP QueryInterface(REFIID, void**) override { return E_NOINTERFACE; }
    STDMETHODIMP_(ULONG) AddRef() override { return 1; }
    STDMETHODIMP_(ULONG) Release() override { return 1; }
    STDMETHODIMP Notify(IBaseFilter*, Quality) override {
        ++notified;
        return S_OK;
    }
    STDMETHODIMP SetSink(IQualityControl*) override { return E_NOTIMPL; }
};

TEST_F(Streaming, QualityMessagesGoToTheSinkOrElseUpstream) {
    EXPECT_EQ(input().PassNotify(Quality{}), E_NOTIMPL);  // The other end's answer.
    QualityTaker taker;
    input().SetSink(&taker);
    EXPECT_EQ(input().PassNotify(Quality{}), S_OK);
    EXPECT_EQ(taker.notified, 1);
    input().SetSink(nullptr);
    input().Disconnect();
    EXPECT_EQ(input().PassNotify(Quality{}), VFW_E_NOT_FOUND);
}

TEST_F(Streaming, EverythingMayChangeUnderStreamingThreads) {
    std::atomic<bool> done{false};
    input().onSample = [](IMediaSample*) {};
    input().behaviour.accepted = {testType(1), testType(2)};
    const auto stream = [&] {
        while (!done) {
            source->send({1});
            output().DeliverNewSegment(1, 2, 1.0);
            CMediaType type;
            input().ConnectionMediaType(&type);
            if (type.IsValid()) output().SetMediaType(&type);
            std::this_thread::yield();
        }
    };
    std::thread threads[] = {std::thread(stream), std::thread(stream)};
    std::mt19937 random(1);
    const auto flow = [&] {
        source->Stop();  // The sink's own stop has decommitted the allocator.
        run();
        const int before = input().received;
        EXPECT_TRUE(soon([&] { return input().received > before; }));
    };
    const auto reconnect = [&] {
        source->Stop();
        sink->Stop();
        output().Disconnect();
        input().Disconnect();
        ASSERT_EQ(output().Connect(&input(), nullptr), S_OK);
    };
    const auto flush = [&] { output().DeliverBeginFlush(), output().DeliverEndFlush(); };
    const std::function<void()> actions[] = {flow,
                                             flow,
                                             flush,
                                             reconnect,
                                             [&] { source->Stop(); },
                                             [&] { sink->Stop(); },
                                             [&] { source->Pause(); }};
    for (int i = 0; i < 500; ++i) actions[random() % std::size(actions)]();
    flow();
    done = true;
    for (std::thread& thread : threads) thread.join();
}

}  // namespace
}  // namespace mvrtpfec
