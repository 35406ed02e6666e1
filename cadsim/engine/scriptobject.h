#pragma once

#include "cadsim/engine/value.h"

#include <QString>
#include <QStringList>

#include <vector>

namespace cadsim {

// How a member is used. A macro cannot tell a method from a property read ("doc.GetTitle" is
// either), so objects treat Call and Get alike except that Call discards the result.
enum class CallKind {
    Call, // statement call: obj.Method a, b
    Get,  // value wanted: x = obj.Member(a) or obj.Member
    Let,  // obj.Member(a) = value: the value is the last argument
    Set,  // Set obj.Member(a) = object: the object is the last argument
};

// Arguments as the callee sees them: each points at the caller's variable when the macro passed
// one (so the callee may write back ByRef results such as error codes), else at a temporary.
// An omitted optional argument is ScriptValue::missing().
using ScriptArgs = std::vector<ScriptValue *>;

// An automation object seen by macros.
class ScriptObject {
public:
    virtual ~ScriptObject() = default;
    virtual QString typeName() const = 0;
    // Method call or property get/let/set by case-insensitive name. Unknown member -> throw
    // ScriptError(438) ("Object doesn't support this property or method").
    virtual ScriptValue invoke(const QString &member, CallKind kind, ScriptArgs &args) = 0;
    // The items of a collection for "For Each"; objects that are no collection raise 438.
    virtual std::vector<ScriptValue> enumerate();
    // The default member used when the object itself is called or converted ("obj(1)").
    virtual ScriptValue defaultValue(ScriptArgs &args);
    // Parameter names (lower case, in order) of a member that takes named arguments; empty for
    // members that take them by position only.
    virtual const QStringList &parameterNames(const QString &member) const;
};

} // namespace cadsim
