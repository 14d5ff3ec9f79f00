#pragma once

#include <cstring>
#include <functional>
#include <optional>
#include <span>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "platform/component/com_ptr.h"
#include "platform/component/component_runtime.h"
#include "platform/module/filter_mapper.h"

namespace mvrtpfec {

using platform::CComPtr;

/// A pin as the system's list of filters has it, which keeps no names of pins.
struct ListedPin {
    DWORD flags;  ///< REG_PINFLAG_...
    std::vector<std::pair<GUID, GUID>> mediaTypes;

    bool operator==(const ListedPin&) const = default;
};
using ListedPins = std::vector<ListedPin>;

struct ListedFilter {
    std::wstring name;
    DWORD merit;
    ListedPins pins;
};

inline CComPtr<IFilterMapper2> filterMapper() {
    CComPtr<IFilterMapper2> mapper;
    EXPECT_EQ(
        platform::createComponent(CLSID_FilterMapper2, IID_IFilterMapper2, reinterpret_cast<void**>(&mapper)),
        S_OK);
    return mapper;
}

class Variant {
public:
    Variant() noexcept { VariantInit(&value); }
    ~Variant() { VariantClear(&value); }
    Variant(const Variant&) = delete;
    Variant& operator=(const Variant&) = delete;

    VARIANT value;
};

inline std::wstring textOf(IPropertyBag* properties, const wchar_t* name) {
    Variant text;
    const HRESULT result = properties->Read(name, &text.value, nullptr);
    return result == S_OK && text.value.vt == VT_BSTR ? text.value.bstrVal : L"";
}

/// The mapper's form of a filter's registration: 32-bit words, and identifiers at offsets from the start.
/// Version, merit, number of pins and a zero come first. A pin is a mark, its flags, the numbers of its
/// instances, media types and mediums, and whether it has a category; a type is a mark, a zero and the
/// offsets of its two identifiers.
class FilterData {
public:
    explicit FilterData(std::span<const BYTE> bytes) : bytes_(bytes) {}

    DWORD next() {
        DWORD word = 0;
        copy(at_, &word, sizeof word);
        at_ += sizeof word;
        return word;
    }
    void skip(std::size_t words) { at_ += words * sizeof(DWORD); }
    GUID identifierAt(std::size_t offset) const {
        GUID identifier{};
        copy(offset, &identifier, sizeof identifier);
        return identifier;
    }

private:
    void copy(std::size_t from, void* to, std::size_t size) const {
        ASSERT_LE(from + size, bytes_.size());
        std::memcpy(to, &bytes_[from], size);
    }

    std::span<const BYTE> bytes_;
    std::size_t at_ = 0;
};

inline ListedPin nextPin(FilterData& data) {
    data.skip(1);
    ListedPin pin{data.next(), {}};
    data.skip(1);
    const DWORD types = data.next();
    EXPECT_EQ(data.next(), 0U) << "mediums";
    EXPECT_EQ(data.next(), 0U) << "category";
    for (DWORD i = 0; i < types && i < 10; ++i) {
        data.skip(2);
        const GUID major = data.identifierAt(data.next());
        pin.mediaTypes.emplace_back(major, data.identifierAt(data.next()));
    }
    return pin;
}

inline void readRecord(IPropertyBag* properties, ListedFilter& filter) {
    Variant stored;
    ASSERT_EQ(properties->Read(L"FilterData", &stored.value, nullptr), S_OK);
    void* bytes = nullptr;
    ASSERT_EQ(SafeArrayAccessData(stored.value.parray, &bytes), S_OK);
    FilterData data({static_cast<const BYTE*>(bytes), stored.value.parray->rgsabound[0].cElements});
    EXPECT_EQ(data.next(), 2U) << "version";
    filter.merit = data.next();
    const DWORD pins = data.next();
    data.skip(1);
    for (DWORD i = 0; i < pins && i < 10; ++i) filter.pins.push_back(nextPin(data));
    SafeArrayUnaccessData(stored.value.parray);
}

/// Calls `visit` for each filter until it says false.
inline void forEachListed(DWORD merit, const std::function<bool(IPropertyBag*)>& visit) {
    const auto mapper = filterMapper();
    CComPtr<IEnumMoniker> filters;
    const HRESULT result = mapper->EnumMatchingFilters(&filters, 0, TRUE, merit, FALSE, 0, nullptr, nullptr,
                                                       nullptr, FALSE, FALSE, 0, nullptr, nullptr, nullptr);
    ASSERT_TRUE(SUCCEEDED(result));
    for (CComPtr<IMoniker> moniker; filters && filters->Next(1, &moniker, nullptr) == S_OK;
         moniker.Release()) {
        CComPtr<IPropertyBag> properties;
        ASSERT_EQ(
            moniker->BindToStorage(nullptr, nullptr, IID_IPropertyBag, reinterpret_cast<void**>(&properties)),
            S_OK);
        if (!visit(properties)) return;
    }
}

/// How many filters the system lists with this merit or more.
inline std::size_t countListed(DWORD merit) {
    std::size_t count = 0;
    forEachListed(merit, [&](IPropertyBag*) { return ++count, true; });
    return count;
}

/// One of them.
inline std::optional<ListedFilter> findListed(REFCLSID classId, DWORD merit) {
    std::optional<ListedFilter> found;
    forEachListed(merit, [&](IPropertyBag* properties) {
        CLSID listed{};
        CLSIDFromString(textOf(properties, L"CLSID").c_str(), &listed);
        if (listed != classId) return true;
        found.emplace(textOf(properties, L"FriendlyName"), 0U, ListedPins{});
        readRecord(properties, *found);
        return false;
    });
    return found;
}

}  // namespace mvrtpfec
