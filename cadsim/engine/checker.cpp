#include "cadsim/engine/checker.h"

#include "cadsim/engine/builtins.h"
#include "cadsim/engine/environment.h"

namespace cadsim {

Checker::Checker(const Module &module, QSet<QString> knownNames) : m_module(module), m_known(std::move(knownNames))
{
    m_known.insert(QStringLiteral("err"));
    m_known.insert(QStringLiteral("debug"));
    m_known.insert(QStringLiteral("application")); // the host application object, supplied at run time
    for (const VarDecl &v : module.variables)
        m_moduleNames.insert(v.lower);
    for (const ConstDecl &c : module.constants)
        m_moduleNames.insert(c.lower);
}

void Checker::fail(const QString &message, SourcePos pos, int runCode)
{
    throw CompileException(CompileError{message, pos, runCode});
}

bool Checker::isCallable(const QString &lower) const
{
    return m_module.procedureIndex.contains(lower) || m_module.declareIndex.contains(lower) || findBuiltin(lower);
}

bool Checker::isKnownValue(const QString &lower) const
{
    return m_locals.contains(lower) || m_moduleNames.contains(lower) || isCallable(lower) || m_known.contains(lower)
           || vbaConstants().contains(lower) || defaultCadConstants().contains(lower);
}

void Checker::declare(const QString &lower)
{
    m_locals.insert(lower);
}

void Checker::checkVariable(const QString &lower, SourcePos pos)
{
    if (isKnownValue(lower))
        return;
    if (m_module.optionExplicit)
        fail(QStringLiteral("Variable not defined"), pos, 3);
    declare(lower); // an implicit Variant
}

void Checker::check()
{
    for (const ConstDecl &c : m_module.constants)
        checkExpr(*c.value);
    for (const auto &proc : m_module.procedures)
        checkProcedure(*proc);
}

void Checker::checkProcedure(const Procedure &proc)
{
    m_proc = &proc;
    m_locals.clear();
    for (const Param &p : proc.params) {
        if (m_locals.contains(p.lower))
            fail(QStringLiteral("Duplicate declaration in current scope"), p.pos, 3);
        declare(p.lower);
        if (p.defaultValue)
            checkExpr(*p.defaultValue);
    }
    if (proc.isFunction)
        declare(proc.lower);
    checkBlock(proc.body);
    m_proc = nullptr;
}

void Checker::checkBlock(const Block &block)
{
    for (const StmtPtr &s : block)
        checkStmt(*s);
}

void Checker::checkArgs(const std::vector<Arg> &args)
{
    for (const Arg &a : args) {
        if (a.value)
            checkExpr(*a.value);
    }
}

void Checker::checkCallee(const Expr &callee, const std::vector<Arg> &args, bool hasArgList)
{
    if (callee.kind != ExprKind::Name) {
        checkExpr(callee);
        checkArgs(args);
        return;
    }
    const QString &name = callee.lower;
    if (const Procedure *proc = m_module.procedureIndex.value(name); proc && !m_locals.contains(name)) {
        std::size_t required = 0;
        bool paramArray = false;
        for (const Param &p : proc->params) {
            if (p.paramArray)
                paramArray = true;
            else if (!p.optional)
                ++required;
        }
        std::size_t positional = 0;
        for (const Arg &a : args) {
            if (a.name.isEmpty())
                ++positional;
        }
        if (positional > proc->params.size() && !paramArray)
            fail(QStringLiteral("Wrong number of arguments or invalid property assignment"), callee.pos, 9);
        if (args.size() < required) {
            std::size_t named = args.size() - positional;
            if (positional + named < required)
                fail(QStringLiteral("Argument not optional"), callee.pos, 15);
        }
    } else if (hasArgList && !isKnownValue(name)) {
        fail(QStringLiteral("Sub or Function not defined"), callee.pos, 8);
    } else if (!m_locals.contains(name) && !m_moduleNames.contains(name) && !m_module.declareIndex.contains(name)
               && findBuiltin(name)) {
        for (const Arg &a : args) {
            if (!a.name.isEmpty() && !builtinParameterNames(name).contains(a.name))
                fail(QStringLiteral("Named argument not found"), a.pos, 3);
        }
    } else {
        checkVariable(name, callee.pos);
    }
    checkArgs(args);
}

void Checker::checkExpr(const Expr &e)
{
    switch (e.kind) {
    case ExprKind::Literal:
    case ExprKind::Me:
        return;
    case ExprKind::Name:
        checkVariable(e.lower, e.pos);
        return;
    case ExprKind::Member:
        if (e.left)
            checkExpr(*e.left);
        return;
    case ExprKind::Call:
        checkCallee(*e.left, e.args, true);
        return;
    case ExprKind::Unary:
    case ExprKind::Paren:
    case ExprKind::TypeOf:
        checkExpr(*e.left);
        return;
    case ExprKind::Binary:
        checkExpr(*e.left);
        checkExpr(*e.right);
        return;
    }
}

void Checker::checkStmt(const Stmt &s)
{
    auto checkLabel = [&](const QString &label) {
        if (!m_proc->labels.contains(label))
            fail(QStringLiteral("Label not defined"), s.pos, 3);
    };
    switch (s.kind) {
    case StmtKind::Dim:
        for (const VarDecl &d : s.decls) {
            if (m_locals.contains(d.lower))
                fail(QStringLiteral("Duplicate declaration in current scope"), d.pos, 3);
            for (const Dimension &dim : d.dims) {
                if (dim.lower)
                    checkExpr(*dim.lower);
                checkExpr(*dim.upper);
            }
            declare(d.lower);
        }
        return;
    case StmtKind::Const:
        checkExpr(*s.value);
        if (m_locals.contains(s.constName))
            fail(QStringLiteral("Duplicate declaration in current scope"), s.pos, 3);
        declare(s.constName);
        checkBlock(s.body);
        return;
    case StmtKind::ReDim:
        for (const VarDecl &d : s.decls) {
            for (const Dimension &dim : d.dims) {
                if (dim.lower)
                    checkExpr(*dim.lower);
                checkExpr(*dim.upper);
            }
            if (d.member)
                checkExpr(*d.member);
            else if (!isKnownValue(d.lower))
                declare(d.lower);
        }
        return;
    case StmtKind::Assign:
    case StmtKind::SetAssign:
        checkExpr(*s.value);
        if (s.target->kind == ExprKind::Call)
            checkCallee(*s.target->left, s.target->args, false);
        else
            checkExpr(*s.target);
        return;
    case StmtKind::Call:
        checkCallee(*s.target, s.args, true);
        return;
    case StmtKind::If:
        for (const IfBranch &b : s.branches) {
            if (b.condition)
                checkExpr(*b.condition);
            checkBlock(b.body);
        }
        return;
    case StmtKind::For:
        checkExpr(*s.target);
        checkExpr(*s.value);
        checkExpr(*s.limit);
        if (s.step)
            checkExpr(*s.step);
        checkBlock(s.body);
        return;
    case StmtKind::ForEach:
        checkExpr(*s.target);
        checkExpr(*s.collection);
        checkBlock(s.body);
        return;
    case StmtKind::Do:
    case StmtKind::While:
        if (s.condition)
            checkExpr(*s.condition);
        checkBlock(s.body);
        return;
    case StmtKind::Select:
        checkExpr(*s.value);
        for (const CaseClause &c : s.cases) {
            for (const CaseTest &t : c.tests) {
                checkExpr(*t.a);
                if (t.b)
                    checkExpr(*t.b);
            }
            checkBlock(c.body);
        }
        return;
    case StmtKind::OnError:
        if (s.onError == OnErrorMode::GoTo)
            checkLabel(s.label);
        return;
    case StmtKind::Resume:
        if (s.resume == ResumeMode::Label)
            checkLabel(s.label);
        return;
    case StmtKind::GoTo:
        checkLabel(s.label);
        return;
    case StmtKind::With:
        checkExpr(*s.target);
        checkBlock(s.body);
        return;
    case StmtKind::Open:
        checkExpr(*s.value);
        checkExpr(*s.limit);
        return;
    case StmtKind::Close:
    case StmtKind::Erase:
        checkArgs(s.args);
        return;
    case StmtKind::Input:
        checkExpr(*s.value);
        checkArgs(s.args);
        return;
    case StmtKind::LSet:
    case StmtKind::RSet:
        checkExpr(*s.value);
        checkExpr(*s.target);
        return;
    case StmtKind::Print:
    case StmtKind::Write:
    case StmtKind::DebugPrint:
        if (s.value)
            checkExpr(*s.value);
        for (const PrintItem &item : s.items) {
            if (item.value)
                checkExpr(*item.value);
        }
        return;
    case StmtKind::LineInput:
        checkExpr(*s.value);
        checkExpr(*s.target);
        return;
    case StmtKind::Name:
        checkExpr(*s.value);
        checkExpr(*s.limit);
        return;
    case StmtKind::Exit:
    case StmtKind::Label:
    case StmtKind::End:
        return;
    }
}

} // namespace cadsim
