#include <array>
#include <new>

#include "core/fec_composer.h"
#include "receiver/sample_sequence_number.h"
#include "support/com_exception.h"
#include "tests/receiver/receiver_fixture.h"

namespace mvrtpfec {

namespace {

constexpr std::int32_t side = 4;
constexpr std::size_t window = 2 * side * side;

/// Which input carries media, column FEC and row FEC.
using Assignment = std::array<std::size_t, 3>;

class RepairTest : public ReceiverTest, public ::testing::WithParamInterface<Assignment> {
protected:
    FecPacketSink sinkFor(std::size_t input) {
        return [this, input](const std::shared_ptr<RtpPacket>& fec) {
            EXPECT_EQ(send(input, bytesOf(fec->view)), S_OK);
        };
    }
};

TEST_P(RepairTest, FillsHolesWhicheverInputCarriesWhat) {
    start();
    const auto [mediaInput, columnInput, rowInput] = GetParam();
    CFecComposer columns(sinkFor(columnInput), fecColumn, side, side);
    CFecComposer rows(sinkFor(rowInput), fecRow, side, side);
    std::vector<Bytes> media;
    std::size_t sent = 0;
    for (std::uint16_t n = 0; n < 400; ++n) {
        media.push_back(mediaPacket(static_cast<std::uint16_t>(1000 + n), 60u + n % 50));
        writeBigEndian32(&media.back()[8], 7);  // not protected, so a rebuilt packet has that of another
    }
    for (std::size_t n = 0; n < media.size(); ++n) {
        if (n % 60 != 33 || n > 350) {
            ASSERT_EQ(send(mediaInput, media[n]), S_OK);
            ++sent;
        }
        columns.protect(viewOf(media[n]));
        rows.protect(viewOf(media[n]));
    }
    // Each hole costs the packet behind it too, which the full reorder buffer gives up.
    const std::size_t holes = media.size() - sent;
    ASSERT_TRUE(received(sent - holes));
    ASSERT_TRUE(soon([&] { return sink().packets().size() >= media.size() - window - 1; }));
    media.resize(sink().packets().size());
    EXPECT_EQ(sink().packets(), media);
    EXPECT_EQ(totals().lost, 2 * holes);
    EXPECT_EQ(totals().rebuilt, 2 * holes);
    EXPECT_EQ(totals().abandoned, 0u);
    EXPECT_EQ(totals().resets, 0u);
}

INSTANTIATE_TEST_SUITE_P(Assignments, RepairTest,
                         ::testing::Values(Assignment{0, 1, 2}, Assignment{2, 0, 1}, Assignment{1, 2, 0},
                                           Assignment{2, 1, 0}));

/// Without FEC a matrix counts as 1 x 1: what lies more than two numbers behind the newest is delivered.
using DeliveryTest = ReceiverTest;

TEST_F(DeliveryTest, SamplesCarryThePacketAndNothingElse) {
    std::atomic<int> attributes{0};
    sink().onSample = [&](IMediaSample* sample) {
        REFERENCE_TIME start = 0;
        REFERENCE_TIME stop = 0;
        const bool bare = sample->GetTime(&start, &stop) == VFW_E_SAMPLE_TIME_NOT_SET &&
                          sample->IsSyncPoint() == S_FALSE && sample->IsDiscontinuity() == S_FALSE;
        attributes += !bare;
    };
    sink().NotifyAllocator(CComPtr<IMemAllocator>(new LimitedAllocator(5000)), FALSE);
    start();
    sendAll(0, mediaPackets(1, 10));
    EXPECT_TRUE(soon([&] { return sink().received == 7; }));
    EXPECT_EQ(attributes, 0);
    EXPECT_EQ(filter().GetPin(0)->EndOfStream(), S_OK);
    sendAll(0, mediaPackets(11, 1));
    EXPECT_TRUE(soon([&] { return sink().received == 8; }));
    EXPECT_EQ(sink().endsOfStream, 0) << "ends of stream are swallowed";
}

TEST_F(DeliveryTest, PacketsLongerThanTheirBufferAreDropped) {
    start();
    auto media = mediaPackets(1, 10);
    media[4] = mediaPacket(5, 2000);
    sendAll(0, media);
    ASSERT_TRUE(soon([&] { return sink().received == 6; }));
    media.resize(7);
    media.erase(media.begin() + 4);
    EXPECT_EQ(sink().packets(), media);
}

TEST_F(DeliveryTest, TotalsOutliveTheDecoder) {
    start();
    Bytes foreign = mediaPacket(6);
    foreign[1] = 77;
    sendAll(0, mediaPackets(1, 5));
    sendAll(0, {foreign});
    sendAll(0, mediaPackets(7, 4));
    ASSERT_TRUE(received(9));
    EXPECT_EQ(totals().resets, 1u);
    std::uint64_t lost = 0;
    std::uint64_t present = 0;
    EXPECT_EQ(filter().GetStatistics(&lost, &lost, &lost, &present), S_OK);
    EXPECT_EQ(present, 4u) << "the decoder's own count starts afresh";
    stop();
    EXPECT_EQ(totals().received, 9u);
    run();
    EXPECT_EQ(totals().received, 0u);
    EXPECT_EQ(totals().resets, 0u);
}

/// A sample that the source made itself; `onWorker` is done when the worker asks for its bytes.
class TrickSample final : public COOBMediaSample {
public:
    explicit TrickSample(std::function<HRESULT()> onWorker, std::uint16_t number = 1)
        : COOBMediaSample(nullptr, 0), packet_(mediaPacket(number)), onWorker_(std::move(onWorker)) {
        setPayload(packet_.data(), static_cast<LONG>(packet_.size()), static_cast<LONG>(packet_.size()));
        ++alive;
    }
    ~TrickSample() override { --alive; }

    static inline std::atomic<int> alive{0};

    STDMETHODIMP GetPointer(BYTE** payload) override {
        const HRESULT result = std::this_thread::get_id() == maker_ ? S_OK : onWorker_();
        return FAILED(result) ? result : COOBMediaSample::GetPointer(payload);
    }

private:
    std::thread::id maker_ = std::this_thread::get_id();
    Bytes packet_;
    std::function<HRESULT()> onWorker_;
};

CComPtr<IMediaSample> trick(std::function<HRESULT()> onWorker, std::uint16_t number = 1) {
    return new TrickSample(std::move(onWorker), number);
}

struct ErrorList final : IErrorSink {
    void OnError(HRESULT error) override {
        const std::lock_guard lock(mutex);
        errors.push_back(error);
        if (error == E_ABORT) throw error;
    }
    std::size_t count() {
        const std::lock_guard lock(mutex);
        return errors.size();
    }
    std::mutex mutex;
    std::vector<HRESULT> errors;
};

TEST_F(DeliveryTest, FailedSamplesAreReportedAndPassedOver) {
    ErrorList sink;
    filter().SetErrorSink(&sink);
    start();
    const std::function<HRESULT()> failures[] = {
        [] { return HRESULT{E_ABORT}; },
        [] { return HRESULT{VFW_E_NOT_COMMITTED}; },
        []() -> HRESULT { throw std::bad_alloc(); },
        []() -> HRESULT { throw mvn::COMException(E_ACCESSDENIED); },
        []() -> HRESULT { throw 1; },
    };
    std::uint16_t number = 1;
    for (const auto& failure : failures) EXPECT_EQ(input(0).Receive(trick(failure, number++)), S_OK);
    ASSERT_TRUE(soon([&] { return sink.count() == 4; }));
    EXPECT_EQ(sink.errors, (std::vector<HRESULT>{E_ABORT, E_OUTOFMEMORY, E_ACCESSDENIED, E_FAIL}));
    sendAll(0, mediaPackets(number, 1));
    EXPECT_TRUE(received(1));
    filter().SetErrorSink(nullptr);
    EXPECT_TRUE(soon([] { return TrickSample::alive == 0; }));
}

/// What the upstream filter learns of a sample that can't be put in order.
TEST_F(DeliveryTest, ExceptionsOnTheStreamingThreadBecomeResults) {
    start();
    HRESULT result = S_OK;
    const auto receiveElsewhere = [&](const CComPtr<IMediaSample>& sample) {
        std::thread([&] { result = input(0).Receive(sample); }).join();
        return result;
    };
    EXPECT_EQ(receiveElsewhere(trick([]() -> HRESULT { throw mvn::COMException(E_ACCESSDENIED); })),
              E_ACCESSDENIED);
    EXPECT_EQ(receiveElsewhere(trick([]() -> HRESULT { throw std::bad_alloc(); })), E_FAIL);
    EXPECT_EQ(receiveElsewhere(trick([]() -> HRESULT { throw 1; })), E_FAIL);
    EXPECT_EQ(input(0).Receive(nullptr), E_POINTER);
}

struct SampleWithoutSize final : COOBMediaSample {
    using COOBMediaSample::COOBMediaSample;
    STDMETHODIMP_(LONG) GetSize() override { return 0; }
};

TEST_F(DeliveryTest, RuntsAreHarmless) {
    // Buffers of just their size, so that a read past their end is seen.
    for (const auto& [bytes, number] :
         {std::pair{Bytes{0x80, 33, 0x12, 0x34}, 0x1234}, std::pair{Bytes{0x80, 33, 0x12}, 0x1200},
          std::pair{Bytes{0x80, 33}, 0}, std::pair{Bytes{}, 0}}) {
        Bytes exact(bytes);
        const auto size = static_cast<LONG>(exact.size());
        for (COOBMediaSample* sample :
             {new COOBMediaSample(exact.data(), size),
              static_cast<COOBMediaSample*>(new SampleWithoutSize(exact.data(), size))})
            EXPECT_EQ(GetRtpSequenceNumber(CComPtr<IMediaSample>(sample)), number);
    }
    start();
    for (std::size_t length = 0; length < rtpHeaderSize; ++length) {
        Bytes runt = mediaPacket(9);
        runt.resize(length);
        EXPECT_EQ(send(length % 3, runt), S_OK);
    }
    sendAll(0, mediaPackets(1000, 5));
    EXPECT_TRUE(received(5));
    EXPECT_GT(totals().resets, 0u);
}

/// Samples that wait, in order or for a missing one, when the last reference to the filter goes.
TEST_F(DeliveryTest, DestructionReleasesWhatWaits) {
    std::atomic<bool> entered{false};
    std::atomic<bool> open{false};
    filter().Pause();
    const auto blocking = trick([&] {
        entered = true;
        return soon([&] { return open.load(); }) ? S_OK : E_FAIL;
    });
    CMediaType type = testType(1);
    blocking->SetMediaType(&type);
    const auto idle = [] { return S_OK; };
    EXPECT_EQ(input(0).Receive(blocking), S_OK);
    EXPECT_TRUE(soon([&] { return entered.load(); }));
    for (const std::uint16_t number : std::array<std::uint16_t, 5>{2, 3, 4, 6, 7})
        EXPECT_EQ(input(0).Receive(trick(idle, number)), S_OK);

    std::thread opener([&] {
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
        open = true;
    });
    release();
    opener.join();
    EXPECT_EQ(TrickSample::alive, 1) << "all but the one that is held here";
}

}  // namespace

}  // namespace mvrtpfec
