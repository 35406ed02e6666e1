#pragma once

// The raw table of result-code names. Callers that want a code's name or
// message use errortexts.h; this table and errormessages.h are the data
// behind it.

#include "host/hresult.h"

#include <span>

// One row of the result-code name table: searched in table order, so the
// first row with a code gives its name (a name may stand for two codes).
struct ErrorNameRow {
    HRESULT code;
    const char16_t *name; // at most 49 characters
};

std::span<const ErrorNameRow> errorNameTable();
