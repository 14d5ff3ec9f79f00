#pragma once

#include <gtest/gtest.h>

#include "platform/component/component_runtime.h"
#include "platform/graph/media_graph.h"
#include "tests/platform/journal_filter.h"
#include "tests/shared/object_count.h"

namespace mvrtpfec {

/// A graph, its interfaces and the journal of its filters.
class FilterGraphTest : public ::testing::Test {
protected:
    void SetUp() override {
        ASSERT_EQ(platform::createFilterGraph(&graph_), S_OK);
        control_ = queryFor<IMediaControl>(graph_, IID_IMediaControl);
        events_ = queryFor<IMediaEvent>(graph_, IID_IMediaEvent);
    }

    void releaseGraph() {
        control_.Release();
        events_.Release();
        graph_.Release();
    }

    /// Held by the graph alone.
    JournalFilter& add(const char* name, int outputs = 1) {
        auto* filter = new JournalFilter(name, outputs, journal_);
        const CComPtr<IBaseFilter> reference(filter);
        EXPECT_EQ(graph_->AddFilter(filter, nullptr), S_OK);
        return *filter;
    }

    void connect(JournalFilter& from, JournalFilter& to, std::size_t output = 0) {
        ASSERT_EQ(graph_->ConnectDirect(&from.pin(output), &to.input(), nullptr), S_OK);
    }

    OAFilterState state() const {
        OAFilterState state = -1;
        EXPECT_GE(control_->GetState(5000, &state), 0);
        return state;
    }

    HRESULT waitForEnd(LONG milliseconds, LONG& code) {
        return events_->WaitForCompletion(milliseconds, &code);
    }

    static constexpr LONG patience = 10'000;

    const platform::ComponentRuntime runtime_;
    const ObjectCount objects_;
    Journal journal_;
    CComPtr<IGraphBuilder> graph_;
    CComPtr<IMediaControl> control_;
    CComPtr<IMediaEvent> events_;
};

}  // namespace mvrtpfec
