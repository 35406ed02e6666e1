#pragma once

#include "cadsim/engine/ast.h"
#include "cadsim/engine/value.h"

namespace cadsim {

// Binary operators with VBA's type rules (Integer -> Long -> Double widening, Null propagation,
// string concatenation with "+" on two strings). compareText: Option Compare Text.
ScriptValue applyBinary(Op op, const ScriptValue &a, const ScriptValue &b, bool compareText);
ScriptValue applyUnary(Op op, const ScriptValue &a);

// -1, 0 or 1; Null operands are the caller's business. Raises 13 where VBA does.
int compareValues(const ScriptValue &a, const ScriptValue &b, bool compareText);

} // namespace cadsim
