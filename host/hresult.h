#pragma once

#include <cstdint>

// Result codes as the host and the automation layer use them.
using HRESULT = std::int32_t;

constexpr HRESULT makeHresult(std::uint32_t code) { return static_cast<HRESULT>(code); }

inline constexpr HRESULT S_OK = 0;
inline constexpr HRESULT S_FALSE = 1;
inline constexpr HRESULT E_UNEXPECTED = makeHresult(0x8000FFFFu);
inline constexpr HRESULT E_NOTIMPL = makeHresult(0x80004001u);
inline constexpr HRESULT E_NOINTERFACE = makeHresult(0x80004002u);
inline constexpr HRESULT E_POINTER = makeHresult(0x80004003u);
inline constexpr HRESULT E_FAIL = makeHresult(0x80004005u);
inline constexpr HRESULT E_ACCESSDENIED = makeHresult(0x80070005u);
inline constexpr HRESULT E_OUTOFMEMORY = makeHresult(0x8007000Eu);
inline constexpr HRESULT E_INVALIDARG = makeHresult(0x80070057u);
inline constexpr HRESULT DISP_E_TYPEMISMATCH = makeHresult(0x80020005u);
inline constexpr HRESULT DISP_E_OVERFLOW = makeHresult(0x8002000Au);

// Host codes the add-in tests for by value.
inline constexpr HRESULT E_DOX_NAME_ALREADY_EXISTS = makeHresult(0x8004020Fu);
inline constexpr HRESULT E_DOX_FILE_NOT_FOUND = makeHresult(0x80040213u);
inline constexpr HRESULT E_DOX_FOLDER_NOT_FOUND = makeHresult(0x80040214u);
inline constexpr HRESULT E_DOX_FILE_IS_LOCKED = makeHresult(0x80040211u);
inline constexpr HRESULT E_DOX_FILE_NOT_LOCKED_BY_YOU = makeHresult(0x80040210u);
inline constexpr HRESULT E_DOX_INVALID_ID = makeHresult(0x80040241u);
inline constexpr HRESULT E_DOX_INVALID_NAME = makeHresult(0x8004021Du);
inline constexpr HRESULT E_DOX_CANT_OPEN_DATABASE = makeHresult(0x80040206u);
inline constexpr HRESULT E_DOX_DATABASE_ACCESS = makeHresult(0x80040207u);
inline constexpr HRESULT E_DOX_IO_ERROR = makeHresult(0x80040228u);
inline constexpr HRESULT E_DOX_VARIABLE_NOT_FOUND = makeHresult(0x80040252u);
inline constexpr HRESULT E_DOX_CANCELLED_BY_USER = makeHresult(0x80040226u);

constexpr bool succeeded(HRESULT hr) { return hr >= 0; }
constexpr bool failed(HRESULT hr) { return hr < 0; }

// The first error wins: a later result replaces the current one only while
// the current one is not an error.
constexpr HRESULT combineResult(HRESULT current, HRESULT next)
{
    return failed(current) ? current : next;
}
