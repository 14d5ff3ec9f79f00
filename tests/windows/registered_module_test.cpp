#include <array>
#include <filesystem>
#include <string>

#include <gtest/gtest.h>

#include "mvrtpfec/rtp_fec_filter.h"
#include "mvrtpfec/rtp_fec_in.h"
#include "mvrtpfec/rtp_media_type.h"
#include "platform/component/com_ptr.h"
#include "platform/component/component_runtime.h"
#include "platform/process/process.h"
#include "tests/windows/filter_list.h"

// After `regsvr32 MVRtpFec.ax` the suite RegisteredModule holds, after `regsvr32 /u` UnregisteredModule.

namespace mvrtpfec {
namespace {

namespace fs = std::filesystem;

struct Filter {
    CLSID classId;
    std::wstring name;
    ListedPins pins;
};

constexpr DWORD input = 0;
constexpr DWORD inputOfMany = REG_PINFLAG_B_MANY;
constexpr DWORD output = REG_PINFLAG_B_OUTPUT;

const std::array<Filter, 2> filters{{
    {CLSID_RtpFecFilter,
     L"Morvane FEC over RTP Filter",
     {{inputOfMany, {{MEDIATYPE_Rtp, MEDIASUBTYPE_Rtp}}}, {output, {{MEDIATYPE_Rtp, MEDIASUBTYPE_Rtp}}}}},
    {CLSID_RtpFecIn,
     L"Morvane Rtp Fec In",
     {{input, {{MEDIATYPE_Stream, MEDIASUBTYPE_MPEG2_TRANSPORT}}},
      {output, {{MEDIATYPE_Stream, MEDIASUBTYPE_MPEG2_TRANSPORT}}}}},
}};

std::wstring classKey(const CLSID& classId) {
    std::array<wchar_t, 40> text{};
    EXPECT_EQ(StringFromGUID2(classId, text.data(), static_cast<int>(text.size())), 39);
    return std::wstring(L"CLSID\\") + text.data();
}

/// A text below HKEY_CLASSES_ROOT; "(none)" when there is none.
std::wstring classText(const std::wstring& key, const wchar_t* name) {
    std::array<wchar_t, 300> text{};
    DWORD size = sizeof text;
    const auto error =
        RegGetValueW(HKEY_CLASSES_ROOT, key.c_str(), name, RRF_RT_REG_SZ, nullptr, text.data(), &size);
    return error == ERROR_SUCCESS ? text.data() : L"(none)";
}

bool keyExists(const std::wstring& key) {
    HKEY opened = nullptr;
    if (RegOpenKeyExW(HKEY_CLASSES_ROOT, key.c_str(), 0, KEY_READ, &opened) != ERROR_SUCCESS) return false;
    RegCloseKey(opened);
    return true;
}

fs::path moduleFile() {
    return platform::programPath().replace_filename("MVRtpFec.ax");
}

HRESULT create(const CLSID& classId, platform::CComPtr<IBaseFilter>& filter) {
    return platform::createComponent(classId, IID_IBaseFilter, reinterpret_cast<void**>(&filter));
}

class WithComponents : public testing::Test {
    const platform::ComponentRuntime runtime_;
};
using RegisteredModule = WithComponents;
using UnregisteredModule = WithComponents;

TEST_F(RegisteredModule, HasItsClassKeys) {
    for (const Filter& filter : filters) {
        const std::wstring key = classKey(filter.classId);
        EXPECT_EQ(classText(key, nullptr), filter.name);
        EXPECT_TRUE(fs::equivalent(classText(key + L"\\InprocServer32", nullptr), moduleFile()));
        EXPECT_EQ(classText(key + L"\\InprocServer32", L"ThreadingModel"), L"Both");
    }
}

TEST_F(RegisteredModule, ListsItsFiltersForThoseWhoAskForThemAlone) {
    for (const Filter& filter : filters) {
        const auto listed = findListed(filter.classId, MERIT_DO_NOT_USE);
        ASSERT_TRUE(listed.has_value());
        EXPECT_EQ(listed->name, filter.name);
        EXPECT_EQ(listed->merit, MERIT_DO_NOT_USE);
        EXPECT_EQ(listed->pins, filter.pins);
        EXPECT_FALSE(findListed(filter.classId, MERIT_DO_NOT_USE + 1)) << "graph builders would use it";
    }
}

TEST_F(RegisteredModule, IsLoadedToCreateItsFilters) {
    EXPECT_EQ(GetModuleHandleW(L"MVRtpFec.ax"), nullptr);
    for (const Filter& filter : filters) {
        platform::CComPtr<IBaseFilter> created;
        ASSERT_EQ(create(filter.classId, created), S_OK);
        CLSID classId{};
        EXPECT_EQ(created->GetClassID(&classId), S_OK);
        EXPECT_EQ(classId, filter.classId);
        EXPECT_NE(GetModuleHandleW(L"MVRtpFec.ax"), nullptr);
    }
    CoFreeUnusedLibrariesEx(0, 0);
    CoFreeUnusedLibrariesEx(0, 0);
    EXPECT_EQ(GetModuleHandleW(L"MVRtpFec.ax"), nullptr) << "with nothing of it in use";
}

TEST_F(UnregisteredModule, LeavesNoTrace) {
    for (const Filter& filter : filters) {
        EXPECT_FALSE(keyExists(classKey(filter.classId)));
        EXPECT_FALSE(findListed(filter.classId, 0));
        platform::CComPtr<IBaseFilter> created;
        EXPECT_EQ(create(filter.classId, created), REGDB_E_CLASSNOTREG);
    }
    EXPECT_GT(countListed(0), 0U) << "the list itself is there";
}

}  // namespace
}  // namespace mvrtpfec
