#pragma once
// Result codes of the component model and the media-graph framework: the system's own on Windows, the
// same names and values elsewhere.

#include "platform/types.h"

#ifdef _WIN32

#include <vfwmsgs.h>

#else

using HRESULT = std::int32_t;

constexpr HRESULT makeHresult(std::uint32_t bits) {
    return static_cast<HRESULT>(bits);
}

constexpr HRESULT S_OK = 0;
constexpr HRESULT NOERROR = 0;
constexpr HRESULT S_FALSE = 1;
constexpr HRESULT E_NOTIMPL = makeHresult(0x80004001);
constexpr HRESULT E_NOINTERFACE = makeHresult(0x80004002);
constexpr HRESULT E_POINTER = makeHresult(0x80004003);
constexpr HRESULT E_ABORT = makeHresult(0x80004004);
constexpr HRESULT E_FAIL = makeHresult(0x80004005);
constexpr HRESULT E_UNEXPECTED = makeHresult(0x8000FFFF);
constexpr HRESULT E_ACCESSDENIED = makeHresult(0x80070005);
constexpr HRESULT E_OUTOFMEMORY = makeHresult(0x8007000E);
constexpr HRESULT E_INVALIDARG = makeHresult(0x80070057);
constexpr HRESULT CLASS_E_NOAGGREGATION = makeHresult(0x80040110);
constexpr HRESULT CLASS_E_CLASSNOTAVAILABLE = makeHresult(0x80040111);
constexpr HRESULT REGDB_E_CLASSNOTREG = makeHresult(0x80040154);

constexpr HRESULT VFW_S_NO_MORE_ITEMS = 0x00040103;
constexpr HRESULT VFW_S_DUPLICATE_NAME = 0x0004022D;
constexpr HRESULT VFW_S_STATE_INTERMEDIATE = 0x00040237;
constexpr HRESULT VFW_S_CANT_CUE = 0x00040268;
constexpr HRESULT VFW_S_NO_STOP_TIME = 0x00040270;
constexpr HRESULT VFW_E_INVALIDMEDIATYPE = makeHresult(0x80040200);
constexpr HRESULT VFW_E_ENUM_OUT_OF_SYNC = makeHresult(0x80040203);
constexpr HRESULT VFW_E_ALREADY_CONNECTED = makeHresult(0x80040204);
constexpr HRESULT VFW_E_NO_ACCEPTABLE_TYPES = makeHresult(0x80040207);
constexpr HRESULT VFW_E_INVALID_DIRECTION = makeHresult(0x80040208);
constexpr HRESULT VFW_E_NOT_CONNECTED = makeHresult(0x80040209);
constexpr HRESULT VFW_E_NO_ALLOCATOR = makeHresult(0x8004020A);
constexpr HRESULT VFW_E_RUNTIME_ERROR = makeHresult(0x8004020B);
constexpr HRESULT VFW_E_BUFFER_NOTSET = makeHresult(0x8004020C);
constexpr HRESULT VFW_E_BUFFER_OVERFLOW = makeHresult(0x8004020D);
constexpr HRESULT VFW_E_BADALIGN = makeHresult(0x8004020E);
constexpr HRESULT VFW_E_ALREADY_COMMITTED = makeHresult(0x8004020F);
constexpr HRESULT VFW_E_BUFFERS_OUTSTANDING = makeHresult(0x80040210);
constexpr HRESULT VFW_E_NOT_COMMITTED = makeHresult(0x80040211);
constexpr HRESULT VFW_E_SIZENOTSET = makeHresult(0x80040212);
constexpr HRESULT VFW_E_NO_CLOCK = makeHresult(0x80040213);
constexpr HRESULT VFW_E_NOT_FOUND = makeHresult(0x80040216);
constexpr HRESULT VFW_E_CANNOT_CONNECT = makeHresult(0x80040217);
constexpr HRESULT VFW_E_NOT_STOPPED = makeHresult(0x80040224);
constexpr HRESULT VFW_E_WRONG_STATE = makeHresult(0x80040227);
constexpr HRESULT VFW_E_TYPE_NOT_ACCEPTED = makeHresult(0x8004022A);
constexpr HRESULT VFW_E_DUPLICATE_NAME = makeHresult(0x8004022D);
constexpr HRESULT VFW_E_TIMEOUT = makeHresult(0x8004022E);
constexpr HRESULT VFW_E_SAMPLE_TIME_NOT_SET = makeHresult(0x80040249);
constexpr HRESULT VFW_E_MEDIA_TIME_NOT_SET = makeHresult(0x80040251);
constexpr HRESULT VFW_E_NOT_IN_GRAPH = makeHresult(0x8004025F);

constexpr DWORD FACILITY_WIN32 = 7;

constexpr bool SUCCEEDED(HRESULT result) {
    return result >= 0;
}
constexpr bool FAILED(HRESULT result) {
    return result < 0;
}
constexpr HRESULT MAKE_HRESULT(DWORD severity, DWORD facility, DWORD code) {
    return makeHresult(severity << 31 | facility << 16 | code);
}
constexpr DWORD HRESULT_CODE(HRESULT result) {
    return static_cast<DWORD>(result) & 0xFFFF;
}
constexpr DWORD HRESULT_FACILITY(HRESULT result) {
    return static_cast<DWORD>(result) >> 16 & 0x1FFF;
}
/// A system error as a result; what is 0 or has the failure bit already stays as it is.
constexpr HRESULT HRESULT_FROM_WIN32(DWORD error) {
    const auto result = makeHresult(error);
    return result <= 0 ? result : makeHresult((error & 0xFFFF) | FACILITY_WIN32 << 16 | 0x80000000u);
}

#endif
