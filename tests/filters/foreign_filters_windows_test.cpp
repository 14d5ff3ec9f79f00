#include <array>
#include <string>

#include <dshow.h>
#include <gtest/gtest.h>

#include "mvrtpfec/rtp_fec_filter.h"
#include "platform/component/component_runtime.h"
#include "platform/graph/media_graph.h"
#include "receiver/rtp_fec_in.h"
#include "sender/rtp_fec_filter.h"
#include "tests/shared/created_filter.h"
#include "tests/shared/packets.h"
#include "tests/shared/rtp_filters.h"

namespace mvrtpfec {

namespace {

constexpr CLSID infiniteTee{0xF8388A40, 0xD5BB, 0x11D0, {0xBE, 0x5A, 0x00, 0x80, 0xC7, 0x06, 0x56, 0x8E}};
constexpr CLSID nullRenderer{0xC1F400A4, 0x3F08, 0x11D3, {0x9F, 0x0B, 0x00, 0x60, 0x08, 0x03, 0x9E, 0x37}};

/// The filters beside the system's own, in the system's graph.
class ForeignFilters : public ::testing::Test {
protected:
    void SetUp() override {
        ASSERT_EQ(platform::createFilterGraph(&graph_), S_OK);
        queryFor<IMediaFilter>(graph_, IID_IMediaFilter)->SetSyncSource(nullptr);
    }

    /// Empty where this system lacks it.
    CComPtr<IBaseFilter> foreign(REFCLSID classId) {
        CComPtr<IBaseFilter> filter;
        const HRESULT result =
            platform::createComponent(classId, IID_IBaseFilter, reinterpret_cast<void**>(&filter));
        if (SUCCEEDED(result)) graph_->AddFilter(filter, nullptr);
        return filter;
    }

    CComPtr<IBaseFilter> ours(CreationFunction create) {
        const auto filter = makeFilter(create);
        graph_->AddFilter(filter, nullptr);
        return filter;
    }
    CComPtr<RtpSource> source() {
        const CComPtr<RtpSource> filter(new RtpSource(1));
        graph_->AddFilter(filter, nullptr);
        return filter;
    }

    /// The first unconnected pin of a direction.
    static CComPtr<IPin> pin(IBaseFilter* filter, PIN_DIRECTION direction) {
        for (const CComPtr<IPin>& pin : pinsOf(filter, direction)) {
            CComPtr<IPin> other;
            if (pin->ConnectedTo(&other) == VFW_E_NOT_CONNECTED) return pin;
        }
        return {};
    }

    HRESULT connect(IBaseFilter* from, IBaseFilter* to) {
        return graph_->ConnectDirect(pin(from, PINDIR_OUTPUT), pin(to, PINDIR_INPUT), nullptr);
    }

    HRESULT run() { return queryFor<IMediaControl>(graph_, IID_IMediaControl)->Run(); }
    HRESULT stop() { return queryFor<IMediaControl>(graph_, IID_IMediaControl)->Stop(); }

    platform::ComponentRuntime runtime_;
    CComPtr<IGraphBuilder> graph_;
};

TEST_F(ForeignFilters, RenderersTakeWhatTheReceiverDelivers) {
    const auto renderer = foreign(nullRenderer);
    if (!renderer) GTEST_SKIP() << "this system has no null renderer";
    const auto upstream = source();
    const auto receiver = ours(CRtpFecIn::CreateInstance);
    ASSERT_EQ(connect(upstream, receiver), S_OK);
    ASSERT_EQ(connect(receiver, renderer), S_OK);
    ASSERT_GE(run(), 0);
    for (std::uint16_t n = 0; n < 1000; ++n) EXPECT_EQ(upstream->send(mediaPacket(n, 1328)), S_OK);
    EXPECT_GE(stop(), 0);
}

/// A graph with a renderer waits for its first packet before it runs, and FEC flows only while it runs. The
/// sender's upstream isn't held up by that.
TEST_F(ForeignFilters, RenderersBehindTheSenderHoldNobodyUp) {
    const auto renderer = foreign(nullRenderer);
    if (!renderer) GTEST_SKIP() << "this system has no null renderer";
    const auto upstream = source();
    const auto sender = ours(CRtpFecFilter::CreateInstance);
    setMatrix(sender, fecRow, 1, 4);
    ASSERT_EQ(connect(upstream, sender), S_OK);
    ASSERT_EQ(connect(sender, renderer), S_OK);
    ASSERT_GE(run(), 0);
    for (std::uint16_t n = 0; n < 100; ++n) EXPECT_EQ(upstream->send(mediaPacket(n, 1328)), S_OK);
    EXPECT_GE(stop(), 0);
}

TEST_F(ForeignFilters, TeesPassFecOn) {
    const auto tee = foreign(infiniteTee);
    if (!tee) GTEST_SKIP() << "this system has no infinite tee";
    const auto sender = ours(CRtpFecFilter::CreateInstance);
    EXPECT_EQ(connect(sender, tee), S_OK);
}

/// A file source is read from, it doesn't deliver. Some systems refuse the connection, some such a graph;
/// whatever comes about, nothing flows and the filter stops.
TEST_F(ForeignFilters, FileSourcesAreNoSourcesOfPackets) {
    const auto source = foreign(CLSID_AsyncReader);
    if (!source) GTEST_SKIP() << "this system has no file source";
    std::array<wchar_t, MAX_PATH> program{};
    GetModuleFileNameW(nullptr, program.data(), MAX_PATH);
    ASSERT_EQ(queryFor<IFileSourceFilter>(source, IID_IFileSourceFilter)->Load(program.data(), nullptr),
              S_OK);
    const auto receiver = ours(CRtpFecIn::CreateInstance);
    connect(source, receiver);
    run();
    stop();
    FILTER_STATE state = State_Running;
    EXPECT_EQ(receiver->GetState(0, &state), S_OK);
    EXPECT_EQ(state, State_Stopped);
    RtpFecInTotals totals;
    EXPECT_EQ(queryFor<IRtpFecInTotals>(receiver, IID_IRtpFecInTotals)->GetTotals(&totals), S_OK);
    EXPECT_EQ(totals.received, 0u);
}

}  // namespace

}  // namespace mvrtpfec
