#include "framework/registration/class_keys.h"

#include <array>
#include <cstdio>

#include "platform/text/ansi_text.h"
#include "platform/wide_literal.h"

namespace mvrtpfec {

using platform::operator""_w;
using platform::RegistrationSystem;
using platform::RegistryKey;

namespace {

constexpr std::size_t longestKeyName = 260;

/// Closes a key on every way out.
class OpenKey {
public:
    explicit OpenKey(RegistrationSystem& system) : system_(system) {}
    ~OpenKey() {
        if (key_ != nullptr) system_.closeKey(key_);
    }

    OpenKey(const OpenKey&) = delete;
    OpenKey& operator=(const OpenKey&) = delete;

    DWORD create(RegistryKey parent, const std::string& name) {
        return system_.createKey(parent, name.c_str(), &key_);
    }
    DWORD open(RegistryKey parent, const std::string& name) {
        return system_.openKey(parent, name.c_str(), &key_);
    }
    DWORD set(const char* name, const std::basic_string<WCHAR>& text) {
        return system_.setValue(key_, name, platform::ansiFromWide(text).c_str());
    }

    operator RegistryKey() const { return key_; }

private:
    RegistrationSystem& system_;
    RegistryKey key_ = nullptr;
};

std::string classKey(const FactoryTemplate& row) {
    return "CLSID\\" + registryForm(*row.classId);
}

DWORD writeKeys(RegistrationSystem& system, const FactoryTemplate& row,
                const std::basic_string<WCHAR>& modulePath) {
    OpenKey key(system);
    if (const DWORD error = key.create(nullptr, classKey(row))) return error;
    if (const DWORD error = key.set(nullptr, row.name)) return error;
    OpenKey server(system);
    if (const DWORD error = server.create(key, "InprocServer32")) return error;
    if (const DWORD error = server.set(nullptr, modulePath)) return error;
    return server.set("ThreadingModel", "Both"_w);
}

/// Deletes a key, depth first. Ends when a subkey stays, which would be the first one for ever.
DWORD deleteTree(RegistrationSystem& system, RegistryKey parent, const std::string& name) {
    {
        OpenKey key(system);
        if (const DWORD error = key.open(parent, name)) return error;
        std::array<char, longestKeyName> subkey{};
        while (system.enumerateKey(key, 0, subkey) == 0 && deleteTree(system, key, subkey.data()) == 0) {
        }
    }
    return system.deleteKey(parent, name.c_str());
}

}  // namespace

std::string registryForm(REFGUID identifier) {
    std::array<char, 39> text{};
    const auto* const tail = identifier.Data4;
    std::snprintf(text.data(), text.size(), "{%08X-%04X-%04X-%02X%02X-%02X%02X%02X%02X%02X%02X}",
                  static_cast<unsigned>(identifier.Data1), unsigned{identifier.Data2},
                  unsigned{identifier.Data3}, unsigned{tail[0]}, unsigned{tail[1]}, unsigned{tail[2]},
                  unsigned{tail[3]}, unsigned{tail[4]}, unsigned{tail[5]}, unsigned{tail[6]},
                  unsigned{tail[7]});
    return text.data();
}

HRESULT writeClassKeys(RegistrationSystem& system, const FactoryTemplate& row,
                       const std::basic_string<WCHAR>& modulePath) {
    // First into a variable: the system's macro asks more than once.
    const DWORD error = writeKeys(system, row, modulePath);
    return HRESULT_FROM_WIN32(error);
}

void deleteClassKeys(RegistrationSystem& system, const FactoryTemplate& row) {
    deleteTree(system, nullptr, classKey(row));
}

}  // namespace mvrtpfec
