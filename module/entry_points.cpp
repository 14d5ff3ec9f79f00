#include "framework/registration/module_server.h"
#include "platform/module/module_entry.h"

using mvrtpfec::ModuleServer;

void platform::moduleLoaded(ModuleHandle module) noexcept {
    ModuleServer::attach(module);
}

void platform::moduleUnloading() noexcept {
    ModuleServer::detach();
}

// The module's exports. Their declarations are the system's on Windows.

STDAPI DllGetClassObject(REFCLSID classId, REFIID riid, LPVOID* object) {
    return ModuleServer::getClassObject(classId, riid, object);
}

STDAPI DllCanUnloadNow() {
    return ModuleServer::canUnloadNow();
}

STDAPI DllRegisterServer() {
    return ModuleServer::registerServer();
}

STDAPI DllUnregisterServer() {
    return ModuleServer::unregisterServer();
}
