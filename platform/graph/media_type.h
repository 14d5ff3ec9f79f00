#pragma once
// The media-graph framework's format description of a connection or a sample.

#include "platform/component/component.h"

#ifdef _WIN32

#include <dshow.h>

#else

/// `pbFormat` is task memory; framework/base/media_type.h has the helpers that copy and free it.
struct AM_MEDIA_TYPE {
    GUID majortype;
    GUID subtype;
    BOOL bFixedSizeSamples;
    BOOL bTemporalCompression;
    ULONG lSampleSize;
    GUID formattype;
    IUnknown* pUnk;
    ULONG cbFormat;
    BYTE* pbFormat;
};

inline constexpr GUID MEDIATYPE_NULL{};
inline constexpr GUID MEDIASUBTYPE_NULL{};
inline constexpr GUID MEDIATYPE_Video{
    0x73646976, 0x0000, 0x0010, {0x80, 0x00, 0x00, 0xAA, 0x00, 0x38, 0x9B, 0x71}};
inline constexpr GUID MEDIATYPE_Stream{
    0xE436EB83, 0x524F, 0x11CE, {0x9F, 0x53, 0x00, 0x20, 0xAF, 0x0B, 0xA7, 0x70}};
inline constexpr GUID MEDIASUBTYPE_MPEG2_TRANSPORT{
    0xE06D8023, 0xDB46, 0x11CF, {0xB4, 0xD1, 0x00, 0x80, 0x5F, 0x6C, 0xBB, 0xEA}};
inline constexpr GUID FORMAT_None{
    0x0F6417D6, 0xC318, 0x11D0, {0xA4, 0x3F, 0x00, 0xA0, 0xC9, 0x22, 0x31, 0x96}};

#endif
