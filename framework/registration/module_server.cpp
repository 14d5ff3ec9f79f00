#include "framework/registration/module_server.h"

#include <algorithm>
#include <atomic>
#include <new>

#include "framework/guarded_entry.h"
#include "framework/registration/class_factory.h"
#include "framework/registration/registration.h"

namespace mvrtpfec {

namespace {

constinit platform::ModuleHandle moduleInstance = nullptr;
constinit DWORD platformIdentifier = 1;
constinit std::atomic<LONG> serverLocks{0};

void callRoutines(bool loading) noexcept {
    for (const FactoryTemplate& row : factoryTemplates())
        if (row.initialise != nullptr) row.initialise(loading, row.classId);
}

}  // namespace

void ModuleServer::attach(platform::ModuleHandle instance) noexcept {
    platform::disableThreadNotifications(instance);
    moduleInstance = instance;
    DWORD identifier = 0;
    if (platform::systemPlatform(identifier)) platformIdentifier = identifier;
    callRoutines(true);
}

void ModuleServer::detach() noexcept {
    callRoutines(false);
}

HRESULT ModuleServer::getClassObject(REFCLSID classId, REFIID riid, void** object) noexcept {
    if (object != nullptr) *object = nullptr;
    if (riid != IID_IUnknown && riid != IID_IClassFactory) return E_NOINTERFACE;
    const auto rows = factoryTemplates();
    const auto row = std::find_if(rows.begin(), rows.end(),
                                  [&](const FactoryTemplate& each) { return *each.classId == classId; });
    if (row == rows.end()) return CLASS_E_CLASSNOTAVAILABLE;
    if (object == nullptr) return E_POINTER;
    auto* const factory = new (std::nothrow) CClassFactory(*row);  // NOLINT(cppcoreguidelines-owning-memory)
    *object = static_cast<IClassFactory*>(factory);
    if (factory == nullptr) return E_OUTOFMEMORY;
    factory->AddRef();
    return S_OK;
}

HRESULT ModuleServer::canUnloadNow() noexcept {
    return serverLocks > 0 || CBaseObject::ObjectsActive() != 0 ? S_FALSE : S_OK;
}

HRESULT ModuleServer::registerServer() noexcept {
    return guardedEntry(
        [] { return enterModule(platform::registrationSystem(), moduleInstance, factoryTemplates()); });
}

HRESULT ModuleServer::unregisterServer() noexcept {
    return guardedEntry(
        [] { return removeModule(platform::registrationSystem(), moduleInstance, factoryTemplates()); });
}

void ModuleServer::lock(bool on) noexcept {
    serverLocks += on ? 1 : -1;
}

platform::ModuleHandle ModuleServer::instance() noexcept {
    return moduleInstance;
}

DWORD ModuleServer::systemPlatform() noexcept {
    return platformIdentifier;
}

}  // namespace mvrtpfec
