#include "cadsim/engine/macroengine.h"

#include "cadsim/engine/checker.h"
#include "base/codepage.h"
#include "cadsim/engine/interpreter.h"
#include "cadsim/engine/parser.h"

#include <QFile>

#include <new>

namespace cadsim {

namespace {

MacroResult compileFailure(const CompileError &e)
{
    MacroResult r;
    r.ok = false;
    r.runCode = e.runCode;
    r.message = e.message;
    r.line = e.pos.line;
    r.column = e.pos.column;
    return r;
}

} // namespace

int runCodeForError(int errorNumber)
{
    switch (errorNumber) {
    case 6:
        return RunCode::ValueOverflow;
    case 7:
    case 14:
    case 28:
        return RunCode::OutOfMemory;
    case 9:
        return RunCode::InvalidIndex;
    case 13:
        return RunCode::TypeMismatch;
    case 35:
        return RunCode::SubOrFunctionExpected;
    case 449:
        return RunCode::RequiredParameterMissing;
    case 450:
        return RunCode::InvalidParameterCount;
    case 67:
        return RunCode::TooManyOpenFiles;
    case 70:
    case 75:
        return RunCode::PermissionDenied;
    case 53:
    case 76:
        return RunCode::FileOpenFailed;
    default:
        return RunCode::UnhandledException;
    }
}

MacroEngine::MacroEngine(EngineHost host) : m_host(std::move(host))
{
    m_loadResult.ok = false;
    m_loadResult.runCode = RunCode::FileOpenFailed;
    m_loadResult.message = QStringLiteral("No macro loaded");
}

MacroEngine::~MacroEngine() = default;

MacroResult MacroEngine::checkMacro(const QString &text)
{
    // The same compile step as a load: the host's names are the stand-in's application and
    // constants, which the checker knows already.
    try {
        const auto module = Parser::parse(text);
        Checker(*module, {}).check();
    } catch (const CompileException &e) {
        return compileFailure(e.error());
    }
    return {};
}

MacroResult checkMacro(const QString &text)
{
    return MacroEngine::checkMacro(text);
}

MacroResult MacroEngine::load(const QString &text)
{
    m_module.reset();
    try {
        auto module = Parser::parse(text);
        QSet<QString> known;
        for (auto it = m_host.globals.constBegin(); it != m_host.globals.constEnd(); ++it)
            known.insert(it.key().toLower());
        for (auto it = m_host.constants.constBegin(); it != m_host.constants.constEnd(); ++it)
            known.insert(it.key().toLower());
        Checker(*module, known).check();
        m_module = std::move(module);
        m_loadResult = MacroResult{};
    } catch (const CompileException &e) {
        m_loadResult = compileFailure(e.error());
    }
    return m_loadResult;
}

MacroResult MacroEngine::loadFile(const QString &nativePath)
{
    QFile file(nativePath);
    if (!file.open(QIODevice::ReadOnly)) {
        m_module.reset();
        m_loadResult = MacroResult{false, RunCode::FileOpenFailed, 53, QStringLiteral("File not found"), 0, 0};
        return m_loadResult;
    }
    return load(decodeWindows1252(file.readAll()));
}

MacroResult MacroEngine::run(const QString &moduleName, const QString &procedure)
{
    if (!m_module)
        return m_loadResult;
    const Procedure *proc = m_module->procedureIndex.value(procedure.toLower());
    if (moduleName.compare(QLatin1String(kModuleName), Qt::CaseInsensitive) != 0 || !proc) {
        return MacroResult{false, RunCode::InvalidProcedureName, 0, QStringLiteral("Invalid procedure name"), 0, 0};
    }
    for (const Param &p : proc->params) {
        if (!p.optional && !p.paramArray)
            return MacroResult{false, RunCode::InvalidParameterCount, 0, QStringLiteral("Argument not optional"), proc->pos.line, proc->pos.column};
    }
    Interpreter interp(*m_module, m_host);
    MacroResult result;
    try {
        interp.initialize();
        interp.call(procedure);
    } catch (const EndRequest &) {
        // End stops the macro without an error.
    } catch (const ScriptError &e) {
        result.ok = false;
        result.errorNumber = e.number();
        result.runCode = runCodeForError(e.number());
        result.message = e.description();
        result.line = e.pos().line;
        result.column = e.pos().column;
    } catch (const std::bad_alloc &) {
        // Space(2000000000) and the like: the macro fails, the application lives on.
        result = MacroResult{false, RunCode::OutOfMemory, 7, ScriptError::standardDescription(7), 0, 0};
    }
    interp.flushDebugOutput();
    interp.files().closeAll();
    if (!result.ok && m_host.messageBox) {
        // The macro stops with the run-time error window, as the application's own does.
        m_host.messageBox->showMessage(QStringLiteral("Mecadra"),
                                       QStringLiteral("Run-time error '%1':\n\n%2").arg(result.errorNumber).arg(result.message), 0);
    }
    return result;
}

} // namespace cadsim
