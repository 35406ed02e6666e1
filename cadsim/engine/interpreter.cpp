#include "cadsim/engine/interpreter.h"

#include "cadsim/engine/builtins.h"
#include "cadsim/engine/collections.h"
#include "cadsim/engine/fso.h"
#include "cadsim/engine/operators.h"
#include "cadsim/engine/record.h"
#include "cadsim/engine/regexpobject.h"

#include <QDateTime>
#include <QFile>
#include <QFileInfo>

#include <algorithm>
#include <cmath>

namespace cadsim {

namespace {

constexpr int kMaxDepth = 1000;
// Stack a macro's calls may take: well inside the 8 MB of the threads that run macros, with room
// for the deepest statement and expression that the parser lets through in the last call.
constexpr std::ptrdiff_t kStackBudget = 3 << 20;

void setPosIfUnknown(ScriptError &e, SourcePos pos)
{
    if (e.pos().line == 0)
        e.setPos(pos);
}

} // namespace

Interpreter::Interpreter(const Module &module, EngineHost host)
    : m_module(module), m_host(std::move(host)), m_err(std::make_shared<ErrObject>())
{
    m_constants = defaultCadConstants();
    for (auto it = m_host.constants.constBegin(); it != m_host.constants.constEnd(); ++it)
        m_constants.insert(it.key().toLower(), it.value());
}

Interpreter::~Interpreter() = default;

QString Interpreter::resolvePath(const QString &windowsPath) const
{
    return m_host.resolvePath ? m_host.resolvePath(windowsPath) : windowsPath;
}

double Interpreter::now() const
{
    if (m_host.now)
        return m_host.now();
    const QDateTime t = QDateTime::currentDateTime();
    return oleDateFromParts(t.date().year(), t.date().month(), t.date().day(), t.time().hour(), t.time().minute(),
                            t.time().second());
}

ScriptValue Interpreter::createObject(const QString &progId)
{
    if (m_host.createObject) {
        if (auto obj = m_host.createObject(progId.toLower()))
            return ScriptValue::fromObject(obj);
    }
    const QString id = progId.toLower();
    if (id == QLatin1String("scripting.dictionary"))
        return ScriptValue::fromObject(makeDictionary());
    if (id == QLatin1String("vbscript.regexp"))
        return ScriptValue::fromObject(makeRegExp());
    if (id == QLatin1String("collection") || id == QLatin1String("vba.collection"))
        return ScriptValue::fromObject(makeCollection());
    if (progId.compare(QLatin1String("Scripting.FileSystemObject"), Qt::CaseInsensitive) == 0)
        return ScriptValue::fromObject(std::make_shared<FileSystemObject>([this](const QString &p) { return resolvePath(p); }));
    throw ScriptError(ErrNo::CannotCreateObject);
}

ScriptValue Interpreter::getObject(const QString &path, const QString &progId)
{
    if (m_host.getObject) {
        if (auto obj = m_host.getObject(path, progId.toLower()))
            return ScriptValue::fromObject(obj);
    }
    if (path.isEmpty()) {
        const auto it = m_host.globals.constFind(QStringLiteral("application"));
        if (it != m_host.globals.constEnd())
            return *it;
    }
    throw ScriptError(ErrNo::CannotCreateObject);
}

int Interpreter::messageBox(const QString &prompt, int buttons, const QString &title)
{
    if (!m_host.messageBox)
        return 1; // vbOK
    return m_host.messageBox->showMessage(title, prompt, buttons);
}

bool Interpreter::constantValue(const QString &lower, ScriptValue *out) const
{
    const auto &vba = vbaConstants();
    auto it = vba.constFind(lower);
    if (it != vba.constEnd()) {
        *out = *it;
        return true;
    }
    it = m_constants.constFind(lower);
    if (it != m_constants.constEnd()) {
        *out = *it;
        return true;
    }
    return false;
}

ScriptValue Interpreter::initialValue(DeclType type) const
{
    switch (type) {
    case DeclType::Integer:
        return ScriptValue::fromInteger(0);
    case DeclType::Byte:
        return ScriptValue::fromByte(0);
    case DeclType::Long:
        return ScriptValue::fromLong(0);
    case DeclType::Double:
        return ScriptValue::fromDouble(0);
    case DeclType::Single:
        return ScriptValue::fromSingle(0);
    case DeclType::Currency:
        return ScriptValue::fromCurrency(0);
    case DeclType::String:
        return ScriptValue::fromString(QString());
    case DeclType::Boolean:
        return ScriptValue::fromBool(false);
    case DeclType::Date:
        return ScriptValue::fromDate(0);
    case DeclType::Object:
        return ScriptValue::nothing();
    case DeclType::Variant:
    case DeclType::UserType:
        break;
    }
    return {};
}

ScriptValue Interpreter::initialValue(DeclType type, const QString &className)
{
    return type == DeclType::UserType ? newRecord(className) : initialValue(type);
}

ScriptValue Interpreter::newRecord(const QString &typeLower)
{
    const UserTypeDecl *type = m_module.typeIndex.value(typeLower);
    if (!type)
        throw ScriptError(ErrNo::TypeMismatch, QStringLiteral("User-defined type not defined"));
    auto &names = m_fieldNames[typeLower];
    if (!names) {
        auto list = std::make_shared<QStringList>();
        for (const VarDecl &f : type->fields)
            list->append(f.lower);
        names = std::move(list);
    }
    std::vector<ScriptValue> values;
    values.reserve(type->fields.size());
    for (const VarDecl &f : type->fields)
        values.push_back(declaredValue(f));
    return ScriptValue::fromRecord(std::make_shared<ScriptRecord>(type->name, names, std::move(values)));
}

ScriptValue Interpreter::declaredValue(const VarDecl &d)
{
    if (d.isArray) {
        if (d.dims.empty())
            return ScriptValue::fromArray(std::make_shared<ScriptArray>());
        ScriptValue a = newArray(d.dims, d.type, d.className);
        a.array()->fixed = true;
        return a;
    }
    if (d.isNew)
        return createObject(d.className);
    return initialValue(d.type, d.className);
}

ScriptValue Interpreter::coerce(const ScriptValue &value, DeclType type, bool isSet)
{
    if (isSet) {
        if (!value.isObject())
            throw ScriptError(ErrNo::ObjectRequired);
        if (type != DeclType::Variant && type != DeclType::Object)
            throw ScriptError(ErrNo::TypeMismatch);
        return value;
    }
    ScriptValue v = value;
    if (v.isObject() && type != DeclType::Object) {
        if (!v.object())
            throw ScriptError(ErrNo::ObjectVariableNotSet);
        ScriptArgs none;
        v = v.object()->defaultValue(none);
    }
    switch (type) {
    case DeclType::Variant:
        return v.copied();
    case DeclType::Integer:
        return ScriptValue::fromInteger(v.toInteger());
    case DeclType::Byte:
        return toByte(v);
    case DeclType::Long:
        return ScriptValue::fromLong(v.toLong());
    case DeclType::Double:
        return ScriptValue::fromDouble(v.toDouble());
    case DeclType::Single:
        return ScriptValue::fromSingle(v.toDouble());
    case DeclType::Currency:
        return ScriptValue::fromCurrency(v.toCurrency());
    case DeclType::String:
        return ScriptValue::fromString(v.toString());
    case DeclType::Boolean:
        return ScriptValue::fromBool(v.toBool());
    case DeclType::Date:
        return ScriptValue::fromDate(v.toDouble());
    case DeclType::Object:
        // "obj = x" without Set on an object variable
        throw ScriptError(ErrNo::ObjectVariableNotSet);
    case DeclType::UserType:
        if (!v.isRecord())
            throw ScriptError(ErrNo::TypeMismatch);
        return v.copied();
    }
    return v;
}

void Interpreter::store(Variable &var, const ScriptValue &value, bool isSet)
{
    if (var.isConst)
        throw ScriptError(ErrNo::TypeMismatch, QStringLiteral("Assignment to constant not permitted"));
    if (var.fixedArray)
        throw ScriptError(ErrNo::ArrayFixed);
    if (!isSet && var.type == DeclType::Variant && value.isObject()) {
        // Let of an object into a Variant takes its default value.
        if (!value.object())
            throw ScriptError(ErrNo::ObjectVariableNotSet);
        ScriptArgs none;
        var.slot() = value.object()->defaultValue(none);
        return;
    }
    if (value.isArray() && var.type != DeclType::Variant && !var.slot().isArray())
        throw ScriptError(ErrNo::TypeMismatch);
    var.slot() = value.isArray() ? value.copied() : coerce(value, var.type, isSet);
}

ScriptValue Interpreter::newArray(const std::vector<Dimension> &dims, DeclType type, const QString &className)
{
    std::vector<ScriptArray::Bound> bounds;
    for (const Dimension &d : dims) {
        ScriptArray::Bound b;
        b.lower = d.lower ? eval(*d.lower).toLong() : m_module.optionBase;
        b.upper = eval(*d.upper).toLong();
        if (b.upper < b.lower)
            throw ScriptError(ErrNo::SubscriptOutOfRange);
        bounds.push_back(b);
    }
    auto a = ScriptArray::create(bounds);
    if (type == DeclType::UserType) {
        for (ScriptValue &item : a->items)
            item = newRecord(className);
        return ScriptValue::fromArray(a);
    }
    const ScriptValue init = initialValue(type);
    if (!init.isEmpty())
        std::fill(a->items.begin(), a->items.end(), init);
    return ScriptValue::fromArray(a);
}

ScriptValue Interpreter::evalConst(const Expr &e)
{
    return eval(e);
}

void Interpreter::initialize()
{
    m_moduleVars.clear();
    for (const ConstDecl &c : m_module.constants) {
        Variable v;
        try {
            v.value = evalConst(*c.value);
        } catch (ScriptError &e) {
            setPosIfUnknown(e, c.pos);
            throw;
        }
        v.isConst = true;
        m_moduleVars[c.lower] = std::move(v);
    }
    for (const VarDecl &d : m_module.variables) {
        Variable v;
        v.type = d.type;
        try {
            v.value = declaredValue(d);
        } catch (ScriptError &e) {
            setPosIfUnknown(e, d.pos);
            throw;
        }
        if (d.isArray) {
            v.fixedArray = !d.dims.empty();
            v.type = DeclType::Variant;
        }
        m_moduleVars[d.lower] = std::move(v);
    }
}

Interpreter::Variable *Interpreter::findVariable(const QString &lower)
{
    if (!m_frames.empty()) {
        auto &locals = m_frames.back()->locals;
        const auto it = locals.find(lower);
        if (it != locals.end())
            return &it->second;
    }
    const auto it = m_moduleVars.find(lower);
    return it != m_moduleVars.end() ? &it->second : nullptr;
}

Interpreter::Variable &Interpreter::implicitVariable(const QString &lower)
{
    if (m_frames.empty())
        return m_moduleVars[lower];
    return m_frames.back()->locals[lower];
}

ScriptValue Interpreter::call(const QString &procedure, std::vector<ScriptValue> args)
{
    const Procedure *proc = m_module.procedureIndex.value(procedure.toLower());
    if (!proc)
        throw ScriptError(35);
    const char here = 0;
    const char *const outer = m_stackTop;
    if (!outer)
        m_stackTop = &here;
    struct Restore {
        Interpreter *self;
        const char *outer;
        ~Restore() { self->m_stackTop = outer; }
    } restore{this, outer};
    return invokeProcedure(*proc, {}, &args);
}

// ---- procedures ---------------------------------------------------------------------------

ScriptValue Interpreter::invokeProcedure(const Procedure &proc, const std::vector<Arg> &args,
                                         const std::vector<ScriptValue> *values)
{
    const char here = 0;
    if (m_depth >= kMaxDepth || (m_stackTop && m_stackTop - &here > kStackBudget))
        throw ScriptError(28);
    Frame frame;
    frame.proc = &proc;
    frame.locals.reserve(proc.params.size() + 8);
    const std::size_t given = values ? values->size() : args.size();
    // Bind arguments: positional first, then named.
    std::vector<const Arg *> bound(proc.params.size(), nullptr);
    std::vector<bool> boundValue(proc.params.size(), false);
    std::vector<ScriptValue> paramArray;
    const Param *paramArrayParam = (!proc.params.empty() && proc.params.back().paramArray) ? &proc.params.back() : nullptr;
    for (std::size_t i = 0; i < given; ++i) {
        const Arg *a = values ? nullptr : &args[i];
        if (a && !a->name.isEmpty()) {
            bool found = false;
            for (std::size_t p = 0; p < proc.params.size(); ++p) {
                if (proc.params[p].lower == a->name) {
                    bound[p] = a;
                    found = true;
                }
            }
            if (!found)
                throw ScriptError(448);
            continue;
        }
        if (paramArrayParam && i + 1 >= proc.params.size()) {
            paramArray.push_back(values ? (*values)[i] : (a->value ? eval(*a->value) : ScriptValue::missing()));
            continue;
        }
        if (i >= proc.params.size())
            throw ScriptError(450);
        if (values)
            boundValue[i] = true;
        else
            bound[i] = a;
    }
    for (std::size_t p = 0; p < proc.params.size(); ++p) {
        const Param &param = proc.params[p];
        Variable var;
        var.type = param.isArray ? DeclType::Variant : param.type;
        if (param.paramArray) {
            var.value = ScriptValue::fromList(paramArray);
        } else if (boundValue[p]) {
            var.value = (*values)[p];
        } else if (bound[p] && bound[p]->value) {
            const Expr &argExpr = *bound[p]->value;
            // The callee may ReDim or Erase the array of an element it got by reference.
            ScriptValue *ref = param.byRef ? addressOf(argExpr, &var.refOwner) : nullptr;
            if (ref && (param.type == DeclType::Variant || param.isArray)) {
                var.ref = ref;
            } else if (param.type == DeclType::UserType) {
                // Records always go by reference; an expression's value is a temporary.
                const ScriptValue v = eval(argExpr);
                if (!v.isRecord() || v.object()->typeName().compare(m_module.typeIndex.value(param.className)->name, Qt::CaseInsensitive) != 0)
                    throw ScriptError(ErrNo::TypeMismatch, QStringLiteral("ByRef argument type mismatch"));
                if (ref)
                    var.ref = ref;
                else
                    var.value = v;
            } else {
                const ScriptValue v = eval(argExpr);
                if (ref && param.type != DeclType::Variant && v.type() != initialValue(param.type).type()
                    && !(param.type == DeclType::Object && v.isObject()))
                    throw ScriptError(ErrNo::TypeMismatch, QStringLiteral("ByRef argument type mismatch"));
                if (ref)
                    var.ref = ref;
                else
                    var.value = v.isObject() ? coerce(v, param.type, true) : coerce(v, param.type, false);
            }
        } else {
            if (!param.optional)
                throw ScriptError(ErrNo::ArgumentNotOptional);
            var.value = param.defaultValue ? coerce(eval(*param.defaultValue), param.type, false)
                                           : (param.type == DeclType::Variant ? ScriptValue::missing() : initialValue(param.type));
        }
        frame.locals[param.lower] = std::move(var);
    }
    if (proc.isFunction) {
        Variable result;
        result.type = proc.returnType;
        result.value = initialValue(proc.returnType, proc.returnClass);
        frame.locals.emplace(proc.lower, std::move(result));
    }
    m_frames.push_back(&frame);
    ++m_depth;
    struct Pop {
        Interpreter *self;
        ~Pop()
        {
            self->m_frames.pop_back();
            --self->m_depth;
        }
    } pop{this};
    runBody(frame);
    if (frame.inHandler || frame.errorMode != OnErrorMode::Disable)
        m_err->clear();
    if (proc.isFunction)
        return frame.locals[proc.lower].value;
    return {};
}

Interpreter::Flow Interpreter::runBody(Frame &frame)
{
    const Block &body = frame.proc->body;
    int i = 0;
    while (i < static_cast<int>(body.size())) {
        frame.topIndex = i;
        Flow flow = Flow::Normal;
        try {
            flow = exec(*body[i]);
        } catch (ScriptError &e) {
            flow = handleError(e, *body[i]);
        }
        if (flow == Flow::ExitProc)
            return flow;
        if (flow == Flow::ResumeHere)
            continue; // run the failed statement again
        if (flow == Flow::ResumeNext) {
            // Resume from a handler that was reached by a jump: the statement after the failed one.
            i = frame.resumeIndex + 1;
            continue;
        }
        if (flow == Flow::Jump) {
            if (frame.jumpIndex < 0) {
                // A label inside a block that is not open here: VBA cannot jump into blocks either.
                throw ScriptError(ErrNo::InvalidCall, QStringLiteral("Label not defined"), body[i]->pos);
            }
            i = frame.jumpIndex;
            frame.jumpIndex = -1;
            frame.jumpLabel.clear();
            continue;
        }
        ++i;
    }
    return Flow::Normal;
}

// The handler runs right where the error happened, so that Resume Next continues inside the
// loop or block that failed, with its state intact.
Interpreter::Flow Interpreter::handleError(ScriptError &error, const Stmt &s)
{
    setPosIfUnknown(error, s.pos);
    Frame &frame = *m_frames.back();
    if (frame.inHandler || frame.errorMode == OnErrorMode::Disable)
        throw error;
    m_err->set(error);
    if (frame.errorMode == OnErrorMode::ResumeNext)
        return Flow::Normal;
    frame.inHandler = true;
    frame.resumeIndex = frame.topIndex;
    const auto it = frame.proc->labels.constFind(frame.errorLabel);
    if (it == frame.proc->labels.constEnd() || *it < 0)
        return jumpTo(frame.errorLabel, s.pos); // a handler inside a block: jump there
    const Flow flow = runHandler(frame, *it);
    if (flow == Flow::ResumeNext)
        return Flow::Normal;
    return flow;
}

Interpreter::Flow Interpreter::runHandler(Frame &frame, int labelIndex)
{
    const Block &body = frame.proc->body;
    int i = labelIndex;
    while (i < static_cast<int>(body.size())) {
        Flow flow = Flow::Normal;
        try {
            flow = exec(*body[i]);
        } catch (ScriptError &e) {
            flow = handleError(e, *body[i]); // after a Resume the frame may trap again
        }
        switch (flow) {
        case Flow::Normal:
        case Flow::ExitFor:
        case Flow::ExitDo:
            ++i;
            break;
        case Flow::Jump:
            // Resume label unwinds to the procedure's level; a GoTo inside the handler stays here.
            if (frame.jumpIndex < 0 || !frame.inHandler)
                return flow;
            i = frame.jumpIndex;
            frame.jumpIndex = -1;
            break;
        default:
            return flow;
        }
    }
    return Flow::ExitProc; // the handler ran to End Sub
}

Interpreter::Flow Interpreter::jumpTo(const QString &label, SourcePos pos)
{
    Frame &frame = *m_frames.back();
    const auto it = frame.proc->labels.constFind(label);
    if (it == frame.proc->labels.constEnd())
        throw ScriptError(ErrNo::InvalidCall, QStringLiteral("Label not defined"), pos);
    frame.jumpIndex = *it;
    frame.jumpLabel = *it < 0 ? label : QString();
    return Flow::Jump;
}

Interpreter::Flow Interpreter::execBlock(const Block &block)
{
    for (std::size_t i = 0; i < block.size(); ++i) {
        const Stmt &s = *block[i];
        Flow flow = Flow::Normal;
        try {
            flow = exec(s);
        } catch (ScriptError &e) {
            flow = handleError(e, s);
        }
        if (flow == Flow::ResumeHere) {
            --i; // run the failed statement again
            continue;
        }
        if (flow == Flow::Jump) {
            Frame &frame = *m_frames.back();
            if (!frame.jumpLabel.isEmpty()) {
                for (std::size_t j = 0; j < block.size(); ++j) {
                    if (block[j]->kind == StmtKind::Label && block[j]->label == frame.jumpLabel) {
                        frame.jumpLabel.clear();
                        frame.jumpIndex = -1;
                        i = j; // continue after the label
                        flow = Flow::Normal;
                        break;
                    }
                }
            }
        }
        if (flow != Flow::Normal)
            return flow;
    }
    return Flow::Normal;
}

// ---- statements ---------------------------------------------------------------------------

Interpreter::Flow Interpreter::exec(const Stmt &s)
{
    switch (s.kind) {
    case StmtKind::Label:
        return Flow::Normal;
    case StmtKind::Dim:
        execDim(s);
        return Flow::Normal;
    case StmtKind::Const: {
        Variable v;
        v.value = eval(*s.value);
        v.isConst = true;
        m_frames.back()->locals[s.constName] = std::move(v);
        for (const StmtPtr &more : s.body)
            exec(*more);
        return Flow::Normal;
    }
    case StmtKind::ReDim:
        execReDim(s);
        return Flow::Normal;
    case StmtKind::Assign:
        assign(*s.target, eval(*s.value), false, s.pos);
        return Flow::Normal;
    case StmtKind::SetAssign:
        assign(*s.target, eval(*s.value), true, s.pos);
        return Flow::Normal;
    case StmtKind::Call:
        execCall(s);
        return Flow::Normal;
    case StmtKind::If:
        return execIf(s);
    case StmtKind::For:
        return execFor(s);
    case StmtKind::ForEach:
        return execForEach(s);
    case StmtKind::Do:
    case StmtKind::While:
        return execDo(s);
    case StmtKind::Select:
        return execSelect(s);
    case StmtKind::Exit:
        switch (s.exitKind) {
        case ExitKind::For:
            return Flow::ExitFor;
        case ExitKind::Do:
            return Flow::ExitDo;
        default:
            return Flow::ExitProc;
        }
    case StmtKind::OnError: {
        Frame &frame = *m_frames.back();
        frame.errorMode = s.onError;
        frame.errorLabel = s.label;
        if (s.label == QLatin1String("-1"))
            frame.inHandler = false;
        m_err->clear();
        return Flow::Normal;
    }
    case StmtKind::Resume:
        return execResume(s);
    case StmtKind::GoTo:
        return jumpTo(s.label, s.pos);
    case StmtKind::With: {
        Frame &frame = *m_frames.back();
        frame.withStack.push_back(eval(*s.target));
        struct PopWith {
            Frame &f;
            ~PopWith() { f.withStack.pop_back(); }
        } popWith{frame};
        return execBlock(s.body);
    }
    case StmtKind::Open:
        execOpen(s);
        return Flow::Normal;
    case StmtKind::Close:
        if (s.args.empty())
            m_files.closeAll();
        for (const Arg &a : s.args)
            m_files.close(eval(*a.value).toLong());
        return Flow::Normal;
    case StmtKind::Print:
    case StmtKind::Write:
    case StmtKind::DebugPrint:
        execPrint(s);
        return Flow::Normal;
    case StmtKind::LineInput: {
        const QString line = m_files.readLine(eval(*s.value).toLong());
        assign(*s.target, ScriptValue::fromString(line), false, s.pos);
        return Flow::Normal;
    }
    case StmtKind::LSet:
    case StmtKind::RSet:
        execPad(s);
        return Flow::Normal;
    case StmtKind::Input:
        execInput(s);
        return Flow::Normal;
    case StmtKind::Erase:
        for (const Arg &a : s.args) {
            Variable *v = a.value->kind == ExprKind::Name ? findVariable(a.value->lower) : nullptr;
            if (!v || !v->slot().isArray())
                throw ScriptError(ErrNo::TypeMismatch);
            if (v->fixedArray) {
                for (ScriptValue &item : v->slot().array()->items)
                    item = ScriptValue();
            } else {
                v->slot() = ScriptValue::fromArray(std::make_shared<ScriptArray>());
            }
        }
        return Flow::Normal;
    case StmtKind::End:
        throw EndRequest{};
    case StmtKind::Name: {
        const QString from = resolvePath(eval(*s.value).toString());
        const QString to = resolvePath(eval(*s.limit).toString());
        if (!QFileInfo::exists(from))
            throw ScriptError(ErrNo::FileNotFound);
        if (QFileInfo::exists(to))
            throw ScriptError(ErrNo::FileAlreadyExists);
        if (m_files.isPathOpen(from))
            throw ScriptError(ErrNo::PathFileAccess);
        if (!QFile::rename(from, to))
            throw ScriptError(ErrNo::PathFileAccess);
        return Flow::Normal;
    }
    }
    return Flow::Normal;
}

Interpreter::Flow Interpreter::execResume(const Stmt &s)
{
    Frame &frame = *m_frames.back();
    if (!frame.inHandler)
        throw ScriptError(ErrNo::ResumeWithoutError);
    frame.inHandler = false;
    m_err->clear();
    switch (s.resume) {
    case ResumeMode::Here:
        return Flow::ResumeHere;
    case ResumeMode::Next:
        return Flow::ResumeNext;
    case ResumeMode::Label:
        break;
    }
    return jumpTo(s.label, s.pos);
}

void Interpreter::execDim(const Stmt &s)
{
    Frame &frame = *m_frames.back();
    for (const VarDecl &d : s.decls) {
        Variable v;
        v.type = d.type;
        // A dynamic array starts without dimensions: UBound fails until ReDim.
        v.value = declaredValue(d);
        if (d.isArray) {
            v.fixedArray = !d.dims.empty();
            v.type = DeclType::Variant;
        }
        if (s.isStatic) {
            // The first run of the Static statement creates the storage; later calls reuse it.
            const QString key = frame.proc->lower + QLatin1Char('.') + d.lower;
            auto it = m_statics.find(key);
            if (it == m_statics.end())
                it = m_statics.emplace(key, std::move(v)).first;
            Variable local;
            local.type = it->second.type;
            local.fixedArray = it->second.fixedArray;
            local.ref = &it->second.value;
            frame.locals[d.lower] = std::move(local);
            continue;
        }
        frame.locals[d.lower] = std::move(v);
    }
}

void Interpreter::execReDim(const Stmt &s)
{
    for (const VarDecl &d : s.decls) {
        Variable *var = nullptr;
        ScriptValue memberValue;
        if (d.member) {
            memberValue = eval(*d.member);
        } else {
            var = findVariable(d.lower);
            if (!var)
                var = &implicitVariable(d.lower);
            if (var->fixedArray)
                throw ScriptError(ErrNo::ArrayFixed);
        }
        const ScriptValue &current = var ? var->slot() : memberValue;
        // A fixed array reached through a ByRef Variant is still fixed.
        if (current.isArray() && current.array()->fixed)
            throw ScriptError(ErrNo::ArrayFixed);
        ScriptValue fresh = newArray(d.dims, d.type, d.className);
        if (s.preserve && current.isArray() && !current.array()->bounds.empty()) {
            const ScriptArray &old = *current.array();
            ScriptArray &now = *fresh.array();
            if (old.bounds.size() != now.bounds.size())
                throw ScriptError(ErrNo::SubscriptOutOfRange);
            for (std::size_t i = 0; i + 1 < old.bounds.size(); ++i) {
                if (old.bounds[i].lower != now.bounds[i].lower || old.bounds[i].upper != now.bounds[i].upper)
                    throw ScriptError(ErrNo::SubscriptOutOfRange);
            }
            // Only the last dimension may change: copy element by element.
            const std::size_t lastOld = static_cast<std::size_t>(old.bounds.back().count());
            const std::size_t lastNew = static_cast<std::size_t>(now.bounds.back().count());
            const std::size_t rows = lastOld ? old.items.size() / lastOld : 0;
            const std::size_t keep = std::min(lastOld, lastNew);
            const std::int32_t shift = old.bounds.back().lower - now.bounds.back().lower;
            for (std::size_t r = 0; r < rows; ++r) {
                for (std::size_t c = 0; c < keep; ++c) {
                    const std::int64_t target = static_cast<std::int64_t>(c) + shift;
                    if (target >= 0 && target < static_cast<std::int64_t>(lastNew))
                        now.items[r * lastNew + static_cast<std::size_t>(target)] = old.items[r * lastOld + c];
                }
            }
        }
        if (var)
            var->slot() = fresh;
        else
            assign(*d.member, fresh, false, d.pos);
    }
}

Interpreter::Flow Interpreter::execIf(const Stmt &s)
{
    for (const IfBranch &b : s.branches) {
        if (b.condition) {
            const ScriptValue c = eval(*b.condition);
            if (c.isNull() || !c.toBool())
                continue;
        }
        return execBlock(b.body);
    }
    return Flow::Normal;
}

Interpreter::Flow Interpreter::execFor(const Stmt &s)
{
    const ScriptValue start = eval(*s.value);
    const ScriptValue limit = eval(*s.limit);
    const ScriptValue step = s.step ? eval(*s.step) : ScriptValue::fromInteger(1);
    const double end = limit.toDouble();
    const double stepValue = step.toDouble();
    assign(*s.target, start, false, s.pos);
    for (;;) {
        const double v = eval(*s.target).toDouble();
        if (stepValue >= 0 ? v > end : v < end)
            break;
        const Flow flow = execBlock(s.body);
        if (flow == Flow::ExitFor)
            break;
        if (flow != Flow::Normal)
            return flow;
        assign(*s.target, applyBinary(Op::Add, eval(*s.target), step, false), false, s.pos);
    }
    return Flow::Normal;
}

Interpreter::Flow Interpreter::execForEach(const Stmt &s)
{
    const ScriptValue coll = eval(*s.collection);
    std::vector<ScriptValue> items;
    if (coll.isArray())
        items = coll.array()->items;
    else if (coll.isObject() && coll.object())
        items = coll.object()->enumerate();
    else if (coll.isNothing())
        throw ScriptError(ErrNo::ObjectVariableNotSet);
    else
        throw ScriptError(ErrNo::ObjectRequired);
    for (const ScriptValue &item : items) {
        assign(*s.target, item, item.isObject(), s.pos);
        const Flow flow = execBlock(s.body);
        if (flow == Flow::ExitFor)
            break;
        if (flow != Flow::Normal)
            return flow;
    }
    return Flow::Normal;
}

Interpreter::Flow Interpreter::execDo(const Stmt &s)
{
    auto test = [&](LoopCond kind) {
        const ScriptValue c = eval(*s.condition);
        const bool truth = !c.isNull() && c.toBool();
        return kind == LoopCond::While ? truth : !truth;
    };
    const LoopCond pre = s.kind == StmtKind::While ? LoopCond::While : s.preCond;
    for (;;) {
        if (pre != LoopCond::None && !test(pre))
            break;
        const Flow flow = execBlock(s.body);
        if (flow == Flow::ExitDo && s.kind == StmtKind::Do)
            break;
        if (flow != Flow::Normal)
            return flow;
        if (s.postCond != LoopCond::None && !test(s.postCond))
            break;
    }
    return Flow::Normal;
}

Interpreter::Flow Interpreter::execSelect(const Stmt &s)
{
    const ScriptValue subject = eval(*s.value);
    const bool text = m_module.compareText;
    for (const CaseClause &clause : s.cases) {
        bool hit = clause.tests.empty();
        for (const CaseTest &t : clause.tests) {
            if (hit)
                break;
            if (subject.isNull())
                continue;
            switch (t.kind) {
            case CaseTest::Value:
                hit = compareValues(subject, eval(*t.a), text) == 0;
                break;
            case CaseTest::Range:
                hit = compareValues(subject, eval(*t.a), text) >= 0 && compareValues(subject, eval(*t.b), text) <= 0;
                break;
            case CaseTest::Is: {
                const ScriptValue r = applyBinary(t.op, subject, eval(*t.a), text);
                hit = !r.isNull() && r.toBool();
                break;
            }
            }
        }
        if (hit)
            return execBlock(clause.body);
    }
    return Flow::Normal;
}

void Interpreter::execOpen(const Stmt &s)
{
    const QString path = eval(*s.value).toString();
    const int number = eval(*s.limit).toLong();
    m_files.open(number, resolvePath(path), s.openMode);
}

void Interpreter::flushDebugOutput()
{
    if (!m_debugOpen)
        return;
    if (m_host.debugOutput)
        m_host.debugOutput(m_debugLine);
    m_debugLine.clear();
    m_debugOpen = false;
}

void Interpreter::execPrint(const Stmt &s)
{
    // Debug.Print continues a line that ended in ";" or ",", so zones count from its start.
    QString text = s.kind == StmtKind::DebugPrint ? std::exchange(m_debugLine, QString()) : QString();
    bool newline = true;
    for (const PrintItem &item : s.items) {
        if (item.value) {
            const ScriptValue v = eval(*item.value);
            if (s.kind == StmtKind::Write) {
                if (v.isString())
                    text += QLatin1Char('"') + v.toString() + QLatin1Char('"');
                else if (v.type() == ValueType::Boolean)
                    text += v.toBool() ? QStringLiteral("#TRUE#") : QStringLiteral("#FALSE#");
                else if (v.isNull())
                    text += QStringLiteral("#NULL#");
                else
                    text += v.toString();
            } else if (v.isNull()) {
                text += QStringLiteral("Null");
            } else if (v.isNumeric() && v.type() != ValueType::Date && v.type() != ValueType::Boolean) {
                // Print puts a blank before positive numbers and one after every number.
                const QString n = v.toString();
                text += (n.startsWith(QLatin1Char('-')) ? n : QLatin1Char(' ') + n) + QLatin1Char(' ');
            } else {
                text += v.toString();
            }
        }
        newline = item.separator.isNull();
        if (item.separator == QLatin1Char(',')) {
            if (s.kind == StmtKind::Write)
                text += QLatin1Char(',');
            else
                do {
                    text += QLatin1Char(' ');
                } while (text.size() % 14 != 0);
        }
    }
    if (s.kind == StmtKind::DebugPrint) {
        if (!newline) {
            m_debugLine = text;
            m_debugOpen = true;
            return;
        }
        m_debugOpen = false;
        if (m_host.debugOutput)
            m_host.debugOutput(text);
        return;
    }
    if (newline)
        text += QStringLiteral("\r\n");
    m_files.write(eval(*s.value).toLong(), text);
}

// Mid(s, start[, length]) = text: overwrites characters of s in place; s keeps its length.
void Interpreter::execMidStatement(const Expr &target, const ScriptValue &value)
{
    const std::vector<Arg> &args = target.args;
    if (args.size() < 2 || args.size() > 3 || !args[0].value || !args[1].value)
        throw ScriptError(450);
    ScriptValue *slot = addressOf(*args[0].value);
    if (!slot)
        throw ScriptError(ErrNo::TypeMismatch);
    QString text = slot->toString();
    const std::int32_t start = eval(*args[1].value).toLong();
    const QString replacement = value.toString();
    qsizetype count = replacement.size();
    if (args.size() == 3 && args[2].value) {
        const std::int32_t length = eval(*args[2].value).toLong();
        if (length < 0)
            throw ScriptError(ErrNo::InvalidProcedureCall);
        count = std::min<qsizetype>(count, length);
    }
    if (start < 1 || start > text.size())
        throw ScriptError(ErrNo::InvalidProcedureCall);
    count = std::min<qsizetype>(count, text.size() - start + 1);
    text.replace(start - 1, count, replacement.left(count));
    assign(*args[0].value, ScriptValue::fromString(text), false, target.pos);
}

// LSet/RSet s = text: text padded with blanks or cut to the length s has.
void Interpreter::execPad(const Stmt &s)
{
    const qsizetype width = eval(*s.target).toString().size();
    QString text = eval(*s.value).toString().left(width);
    const QString blanks(width - text.size(), QLatin1Char(' '));
    text = s.kind == StmtKind::LSet ? text + blanks : blanks + text;
    assign(*s.target, ScriptValue::fromString(text), false, s.pos);
}

// Input #n, a, b: reads the comma-separated items that Write # writes.
void Interpreter::execInput(const Stmt &s)
{
    const std::int32_t number = eval(*s.value).toLong();
    for (const Arg &a : s.args) {
        const QString item = m_files.readItem(number);
        ScriptValue value;
        const QString upper = item.toUpper();
        double d = 0;
        if (item.startsWith(QLatin1Char('"')))
            value = ScriptValue::fromString(item.mid(1, item.size() - 2));
        else if (item.isEmpty())
            value = ScriptValue();
        else if (upper == QLatin1String("#TRUE#") || upper == QLatin1String("#FALSE#"))
            value = ScriptValue::fromBool(upper == QLatin1String("#TRUE#"));
        else if (upper == QLatin1String("#NULL#"))
            value = ScriptValue::null();
        else if (upper.startsWith(QLatin1String("#ERROR ")))
            value = ScriptValue::fromError(item.mid(7, item.size() - 8).trimmed().toInt());
        else if (parseVbNumber(item, &d))
            value = ScriptValue::fromDouble(d);
        else
            value = ScriptValue::fromString(item);
        const ScriptValue current = eval(*a.value);
        if (current.isNumeric() && current.type() != ValueType::Empty && !value.isNumeric() && !value.isNull())
            value = ScriptValue::fromInteger(0); // numeric variable, text data: zero
        assign(*a.value, value, false, s.pos);
    }
}

void Interpreter::execCall(const Stmt &s)
{
    const Expr &target = *s.target;
    if (target.kind == ExprKind::Name && target.lower == QLatin1String("error") && s.args.size() == 1
        && !m_module.procedureIndex.contains(target.lower)) {
        // The Error statement raises the error.
        throw ScriptError(eval(*s.args[0].value).toLong());
    }
    if (target.kind == ExprKind::Name) {
        callByName(target, s.args, CallKind::Call, true);
        return;
    }
    if (target.kind == ExprKind::Member) {
        evalMember(target, CallKind::Call, &s.args, nullptr);
        return;
    }
    // x(1).Method or a call on an indexed value
    const ScriptValue base = eval(target);
    if (!s.args.empty())
        indexValue(base, s.args);
}

// ---- assignment ---------------------------------------------------------------------------

void Interpreter::assign(const Expr &target, const ScriptValue &value, bool isSet, SourcePos)
{
    if (isSet && !value.isObject())
        throw ScriptError(ErrNo::ObjectRequired);
    switch (target.kind) {
    case ExprKind::Name: {
        Variable *var = findVariable(target.lower);
        if (!var) {
            if (m_module.procedureIndex.contains(target.lower) || findBuiltin(target.lower))
                throw ScriptError(ErrNo::TypeMismatch, QStringLiteral("Function call on left-hand side of assignment must return Variant or Object"));
            ScriptValue dummy;
            if (constantValue(target.lower, &dummy))
                throw ScriptError(ErrNo::TypeMismatch, QStringLiteral("Assignment to constant not permitted"));
            var = &implicitVariable(target.lower);
        }
        store(*var, value, isSet);
        return;
    }
    case ExprKind::Member:
        evalMember(target, isSet ? CallKind::Set : CallKind::Let, nullptr, &value);
        return;
    case ExprKind::Call: {
        const Expr &callee = *target.left;
        if (callee.kind == ExprKind::Name) {
            Variable *var = findVariable(callee.lower);
            if (var && var->slot().isArray()) {
                ScriptValue &cell = var->slot().array()->at(indexes(target.args));
                cell = isSet ? value : (value.isArray() ? value.copied() : value);
                return;
            }
            if (var && var->slot().isObject()) {
                if (!var->slot().object())
                    throw ScriptError(ErrNo::ObjectVariableNotSet);
                std::vector<ScriptValue> temps;
                temps.reserve(target.args.size() + 1);
                ScriptArgs args;
                for (const Arg &a : target.args) {
                    temps.push_back(a.value ? eval(*a.value) : ScriptValue::missing());
                    args.push_back(&temps.back());
                }
                temps.push_back(value);
                args.push_back(&temps.back());
                var->slot().object()->invoke(QStringLiteral("Item"), isSet ? CallKind::Set : CallKind::Let, args);
                return;
            }
            if (!var && callee.lower == QLatin1String("mid") && !m_module.procedureIndex.contains(callee.lower)) {
                execMidStatement(target, value);
                return;
            }
            if (var || !m_module.procedureIndex.contains(callee.lower))
                throw ScriptError(ErrNo::TypeMismatch);
        }
        if (callee.kind == ExprKind::Member) {
            evalMember(callee, isSet ? CallKind::Set : CallKind::Let, &target.args, &value);
            return;
        }
        throw ScriptError(ErrNo::TypeMismatch);
    }
    default:
        throw ScriptError(ErrNo::TypeMismatch);
    }
}

// ---- expressions --------------------------------------------------------------------------

ScriptValue *Interpreter::addressOf(const Expr &e, std::shared_ptr<ScriptArray> *owner)
{
    if (e.kind == ExprKind::Name) {
        Variable *v = findVariable(e.lower);
        if (v && !v->isConst)
            return &v->slot();
        return nullptr;
    }
    if (e.kind == ExprKind::Call && e.left->kind == ExprKind::Name) {
        Variable *v = findVariable(e.left->lower);
        if (v && v->slot().isArray()) {
            const std::shared_ptr<ScriptArray> array = v->slot().array();
            if (owner)
                *owner = array;
            return &array->at(indexes(e.args));
        }
    }
    return nullptr;
}

std::vector<std::int32_t> Interpreter::indexes(const std::vector<Arg> &args)
{
    std::vector<std::int32_t> out;
    out.reserve(args.size());
    for (const Arg &a : args) {
        if (!a.value)
            throw ScriptError(ErrNo::SubscriptOutOfRange);
        out.push_back(eval(*a.value).toLong());
    }
    return out;
}

ScriptValue Interpreter::indexValue(const ScriptValue &base, const std::vector<Arg> &args)
{
    if (args.empty())
        return base;
    if (base.isArray())
        return base.array()->at(indexes(args));
    if (base.isObject()) {
        if (!base.object())
            throw ScriptError(ErrNo::ObjectVariableNotSet);
        std::vector<ScriptValue> temps;
        temps.reserve(args.size());
        ScriptArgs ptrs;
        for (const Arg &a : args) {
            temps.push_back(a.value ? eval(*a.value) : ScriptValue::missing());
            ptrs.push_back(&temps.back());
        }
        return base.object()->defaultValue(ptrs);
    }
    if (args.empty())
        return base;
    throw ScriptError(ErrNo::TypeMismatch);
}

ScriptValue Interpreter::eval(const Expr &e)
{
    switch (e.kind) {
    case ExprKind::Literal:
        return e.value;
    case ExprKind::Name:
        return evalName(e);
    case ExprKind::Member:
        return evalMember(e, CallKind::Get, nullptr, nullptr);
    case ExprKind::Call:
        return evalCall(e, CallKind::Get);
    case ExprKind::Paren:
        return eval(*e.left);
    case ExprKind::Unary:
        return applyUnary(e.op, eval(*e.left));
    case ExprKind::Binary: {
        // And/Or evaluate both sides, as VBA does.
        const ScriptValue l = eval(*e.left);
        const ScriptValue r = eval(*e.right);
        return applyBinary(e.op, l, r, m_module.compareText);
    }
    case ExprKind::TypeOf: {
        const ScriptValue v = eval(*e.left);
        if (!v.isObject())
            throw ScriptError(ErrNo::ObjectRequired);
        if (!v.object())
            return ScriptValue::fromBool(false);
        return ScriptValue::fromBool(e.lower == QLatin1String("object")
                                     || v.object()->typeName().compare(e.name, Qt::CaseInsensitive) == 0);
    }
    case ExprKind::Me:
        break;
    }
    throw ScriptError(ErrNo::TypeMismatch);
}

ScriptValue Interpreter::evalName(const Expr &e)
{
    if (Variable *v = findVariable(e.lower))
        return v->slot();
    static const std::vector<Arg> noArgs;
    return callByName(e, noArgs, CallKind::Get, false);
}

ScriptValue Interpreter::evalCall(const Expr &e, CallKind kind)
{
    const Expr &callee = *e.left;
    if (callee.kind == ExprKind::Name)
        return callByName(callee, e.args, kind, true);
    if (callee.kind == ExprKind::Member)
        return evalMember(callee, kind, &e.args, nullptr);
    return indexValue(eval(callee), e.args);
}

ScriptValue Interpreter::callByName(const Expr &nameExpr, const std::vector<Arg> &args, CallKind kind, bool hadParens)
{
    const QString &name = nameExpr.lower;
    Variable *var = findVariable(name);
    const Frame *frame = m_frames.empty() ? nullptr : m_frames.back();
    const bool isOwnResult = var && frame && frame->proc->isFunction && frame->proc->lower == name;
    if (var && !(isOwnResult && hadParens && !args.empty())) {
        if (kind == CallKind::Call && args.empty() && !var->slot().isObject())
            throw ScriptError(ErrNo::TypeMismatch, QStringLiteral("Expected procedure, not variable"));
        return indexValue(var->slot(), args);
    }
    if (const Procedure *proc = m_module.procedureIndex.value(name))
        return invokeProcedure(*proc, args, nullptr);
    if (const DeclareProc *d = m_module.declareIndex.value(name))
        return callDeclare(*d, args);
    ScriptValue constant;
    if (constantValue(name, &constant)) {
        if (!args.empty())
            throw ScriptError(ErrNo::TypeMismatch);
        return constant;
    }
    if (name == QLatin1String("err"))
        return indexValue(ScriptValue::fromObject(m_err), args);
    const auto global = m_host.globals.constFind(name);
    if (global != m_host.globals.constEnd())
        return indexValue(*global, args);
    if (const Builtin *b = findBuiltin(name)) {
        std::vector<ScriptValue> values;
        values.reserve(args.size());
        for (const Arg &a : args) {
            if (!a.name.isEmpty()) {
                // InStrRev(s, t, Compare:=vbTextCompare): the value goes to its parameter's place.
                const qsizetype at = builtinParameterNames(name).indexOf(a.name);
                if (at < 0)
                    throw ScriptError(448);
                if (values.size() <= static_cast<std::size_t>(at))
                    values.resize(static_cast<std::size_t>(at) + 1, ScriptValue::missing());
                else if (!values[static_cast<std::size_t>(at)].isMissing())
                    throw ScriptError(448, QStringLiteral("Named argument already specified"));
                values[static_cast<std::size_t>(at)] = a.value ? eval(*a.value) : ScriptValue::missing();
                continue;
            }
            values.push_back(a.value ? eval(*a.value) : ScriptValue::missing());
        }
        const int n = static_cast<int>(values.size());
        if (n < b->minArgs || (b->maxArgs >= 0 && n > b->maxArgs))
            throw ScriptError(450);
        return b->fn(*this, values);
    }
    if (hadParens && !args.empty())
        throw ScriptError(35);
    // A variable used before it was given a value (no Option Explicit).
    return implicitVariable(name).slot();
}

ScriptValue Interpreter::callDeclare(const DeclareProc &d, const std::vector<Arg> &args)
{
    std::vector<ScriptValue> values;
    for (const Arg &a : args)
        values.push_back(a.value ? eval(*a.value) : ScriptValue::missing());
    if (values.size() != d.params.size())
        throw ScriptError(450);
    return callDeclaredFunction(*this, d, values);
}

ScriptValue Interpreter::objectOf(const Expr *objectExpr)
{
    if (objectExpr)
        return eval(*objectExpr);
    if (m_frames.empty() || m_frames.back()->withStack.empty())
        throw ScriptError(ErrNo::ObjectRequired, QStringLiteral("Invalid or unqualified reference"));
    return m_frames.back()->withStack.back();
}

ScriptValue Interpreter::evalMember(const Expr &e, CallKind kind, const std::vector<Arg> *args, const ScriptValue *assigned)
{
    const ScriptValue target = objectOf(e.left.get());
    if (!target.isObject() && !target.isRecord())
        throw ScriptError(ErrNo::ObjectRequired);
    if (!target.object())
        throw ScriptError(ErrNo::ObjectVariableNotSet);
    // Named arguments go to their parameter's place where the member says which that is; other
    // members take them in the order written.
    std::vector<const Arg *> ordered;
    const bool reorder = args && std::any_of(args->begin(), args->end(), [](const Arg &a) { return !a.name.isEmpty(); })
                         && !target.object()->parameterNames(e.name).isEmpty();
    if (reorder) {
        const QStringList &parameterNames = target.object()->parameterNames(e.name);
        for (const Arg &a : *args) {
            if (a.name.isEmpty()) {
                ordered.push_back(&a);
                continue;
            }
            const qsizetype at = parameterNames.indexOf(a.name);
            if (at < 0)
                throw ScriptError(448);
            if (ordered.size() <= static_cast<std::size_t>(at))
                ordered.resize(static_cast<std::size_t>(at) + 1, nullptr);
            else if (ordered[static_cast<std::size_t>(at)])
                throw ScriptError(448, QStringLiteral("Named argument already specified"));
            ordered[static_cast<std::size_t>(at)] = &a;
        }
    }
    const std::size_t n = (reorder ? ordered.size() : (args ? args->size() : 0)) + (assigned ? 1 : 0);
    std::vector<ScriptValue> temps;
    temps.reserve(n);
    ScriptArgs ptrs;
    ptrs.reserve(n);
    const auto pass = [&](const Arg *a) {
        ScriptValue *ref = a && a->value ? addressOf(*a->value) : nullptr;
        if (ref) {
            ptrs.push_back(ref);
        } else {
            temps.push_back(a && a->value ? eval(*a->value) : ScriptValue::missing());
            ptrs.push_back(&temps.back());
        }
    };
    if (reorder) {
        for (const Arg *a : ordered)
            pass(a);
    } else if (args) {
        for (const Arg &a : *args)
            pass(&a);
    }
    if (assigned) {
        temps.push_back(*assigned);
        ptrs.push_back(&temps.back());
    }
    return target.object()->invoke(e.name, kind, ptrs);
}

} // namespace cadsim
