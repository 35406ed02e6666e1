#pragma once

#include "cadsim/engine/ast.h"
#include "cadsim/engine/lexer.h"

#include <QSet>
#include <QString>

namespace cadsim {

// The compile step after parsing: names (Option Explicit, calls of procedures that do not
// exist), labels and argument counts of the module's own procedures. Throws CompileException.
class Checker final {
public:
    // knownNames: names the host supplies (globals, constants), lower case.
    Checker(const Module &module, QSet<QString> knownNames);
    void check();

private:
    void checkProcedure(const Procedure &proc);
    void checkBlock(const Block &block);
    void checkStmt(const Stmt &s);
    void checkExpr(const Expr &e);
    void checkCallee(const Expr &callee, const std::vector<Arg> &args, bool hasArgList);
    void checkArgs(const std::vector<Arg> &args);
    void checkVariable(const QString &lower, SourcePos pos);
    void declare(const QString &lower);
    bool isKnownValue(const QString &lower) const;
    bool isCallable(const QString &lower) const;
    [[noreturn]] void fail(const QString &message, SourcePos pos, int runCode);

    const Module &m_module;
    QSet<QString> m_known;
    QSet<QString> m_moduleNames;
    QSet<QString> m_locals;
    const Procedure *m_proc = nullptr;
};

} // namespace cadsim
