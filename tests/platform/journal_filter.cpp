#include "tests/platform/journal_filter.h"

#include "platform/graph/media_graph.h"
#include "platform/wide_literal.h"

namespace mvrtpfec {

namespace {

using platform::operator""_w;

HRESULT offer(int position, CMediaType* type) {
    if (position != 0) return VFW_S_NO_MORE_ITEMS;
    *type = CMediaType(MEDIATYPE_Stream, MEDIASUBTYPE_MPEG2_TRANSPORT);
    return S_OK;
}

class Input final : public CBaseInputPin {
public:
    Input(CBaseFilter* filter, CCritSec* lock, HRESULT* result)
        : CBaseInputPin(nullptr, filter, lock, result, "In"_w) {}
    HRESULT CheckMediaType(const CMediaType*) override { return S_OK; }
    HRESULT GetMediaType(int position, CMediaType* type) override { return offer(position, type); }
};

class Output final : public CBaseOutputPin {
public:
    Output(CBaseFilter* filter, CCritSec* lock, HRESULT* result)
        : CBaseOutputPin(nullptr, filter, lock, result, "Out"_w) {}
    HRESULT CheckMediaType(const CMediaType*) override { return S_OK; }
    HRESULT GetMediaType(int position, CMediaType* type) override { return offer(position, type); }
    HRESULT DecideBufferSize(IMemAllocator* allocator, ALLOCATOR_PROPERTIES* request) override {
        *request = {1, 16, 1, 0};
        ALLOCATOR_PROPERTIES granted{};
        return allocator->SetProperties(request, &granted);
    }
};

}  // namespace

JournalFilter::JournalFilter(std::string name, std::size_t outputs, Journal& journal)
    : CBaseFilter(nullptr, nullptr, &lock_, GUID_NULL), name_(std::move(name)), journal_(journal) {
    HRESULT result = S_OK;
    pins_.push_back(std::make_unique<Input>(this, &lock_, &result));
    for (std::size_t i = 0; i < outputs; ++i)
        pins_.push_back(std::make_unique<Output>(this, &lock_, &result));
}

JournalFilter::~JournalFilter() = default;

void JournalFilter::onCall(std::string call, std::function<HRESULT()> action) {
    actionCall_ = std::move(call);
    action_ = std::move(action);
}

HRESULT JournalFilter::send(LONG code) {
    const auto self = reinterpret_cast<LONG_PTR>(static_cast<IBaseFilter*>(this));
    return NotifyEvent(code, S_OK, code == EC_COMPLETE ? self : 0);
}

CBasePin* JournalFilter::GetPin(int n) {
    return n >= 0 && n < GetPinCount() ? pins_[static_cast<std::size_t>(n)].get() : nullptr;
}

HRESULT JournalFilter::Pause() {
    const HRESULT result = note("pause");
    return FAILED(result) ? result : CBaseFilter::Pause();
}

HRESULT JournalFilter::Run(REFERENCE_TIME start) {
    started_ = start;
    const HRESULT result = note("run");
    return FAILED(result) ? result : CBaseFilter::Run(start);
}

HRESULT JournalFilter::Stop() {
    note("stop");
    return CBaseFilter::Stop();
}

HRESULT JournalFilter::note(const char* call) {
    journal_.push_back(name_ + " " + call);
    return action_ && call == actionCall_ ? action_() : S_OK;
}

}  // namespace mvrtpfec
