#include "platform/module/memory_registration.h"

#include <algorithm>
#include <cstring>
#include <utility>

#include "platform/module/memory_filter_mapper.h"
#include "platform/threads/sync.h"

namespace platform {

namespace {

// Of the system's error codes those that a registry gives.
constexpr DWORD success = 0;
constexpr DWORD fileNotFound = 2;
constexpr DWORD accessDenied = 5;
constexpr DWORD moreData = 234;
constexpr DWORD noMoreItems = 259;

/// The words of a key's path.
std::vector<std::string> split(std::string_view path) {
    std::vector<std::string> words;
    for (std::size_t end = 0; end != std::string_view::npos; path.remove_prefix(end + 1)) {
        end = path.find('\\');
        words.emplace_back(path.substr(0, end));
        if (end == std::string_view::npos) break;
    }
    return words;
}

MemoryRegistration::Key* below(MemoryRegistration::Key* key, const std::string& name) {
    const auto found = key->keys.find(name);
    return found == key->keys.end() ? nullptr : found->second.get();
}

}  // namespace

MemoryRegistration::MemoryRegistration() = default;
MemoryRegistration::~MemoryRegistration() = default;

MemoryRegistration::Key& MemoryRegistration::keyOf(RegistryKey key) {
    return key == nullptr ? root_ : *static_cast<Key*>(key);
}

DWORD MemoryRegistration::moduleFileName(ModuleHandle module, std::span<char> path) {
    return platform::moduleFileName(module, path);
}

DWORD MemoryRegistration::lastError() {
    return GetLastError();
}

DWORD MemoryRegistration::createKey(RegistryKey parent, const char* name, RegistryKey* key) {
    Key* at = &keyOf(parent);
    for (const std::string& word : split(name)) {
        std::unique_ptr<Key>& next = at->keys[word];
        if (!next) next = std::make_unique<Key>();
        at = next.get();
    }
    *key = at;
    return success;
}

DWORD MemoryRegistration::openKey(RegistryKey parent, const char* name, RegistryKey* key) {
    Key* at = &keyOf(parent);
    for (const std::string& word : split(name)) {
        at = below(at, word);
        if (at == nullptr) return fileNotFound;
    }
    *key = at;
    return success;
}

DWORD MemoryRegistration::setValue(RegistryKey key, const char* name, const char* text) {
    keyOf(key).values[name == nullptr ? "" : name] = text;
    return success;
}

DWORD MemoryRegistration::enumerateKey(RegistryKey key, DWORD index, std::span<char> name) {
    const auto& keys = keyOf(key).keys;
    if (index >= keys.size()) return noMoreItems;
    const std::string& found = std::next(keys.begin(), static_cast<std::ptrdiff_t>(index))->first;
    if (found.size() >= name.size()) return moreData;
    std::memcpy(name.data(), found.c_str(), found.size() + 1);
    return success;
}

DWORD MemoryRegistration::deleteKey(RegistryKey parent, const char* name) {
    std::vector<std::string> words = split(name);
    Key* holder = &keyOf(parent);
    for (std::size_t i = 0; i + 1 < words.size() && holder != nullptr; ++i) holder = below(holder, words[i]);
    const Key* const key = holder == nullptr ? nullptr : below(holder, words.back());
    if (key == nullptr) return fileNotFound;
    if (!key->keys.empty()) return accessDenied;
    holder->keys.erase(words.back());
    return success;
}

void MemoryRegistration::closeKey(RegistryKey) {}

HRESULT MemoryRegistration::createInstance(REFCLSID classId, REFIID riid, void** object) {
    return createMemoryFilterMapper(*this, classId, riid, object);
}

HRESULT MemoryRegistration::mapperResult(std::string_view) {
    return S_OK;
}

MemoryRegistration::Filter* MemoryRegistration::find(REFCLSID classId) {
    const auto found = std::find_if(filters_.begin(), filters_.end(),
                                    [&](const Filter& filter) { return filter.classId == classId; });
    return found == filters_.end() ? nullptr : &*found;
}

HRESULT MemoryRegistration::remove(REFCLSID classId) {
    const auto isIt = [&](const Filter& filter) { return filter.classId == classId; };
    return std::erase_if(filters_, isIt) == 0 ? HRESULT_FROM_WIN32(fileNotFound) : S_OK;
}

}  // namespace platform
