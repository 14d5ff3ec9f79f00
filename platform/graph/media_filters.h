#pragma once
// Filters and pins.

#include "platform/graph/media_samples.h"

#ifndef _WIN32

struct IBaseFilter;
struct IPin;
struct IFilterGraph;

enum PIN_DIRECTION { PINDIR_INPUT = 0, PINDIR_OUTPUT = 1 };
enum FILTER_STATE { State_Stopped = 0, State_Paused = 1, State_Running = 2 };

constexpr std::size_t MAX_PIN_NAME = 128;
constexpr std::size_t MAX_FILTER_NAME = 128;

/// `pFilter` holds a reference.
struct PIN_INFO {
    IBaseFilter* pFilter;
    PIN_DIRECTION dir;
    WCHAR achName[MAX_PIN_NAME];
};

/// `pGraph` holds a reference.
struct FILTER_INFO {
    WCHAR achName[MAX_FILTER_NAME];
    IFilterGraph* pGraph;
};

enum QualityMessageType { Famine = 0, Flood = 1 };
struct Quality {
    QualityMessageType Type;
    LONG Proportion;
    REFERENCE_TIME Late;
    REFERENCE_TIME TimeStamp;
};

using HEVENT = DWORD_PTR;
using HSEMAPHORE = DWORD_PTR;

inline constexpr IID IID_IEnumMediaTypes{
    0x89c31040, 0x846b, 0x11ce, {0x97, 0xd3, 0x00, 0xaa, 0x00, 0x55, 0x59, 0x5a}};
struct IEnumMediaTypes : IUnknown {
    virtual HRESULT Next(ULONG count, AM_MEDIA_TYPE** types, ULONG* fetched) = 0;
    virtual HRESULT Skip(ULONG count) = 0;
    virtual HRESULT Reset() = 0;
    virtual HRESULT Clone(IEnumMediaTypes** copy) = 0;

protected:
    ~IEnumMediaTypes() = default;
};

inline constexpr IID IID_IEnumPins{
    0x56a86892, 0x0ad4, 0x11ce, {0xb0, 0x3a, 0x00, 0x20, 0xaf, 0x0b, 0xa7, 0x70}};
struct IEnumPins : IUnknown {
    virtual HRESULT Next(ULONG count, IPin** pins, ULONG* fetched) = 0;
    virtual HRESULT Skip(ULONG count) = 0;
    virtual HRESULT Reset() = 0;
    virtual HRESULT Clone(IEnumPins** copy) = 0;

protected:
    ~IEnumPins() = default;
};

inline constexpr IID IID_IPin{0x56a86891, 0x0ad4, 0x11ce, {0xb0, 0x3a, 0x00, 0x20, 0xaf, 0x0b, 0xa7, 0x70}};
struct IPin : IUnknown {
    virtual HRESULT Connect(IPin* receiver, const AM_MEDIA_TYPE* type) = 0;
    virtual HRESULT ReceiveConnection(IPin* connector, const AM_MEDIA_TYPE* type) = 0;
    virtual HRESULT Disconnect() = 0;
    virtual HRESULT ConnectedTo(IPin** pin) = 0;
    virtual HRESULT ConnectionMediaType(AM_MEDIA_TYPE* type) = 0;
    virtual HRESULT QueryPinInfo(PIN_INFO* info) = 0;
    virtual HRESULT QueryDirection(PIN_DIRECTION* direction) = 0;
    virtual HRESULT QueryId(LPWSTR* id) = 0;
    virtual HRESULT QueryAccept(const AM_MEDIA_TYPE* type) = 0;
    virtual HRESULT EnumMediaTypes(IEnumMediaTypes** types) = 0;
    virtual HRESULT QueryInternalConnections(IPin** pins, ULONG* count) = 0;
    virtual HRESULT EndOfStream() = 0;
    virtual HRESULT BeginFlush() = 0;
    virtual HRESULT EndFlush() = 0;
    virtual HRESULT NewSegment(REFERENCE_TIME start, REFERENCE_TIME stop, double rate) = 0;

protected:
    ~IPin() = default;
};

inline constexpr IID IID_IReferenceClock{
    0x56a86897, 0x0ad4, 0x11ce, {0xb0, 0x3a, 0x00, 0x20, 0xaf, 0x0b, 0xa7, 0x70}};
struct IReferenceClock : IUnknown {
    virtual HRESULT GetTime(REFERENCE_TIME* time) = 0;
    virtual HRESULT AdviseTime(REFERENCE_TIME baseTime, REFERENCE_TIME streamTime, HEVENT event,
                               DWORD_PTR* cookie) = 0;
    virtual HRESULT AdvisePeriodic(REFERENCE_TIME startTime, REFERENCE_TIME periodTime, HSEMAPHORE semaphore,
                                   DWORD_PTR* cookie) = 0;
    virtual HRESULT Unadvise(DWORD_PTR cookie) = 0;

protected:
    ~IReferenceClock() = default;
};

inline constexpr IID IID_IMediaFilter{
    0x56a86899, 0x0ad4, 0x11ce, {0xb0, 0x3a, 0x00, 0x20, 0xaf, 0x0b, 0xa7, 0x70}};
struct IMediaFilter : IPersist {
    virtual HRESULT Stop() = 0;
    virtual HRESULT Pause() = 0;
    virtual HRESULT Run(REFERENCE_TIME start) = 0;
    virtual HRESULT GetState(DWORD milliseconds, FILTER_STATE* state) = 0;
    virtual HRESULT SetSyncSource(IReferenceClock* clock) = 0;
    virtual HRESULT GetSyncSource(IReferenceClock** clock) = 0;

protected:
    ~IMediaFilter() = default;
};

inline constexpr IID IID_IBaseFilter{
    0x56a86895, 0x0ad4, 0x11ce, {0xb0, 0x3a, 0x00, 0x20, 0xaf, 0x0b, 0xa7, 0x70}};
struct IBaseFilter : IMediaFilter {
    virtual HRESULT EnumPins(IEnumPins** pins) = 0;
    virtual HRESULT FindPin(LPCWSTR id, IPin** pin) = 0;
    virtual HRESULT QueryFilterInfo(FILTER_INFO* info) = 0;
    virtual HRESULT JoinFilterGraph(IFilterGraph* graph, LPCWSTR name) = 0;
    virtual HRESULT QueryVendorInfo(LPWSTR* vendorInfo) = 0;

protected:
    ~IBaseFilter() = default;
};

inline constexpr IID IID_IQualityControl{
    0x56a868a5, 0x0ad4, 0x11ce, {0xb0, 0x3a, 0x00, 0x20, 0xaf, 0x0b, 0xa7, 0x70}};
struct IQualityControl : IUnknown {
    virtual HRESULT Notify(IBaseFilter* self, Quality message) = 0;
    virtual HRESULT SetSink(IQualityControl* sink) = 0;

protected:
    ~IQualityControl() = default;
};

#endif
