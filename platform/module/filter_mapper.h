#pragma once
// The system's list of filters, and what is entered into it.

#include "platform/graph/media_filters.h"

#ifdef _WIN32

#include <dshow.h>

#else

struct IEnumMoniker;
struct IEnumRegFilters;
struct IMoniker;

struct REGPINTYPES {
    const CLSID* clsMajorType;
    const CLSID* clsMinorType;
};

struct REGFILTERPINS {
    LPWSTR strName;
    BOOL bRendered;
    BOOL bOutput;
    BOOL bZero;
    BOOL bMany;
    const CLSID* clsConnectsToFilter;
    LPCWSTR strConnectsToPin;
    UINT nMediaTypes;
    const REGPINTYPES* lpMediaType;
};

struct REGPINMEDIUM {
    CLSID clsMedium;
    DWORD dw1;
    DWORD dw2;
};

/// Version 1 alone, whose pins are REGFILTERPINS.
struct REGFILTER2 {
    DWORD dwVersion;
    DWORD dwMerit;
    ULONG cPins;
    const REGFILTERPINS* rgPins;
};

inline constexpr CLSID CLSID_FilterMapper{
    0xe436ebb2, 0x524f, 0x11ce, {0x9f, 0x53, 0x00, 0x20, 0xaf, 0x0b, 0xa7, 0x70}};
inline constexpr CLSID CLSID_FilterMapper2{
    0xcda42200, 0xbd88, 0x11d0, {0xbd, 0x4e, 0x00, 0xa0, 0xc9, 0x11, 0xce, 0x86}};

inline constexpr IID IID_IFilterMapper{
    0x56a868a3, 0x0ad4, 0x11ce, {0xb0, 0x3a, 0x00, 0x20, 0xaf, 0x0b, 0xa7, 0x70}};
struct IFilterMapper : IUnknown {
    virtual HRESULT RegisterFilter(CLSID classId, LPCWSTR name, DWORD merit) = 0;
    virtual HRESULT RegisterFilterInstance(CLSID classId, LPCWSTR name, CLSID* instance) = 0;
    virtual HRESULT RegisterPin(CLSID filter, LPCWSTR name, BOOL rendered, BOOL output, BOOL zero, BOOL many,
                                CLSID connectsToFilter, LPCWSTR connectsToPin) = 0;
    virtual HRESULT RegisterPinType(CLSID filter, LPCWSTR pin, CLSID majorType, CLSID subtype) = 0;
    virtual HRESULT UnregisterFilter(CLSID filter) = 0;
    virtual HRESULT UnregisterFilterInstance(CLSID instance) = 0;
    virtual HRESULT UnregisterPin(CLSID filter, LPCWSTR name) = 0;
    virtual HRESULT EnumMatchingFilters(IEnumRegFilters** filters, DWORD merit, BOOL inputNeeded,
                                        CLSID inputMajorType, CLSID inputSubtype, BOOL render,
                                        BOOL outputNeeded, CLSID outputMajorType, CLSID outputSubtype) = 0;

protected:
    ~IFilterMapper() = default;
};

inline constexpr IID IID_IFilterMapper2{
    0xb79bb0b0, 0x33c1, 0x11d1, {0xab, 0xe1, 0x00, 0xa0, 0xc9, 0x05, 0xf3, 0x75}};
struct IFilterMapper2 : IUnknown {
    virtual HRESULT CreateCategory(REFCLSID category, DWORD merit, LPCWSTR description) = 0;
    virtual HRESULT UnregisterFilter(const CLSID* category, LPCOLESTR instance, REFCLSID filter) = 0;
    virtual HRESULT RegisterFilter(REFCLSID filter, LPCWSTR name, IMoniker** moniker, const CLSID* category,
                                   LPCOLESTR instance, const REGFILTER2* record) = 0;
    virtual HRESULT EnumMatchingFilters(IEnumMoniker** filters, DWORD flags, BOOL exactMatch, DWORD merit,
                                        BOOL inputNeeded, DWORD inputTypeCount, const GUID* inputTypes,
                                        const REGPINMEDIUM* inputMedium, const CLSID* inputCategory,
                                        BOOL render, BOOL outputNeeded, DWORD outputTypeCount,
                                        const GUID* outputTypes, const REGPINMEDIUM* outputMedium,
                                        const CLSID* outputCategory) = 0;

protected:
    ~IFilterMapper2() = default;
};

constexpr DWORD MERIT_DO_NOT_USE = 0x200000;

#endif
