#include "framework/registration/class_factory.h"

#include "framework/guarded_entry.h"
#include "framework/registration/module_server.h"

namespace mvrtpfec {

HRESULT CClassFactory::QueryInterface(REFIID riid, void** object) {
    if (object == nullptr) return E_POINTER;
    *object = riid == IID_IUnknown || riid == IID_IClassFactory ? static_cast<IClassFactory*>(this) : nullptr;
    if (*object == nullptr) return E_NOINTERFACE;
    AddRef();
    return S_OK;
}

ULONG CClassFactory::AddRef() {
    return ++references_;
}

ULONG CClassFactory::Release() {
    const ULONG left = --references_;
    if (left == 0) delete this;  // NOLINT(cppcoreguidelines-owning-memory)
    return left;
}

HRESULT CClassFactory::CreateInstance(IUnknown* outer, REFIID riid, void** object) {
    if (object == nullptr) return E_POINTER;
    *object = nullptr;
    if (outer != nullptr && riid != IID_IUnknown) return E_NOINTERFACE;
    return guardedEntry([&] {
        HRESULT result = S_OK;
        CUnknown* const created = row_.create(outer, &result);
        if (created == nullptr) return FAILED(result) ? result : E_OUTOFMEMORY;
        // Dropping the only reference destroys it, whatever its destructor does with references.
        created->NonDelegatingAddRef();
        if (SUCCEEDED(result)) result = created->NonDelegatingQueryInterface(riid, object);
        created->NonDelegatingRelease();
        return result;
    });
}

HRESULT CClassFactory::LockServer(BOOL lock) {
    ModuleServer::lock(lock != FALSE);
    return S_OK;
}

}  // namespace mvrtpfec
