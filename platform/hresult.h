#pragma once
// Result codes of the component model: the system's own on Windows, the same names and values elsewhere.

#ifdef _WIN32

#ifndef NOMINMAX
#define NOMINMAX
#endif
#include <windows.h>

#else

#include <cstdint>

using HRESULT = std::int32_t;

constexpr HRESULT makeHresult(std::uint32_t bits) {
    return static_cast<HRESULT>(bits);
}

constexpr HRESULT S_OK = 0;
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

constexpr bool SUCCEEDED(HRESULT result) {
    return result >= 0;
}
constexpr bool FAILED(HRESULT result) {
    return result < 0;
}

#endif
