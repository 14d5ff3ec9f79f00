#pragma once

#include "framework/base/media_type.h"

namespace mvrtpfec {

inline constexpr GUID MEDIATYPE_Sync{
    0xE58943E9, 0xF56E, 0x4991, {0x9D, 0xF0, 0xAE, 0x45, 0x28, 0xA7, 0xBE, 0x15}};
inline constexpr GUID MEDIASUBTYPE_Sync{
    0xCF9DB4CD, 0xB1C9, 0x470C, {0xAB, 0xE4, 0xAA, 0xFE, 0x78, 0x8C, 0xB7, 0xDF}};

/// Told to the graph by a pin that has got its first reference.
inline constexpr LONG EC_SYNC_READY = 0x8066;

/// A sync sample: the clock's value, little-endian. It starts at the reference time and ends 100 ns later.
inline constexpr LONG syncSampleSize = 8;

/// S_OK for the type of clock samples, else S_FALSE; E_POINTER.
HRESULT checkSyncMediaType(const CMediaType* type) noexcept;

}  // namespace mvrtpfec
