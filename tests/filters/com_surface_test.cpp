#include <array>
#include <functional>
#include <initializer_list>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "framework/base/base_filter.h"
#include "framework/base/com_ptr.h"
#include "framework/base/mem_allocator.h"
#include "mvrtpfec/rtp_fec_filter.h"
#include "mvrtpfec/rtp_fec_in.h"
#include "platform/component/task_memory.h"
#include "platform/wide_literal.h"
#include "receiver/rtp_fec_in.h"
#include "sender/rtp_fec_filter.h"
#include "tests/filters/collector.h"

namespace mvrtpfec {

namespace {

using platform::operator""_w;

/// A call with arguments that are missing, out of range or out of place, and what it answers.
struct Row {
    const char* call;
    std::function<HRESULT()> run;
    HRESULT expected;
};

void expectEach(const std::string& of, std::initializer_list<Row> rows) {
    for (const Row& row : rows) EXPECT_EQ(row.run(), row.expected) << of << ": " << row.call;
}

constexpr IID nobodysInterface{0x9C0E1D6A, 0x1111, 0x4222, {0x83, 0x33, 1, 2, 3, 4, 5, 6}};

using CreationFunction = CUnknown* (*)(IUnknown*, HRESULT*);

CComPtr<IBaseFilter> create(CreationFunction creation) {
    void* found = nullptr;
    creation(nullptr, nullptr)->NonDelegatingQueryInterface(IID_IBaseFilter, &found);
    CComPtr<IBaseFilter> filter;
    filter.Attach(static_cast<IBaseFilter*>(found));
    return filter;
}

std::vector<CComPtr<IPin>> pinsOf(IBaseFilter* filter) {
    std::vector<CComPtr<IPin>> pins;
    CComPtr<IEnumPins> all;
    filter->EnumPins(&all);
    for (CComPtr<IPin> pin; all->Next(1, &pin, nullptr) == S_OK; pin.Release()) pins.push_back(pin);
    return pins;
}

/// Every refusal to give what nobody has.
void expectUnknownRefused(const std::string& of, IUnknown* object) {
    void* found = object;
    expectEach(of, {{"QueryInterface(nobody's)",
                     [&] { return object->QueryInterface(nobodysInterface, &found); }, E_NOINTERFACE},
                    {"QueryInterface(null)", [&] { return object->QueryInterface(IID_IUnknown, nullptr); },
                     E_POINTER}});
    EXPECT_EQ(found, nullptr) << of;
}

template <class Enumerator, class Item>
void expectEnumerator(const std::string& of, Enumerator* all) {
    std::array<Item*, 2> items{};
    expectUnknownRefused(of, all);
    expectEach(
        of, {{"Next(1, null)", [&] { return all->Next(1, nullptr, nullptr); }, E_POINTER},
             {"Next(2) without a count", [&] { return all->Next(2, items.data(), nullptr); }, E_INVALIDARG},
             {"Skip(1000)", [&] { return all->Skip(1000); }, S_FALSE},
             {"Reset", [&] { return all->Reset(); }, S_OK},
             {"Clone(null)", [&] { return all->Clone(nullptr); }, E_POINTER}});
}

class ComSurface : public testing::TestWithParam<CreationFunction> {
protected:
    /// In every state of a filter without connections.
    void inEachState(const std::function<void(const std::string& state)>& check) {
        check("stopped");
        configure();
        EXPECT_EQ(filter_->Pause(), S_OK);
        check("paused");
        EXPECT_EQ(filter_->Run(0), S_OK);
        check("running");
        EXPECT_EQ(filter_->Stop(), S_OK);
        check("stopped again");
    }

    void configure() {
        const auto matrix = queryFor<IFECoverRTPConfig>(filter_, IID_IFECoverRTPConfig);
        if (!matrix) return;
        EXPECT_EQ(matrix->SetColumns(5), S_OK);
        EXPECT_EQ(matrix->SetRows(5), S_OK);
        EXPECT_EQ(matrix->SetMode(3), S_OK);
    }

    LONG before_ = CBaseObject::ObjectsActive();
    CComPtr<IBaseFilter> filter_ = create(GetParam());

    void TearDown() override {
        filter_.Release();
        EXPECT_EQ(CBaseObject::ObjectsActive(), before_);
    }
};

INSTANTIATE_TEST_SUITE_P(Filters, ComSurface,
                         testing::Values(&CRtpFecFilter::CreateInstance, &CRtpFecIn::CreateInstance),
                         [](const auto& which) { return which.index == 0 ? "Sender" : "Receiver"; });

TEST_P(ComSurface, FilterAnswersBadArguments) {
    inEachState([&](const std::string& state) {
        IBaseFilter* const f = filter_;
        CComPtr<IPin> pin;
        expectUnknownRefused(state, f);
        expectEach(state,
                   {
                       {"GetClassID", [&] { return f->GetClassID(nullptr); }, E_POINTER},
                       {"GetState", [&] { return f->GetState(0, nullptr); }, E_POINTER},
                       {"SetSyncSource", [&] { return f->SetSyncSource(nullptr); }, S_OK},
                       {"GetSyncSource", [&] { return f->GetSyncSource(nullptr); }, E_POINTER},
                       {"EnumPins", [&] { return f->EnumPins(nullptr); }, E_POINTER},
                       {"FindPin(null out)", [&] { return f->FindPin("Input"_w, nullptr); }, E_POINTER},
                       {"FindPin(nobody)", [&] { return f->FindPin("Nobody"_w, &pin); }, VFW_E_NOT_FOUND},
                       {"FindPin(null name)", [&] { return f->FindPin(nullptr, &pin); }, E_POINTER},
                       {"QueryFilterInfo", [&] { return f->QueryFilterInfo(nullptr); }, E_POINTER},
                       {"JoinFilterGraph", [&] { return f->JoinFilterGraph(nullptr, nullptr); }, S_OK},
                       {"QueryVendorInfo(null)", [&] { return f->QueryVendorInfo(nullptr); }, E_NOTIMPL},
                   });
        EXPECT_EQ(pin.p, nullptr);
        CComPtr<IEnumPins> all;
        ASSERT_EQ(f->EnumPins(&all), S_OK);
        expectEnumerator<IEnumPins, IPin>(state + " IEnumPins", all);
    });
}

TEST_P(ComSurface, UnconnectedPinsAnswerBadArguments) {
    inEachState([&](const std::string& state) {
        for (const CComPtr<IPin>& owned : pinsOf(filter_)) {
            IPin* const p = owned;
            PIN_DIRECTION direction{};
            p->QueryDirection(&direction);
            const bool input = direction == PINDIR_INPUT;
            const std::string of = state + (input ? " input" : " output");
            const bool stopped = state.starts_with("stopped");
            AM_MEDIA_TYPE type{};
            CComPtr<IPin> other;
            expectUnknownRefused(of, p);
            expectEach(
                of,
                {
                    {"Connect", [&] { return p->Connect(nullptr, nullptr); }, E_POINTER},
                    {"ReceiveConnection", [&] { return p->ReceiveConnection(nullptr, nullptr); }, E_POINTER},
                    {"Disconnect", [&] { return p->Disconnect(); }, stopped ? S_FALSE : VFW_E_NOT_STOPPED},
                    {"ConnectedTo(null)", [&] { return p->ConnectedTo(nullptr); }, E_POINTER},
                    {"ConnectedTo", [&] { return p->ConnectedTo(&other); }, VFW_E_NOT_CONNECTED},
                    {"ConnectionMediaType(null)", [&] { return p->ConnectionMediaType(nullptr); }, E_POINTER},
                    {"ConnectionMediaType", [&] { return p->ConnectionMediaType(&type); },
                     VFW_E_NOT_CONNECTED},
                    {"QueryPinInfo", [&] { return p->QueryPinInfo(nullptr); }, E_POINTER},
                    {"QueryDirection", [&] { return p->QueryDirection(nullptr); }, E_POINTER},
                    {"QueryId", [&] { return p->QueryId(nullptr); }, E_POINTER},
                    {"QueryAccept", [&] { return p->QueryAccept(nullptr); }, E_POINTER},
                    {"EnumMediaTypes", [&] { return p->EnumMediaTypes(nullptr); }, E_POINTER},
                    {"QueryInternalConnections",
                     [&] { return p->QueryInternalConnections(nullptr, nullptr); }, E_NOTIMPL},
                    {"NewSegment", [&] { return p->NewSegment(0, 0, 1.0); }, S_OK},
                });
            CComPtr<IEnumMediaTypes> types;
            ASSERT_EQ(p->EnumMediaTypes(&types), S_OK);
            expectEnumerator<IEnumMediaTypes, AM_MEDIA_TYPE>(of + " IEnumMediaTypes", types);
            if (!input)
                expectEach(of, {{"EndOfStream", [&] { return p->EndOfStream(); }, E_UNEXPECTED},
                                {"BeginFlush", [&] { return p->BeginFlush(); }, E_UNEXPECTED},
                                {"EndFlush", [&] { return p->EndFlush(); }, E_UNEXPECTED}});
            const auto quality = queryFor<IQualityControl>(p, IID_IQualityControl);
            ASSERT_TRUE(quality);
            EXPECT_EQ(quality->SetSink(nullptr), S_OK) << of;
        }
    });
}

TEST_P(ComSurface, InputsAnswerBadArguments) {
    const bool sender = GetParam() == &CRtpFecFilter::CreateInstance;
    inEachState([&](const std::string& state) {
        for (const CComPtr<IPin>& pin : pinsOf(filter_)) {
            const auto input = queryFor<IMemInputPin>(pin, IID_IMemInputPin);
            if (!input) continue;
            LONG processed = 0;
            expectEach(
                state,
                {
                    {"GetAllocator", [&] { return input->GetAllocator(nullptr); }, E_POINTER},
                    {"NotifyAllocator", [&] { return input->NotifyAllocator(nullptr, FALSE); }, E_POINTER},
                    {"GetAllocatorRequirements", [&] { return input->GetAllocatorRequirements(nullptr); },
                     sender ? E_NOTIMPL : E_POINTER},
                    {"Receive", [&] { return input->Receive(nullptr); }, E_POINTER},
                    {"ReceiveMultiple(null)", [&] { return input->ReceiveMultiple(nullptr, 1, &processed); },
                     E_POINTER},
                    {"ReceiveMultiple(no count)", [&] { return input->ReceiveMultiple(nullptr, 0, nullptr); },
                     E_POINTER},
                    {"ReceiveCanBlock", [&] { return input->ReceiveCanBlock(); }, sender ? S_OK : S_FALSE},
                });
        }
    });
}

TEST(ComSurfaceOfTheSender, TakesConfigurationInItsRangesWhileStopped) {
    const auto filter = create(CRtpFecFilter::CreateInstance);
    const auto matrix = queryFor<IFECoverRTPConfig>(filter, IID_IFECoverRTPConfig);
    constexpr std::array<std::array<std::int32_t, 3>, 6> refused{{{21, 21, 4},
                                                                  {-1, 3, -1},
                                                                  {100, 0, 100},
                                                                  {INT32_MIN, INT32_MIN, INT32_MIN},
                                                                  {65536, 65540, 65537},
                                                                  {INT32_MAX, -4, INT32_MAX}}};
    for (const auto& [columns, rows, mode] : refused) {
        EXPECT_EQ(matrix->SetColumns(columns), E_FAIL) << columns;
        EXPECT_EQ(matrix->SetRows(rows), E_FAIL) << rows;
        EXPECT_EQ(matrix->SetMode(mode), E_FAIL) << mode;
    }
    EXPECT_EQ(filter->Pause(), S_OK) << "nothing refused was kept: mode 0";
    EXPECT_EQ(matrix->SetColumns(5), E_FAIL);
    EXPECT_EQ(matrix->SetRows(5), E_FAIL);
    EXPECT_EQ(matrix->SetMode(1), E_FAIL);
    filter->Stop();
    EXPECT_EQ(matrix->SetMode(1), S_OK);
    EXPECT_EQ(filter->Run(0), E_FAIL) << "row FEC without a matrix";
}

TEST(ComSurfaceOfTheReceiver, ChecksWhereItWrites) {
    const auto filter = create(CRtpFecIn::CreateInstance);
    const auto config = queryFor<IRtpFecInConfig>(filter, IID_IRtpFecInConfig);
    const auto totals = queryFor<IRtpFecInTotals>(filter, IID_IRtpFecInTotals);
    const auto pages = queryFor<ISpecifyPropertyPages>(filter, IID_ISpecifyPropertyPages);
    std::array<std::uint64_t, 4> n{7, 7, 7, 7};
    const auto read = [&](int without) {
        const auto out = [&](int i) { return i == without ? nullptr : &n[static_cast<std::size_t>(i)]; };
        return config->GetStatistics(out(0), out(1), out(2), out(3));
    };
    for (int without = 0; without < 4; ++without) EXPECT_EQ(read(without), E_POINTER);
    EXPECT_EQ(read(-1), E_FAIL) << "stopped";
    EXPECT_EQ(n, (std::array<std::uint64_t, 4>{7, 7, 7, 7}));
    filter->Pause();
    for (int without = 0; without < 4; ++without) EXPECT_EQ(read(without), E_POINTER);
    EXPECT_EQ(read(-1), S_OK);
    EXPECT_EQ(n, (std::array<std::uint64_t, 4>{}));
    EXPECT_EQ(totals->GetTotals(nullptr), E_POINTER);
    EXPECT_EQ(pages->GetPages(nullptr), E_POINTER);
    EXPECT_EQ(config->SetLogPerf(nullptr), S_OK);
    EXPECT_EQ(config->SetErrorSink(nullptr), S_OK);
    filter->Stop();
}

TEST(ComSurfaceOfTheAllocator, AnswersBadArgumentsAndItsSamplesToo) {
    const CComPtr<CMemAllocator> owned(new CMemAllocator("Allocator", nullptr));
    IMemAllocator* const a = owned.p;
    ALLOCATOR_PROPERTIES wanted{1, 100, 1, 0};
    ALLOCATOR_PROPERTIES granted{};
    CComPtr<IMediaSample> sample;
    expectUnknownRefused("allocator", a);
    expectEach(
        "allocator",
        {
            {"SetProperties(null)", [&] { return a->SetProperties(nullptr, &granted); }, E_POINTER},
            {"SetProperties(no answer)", [&] { return a->SetProperties(&wanted, nullptr); }, E_POINTER},
            {"GetProperties", [&] { return a->GetProperties(nullptr); }, E_POINTER},
            {"Commit without properties", [&] { return a->Commit(); }, VFW_E_SIZENOTSET},
            {"GetBuffer before", [&] { return a->GetBuffer(&sample, nullptr, nullptr, 0); },
             VFW_E_NOT_COMMITTED},
            {"SetProperties", [&] { return a->SetProperties(&wanted, &granted); }, S_OK},
            {"Commit", [&] { return a->Commit(); }, S_OK},
            {"SetProperties while committed", [&] { return a->SetProperties(&wanted, &granted); },
             VFW_E_ALREADY_COMMITTED},
            {"GetBuffer(null)", [&] { return a->GetBuffer(nullptr, nullptr, nullptr, 0); }, E_POINTER},
            {"ReleaseBuffer", [&] { return a->ReleaseBuffer(nullptr); }, E_POINTER},
            {"GetBuffer", [&] { return a->GetBuffer(&sample, nullptr, nullptr, 0); }, S_OK},
        });
    IMediaSample* const s = sample;
    const auto s2 = queryFor<IMediaSample2>(s, IID_IMediaSample2);
    REFERENCE_TIME time = 0;
    AM_MEDIA_TYPE* type = nullptr;
    expectUnknownRefused("sample", s);
    expectEach(
        "sample",
        {
            {"GetPointer", [&] { return s->GetPointer(nullptr); }, E_POINTER},
            {"GetTime(null)", [&] { return s->GetTime(nullptr, nullptr); }, E_POINTER},
            {"GetTime", [&] { return s->GetTime(&time, &time); }, VFW_E_SAMPLE_TIME_NOT_SET},
            {"SetActualDataLength(101)", [&] { return s->SetActualDataLength(101); }, VFW_E_BUFFER_OVERFLOW},
            {"GetMediaType(null)", [&] { return s->GetMediaType(nullptr); }, E_POINTER},
            {"GetMediaType", [&] { return s->GetMediaType(&type); }, S_FALSE},
            {"GetMediaTime(null)", [&] { return s->GetMediaTime(nullptr, nullptr); }, E_POINTER},
            {"GetMediaTime", [&] { return s->GetMediaTime(&time, &time); }, VFW_E_MEDIA_TIME_NOT_SET},
            {"GetProperties(null)", [&] { return s2->GetProperties(64, nullptr); }, E_POINTER},
            {"SetProperties(null)", [&] { return s2->SetProperties(64, nullptr); }, E_POINTER},
            {"Decommit while it is out", [&] { return a->Decommit(); }, S_OK},
        });
}

/// A host that dies between Pause and Stop drops everything it has, in whatever order.
TEST_P(ComSurface, FiltersDroppedWhileActiveLeaveNothing) {
    configure();
    auto pins = pinsOf(filter_);
    for (const bool run : {false, true}) {
        CComPtr<Collector> collector(new Collector(1));
        for (const CComPtr<IPin>& pin : pins)
            if (!queryFor<IMemInputPin>(pin, IID_IMemInputPin)) {
                EXPECT_EQ(pin->Connect(&collector->input(0), nullptr), S_OK);
                break;
            }
        collector->Pause();
        EXPECT_EQ(run ? filter_->Run(0) : filter_->Pause(), S_OK);
        // The collector goes first while its pin is still referenced by the filter's, and is stopped by
        // nobody.
        collector.Release();
        filter_->Stop();
        for (const CComPtr<IPin>& pin : pins) pin->Disconnect();
    }
    EXPECT_EQ(filter_->Run(0), S_OK);
}

}  // namespace

}  // namespace mvrtpfec
