#pragma once
// The component model: identifiers, interfaces, reference counts.

#include "platform/hresult.h"

#ifdef _WIN32

#include <objbase.h>
#include <ocidl.h>
#include <unknwn.h>

#else

#include <cstddef>

#include "platform/component/task_memory.h"

struct GUID {
    std::uint32_t Data1;
    std::uint16_t Data2;
    std::uint16_t Data3;
    std::uint8_t Data4[8];

    bool operator==(const GUID&) const = default;
};
using IID = GUID;
using CLSID = GUID;
using REFGUID = const GUID&;
using REFIID = const IID&;
using REFCLSID = const CLSID&;

inline constexpr GUID GUID_NULL{};

inline constexpr IID IID_IUnknown{
    0x00000000, 0x0000, 0x0000, {0xC0, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x46}};
/// The counts returned by AddRef and Release are for looking at only.
struct IUnknown {
    virtual HRESULT QueryInterface(REFIID riid, void** object) = 0;
    virtual ULONG AddRef() = 0;
    virtual ULONG Release() = 0;

protected:
    ~IUnknown() = default;
};
using LPUNKNOWN = IUnknown*;

inline constexpr IID IID_IClassFactory{
    0x00000001, 0x0000, 0x0000, {0xC0, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x46}};
struct IClassFactory : IUnknown {
    virtual HRESULT CreateInstance(IUnknown* outer, REFIID riid, void** object) = 0;
    virtual HRESULT LockServer(BOOL lock) = 0;

protected:
    ~IClassFactory() = default;
};

inline constexpr IID IID_IPersist{
    0x0000010c, 0x0000, 0x0000, {0xC0, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x46}};
struct IPersist : IUnknown {
    virtual HRESULT GetClassID(CLSID* classId) = 0;

protected:
    ~IPersist() = default;
};

/// A counted array in task memory.
struct CAUUID {
    ULONG cElems;
    GUID* pElems;
};

inline constexpr IID IID_ISpecifyPropertyPages{
    0xB196B28B, 0xBAB4, 0x101A, {0xB6, 0x9C, 0x00, 0xAA, 0x00, 0x34, 0x1D, 0x07}};
struct ISpecifyPropertyPages : IUnknown {
    virtual HRESULT GetPages(CAUUID* pages) = 0;

protected:
    ~ISpecifyPropertyPages() = default;
};

#endif
