#pragma once

#include "tests/shared/journal.h"
#include "tests/shared/test_filters.h"

namespace mvrtpfec {

/// A filter that writes its state changes down: "name call".
class JournalFilter final : public ForkFilter {
public:
    JournalFilter(std::string name, int outputs, Journal& journal)
        : ForkFilter(outputs), name_(std::move(name)), journal_(journal) {}

    /// Done inside each state change of that name ("pause", "run", "stop"); its result is the call's.
    void onCall(std::string call, std::function<HRESULT()> action) {
        actionCall_ = std::move(call);
        action_ = std::move(action);
    }
    /// Sends an event as a renderer does, with itself in EC_COMPLETE.
    HRESULT send(LONG code) {
        const auto self = reinterpret_cast<LONG_PTR>(static_cast<IBaseFilter*>(this));
        return NotifyEvent(code, S_OK, code == EC_COMPLETE ? self : 0);
    }
    FILTER_STATE state() const { return m_State; }
    REFERENCE_TIME started() const { return started_; }

    STDMETHODIMP Pause() override {
        const HRESULT result = note("pause");
        return FAILED(result) ? result : ForkFilter::Pause();
    }
    STDMETHODIMP Run(REFERENCE_TIME start) override {
        started_ = start;
        const HRESULT result = note("run");
        return FAILED(result) ? result : ForkFilter::Run(start);
    }
    STDMETHODIMP Stop() override {
        note("stop");
        return ForkFilter::Stop();
    }

private:
    HRESULT note(const char* call) {
        journal_.push_back(name_ + " " + call);
        return action_ && call == actionCall_ ? action_() : S_OK;
    }

    std::string name_;
    Journal& journal_;
    std::string actionCall_;
    std::function<HRESULT()> action_;
    REFERENCE_TIME started_ = 0;
};

}  // namespace mvrtpfec
