#pragma once

#include "host/variant.h"

class Statement;

// A Variant kept in four columns: type, integer, real, text. Binds to
// parameters first..first+3 and reads from columns first..first+3.
void bindVariant(Statement &statement, int first, const Variant &value);
Variant readVariant(const Statement &statement, int first);
