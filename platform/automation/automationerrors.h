#pragma once

#include "host/hresult.h"

// Result codes of the automation channel itself (beside those of host/hresult.h).
inline constexpr HRESULT DISP_E_MEMBERNOTFOUND = makeHresult(0x80020003u);
inline constexpr HRESULT DISP_E_BADPARAMCOUNT = makeHresult(0x8002000Eu);
inline constexpr HRESULT CO_E_OBJNOTCONNECTED = makeHresult(0x800401FDu);
inline constexpr HRESULT RPC_E_DISCONNECTED = makeHresult(0x80010108u);
inline constexpr HRESULT RPC_E_TIMEOUT = makeHresult(0x8001011Fu);
inline constexpr HRESULT RPC_E_INVALID_DATA = makeHresult(0x8001000Fu);
inline constexpr HRESULT RPC_S_SERVER_UNAVAILABLE = makeHresult(0x800706BAu);
inline constexpr HRESULT CONNECT_E_NOCONNECTION = makeHresult(0x80040200u);
