#pragma once

#include "cadsim/engine/environment.h"

#include <QString>

#include <memory>

namespace cadsim {

struct Module;

// Error codes of the run call (0: none). Compile errors and unhandled run-time errors map onto
// them; the texts for the codes belong to the caller.
namespace RunCode {
inline constexpr int None = 0;
inline constexpr int InvalidArgument = 1;
inline constexpr int CompileError = 3; // a syntax or declaration error without a code of its own
inline constexpr int OutOfMemory = 5;
inline constexpr int InvalidProcedureName = 6;
inline constexpr int SubOrFunctionExpected = 8;
inline constexpr int InvalidParameterCount = 9;
inline constexpr int UnhandledException = 12;
inline constexpr int ValueOverflow = 13;
inline constexpr int TypeMismatch = 14;
inline constexpr int RequiredParameterMissing = 15;
inline constexpr int InvalidIndex = 22;
inline constexpr int PermissionDenied = 23;
inline constexpr int TooManyOpenFiles = 25;
inline constexpr int FileOpenFailed = 28;
} // namespace RunCode

// The outcome of loading, checking or running a macro.
struct MacroResult {
    bool ok = true;
    int runCode = RunCode::None; // the run call's error code
    int errorNumber = 0;         // the run-time error number (0 for compile errors)
    QString message;             // compile error text or run-time error description
    int line = 0;
    int column = 0;
};

// Loads a macro file (module "McMacro1") and runs its procedures.
class MacroEngine final {
public:
    static constexpr const char *kModuleName = "McMacro1";

    explicit MacroEngine(EngineHost host = {});
    ~MacroEngine();

    // Compiles the text; a failure is kept and reported again by run().
    MacroResult load(const QString &text);
    // Reads a Windows-1252 macro file from a native path.
    MacroResult loadFile(const QString &nativePath);
    // Runs a procedure without arguments. An unhandled run-time error shows the run-time error
    // message box (titled "Mecadra") and fails the run.
    MacroResult run(const QString &moduleName, const QString &procedure);

    // Compiles without running: the first syntax or declaration error with line and column, or ok.
    static MacroResult checkMacro(const QString &text);

    EngineHost &host() { return m_host; }

private:
    EngineHost m_host;
    std::unique_ptr<Module> m_module;
    MacroResult m_loadResult;
};

// The run call's code for an unhandled run-time error number.
int runCodeForError(int errorNumber);

// Compiles a macro text without running it (the "macro check" command): ok, or the first
// syntax or declaration error with its line and column.
MacroResult checkMacro(const QString &text);

} // namespace cadsim
