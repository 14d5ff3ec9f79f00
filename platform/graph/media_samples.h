#pragma once
// Media samples, the allocators that own them and the input side of the sample transport.

#include "platform/graph/media_type.h"

#ifndef _WIN32

/// 100 ns units.
using REFERENCE_TIME = LONGLONG;

struct ALLOCATOR_PROPERTIES {
    LONG cBuffers;
    LONG cbBuffer;  ///< bytes of a buffer, the prefix not counted
    LONG cbAlign;
    LONG cbPrefix;
};

constexpr DWORD AM_GBF_PREVFRAMESKIPPED = 1;
constexpr DWORD AM_GBF_NOTASYNCPOINT = 2;
constexpr DWORD AM_GBF_NOWAIT = 4;

enum AM_SAMPLE_PROPERTY_FLAGS : DWORD {
    AM_SAMPLE_SPLICEPOINT = 0x1,
    AM_SAMPLE_PREROLL = 0x2,
    AM_SAMPLE_DATADISCONTINUITY = 0x4,
    AM_SAMPLE_TYPECHANGED = 0x8,
    AM_SAMPLE_TIMEVALID = 0x10,
    AM_SAMPLE_TIMEDISCONTINUITY = 0x40,
    AM_SAMPLE_FLUSH_ON_PAUSE = 0x80,
    AM_SAMPLE_STOPVALID = 0x100,
};

/// What GetProperties and SetProperties of a sample carry; 64 bytes.
struct AM_SAMPLE2_PROPERTIES {
    DWORD cbData;
    DWORD dwTypeSpecificFlags;
    DWORD dwSampleFlags;
    LONG lActual;
    REFERENCE_TIME tStart;
    REFERENCE_TIME tStop;
    DWORD dwStreamId;
    AM_MEDIA_TYPE* pMediaType;
    BYTE* pbBuffer;
    LONG cbBuffer;
};

inline constexpr IID IID_IMediaSample{
    0x56a8689a, 0x0ad4, 0x11ce, {0xb0, 0x3a, 0x00, 0x20, 0xaf, 0x0b, 0xa7, 0x70}};
struct IMediaSample : IUnknown {
    virtual HRESULT GetPointer(BYTE** buffer) = 0;
    virtual LONG GetSize() = 0;
    virtual HRESULT GetTime(REFERENCE_TIME* start, REFERENCE_TIME* stop) = 0;
    virtual HRESULT SetTime(REFERENCE_TIME* start, REFERENCE_TIME* stop) = 0;
    virtual HRESULT IsSyncPoint() = 0;
    virtual HRESULT SetSyncPoint(BOOL set) = 0;
    virtual HRESULT IsPreroll() = 0;
    virtual HRESULT SetPreroll(BOOL set) = 0;
    virtual LONG GetActualDataLength() = 0;
    virtual HRESULT SetActualDataLength(LONG length) = 0;
    virtual HRESULT GetMediaType(AM_MEDIA_TYPE** type) = 0;
    virtual HRESULT SetMediaType(AM_MEDIA_TYPE* type) = 0;
    virtual HRESULT IsDiscontinuity() = 0;
    virtual HRESULT SetDiscontinuity(BOOL set) = 0;
    virtual HRESULT GetMediaTime(LONGLONG* start, LONGLONG* stop) = 0;
    virtual HRESULT SetMediaTime(LONGLONG* start, LONGLONG* stop) = 0;

protected:
    ~IMediaSample() = default;
};

inline constexpr IID IID_IMediaSample2{
    0x36b73884, 0xc2c8, 0x11cf, {0x8b, 0x46, 0x00, 0x80, 0x5f, 0x6c, 0xef, 0x60}};
struct IMediaSample2 : IMediaSample {
    virtual HRESULT GetProperties(DWORD size, BYTE* properties) = 0;
    virtual HRESULT SetProperties(DWORD size, const BYTE* properties) = 0;

protected:
    ~IMediaSample2() = default;
};

inline constexpr IID IID_IMemAllocator{
    0x56a8689c, 0x0ad4, 0x11ce, {0xb0, 0x3a, 0x00, 0x20, 0xaf, 0x0b, 0xa7, 0x70}};
struct IMemAllocator : IUnknown {
    virtual HRESULT SetProperties(ALLOCATOR_PROPERTIES* request, ALLOCATOR_PROPERTIES* actual) = 0;
    virtual HRESULT GetProperties(ALLOCATOR_PROPERTIES* properties) = 0;
    virtual HRESULT Commit() = 0;
    virtual HRESULT Decommit() = 0;
    virtual HRESULT GetBuffer(IMediaSample** buffer, REFERENCE_TIME* start, REFERENCE_TIME* stop,
                              DWORD flags) = 0;
    virtual HRESULT ReleaseBuffer(IMediaSample* buffer) = 0;

protected:
    ~IMemAllocator() = default;
};

inline constexpr IID IID_IMemAllocatorNotifyCallbackTemp{
    0x92980b30, 0xc1de, 0x11d2, {0xab, 0xf5, 0x00, 0xa0, 0xc9, 0x05, 0xf3, 0x75}};
struct IMemAllocatorNotifyCallbackTemp : IUnknown {
    virtual HRESULT NotifyRelease() = 0;

protected:
    ~IMemAllocatorNotifyCallbackTemp() = default;
};

inline constexpr IID IID_IMemAllocatorCallbackTemp{
    0x379a0cf0, 0xc1de, 0x11d2, {0xab, 0xf5, 0x00, 0xa0, 0xc9, 0x05, 0xf3, 0x75}};
struct IMemAllocatorCallbackTemp : IMemAllocator {
    virtual HRESULT SetNotify(IMemAllocatorNotifyCallbackTemp* callback) = 0;
    virtual HRESULT GetFreeCount(LONG* freeBuffers) = 0;

protected:
    ~IMemAllocatorCallbackTemp() = default;
};

inline constexpr IID IID_IMemInputPin{
    0x56a8689d, 0x0ad4, 0x11ce, {0xb0, 0x3a, 0x00, 0x20, 0xaf, 0x0b, 0xa7, 0x70}};
struct IMemInputPin : IUnknown {
    virtual HRESULT GetAllocator(IMemAllocator** allocator) = 0;
    virtual HRESULT NotifyAllocator(IMemAllocator* allocator, BOOL readOnly) = 0;
    virtual HRESULT GetAllocatorRequirements(ALLOCATOR_PROPERTIES* properties) = 0;
    virtual HRESULT Receive(IMediaSample* sample) = 0;
    virtual HRESULT ReceiveMultiple(IMediaSample** samples, LONG count, LONG* processed) = 0;
    virtual HRESULT ReceiveCanBlock() = 0;

protected:
    ~IMemInputPin() = default;
};

#endif
