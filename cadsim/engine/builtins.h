#pragma once

#include "cadsim/engine/ast.h"
#include "cadsim/engine/value.h"

#include <QString>
#include <QStringList>

#include <vector>

namespace cadsim {

class Interpreter;

// A built-in function or statement (Len, Mid, Kill, MsgBox...). Arguments arrive evaluated;
// omitted optional ones are ScriptValue::missing().
using BuiltinFn = ScriptValue (*)(Interpreter &, std::vector<ScriptValue> &);

struct Builtin {
    BuiltinFn fn;
    int minArgs;
    int maxArgs; // -1: any number
};

const Builtin *findBuiltin(const QString &lowerName);
// Parameter names (lower case, in order) of the built-ins that take named arguments; empty for
// the others.
const QStringList &builtinParameterNames(const QString &lowerName);

// The Windows functions that Declare statements may name (by alias or name).
ScriptValue callDeclaredFunction(Interpreter &interp, const DeclareProc &declare, std::vector<ScriptValue> &args);

} // namespace cadsim
