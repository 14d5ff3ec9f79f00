#pragma once

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "framework/base/base_filter.h"
#include "framework/base/base_input_pin.h"
#include "framework/base/base_output_pin.h"

namespace mvrtpfec {

/// What the filters of a graph were told, in order: "name call".
using Journal = std::vector<std::string>;

/// A filter with one input and any number of outputs that writes its state changes down.
class JournalFilter final : public CBaseFilter {
public:
    JournalFilter(std::string name, std::size_t outputs, Journal& journal);
    ~JournalFilter() override;

    CBasePin* input() { return pins_.front().get(); }
    CBasePin* output(std::size_t n) { return pins_[n + 1].get(); }

    /// Done inside each state change of that name ("pause", "run", "stop"); its result is the call's.
    void onCall(std::string call, std::function<HRESULT()> action);
    /// Sends an event as a renderer does, with itself in EC_COMPLETE.
    HRESULT send(LONG code);
    FILTER_STATE state() const { return m_State; }
    REFERENCE_TIME started() const { return started_; }

    int GetPinCount() override { return static_cast<int>(pins_.size()); }
    CBasePin* GetPin(int n) override;
    STDMETHODIMP Pause() override;
    STDMETHODIMP Run(REFERENCE_TIME start) override;
    STDMETHODIMP Stop() override;

private:
    HRESULT note(const char* call);

    CCritSec lock_;
    std::string name_;
    Journal& journal_;
    std::vector<std::unique_ptr<CBasePin>> pins_;
    std::string actionCall_;
    std::function<HRESULT()> action_;
    REFERENCE_TIME started_ = 0;
};

}  // namespace mvrtpfec
