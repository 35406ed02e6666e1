#pragma once

#include "cadsim/engine/value.h"

#include <QHash>
#include <QString>

#include <functional>
#include <memory>

namespace cadsim {

class ScriptObject;

// Message boxes of a macro. The stand-in application shows a window titled "Mecadra" and blocks
// until a key or close request arrives; tests answer at once.
class MessageBoxHandler {
public:
    virtual ~MessageBoxHandler() = default;
    // buttons and the result use VBA's values (vbOKOnly = 0, vbOK = 1, vbYes = 6...).
    virtual int showMessage(const QString &title, const QString &prompt, int buttons) = 0;
};

// What the engine takes from the program that runs it.
struct EngineHost {
    // Windows path as the macro writes it -> native path. Identity when unset.
    std::function<QString(const QString &windowsPath)> resolvePath;
    std::shared_ptr<MessageBoxHandler> messageBox; // none: MsgBox answers vbOK at once
    std::function<double()> now;                  // OLE date for Now/Date/Time; unset: system clock
    QHash<QString, ScriptValue> globals;          // lower-case name -> value ("application")
    QHash<QString, ScriptValue> constants;        // lower-case name -> value; added to the defaults
    std::function<void(const QString &line)> debugOutput; // Debug.Print lines
    // Extra classes for CreateObject/GetObject (by lower-case ProgID); null result: not known.
    std::function<std::shared_ptr<ScriptObject>(const QString &progId)> createObject;
    std::function<std::shared_ptr<ScriptObject>(const QString &path, const QString &progId)> getObject;
};

// The type-library constants of the CAD application that the macro templates use
// (lower-case names). The stand-in application uses the same table.
const QHash<QString, ScriptValue> &defaultCadConstants();

// VBA's own constants (vbCrLf, vbTextCompare, vbYes...), lower-case names.
const QHash<QString, ScriptValue> &vbaConstants();

} // namespace cadsim
