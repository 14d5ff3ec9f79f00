#pragma once

#include <atomic>

#include "framework/registration/factory_template.h"

namespace mvrtpfec {

/// Makes objects of one class of the module's. Its reference count starts at 0. It doesn't keep the module
/// loaded; LockServer does.
class CClassFactory final : public IClassFactory {
public:
    /// The row must outlive the factory.
    explicit CClassFactory(const FactoryTemplate& row) noexcept : row_(row) {}
    virtual ~CClassFactory() = default;

    CClassFactory(const CClassFactory&) = delete;
    CClassFactory& operator=(const CClassFactory&) = delete;

    STDMETHODIMP QueryInterface(REFIID riid, void** object) override;
    STDMETHODIMP_(ULONG) AddRef() override;
    STDMETHODIMP_(ULONG) Release() override;

    /// E_POINTER without an `object`; E_NOINTERFACE when the class hasn't got the interface, or for any but
    /// IUnknown with an `outer`; else what creation fails with.
    STDMETHODIMP CreateInstance(IUnknown* outer, REFIID riid, void** object) override;
    STDMETHODIMP LockServer(BOOL lock) override;

private:
    const FactoryTemplate& row_;
    std::atomic<ULONG> references_{0};
};

}  // namespace mvrtpfec
