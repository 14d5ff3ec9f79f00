#pragma once

#include <cstdint>
#include <cstring>

#include "platform/module/memory_registration.h"
#include "tests/shared/journal.h"

namespace trial {

constexpr HRESULT result(std::uint32_t bits) {
    return static_cast<HRESULT>(bits);
}

constexpr auto modulePath = "C:\\Filters\\MVRtpFec.ax";
constexpr DWORD pathError = 126;
constexpr DWORD registryError = 5;
constexpr HRESULT changedMode = result(0x80010106);
constexpr HRESULT mapperError = result(0x8004ABCD);

/// Journals what a registration asks of the system and fails the call that it is told to.
class TrialRegistration final : public platform::MemoryRegistration {
public:
    using RegistryKey = platform::RegistryKey;

    mvrtpfec::Journal journal;
    int failAt = 0;          ///< number of the failing call, from 1
    std::string failAlways;  ///< how the entries of calls begin that always fail
    std::string failed;      ///< the latest call that did
    int openKeys = 0;
    int initialised = 0;
    bool mapperLeaked = false;

    DWORD moduleFileName(platform::ModuleHandle, std::span<char> path) override {
        if (fails("path in " + std::to_string(path.size()))) return 0;
        std::strcpy(path.data(), modulePath);
        return static_cast<DWORD>(std::strlen(modulePath));
    }
    DWORD lastError() override { return pathError; }

    DWORD createKey(RegistryKey parent, const char* name, RegistryKey* key) override {
        if (fails(std::string("create ") + name)) return registryError;
        return opened(MemoryRegistration::createKey(parent, name, key));
    }
    DWORD openKey(RegistryKey parent, const char* name, RegistryKey* key) override {
        if (fails(std::string("open ") + name)) return registryError;
        return opened(MemoryRegistration::openKey(parent, name, key));
    }
    DWORD setValue(RegistryKey key, const char* name, const char* text) override {
        if (fails(std::string("set ") + (name == nullptr ? "" : name) + "=" + text)) return registryError;
        return MemoryRegistration::setValue(key, name, text);
    }
    DWORD enumerateKey(RegistryKey key, DWORD index, std::span<char> name) override {
        if (fails("enumerate " + std::to_string(index))) return registryError;
        return MemoryRegistration::enumerateKey(key, index, name);
    }
    DWORD deleteKey(RegistryKey parent, const char* name) override {
        if (fails(std::string("delete ") + name)) return registryError;
        return MemoryRegistration::deleteKey(parent, name);
    }
    void closeKey(RegistryKey key) override {
        journal.emplace_back("close");
        --openKeys;
        MemoryRegistration::closeKey(key);
    }

    HRESULT initialize() override {
        if (fails("initialize")) return changedMode;
        ++initialised;
        return S_FALSE;
    }
    void uninitialize() override {
        journal.emplace_back("uninitialize");
        --initialised;
    }
    /// By now the mapper must have been released: the reference held here is its last one.
    void freeUnusedLibraries() override {
        journal.emplace_back("free libraries");
        if (mapper_ != nullptr) mapperLeaked = mapper_->Release() != 0;
        mapper_ = nullptr;
    }

    HRESULT createInstance(REFCLSID classId, REFIID riid, void** object) override {
        const bool newer = classId == CLSID_FilterMapper2 && riid == IID_IFilterMapper2;
        if (fails(newer ? "make mapper 2" : "make mapper")) return REGDB_E_CLASSNOTREG;
        const HRESULT made = MemoryRegistration::createInstance(classId, riid, object);
        if (FAILED(made)) return made;
        mapper_ = static_cast<IUnknown*>(*object);
        mapper_->AddRef();
        return made;
    }

    int callCount() const { return calls_; }
    /// Whether all went back to the system that it gave.
    bool balanced() const { return openKeys == 0 && initialised == 0 && mapper_ == nullptr && !mapperLeaked; }

private:
    HRESULT mapperResult(std::string_view call) override {
        return fails(std::string(call)) ? mapperError : S_OK;
    }

    bool fails(const std::string& entry) {
        journal.push_back(entry);
        const bool fail = ++calls_ == failAt || (!failAlways.empty() && entry.starts_with(failAlways));
        if (fail) failed = entry;
        return fail;
    }

    DWORD opened(DWORD error) {
        if (error == 0) ++openKeys;
        return error;
    }

    int calls_ = 0;
    IUnknown* mapper_ = nullptr;
};

}  // namespace trial
