#pragma once

#include <atomic>

#include "framework/base/com_ptr.h"

namespace mvrtpfec {

/// An object's own IUnknown, beside the one that delegates to an aggregating object.
struct INonDelegatingUnknown {
    virtual HRESULT STDMETHODCALLTYPE NonDelegatingQueryInterface(REFIID riid, void** object) = 0;
    virtual ULONG STDMETHODCALLTYPE NonDelegatingAddRef() = 0;
    virtual ULONG STDMETHODCALLTYPE NonDelegatingRelease() = 0;

protected:
    ~INonDelegatingUnknown() = default;
};

/// Counts the framework objects alive (filters, pins, allocators, ...), by which the module knows whether it
/// may be unloaded.
class CBaseObject {
public:
    explicit CBaseObject(const char* name) noexcept : name_(name) { ++objectsActive_; }
    CBaseObject(const CBaseObject& other) noexcept : CBaseObject(other.name_) {}
    CBaseObject& operator=(const CBaseObject&) noexcept { return *this; }
    ~CBaseObject() { --objectsActive_; }

    static LONG ObjectsActive() noexcept { return objectsActive_; }

    /// For debuggers; may be null.
    const char* ObjectName() const noexcept { return name_; }

private:
    static inline std::atomic<LONG> objectsActive_{0};

    const char* name_;
};

/// A reference-counted component object that can be aggregated: interfaces delegate to the outer object, or
/// to the object's own unknown when there is none. Its count starts at 0; the creator takes the first
/// reference. The last release destroys it.
class CUnknown : public INonDelegatingUnknown, public CBaseObject {
public:
    CUnknown(const char* name, IUnknown* outer) noexcept;
    virtual ~CUnknown() = default;

    CUnknown(const CUnknown&) = delete;
    CUnknown& operator=(const CUnknown&) = delete;

    IUnknown* GetOwner() const noexcept { return outer_; }

    /// IUnknown alone; derived classes add theirs. E_POINTER without an `object`; E_NOINTERFACE sets it to
    /// null.
    STDMETHODIMP NonDelegatingQueryInterface(REFIID riid, void** object) override;
    STDMETHODIMP_(ULONG) NonDelegatingAddRef() override;
    STDMETHODIMP_(ULONG) NonDelegatingRelease() override;

protected:
    /// Destroys the object, whose count has reached 0.
    virtual void OnFinalRelease() noexcept;

private:
    /// The object's own unknown in the shape that clients know.
    class InnerUnknown final : public IUnknown {
    public:
        explicit InnerUnknown(INonDelegatingUnknown& object) noexcept : object_(object) {}

        STDMETHODIMP QueryInterface(REFIID riid, void** object) override {
            return object_.NonDelegatingQueryInterface(riid, object);
        }
        STDMETHODIMP_(ULONG) AddRef() override { return object_.NonDelegatingAddRef(); }
        STDMETHODIMP_(ULONG) Release() override { return object_.NonDelegatingRelease(); }

    private:
        INonDelegatingUnknown& object_;
    };

    InnerUnknown inner_{*this};
    IUnknown* outer_;
    std::atomic<LONG> references_{0};
};

/// Hands out one interface of an object, with a reference.
HRESULT GetInterface(IUnknown* object, void** result) noexcept;

}  // namespace mvrtpfec

/// Each class that adds an interface to a CUnknown says this once; a function can't override for it.
#define DECLARE_IUNKNOWN                                               \
    STDMETHODIMP QueryInterface(REFIID riid, void** object) override { \
        return GetOwner()->QueryInterface(riid, object);               \
    }                                                                  \
    STDMETHODIMP_(ULONG) AddRef() override {                           \
        return GetOwner()->AddRef();                                   \
    }                                                                  \
    STDMETHODIMP_(ULONG) Release() override {                          \
        return GetOwner()->Release();                                  \
    }
