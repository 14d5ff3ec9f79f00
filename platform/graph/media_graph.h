#pragma once
// The filter graph as hosts and filters see it: the system's graph manager on Windows, a small one of ours
// elsewhere (filters are added and connected explicitly; nothing is inserted or rendered by itself).

#include "platform/graph/media_filters.h"

#ifdef _WIN32

#include <control.h>
#include <evcode.h>

#else

constexpr LONG EC_COMPLETE = 0x01;
constexpr LONG EC_USERABORT = 0x02;
constexpr LONG EC_ERRORABORT = 0x03;

using OAFilterState = LONG;
using OAEVENT = LONG_PTR;

inline constexpr IID IID_IEnumFilters{
    0x56a86893, 0x0ad4, 0x11ce, {0xb0, 0x3a, 0x00, 0x20, 0xaf, 0x0b, 0xa7, 0x70}};
struct IEnumFilters : IUnknown {
    virtual HRESULT Next(ULONG count, IBaseFilter** filter, ULONG* fetched) = 0;
    virtual HRESULT Skip(ULONG count) = 0;
    virtual HRESULT Reset() = 0;
    virtual HRESULT Clone(IEnumFilters** copy) = 0;

protected:
    ~IEnumFilters() = default;
};

inline constexpr IID IID_IFilterGraph{
    0x56a8689f, 0x0ad4, 0x11ce, {0xb0, 0x3a, 0x00, 0x20, 0xaf, 0x0b, 0xa7, 0x70}};
struct IFilterGraph : IUnknown {
    virtual HRESULT AddFilter(IBaseFilter* filter, LPCWSTR name) = 0;
    virtual HRESULT RemoveFilter(IBaseFilter* filter) = 0;
    virtual HRESULT EnumFilters(IEnumFilters** filters) = 0;
    virtual HRESULT FindFilterByName(LPCWSTR name, IBaseFilter** filter) = 0;
    virtual HRESULT ConnectDirect(IPin* output, IPin* input, const AM_MEDIA_TYPE* type) = 0;
    virtual HRESULT Reconnect(IPin* pin) = 0;
    virtual HRESULT Disconnect(IPin* pin) = 0;
    virtual HRESULT SetDefaultSyncSource() = 0;

protected:
    ~IFilterGraph() = default;
};

inline constexpr IID IID_IGraphBuilder{
    0x56a868a9, 0x0ad4, 0x11ce, {0xb0, 0x3a, 0x00, 0x20, 0xaf, 0x0b, 0xa7, 0x70}};
struct IGraphBuilder : IFilterGraph {
    virtual HRESULT Connect(IPin* output, IPin* input) = 0;
    virtual HRESULT Render(IPin* output) = 0;
    virtual HRESULT RenderFile(LPCWSTR file, LPCWSTR playList) = 0;
    virtual HRESULT AddSourceFilter(LPCWSTR file, LPCWSTR name, IBaseFilter** filter) = 0;
    virtual HRESULT SetLogFile(DWORD_PTR file) = 0;
    virtual HRESULT Abort() = 0;
    virtual HRESULT ShouldOperationContinue() = 0;

protected:
    ~IGraphBuilder() = default;
};

inline constexpr IID IID_IMediaEventSink{
    0x56a868a2, 0x0ad4, 0x11ce, {0xb0, 0x3a, 0x00, 0x20, 0xaf, 0x0b, 0xa7, 0x70}};
struct IMediaEventSink : IUnknown {
    virtual HRESULT Notify(LONG code, LONG_PTR parameter1, LONG_PTR parameter2) = 0;

protected:
    ~IMediaEventSink() = default;
};

inline constexpr IID IID_IMediaControl{
    0x56A868B1, 0x0AD4, 0x11CE, {0xB0, 0x3A, 0x00, 0x20, 0xAF, 0x0B, 0xA7, 0x70}};
/// Only what needs no automation of the system's interface of this name.
struct IMediaControl : IUnknown {
    virtual HRESULT Run() = 0;
    virtual HRESULT Pause() = 0;
    virtual HRESULT Stop() = 0;
    virtual HRESULT GetState(LONG milliseconds, OAFilterState* state) = 0;
    virtual HRESULT StopWhenReady() = 0;

protected:
    ~IMediaControl() = default;
};

inline constexpr IID IID_IMediaEvent{
    0x56A868B6, 0x0AD4, 0x11CE, {0xB0, 0x3A, 0x00, 0x20, 0xAF, 0x0B, 0xA7, 0x70}};
struct IMediaEvent : IUnknown {
    virtual HRESULT GetEventHandle(OAEVENT* event) = 0;
    virtual HRESULT GetEvent(LONG* code, LONG_PTR* parameter1, LONG_PTR* parameter2, LONG milliseconds) = 0;
    virtual HRESULT WaitForCompletion(LONG milliseconds, LONG* code) = 0;
    virtual HRESULT FreeEventParams(LONG code, LONG_PTR parameter1, LONG_PTR parameter2) = 0;

protected:
    ~IMediaEvent() = default;
};

#endif

namespace platform {

/// A new, empty filter graph with one reference for the caller. It also answers IMediaControl, IMediaEvent,
/// IMediaEventSink and IMediaFilter.
HRESULT createFilterGraph(IGraphBuilder** graph) noexcept;

/// The default reference clock.
HRESULT createSystemClock(IReferenceClock** clock) noexcept;

}  // namespace platform
