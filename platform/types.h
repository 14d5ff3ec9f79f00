#pragma once
// The operating system's basic types: its own on Windows, the same names and widths elsewhere. Signatures
// use these names, never `long`, whose width differs between the targets.

#ifdef _WIN32

#ifndef NOMINMAX
#define NOMINMAX
#endif
#ifndef WIN32_LEAN_AND_MEAN
#define WIN32_LEAN_AND_MEAN
#endif
#include <windows.h>

#else

#include <cstdint>

using BOOL = std::int32_t;
using BYTE = std::uint8_t;
using WORD = std::uint16_t;
using LONG = std::int32_t;
using ULONG = std::uint32_t;
using DWORD = std::uint32_t;
using UINT = std::uint32_t;
using LONGLONG = std::int64_t;
using DWORD_PTR = std::uintptr_t;
using LONG_PTR = std::intptr_t;
using LPVOID = void*;
using HANDLE = void*;

constexpr BOOL FALSE = 0;
constexpr BOOL TRUE = 1;

/// 16-bit wide strings, UTF-16.
using WCHAR = char16_t;
using LPWSTR = WCHAR*;
using LPCWSTR = const WCHAR*;
using LPOLESTR = WCHAR*;
using LPCOLESTR = const WCHAR*;

// Calling conventions, which only the system's own target has.
#define WINAPI
#define STDMETHODCALLTYPE
#define STDAPICALLTYPE
#define STDAPI extern "C" HRESULT
#define STDMETHODIMP HRESULT
#define STDMETHODIMP_(type) type

#endif
