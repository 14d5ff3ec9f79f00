#include "platform/module/loaded_module.h"

#include "platform/module/shared_library.h"

namespace platform {

struct LoadedModule::Exports {
    explicit Exports(const std::filesystem::path& file) : library(openLibrary(file)) {
        find("DllGetClassObject", getClassObject);
        find("DllCanUnloadNow", canUnloadNow);
        find("DllRegisterServer", registerServer);
        find("DllUnregisterServer", unregisterServer);
    }

    template <class Function>
    void find(const char* name, Function& function) {
        function = reinterpret_cast<Function>(findFunction(library, name));
    }

    SharedLibrary library;
    HRESULT(STDAPICALLTYPE* getClassObject)(REFCLSID, REFIID, void**) = nullptr;
    HRESULT(STDAPICALLTYPE* canUnloadNow)() = nullptr;
    HRESULT(STDAPICALLTYPE* registerServer)() = nullptr;
    HRESULT(STDAPICALLTYPE* unregisterServer)() = nullptr;
};

LoadedModule::LoadedModule(const std::filesystem::path& file)
    : exports_(std::make_unique<const Exports>(file)) {}

LoadedModule::~LoadedModule() = default;

HRESULT LoadedModule::getClassObject(REFCLSID classId, REFIID riid, void** object) const noexcept {
    return exports_->getClassObject(classId, riid, object);
}

HRESULT LoadedModule::canUnloadNow() const noexcept {
    return exports_->canUnloadNow();
}

HRESULT LoadedModule::registerServer() const noexcept {
    return exports_->registerServer();
}

HRESULT LoadedModule::unregisterServer() const noexcept {
    return exports_->unregisterServer();
}

}  // namespace platform
