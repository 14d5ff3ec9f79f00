#pragma once

#include <atomic>

#include "platform/component/component.h"

namespace platform {

/// The reference count of an object with these interfaces. It starts with the creator's reference; the last
/// release destroys the object.
template <class... Interfaces>
class Counted : public Interfaces... {
public:
    Counted() = default;
    Counted(const Counted&) = delete;
    Counted& operator=(const Counted&) = delete;

    STDMETHODIMP_(ULONG) AddRef() override { return ++references_; }

    /// What the destructor calls may take and release references once more.
    STDMETHODIMP_(ULONG) Release() override {
        const ULONG left = --references_;
        if (left > 0) return left;
        references_ = 1;
        delete this;  // NOLINT(cppcoreguidelines-owning-memory)
        return 0;
    }

protected:
    virtual ~Counted() = default;

private:
    std::atomic<ULONG> references_{1};
};

}  // namespace platform
