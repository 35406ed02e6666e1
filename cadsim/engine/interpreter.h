#pragma once

#include "cadsim/engine/ast.h"
#include "cadsim/engine/environment.h"
#include "cadsim/engine/errobject.h"
#include "cadsim/engine/filetable.h"
#include "cadsim/engine/randomgenerator.h"
#include "cadsim/engine/scriptobject.h"

#include <QStringList>

#include <memory>
#include <unordered_map>
#include <vector>

namespace cadsim {

// Raised by the End statement: the macro stops at once.
struct EndRequest {};

// Walks the syntax tree of one module. Module variables live as long as the interpreter.
class Interpreter final {
public:
    Interpreter(const Module &module, EngineHost host);
    ~Interpreter();
    Interpreter(const Interpreter &) = delete;
    Interpreter &operator=(const Interpreter &) = delete;

    // Module constants and variables; raises ScriptError for a bad constant.
    void initialize();
    // Runs a procedure with the given values; returns a Function's result. Unhandled run-time
    // errors come out as ScriptError with the position of the failing statement; End as
    // EndRequest.
    ScriptValue call(const QString &procedure, std::vector<ScriptValue> args = {});

    // For the built-in functions.
    const EngineHost &host() const { return m_host; }
    bool compareText() const { return m_module.compareText; }
    FileTable &files() { return m_files; }
    ErrObject &err() { return *m_err; }
    QString resolvePath(const QString &windowsPath) const;
    double now() const;
    ScriptValue createObject(const QString &progId);
    ScriptValue getObject(const QString &path, const QString &progId);
    int messageBox(const QString &prompt, int buttons, const QString &title);
    // State of Dir: the names left from the last pattern.
    QStringList &dirMatches() { return m_dirMatches; }
    int optionBase() const { return m_module.optionBase; }
    RandomGenerator &random() { return m_random; }

private:
    struct Variable {
        ScriptValue value;
        ScriptValue *ref = nullptr; // ByRef parameter: the caller's storage
        std::shared_ptr<ScriptArray> refOwner; // keeps an array element alive while referred to
        DeclType type = DeclType::Variant;
        bool isConst = false;
        bool fixedArray = false;
        ScriptValue &slot() { return ref ? *ref : value; }
    };
    struct Frame {
        const Procedure *proc = nullptr;
        std::unordered_map<QString, Variable> locals;
        OnErrorMode errorMode = OnErrorMode::Disable;
        QString errorLabel;
        bool inHandler = false;
        int topIndex = 0;      // top-level statement being run
        int resumeIndex = -1;  // top-level statement that raised the handled error
        int jumpIndex = -1;    // pending jump to a top-level statement
        QString jumpLabel;     // pending GoTo to a label inside a block
        std::vector<ScriptValue> withStack;
    };
    // ResumeNext/ResumeHere come out of an error handler back to the statement that failed.
    enum class Flow { Normal, ExitFor, ExitDo, ExitProc, Jump, ResumeNext, ResumeHere };

    ScriptValue invokeProcedure(const Procedure &proc, const std::vector<Arg> &args, const std::vector<ScriptValue> *values);
    Flow runBody(Frame &frame);
    Flow runHandler(Frame &frame, int labelIndex);
    Flow execBlock(const Block &block);
    Flow exec(const Stmt &s);
    Flow handleError(ScriptError &error, const Stmt &s);
    Flow execIf(const Stmt &s);
    Flow execFor(const Stmt &s);
    Flow execForEach(const Stmt &s);
    Flow execDo(const Stmt &s);
    Flow execSelect(const Stmt &s);
    void execDim(const Stmt &s);
    void execReDim(const Stmt &s);
    void execCall(const Stmt &s);
    void execOpen(const Stmt &s);
    void execPrint(const Stmt &s);
    Flow execResume(const Stmt &s);
    Flow jumpTo(const QString &label, SourcePos pos);
public:
    // Writes out a Debug.Print line left open by a trailing ";" or ",".
    void flushDebugOutput();
private:

    ScriptValue eval(const Expr &e);
    ScriptValue evalName(const Expr &e);
    ScriptValue evalCall(const Expr &e, CallKind kind);
    ScriptValue evalMember(const Expr &e, CallKind kind, const std::vector<Arg> *args, const ScriptValue *assigned);
    ScriptValue objectOf(const Expr *objectExpr);
    ScriptValue callByName(const Expr &nameExpr, const std::vector<Arg> &args, CallKind kind, bool hadParens);
    ScriptValue callDeclare(const DeclareProc &d, const std::vector<Arg> &args);
    ScriptValue indexValue(const ScriptValue &base, const std::vector<Arg> &args);
    std::vector<std::int32_t> indexes(const std::vector<Arg> &args);
    void assign(const Expr &target, const ScriptValue &value, bool isSet, SourcePos pos);
    void store(Variable &var, const ScriptValue &value, bool isSet);
    ScriptValue coerce(const ScriptValue &value, DeclType type, bool isSet);
    ScriptValue initialValue(DeclType type) const;
    // The starting value of a declared variable, field or element; a user-defined type's is a
    // fresh record.
    ScriptValue initialValue(DeclType type, const QString &className);
    ScriptValue newRecord(const QString &typeLower);
    ScriptValue newArray(const std::vector<Dimension> &dims, DeclType type, const QString &className = {});
    ScriptValue declaredValue(const VarDecl &d); // Dim, module variables, fields
    void execMidStatement(const Expr &target, const ScriptValue &value);
    void execPad(const Stmt &s);
    void execInput(const Stmt &s);

    Variable *findVariable(const QString &lower);
    Variable &implicitVariable(const QString &lower);
    // For ByRef arguments; null when not addressable. An array element comes with its array.
    ScriptValue *addressOf(const Expr &e, std::shared_ptr<ScriptArray> *owner = nullptr);
    bool constantValue(const QString &lower, ScriptValue *out) const;
    ScriptValue evalConst(const Expr &e);

    const Module &m_module;
    EngineHost m_host;
    std::unordered_map<QString, Variable> m_moduleVars;
    std::vector<Frame *> m_frames;
    std::shared_ptr<ErrObject> m_err;
    FileTable m_files;
    QStringList m_dirMatches;
    QHash<QString, ScriptValue> m_constants; // host constants over the defaults
    std::unordered_map<QString, Variable> m_statics; // "procedure.variable" -> Static storage
    int m_depth = 0;
    const char *m_stackTop = nullptr; // where the outermost call started
    QString m_debugLine; // Debug.Print text not yet ended
    bool m_debugOpen = false;
    RandomGenerator m_random;
    std::unordered_map<QString, std::shared_ptr<const QStringList>> m_fieldNames; // per user-defined type
};

} // namespace cadsim
