#pragma once

#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "platform/component/com_ptr.h"
#include "platform/module/filter_mapper.h"
#include "platform/module/registration_system.h"

namespace platform {

/// A registry and a list of filters in memory, which go with the object. Lists live filters by class; nothing
/// enumerates them but filters(). One thread.
class MemoryRegistration : public RegistrationSystem {
public:
    struct Key {
        std::map<std::string, std::string> values;  ///< the default value's name is empty
        std::map<std::string, std::unique_ptr<Key>> keys;
    };

    struct Pin {
        std::basic_string<WCHAR> name;
        bool rendered = false;
        bool output = false;
        bool zero = false;
        bool many = false;
        CLSID connectsToFilter{};
        std::basic_string<WCHAR> connectsToPin;
        std::vector<std::pair<CLSID, CLSID>> types;
    };

    struct Filter {
        CLSID classId{};
        std::basic_string<WCHAR> name;
        DWORD merit = 0;
        std::vector<Pin> pins;
    };

    MemoryRegistration();
    ~MemoryRegistration() override;

    const Key& root() const { return root_; }
    const std::vector<Filter>& filters() const { return filters_; }

    DWORD moduleFileName(ModuleHandle module, std::span<char> path) override;
    DWORD lastError() override;
    DWORD createKey(RegistryKey parent, const char* name, RegistryKey* key) override;
    DWORD openKey(RegistryKey parent, const char* name, RegistryKey* key) override;
    DWORD setValue(RegistryKey key, const char* name, const char* text) override;
    DWORD enumerateKey(RegistryKey key, DWORD index, std::span<char> name) override;
    DWORD deleteKey(RegistryKey parent, const char* name) override;
    void closeKey(RegistryKey key) override;
    HRESULT initialize() override { return S_OK; }
    void uninitialize() override {}
    void freeUnusedLibraries() override {}
    HRESULT createInstance(REFCLSID classId, REFIID riid, void** object) override;

protected:
    /// Asked before every call of a mapper, by the call's name: a failure is that call's result.
    virtual HRESULT mapperResult(std::string_view call);

private:
    friend class MemoryFilterMapper;

    Key& keyOf(RegistryKey key);
    /// Null when there is none.
    Filter* find(REFCLSID classId);
    HRESULT remove(REFCLSID classId);

    Key root_;
    std::vector<Filter> filters_;
};

}  // namespace platform
