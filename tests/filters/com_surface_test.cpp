#include <array>
#include <initializer_list>
#include <string>

#include <gtest/gtest.h>

#include "mvrtpfec/rtp_fec_filter.h"
#include "platform/wide_literal.h"
#include "receiver/rtp_fec_in.h"
#include "sender/rtp_fec_filter.h"
#include "tests/shared/created_filter.h"
#include "tests/shared/object_count.h"
#include "tests/shared/rtp_filters.h"

namespace mvrtpfec {

namespace {

using platform::operator""_w;

/// A call with arguments that are missing, out of range or out of place, and what it answers.
struct Row {
    const char* call;
    HRESULT answer;
    HRESULT expected;
};

void expectEach(const std::string& of, std::initializer_list<Row> rows) {
    for (const Row& row : rows) EXPECT_EQ(row.answer, row.expected) << of << ": " << row.call;
}

constexpr IID nobodysInterface{0x9C0E1D6A, 0x1111, 0x4222, {0x83, 0x33, 1, 2, 3, 4, 5, 6}};

/// Every refusal to give what nobody has.
void expectUnknownRefused(const std::string& of, IUnknown* object) {
    void* found = object;
    expectEach(of, {{"nobody's interface", object->QueryInterface(nobodysInterface, &found), E_NOINTERFACE},
                    {"QueryInterface", object->QueryInterface(IID_IUnknown, nullptr), E_POINTER}});
    EXPECT_EQ(found, nullptr) << of;
}

template <class Item, class Enumerator>
void expectEnumerator(const std::string& of, Enumerator* all) {
    std::array<Item*, 2> items{};
    expectUnknownRefused(of, all);
    expectEach(of, {{"Next", all->Next(1, nullptr, nullptr), E_POINTER},
                    {"Next without a count", all->Next(2, items.data(), nullptr), E_INVALIDARG},
                    {"Skip", all->Skip(1000), S_FALSE},
                    {"Clone", all->Clone(nullptr), E_POINTER}});
}

void expectFilter(const std::string& of, IBaseFilter* f) {
    CComPtr<IPin> pin;
    CComPtr<IEnumPins> pins;
    expectUnknownRefused(of, f);
    EXPECT_TRUE(queryFor<IMediaFilter>(f, IID_IMediaFilter) && queryFor<IPersist>(f, IID_IPersist)) << of;
    EXPECT_FALSE(queryFor<IPin>(f, IID_IPin)) << of;
    expectEach(of, {{"GetClassID", f->GetClassID(nullptr), E_POINTER},
                    {"GetState", f->GetState(0, nullptr), E_POINTER},
                    {"SetSyncSource", f->SetSyncSource(nullptr), S_OK},
                    {"GetSyncSource", f->GetSyncSource(nullptr), E_POINTER},
                    {"EnumPins", f->EnumPins(nullptr), E_POINTER},
                    {"EnumPins", f->EnumPins(&pins), S_OK},
                    {"FindPin without a place", f->FindPin("Input"_w, nullptr), E_POINTER},
                    {"FindPin of nobody", f->FindPin("Nobody"_w, &pin), VFW_E_NOT_FOUND},
                    {"FindPin without a name", f->FindPin(nullptr, &pin), E_POINTER},
                    {"QueryFilterInfo", f->QueryFilterInfo(nullptr), E_POINTER},
                    {"JoinFilterGraph", f->JoinFilterGraph(nullptr, nullptr), S_OK},
                    {"QueryVendorInfo", f->QueryVendorInfo(nullptr), E_NOTIMPL}});
    EXPECT_EQ(pin.p, nullptr);
    expectEnumerator<IPin>(of + " IEnumPins", pins.p);
}

void expectPin(const std::string& of, IPin* p, bool stopped) {
    AM_MEDIA_TYPE type{};
    CComPtr<IPin> other;
    CComPtr<IEnumMediaTypes> types;
    expectUnknownRefused(of, p);
    expectEach(of, {{"Connect", p->Connect(nullptr, nullptr), E_POINTER},
                    {"ReceiveConnection", p->ReceiveConnection(nullptr, nullptr), E_POINTER},
                    {"Disconnect", p->Disconnect(), stopped ? S_FALSE : VFW_E_NOT_STOPPED},
                    {"ConnectedTo nowhere", p->ConnectedTo(nullptr), E_POINTER},
                    {"ConnectedTo", p->ConnectedTo(&other), VFW_E_NOT_CONNECTED},
                    {"ConnectionMediaType nowhere", p->ConnectionMediaType(nullptr), E_POINTER},
                    {"ConnectionMediaType", p->ConnectionMediaType(&type), VFW_E_NOT_CONNECTED},
                    {"QueryPinInfo", p->QueryPinInfo(nullptr), E_POINTER},
                    {"QueryDirection", p->QueryDirection(nullptr), E_POINTER},
                    {"QueryId", p->QueryId(nullptr), E_POINTER},
                    {"QueryAccept", p->QueryAccept(nullptr), E_POINTER},
                    {"EnumMediaTypes nowhere", p->EnumMediaTypes(nullptr), E_POINTER},
                    {"EnumMediaTypes", p->EnumMediaTypes(&types), S_OK},
                    {"QueryInternalConnections", p->QueryInternalConnections(nullptr, nullptr), E_NOTIMPL},
                    {"NewSegment", p->NewSegment(0, 0, 1.0), S_OK},
                    {"SetSink", queryFor<IQualityControl>(p, IID_IQualityControl)->SetSink(nullptr), S_OK}});
    expectEnumerator<AM_MEDIA_TYPE>(of + " IEnumMediaTypes", types.p);
}

void expectInput(const std::string& of, IMemInputPin* p, bool sender) {
    LONG count = 0;
    expectEach(of, {{"GetAllocator", p->GetAllocator(nullptr), E_POINTER},
                    {"NotifyAllocator", p->NotifyAllocator(nullptr, FALSE), E_POINTER},
                    {"GetAllocatorRequirements", p->GetAllocatorRequirements(nullptr),
                     sender ? E_NOTIMPL : E_POINTER},
                    {"Receive", p->Receive(nullptr), E_POINTER},
                    {"ReceiveMultiple of nothing", p->ReceiveMultiple(nullptr, 1, &count), E_POINTER},
                    {"ReceiveMultiple without a count", p->ReceiveMultiple(nullptr, 0, nullptr), E_POINTER},
                    {"ReceiveCanBlock", p->ReceiveCanBlock(), sender ? S_OK : S_FALSE}});
}

class ComSurface : public ::testing::TestWithParam<CreationFunction> {
protected:
    const ObjectCount objects_;
    const bool sender_ = GetParam() == &CRtpFecFilter::CreateInstance;
    CComPtr<IBaseFilter> filter_ = makeFilter(GetParam());
};

INSTANTIATE_TEST_SUITE_P(Filters, ComSurface,
                         ::testing::Values(&CRtpFecFilter::CreateInstance, &CRtpFecIn::CreateInstance),
                         [](const auto& which) { return which.index == 0 ? "Sender" : "Receiver"; });

TEST_P(ComSurface, AnswersBadArgumentsInEveryState) {
    const auto check = [&](const std::string& state) {
        const bool stopped = state == "stopped";
        expectFilter(state, filter_);
        for (const CComPtr<IPin>& pin : pinsOf(filter_, PINDIR_INPUT)) {
            expectPin(state + " input", pin, stopped);
            expectInput(state, queryFor<IMemInputPin>(pin, IID_IMemInputPin), sender_);
        }
        for (const CComPtr<IPin>& pin : pinsOf(filter_, PINDIR_OUTPUT)) {
            expectPin(state + " output", pin, stopped);
            expectEach(state, {{"EndOfStream", pin->EndOfStream(), E_UNEXPECTED},
                               {"BeginFlush", pin->BeginFlush(), E_UNEXPECTED},
                               {"EndFlush", pin->EndFlush(), E_UNEXPECTED}});
        }
    };
    check("stopped");
    setMatrix(filter_, 3, 5, 5);
    EXPECT_EQ(filter_->Pause(), S_OK);
    check("paused");
    EXPECT_EQ(filter_->Run(0), S_OK);
    check("running");
    EXPECT_EQ(filter_->Stop(), S_OK);
    check("stopped");
}

/// A host that dies between Pause and Stop drops everything it has, in whatever order.
TEST_P(ComSurface, FiltersDroppedWhileActiveLeaveNothing) {
    setMatrix(filter_, 3, 5, 5);
    for (const bool run : {false, true}) {
        CComPtr<AnySink> sink(new AnySink(1));
        const CComPtr<IPin> output = pinsOf(filter_, PINDIR_OUTPUT)[0];
        EXPECT_EQ(output->Connect(&sink->pin(), nullptr), S_OK);
        sink->Pause();
        EXPECT_EQ(run ? filter_->Run(0) : filter_->Pause(), S_OK);
        // Its pin is still referenced by the filter's, and nobody stops it.
        sink.Release();
        filter_->Stop();
        output->Disconnect();
    }
    EXPECT_EQ(filter_->Run(0), S_OK);
}

/// The sender insists on 16 buffers, the receiver on 100.
TEST(DirectConnection, OfTheTwoFiltersIsRefusedAndLeavesBothFree) {
    const auto sender = makeFilter(CRtpFecFilter::CreateInstance);
    const auto receiver = makeFilter(CRtpFecIn::CreateInstance);
    const auto output = pinsOf(sender, PINDIR_OUTPUT)[0], input = pinsOf(receiver, PINDIR_INPUT)[1];
    EXPECT_EQ(output->Connect(input, nullptr), VFW_E_NO_ACCEPTABLE_TYPES);
    CComPtr<IPin> other;
    EXPECT_EQ(output->ConnectedTo(&other), VFW_E_NOT_CONNECTED);
    EXPECT_EQ(input->ConnectedTo(&other), VFW_E_NOT_CONNECTED);
}

}  // namespace

}  // namespace mvrtpfec
