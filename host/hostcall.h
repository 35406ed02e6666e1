#pragma once

#include "host/hosterror.h"

#include <exception>

// Runs body at a host boundary: a HostError becomes its code, anything
// else thrown E_FAIL. body returns the HRESULT of success.
template <class Body>
HRESULT hostCall(Body &&body) noexcept
{
    try {
        return body();
    } catch (const HostError &e) {
        return e.code();
    } catch (const std::bad_alloc &) {
        return E_OUTOFMEMORY;
    } catch (...) {
        return E_FAIL;
    }
}
