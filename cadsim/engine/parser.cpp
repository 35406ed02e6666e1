#include "cadsim/engine/parser.h"

#include <QDate>
#include <QSet>

namespace cadsim {

namespace {

// Words that cannot start an expression.
const QSet<QString> &reservedWords()
{
    static const QSet<QString> words = {
        QStringLiteral("if"), QStringLiteral("then"), QStringLiteral("else"), QStringLiteral("elseif"),
        QStringLiteral("end"), QStringLiteral("for"), QStringLiteral("to"), QStringLiteral("step"),
        QStringLiteral("next"), QStringLiteral("each"), QStringLiteral("in"), QStringLiteral("do"),
        QStringLiteral("loop"), QStringLiteral("while"), QStringLiteral("until"), QStringLiteral("wend"),
        QStringLiteral("select"), QStringLiteral("case"), QStringLiteral("sub"), QStringLiteral("function"),
        QStringLiteral("dim"), QStringLiteral("redim"), QStringLiteral("const"), QStringLiteral("set"),
        QStringLiteral("let"), QStringLiteral("call"), QStringLiteral("exit"), QStringLiteral("goto"),
        QStringLiteral("with"), QStringLiteral("and"), QStringLiteral("or"), QStringLiteral("xor"),
        QStringLiteral("mod"), QStringLiteral("like"), QStringLiteral("is"), QStringLiteral("as"),
        QStringLiteral("byval"), QStringLiteral("byref"), QStringLiteral("optional"), QStringLiteral("private"),
        QStringLiteral("public"), QStringLiteral("declare"), QStringLiteral("option"), QStringLiteral("eqv"),
        QStringLiteral("imp"), QStringLiteral("resume"), QStringLiteral("not"), QStringLiteral("static"), QStringLiteral("global"),
    };
    return words;
}

ExprPtr makeExpr(ExprKind kind, SourcePos pos)
{
    return std::make_unique<Expr>(kind, pos);
}

} // namespace

Parser::Parser(std::vector<Token> tokens) : m_tokens(std::move(tokens))
{
    if (m_tokens.empty() || !m_tokens.back().is(TokenKind::End)) {
        Token end;
        end.kind = TokenKind::End;
        m_tokens.push_back(end);
    }
}

std::unique_ptr<Module> Parser::parse(const QString &text)
{
    Lexer lexer(text);
    Parser parser(lexer.tokenize());
    return parser.parseModule();
}

const Token &Parser::peek(int ahead) const
{
    const std::size_t i = std::min(m_index + static_cast<std::size_t>(ahead), m_tokens.size() - 1);
    return m_tokens[i];
}

const Token &Parser::next()
{
    const Token &t = m_tokens[m_index];
    if (m_index + 1 < m_tokens.size())
        ++m_index;
    return t;
}

void Parser::fail(const QString &message, const Token &at) const
{
    throw CompileException(CompileError{message, at.pos});
}

bool Parser::atEndOfStatement() const
{
    const Token &t = peek();
    if (t.is(TokenKind::Newline) || t.is(TokenKind::Colon) || t.is(TokenKind::End))
        return true;
    return m_singleLineIf > 0 && t.isWord("else");
}

void Parser::expectEndOfStatement()
{
    if (!atEndOfStatement())
        fail(QStringLiteral("Expected: end of statement"));
    if (peek().is(TokenKind::Newline) || peek().is(TokenKind::Colon))
        next();
}

void Parser::skipSeparators()
{
    while (peek().is(TokenKind::Newline) || peek().is(TokenKind::Colon))
        next();
}

bool Parser::acceptWord(const char *word)
{
    if (peek().isWord(word)) {
        next();
        return true;
    }
    return false;
}

bool Parser::acceptOp(const char *op)
{
    if (peek().isOp(op)) {
        next();
        return true;
    }
    return false;
}

void Parser::expectWord(const char *word, const char *display)
{
    if (!acceptWord(word))
        fail(QStringLiteral("Expected: %1").arg(QLatin1String(display)));
}

void Parser::expectOp(const char *op)
{
    if (!acceptOp(op))
        fail(QStringLiteral("Expected: %1").arg(QLatin1String(op)));
}

QString Parser::expectIdentifier()
{
    const Token &t = peek();
    if (!t.is(TokenKind::Identifier) || reservedWords().contains(t.lower))
        fail(QStringLiteral("Expected: identifier"));
    next();
    return t.text;
}

// ---- module level -------------------------------------------------------------------------

std::unique_ptr<Module> Parser::parseModule()
{
    auto module = std::make_unique<Module>();
    for (;;) {
        skipSeparators();
        if (peek().is(TokenKind::End))
            break;
        parseModuleDeclaration(*module);
    }
    for (const DeclareProc &d : module->declares) {
        if (module->declareIndex.contains(d.lower))
            fail(QStringLiteral("Ambiguous name detected: %1").arg(d.name), Token{TokenKind::Identifier, {}, {}, 0, false, {}, false, d.pos});
        module->declareIndex.insert(d.lower, &d);
    }
    for (const auto &type : module->types)
        module->typeIndex.insert(type->lower, type.get());
    for (auto &proc : module->procedures) {
        if (module->procedureIndex.contains(proc->lower) || module->declareIndex.contains(proc->lower))
            fail(QStringLiteral("Ambiguous name detected: %1").arg(proc->name), Token{TokenKind::Identifier, {}, {}, 0, false, {}, false, proc->pos});
        module->procedureIndex.insert(proc->lower, proc.get());
    }
    qualifyModuleCalls(*module);
    return module;
}

namespace {

template<typename F>
void visitExpr(ExprPtr &e, const F &f)
{
    if (!e)
        return;
    visitExpr(e->left, f);
    visitExpr(e->right, f);
    for (Arg &a : e->args)
        visitExpr(a.value, f);
    f(*e);
}

template<typename F>
void visitBlock(Block &block, const F &f);

template<typename F>
void visitStmt(Stmt &s, const F &f)
{
    for (VarDecl &d : s.decls) {
        for (Dimension &dim : d.dims) {
            visitExpr(dim.lower, f);
            visitExpr(dim.upper, f);
        }
        visitExpr(d.member, f);
    }
    for (ExprPtr *e : {&s.target, &s.value, &s.limit, &s.step, &s.collection, &s.condition})
        visitExpr(*e, f);
    for (Arg &a : s.args)
        visitExpr(a.value, f);
    for (IfBranch &b : s.branches) {
        visitExpr(b.condition, f);
        visitBlock(b.body, f);
    }
    for (CaseClause &c : s.cases) {
        for (CaseTest &t : c.tests) {
            visitExpr(t.a, f);
            visitExpr(t.b, f);
        }
        visitBlock(c.body, f);
    }
    for (PrintItem &item : s.items)
        visitExpr(item.value, f);
    visitBlock(s.body, f);
}

template<typename F>
void visitBlock(Block &block, const F &f)
{
    for (StmtPtr &s : block)
        visitStmt(*s, f);
}

void collectDeclared(const Block &block, QSet<QString> &names)
{
    for (const StmtPtr &s : block) {
        for (const VarDecl &d : s->decls)
            names.insert(d.lower);
        if (s->kind == StmtKind::Const)
            names.insert(s->constName);
        for (const IfBranch &b : s->branches)
            collectDeclared(b.body, names);
        for (const CaseClause &c : s->cases)
            collectDeclared(c.body, names);
        collectDeclared(s->body, names);
    }
}

} // namespace

// "Module1.Foo" where Module1 names nothing the module declares and Foo is one of its
// procedures: utility code calls its own procedures through its module's name.
void Parser::qualifyModuleCalls(Module &module)
{
    QSet<QString> declared = {QStringLiteral("application"), QStringLiteral("err"), QStringLiteral("debug")};
    for (const VarDecl &v : module.variables)
        declared.insert(v.lower);
    for (const ConstDecl &c : module.constants)
        declared.insert(c.lower);
    for (const auto &proc : module.procedures) {
        for (const Param &p : proc->params)
            declared.insert(p.lower);
        collectDeclared(proc->body, declared);
    }
    const auto qualify = [&](Expr &e) {
        if (e.kind == ExprKind::Member && e.left && e.left->kind == ExprKind::Name && !declared.contains(e.left->lower)
            && module.procedureIndex.contains(e.lower)) {
            e.kind = ExprKind::Name;
            e.left.reset();
        }
    };
    for (auto &proc : module.procedures)
        visitBlock(proc->body, qualify);
}

void Parser::parseModuleDeclaration(Module &module)
{
    const Token &first = peek();
    if (acceptWord("option")) {
        if (acceptWord("explicit"))
            module.optionExplicit = true;
        else if (acceptWord("base")) {
            const Token &n = next();
            if (!n.is(TokenKind::Number) || (n.number != 0 && n.number != 1))
                fail(QStringLiteral("Syntax error"), n);
            module.optionBase = static_cast<int>(n.number);
        } else if (acceptWord("compare")) {
            if (acceptWord("text"))
                module.compareText = true;
            else if (!acceptWord("binary") && !acceptWord("database"))
                fail(QStringLiteral("Syntax error"));
        } else if (acceptWord("private")) {
            expectWord("module", "Module");
        } else {
            fail(QStringLiteral("Syntax error"));
        }
        expectEndOfStatement();
        return;
    }
    if (first.isWord("attribute")) {
        // An exported module names itself: Attribute VB_Name = "Module1" makes "Module1." a qualifier.
        if (peek(1).isWord("vb_name") && peek(2).isOp("=") && peek(3).is(TokenKind::String))
            m_moduleName = peek(3).text.toLower();
        while (!atEndOfStatement())
            next();
        expectEndOfStatement();
        return;
    }
    bool isPrivate = false;
    bool hadModifier = false;
    if (acceptWord("private")) {
        isPrivate = true;
        hadModifier = true;
    } else if (acceptWord("public") || acceptWord("global") || acceptWord("friend")) {
        hadModifier = true;
    }
    acceptWord("static");
    if (peek().isWord("sub") || peek().isWord("function")) {
        module.procedures.push_back(parseProcedure(isPrivate));
        return;
    }
    if (peek().isWord("type") && peek(1).is(TokenKind::Identifier)) {
        parseType(module, next());
        return;
    }
    if (peek().isWord("enum") && peek(1).is(TokenKind::Identifier)) {
        parseEnum(module, next());
        return;
    }
    if (peek().isWord("property") || peek().isWord("type") || peek().isWord("enum") || peek().isWord("event")
        || peek().isWord("implements")) {
        fail(QStringLiteral("Syntax error"));
    }
    if (peek().isWord("declare")) {
        module.declares.push_back(parseDeclare());
        return;
    }
    if (acceptWord("const")) {
        parseConstList(module.constants);
        expectEndOfStatement();
        return;
    }
    if (acceptWord("dim") || hadModifier) {
        do {
            module.variables.push_back(parseVarDecl(false));
        } while (acceptOp(","));
        expectEndOfStatement();
        return;
    }
    fail(QStringLiteral("Invalid outside procedure"), first);
}

void Parser::parseType(Module &module, const Token &opener)
{
    auto type = std::make_unique<UserTypeDecl>();
    type->pos = peek().pos;
    type->name = expectIdentifier();
    type->lower = type->name.toLower();
    if (m_typeNames.contains(type->lower) || m_enumNames.contains(type->lower))
        fail(QStringLiteral("Ambiguous name detected: %1").arg(type->name), opener);
    m_typeNames.insert(type->lower); // a field may not be of its own type, but may name it in an error
    expectEndOfStatement();
    for (;;) {
        skipSeparators();
        if (peek().isWord("end") && peek(1).isWord("type"))
            break;
        if (peek().is(TokenKind::End) || isStop({}))
            fail(QStringLiteral("Expected: End Type"), opener);
        VarDecl field = parseVarDecl(false);
        if (field.className == type->lower)
            fail(QStringLiteral("Circular dependencies between modules"), Token{TokenKind::Identifier, {}, {}, 0, false, {}, false, field.pos});
        type->fields.push_back(std::move(field));
        expectEndOfStatement();
    }
    if (type->fields.empty())
        fail(QStringLiteral("Type declaration without members"), opener);
    next();
    next();
    expectEndOfStatement();
    module.types.push_back(std::move(type));
}

// The members become Long constants of the module; a member without a value is one more than
// the one before it (the first is 0).
void Parser::parseEnum(Module &module, const Token &opener)
{
    const QString name = expectIdentifier();
    m_enumNames.insert(name.toLower());
    expectEndOfStatement();
    QString previous;
    for (;;) {
        skipSeparators();
        if (peek().isWord("end") && peek(1).isWord("enum"))
            break;
        if (peek().is(TokenKind::End) || !peek().is(TokenKind::Identifier))
            fail(QStringLiteral("Expected: End Enum"), opener);
        ConstDecl c;
        c.pos = peek().pos;
        c.lower = next().lower;
        ExprPtr value;
        if (acceptOp("=")) {
            value = parseExpression();
        } else if (previous.isEmpty()) {
            value = makeExpr(ExprKind::Literal, c.pos);
            value->value = ScriptValue::fromLong(0);
        } else {
            value = makeExpr(ExprKind::Binary, c.pos);
            value->op = Op::Add;
            value->left = makeExpr(ExprKind::Name, c.pos);
            value->left->name = previous;
            value->left->lower = previous;
            value->right = makeExpr(ExprKind::Literal, c.pos);
            value->right->value = ScriptValue::fromLong(1);
        }
        auto toLong = makeExpr(ExprKind::Call, c.pos);
        toLong->left = makeExpr(ExprKind::Name, c.pos);
        toLong->left->name = QStringLiteral("CLng");
        toLong->left->lower = QStringLiteral("clng");
        Arg a;
        a.value = std::move(value);
        toLong->args.push_back(std::move(a));
        c.value = std::move(toLong);
        previous = c.lower;
        module.constants.push_back(std::move(c));
        expectEndOfStatement();
    }
    next();
    next();
    expectEndOfStatement();
}

void Parser::parseConstList(std::vector<ConstDecl> &out)
{
    do {
        ConstDecl c;
        c.pos = peek().pos;
        c.lower = expectIdentifier().toLower();
        if (acceptWord("as"))
            parseAsType();
        expectOp("=");
        c.value = parseExpression();
        out.push_back(std::move(c));
    } while (acceptOp(","));
}

DeclType Parser::parseAsType(bool *isNew, QString *className)
{
    if (acceptWord("new")) {
        if (isNew)
            *isNew = true;
    }
    const Token &t = peek();
    if (!t.is(TokenKind::Identifier))
        fail(QStringLiteral("Expected: identifier"));
    next();
    QString name = t.lower;
    bool dotted = false;
    while (acceptOp(".")) {
        dotted = true;
        name += QLatin1Char('.') + expectIdentifier().toLower();
    }
    if (className)
        *className = name;
    if (name == QLatin1String("string") && acceptOp("*")) {
        if (!next().is(TokenKind::Number))
            fail(QStringLiteral("Syntax error"));
    }
    const QString last = name.mid(name.lastIndexOf(QLatin1Char('.')) + 1);
    static const QSet<QString> builtinEnums = {
        QStringLiteral("vbvartype"), QStringLiteral("vbcomparemethod"), QStringLiteral("vbdayofweek"),
        QStringLiteral("vbfirstweekofyear"), QStringLiteral("vbmsgboxresult"), QStringLiteral("vbmsgboxstyle"),
        QStringLiteral("vbtristate"), QStringLiteral("vbstrconv"), QStringLiteral("vbfileattribute"),
        QStringLiteral("vbcalltype"), QStringLiteral("vbappwinstyle"), QStringLiteral("vbdatetimeformat"),
        QStringLiteral("vbidemode"),
    };
    if (builtinEnums.contains(last) || m_enumNames.contains(last))
        return DeclType::Long;
    if (m_typeNames.contains(last)) {
        if (className)
            *className = last;
        return DeclType::UserType;
    }
    if (dotted)
        return DeclType::Object;
    static const QHash<QString, DeclType> types = {
        {QStringLiteral("variant"), DeclType::Variant}, {QStringLiteral("integer"), DeclType::Integer},
        {QStringLiteral("long"), DeclType::Long},       {QStringLiteral("longlong"), DeclType::Double},
        {QStringLiteral("longptr"), DeclType::Long},    {QStringLiteral("double"), DeclType::Double},
        {QStringLiteral("single"), DeclType::Single},   {QStringLiteral("string"), DeclType::String},
        {QStringLiteral("boolean"), DeclType::Boolean}, {QStringLiteral("date"), DeclType::Date},
        {QStringLiteral("object"), DeclType::Object},   {QStringLiteral("byte"), DeclType::Byte},
        {QStringLiteral("currency"), DeclType::Currency}, {QStringLiteral("any"), DeclType::Variant},
    };
    return types.value(name, DeclType::Object);
}

DeclType Parser::typeOfSuffix(QChar suffix)
{
    switch (suffix.unicode()) {
    case '%': return DeclType::Integer;
    case '&': return DeclType::Long;
    case '!': return DeclType::Single;
    case '#': return DeclType::Double;
    case '@': return DeclType::Currency;
    case '$': return DeclType::String;
    default: return DeclType::Variant;
    }
}

// Names that only qualify what follows them: "VBA.Mid$", "Math.Sqr", "VbVarType.vbLong", an
// enum of the module, the module itself.
bool Parser::isQualifier(const QString &lower) const
{
    static const QSet<QString> libraries = {
        QStringLiteral("vba"), QStringLiteral("math"), QStringLiteral("strings"), QStringLiteral("conversion"),
        QStringLiteral("interaction"), QStringLiteral("datetime"), QStringLiteral("filesystem"),
        QStringLiteral("information"), QStringLiteral("financial"), QStringLiteral("constants"),
        QStringLiteral("vbvartype"), QStringLiteral("vbcomparemethod"), QStringLiteral("vbdayofweek"),
        QStringLiteral("vbfirstweekofyear"), QStringLiteral("vbmsgboxresult"), QStringLiteral("vbmsgboxstyle"),
        QStringLiteral("vbtristate"), QStringLiteral("vbstrconv"), QStringLiteral("vbfileattribute"),
        QStringLiteral("vbcalltype"), QStringLiteral("vbappwinstyle"), QStringLiteral("vbdatetimeformat"),
        QStringLiteral("mcmacro1"),
    };
    return libraries.contains(lower) || m_enumNames.contains(lower) || (!m_moduleName.isEmpty() && lower == m_moduleName);
}

VarDecl Parser::parseVarDecl(bool redim)
{
    acceptWord("withevents");
    VarDecl d;
    d.pos = peek().pos;
    const QChar suffix = peek().suffix;
    d.name = expectIdentifier();
    d.lower = d.name.toLower();
    d.type = typeOfSuffix(suffix);
    if (acceptOp("(")) {
        d.isArray = true;
        if (!peek().isOp(")")) {
            d.dims = parseDimensions();
        } else if (redim) {
            fail(QStringLiteral("Expected: expression"));
        }
        expectOp(")");
    } else if (redim) {
        fail(QStringLiteral("Expected: ("));
    }
    if (acceptWord("as")) {
        if (!suffix.isNull())
            fail(QStringLiteral("Syntax error"));
        d.type = parseAsType(&d.isNew, &d.className);
    }
    return d;
}

// "n", "1 To n", "a, b": the bounds inside the parentheses of Dim and ReDim.
std::vector<Dimension> Parser::parseDimensions()
{
    std::vector<Dimension> dims;
    do {
        Dimension dim;
        ExprPtr first = parseExpression();
        if (acceptWord("to")) {
            dim.lower = std::move(first);
            dim.upper = parseExpression();
        } else {
            dim.upper = std::move(first);
        }
        dims.push_back(std::move(dim));
    } while (acceptOp(","));
    return dims;
}

std::vector<Param> Parser::parseParams()
{
    std::vector<Param> params;
    if (!acceptOp("("))
        return params;
    if (acceptOp(")"))
        return params;
    bool sawOptional = false;
    do {
        Param p;
        p.pos = peek().pos;
        if (acceptWord("optional")) {
            p.optional = true;
            sawOptional = true;
        }
        if (acceptWord("byval"))
            p.byRef = false;
        else
            acceptWord("byref");
        if (acceptWord("paramarray"))
            p.paramArray = true;
        p.type = typeOfSuffix(peek().suffix);
        p.name = expectIdentifier();
        p.lower = p.name.toLower();
        if (acceptOp("(")) {
            expectOp(")");
            p.isArray = true;
        }
        if (acceptWord("as"))
            p.type = parseAsType(nullptr, &p.className);
        if (acceptOp("=")) {
            if (!p.optional)
                fail(QStringLiteral("Syntax error"));
            p.defaultValue = parseExpression();
        }
        if (sawOptional && !p.optional && !p.paramArray)
            fail(QStringLiteral("Syntax error"), Token{TokenKind::Identifier, {}, {}, 0, false, {}, false, p.pos});
        params.push_back(std::move(p));
    } while (acceptOp(","));
    expectOp(")");
    return params;
}

DeclareProc Parser::parseDeclare()
{
    expectWord("declare", "Declare");
    acceptWord("ptrsafe");
    DeclareProc d;
    if (acceptWord("function"))
        d.isFunction = true;
    else if (acceptWord("sub"))
        d.isFunction = false;
    else
        fail(QStringLiteral("Expected: Sub or Function"));
    d.pos = peek().pos;
    d.name = expectIdentifier();
    d.lower = d.name.toLower();
    expectWord("lib", "Lib");
    if (!peek().is(TokenKind::String))
        fail(QStringLiteral("Expected: string constant"));
    d.lib = next().text;
    if (acceptWord("alias")) {
        if (!peek().is(TokenKind::String))
            fail(QStringLiteral("Expected: string constant"));
        d.alias = next().text;
    }
    d.params = parseParams();
    if (acceptWord("as"))
        parseAsType();
    expectEndOfStatement();
    return d;
}

std::unique_ptr<Procedure> Parser::parseProcedure(bool isPrivate)
{
    const Token &opener = peek();
    auto proc = std::make_unique<Procedure>();
    proc->isFunction = opener.isWord("function");
    next();
    proc->isPrivate = isPrivate;
    proc->pos = peek().pos;
    proc->returnType = typeOfSuffix(peek().suffix);
    proc->name = expectIdentifier();
    proc->lower = proc->name.toLower();
    proc->params = parseParams();
    if (proc->isFunction && acceptWord("as")) {
        proc->returnType = parseAsType(nullptr, &proc->returnClass);
        if (acceptOp("(")) // As String(): an array result
            expectOp(")");
    }
    expectEndOfStatement();
    m_procedure = proc.get();
    proc->body = parseBlock({});
    m_procedure = nullptr;
    const char *endWord = proc->isFunction ? "function" : "sub";
    if (!(peek().isWord("end") && peek(1).isWord(endWord)))
        fail(proc->isFunction ? QStringLiteral("Expected: End Function") : QStringLiteral("Expected: End Sub"));
    next();
    next();
    expectEndOfStatement();
    collectLabels(*proc, proc->body, true);
    return proc;
}

void Parser::collectLabels(Procedure &proc, const Block &block, bool topLevel)
{
    for (int i = 0; i < static_cast<int>(block.size()); ++i) {
        const Stmt &s = *block[i];
        if (s.kind == StmtKind::Label) {
            if (proc.labels.contains(s.label))
                fail(QStringLiteral("Duplicate label"), Token{TokenKind::Identifier, {}, {}, 0, false, {}, false, s.pos});
            proc.labels.insert(s.label, topLevel ? i : -1);
        }
        for (const IfBranch &b : s.branches)
            collectLabels(proc, b.body, false);
        for (const CaseClause &c : s.cases)
            collectLabels(proc, c.body, false);
        if (s.kind != StmtKind::Const)
            collectLabels(proc, s.body, false);
    }
}

// ---- statements ---------------------------------------------------------------------------

bool Parser::isStop(const std::vector<const char *> &stops) const
{
    const Token &t = peek();
    if (!t.is(TokenKind::Identifier))
        return false;
    if (t.lower == QLatin1String("end")) {
        const Token &n = peek(1);
        // "End If", "End Sub"... close blocks; a bare "End" is a statement.
        return n.isWord("if") || n.isWord("sub") || n.isWord("function") || n.isWord("select") || n.isWord("with")
               || n.isWord("property") || n.isWord("type") || n.isWord("enum");
    }
    for (const char *s : stops) {
        if (t.lower == QLatin1String(s))
            return true;
    }
    // Block closers that belong to no open block here are errors of their own.
    return t.lower == QLatin1String("next") || t.lower == QLatin1String("loop") || t.lower == QLatin1String("wend")
           || t.lower == QLatin1String("else") || t.lower == QLatin1String("elseif") || t.lower == QLatin1String("case")
           || t.lower == QLatin1String("sub") || t.lower == QLatin1String("function");
}

Block Parser::parseBlock(const std::vector<const char *> &stops)
{
    Block block;
    for (;;) {
        skipSeparators();
        if (peek().is(TokenKind::End))
            return block;
        if (isStop(stops)) {
            const Token &t = peek();
            bool wanted = t.isWord("end");
            for (const char *s : stops)
                wanted = wanted || t.lower == QLatin1String(s);
            if (wanted)
                return block;
            if (t.isWord("next"))
                fail(QStringLiteral("Next without For"));
            if (t.isWord("loop"))
                fail(QStringLiteral("Loop without Do"));
            if (t.isWord("wend"))
                fail(QStringLiteral("Wend without While"));
            if (t.isWord("else") || t.isWord("elseif"))
                fail(QStringLiteral("Else without If"));
            if (t.isWord("case"))
                fail(QStringLiteral("Case without Select Case"));
            if (m_procedure)
                fail(QStringLiteral("Expected: End %1").arg(m_procedure->isFunction ? QStringLiteral("Function") : QStringLiteral("Sub")));
            fail(QStringLiteral("Syntax error"));
        }
        // A label starts its line: "Fail:" or a line number.
        const bool lineStart = m_index == 0 || m_tokens[m_index - 1].is(TokenKind::Newline);
        if (lineStart && (peek().is(TokenKind::Identifier) || (peek().is(TokenKind::Number) && peek().integerLiteral))
            && peek(1).is(TokenKind::Colon) && !reservedWords().contains(peek().lower)) {
            auto label = std::make_unique<Stmt>(StmtKind::Label, peek().pos);
            label->label = peek().is(TokenKind::Number) ? peek().text : peek().lower;
            next();
            next();
            block.push_back(std::move(label));
            continue;
        }
        if (lineStart && peek().is(TokenKind::Number) && peek().integerLiteral) {
            auto label = std::make_unique<Stmt>(StmtKind::Label, peek().pos);
            label->label = next().text;
            block.push_back(std::move(label));
            continue;
        }
        block.push_back(parseStatement());
        if (m_pendingNext > 0 && peek().isOp(","))
            return block; // "Next j, i": the enclosing For takes the rest
        expectEndOfStatement();
    }
}

void Parser::parseEndOf(const char *word, const QString &missingMessage, const Token &opener)
{
    if (!(peek().isWord("end") && peek(1).isWord(word)))
        fail(missingMessage, opener);
    next();
    next();
}

StmtPtr Parser::parseStatement()
{
    NestingGuard guard(*this);
    const Token &t = peek();
    if (!t.is(TokenKind::Identifier)) {
        if (t.isOp("."))
            return parseSimpleStatement(); // .Member inside With
        fail(QStringLiteral("Syntax error"));
    }
    const QString &w = t.lower;
    if (w == QLatin1String("if"))
        return parseIf();
    if (w == QLatin1String("for"))
        return parseFor();
    if (w == QLatin1String("do"))
        return parseDo();
    if (w == QLatin1String("while"))
        return parseWhile();
    if (w == QLatin1String("select"))
        return parseSelect();
    if (w == QLatin1String("with"))
        return parseWith();
    return parseLineStatement();
}

// Statements that hold no block: off the path that nested blocks recurse on.
StmtPtr Parser::parseLineStatement()
{
    const Token &t = peek();
    const QString &w = t.lower;
    if (w == QLatin1String("on"))
        return parseOnError();
    if (w == QLatin1String("open"))
        return parseOpen();
    if (w == QLatin1String("dim") || w == QLatin1String("static") || w == QLatin1String("private")
        || w == QLatin1String("public")) {
        if (w == QLatin1String("private") || w == QLatin1String("public"))
            fail(QStringLiteral("Invalid inside procedure"));
        next();
        auto s = std::make_unique<Stmt>(StmtKind::Dim, t.pos);
        s->isStatic = w == QLatin1String("static");
        if (peek().isWord("const"))
            fail(QStringLiteral("Syntax error"));
        do {
            s->decls.push_back(parseVarDecl(false));
        } while (acceptOp(","));
        return s;
    }
    if (w == QLatin1String("const")) {
        next();
        auto s = std::make_unique<Stmt>(StmtKind::Const, t.pos);
        std::vector<ConstDecl> consts;
        parseConstList(consts);
        // One statement per constant keeps the interpreter simple: chain them as a With-less block.
        s->constName = consts.front().lower;
        s->value = std::move(consts.front().value);
        for (std::size_t i = 1; i < consts.size(); ++i) {
            auto extra = std::make_unique<Stmt>(StmtKind::Const, consts[i].pos);
            extra->constName = consts[i].lower;
            extra->value = std::move(consts[i].value);
            s->body.push_back(std::move(extra));
        }
        return s;
    }
    if (w == QLatin1String("redim"))
        return parseReDim(next());
    if ((w == QLatin1String("lset") || w == QLatin1String("rset")) && !peek(1).isOp("=")) {
        next();
        auto s = std::make_unique<Stmt>(w == QLatin1String("lset") ? StmtKind::LSet : StmtKind::RSet, t.pos);
        s->target = parsePostfix();
        expectOp("=");
        s->value = parseExpression();
        return s;
    }
    if (w == QLatin1String("input") && peek(1).isOp("#"))
        return parseInput(next());
    if (w == QLatin1String("set")) {
        next();
        auto s = std::make_unique<Stmt>(StmtKind::SetAssign, t.pos);
        s->target = parsePostfix();
        expectOp("=");
        s->value = parseExpression();
        return s;
    }
    if (w == QLatin1String("let")) {
        next();
        auto s = std::make_unique<Stmt>(StmtKind::Assign, t.pos);
        s->target = parsePostfix();
        expectOp("=");
        s->value = parseExpression();
        return s;
    }
    if (w == QLatin1String("call")) {
        next();
        auto s = std::make_unique<Stmt>(StmtKind::Call, t.pos);
        ExprPtr callee = parsePostfix();
        if (callee->kind == ExprKind::Call) {
            s->args = std::move(callee->args);
            s->target = std::move(callee->left);
        } else {
            s->target = std::move(callee);
        }
        return s;
    }
    if (w == QLatin1String("exit")) {
        next();
        auto s = std::make_unique<Stmt>(StmtKind::Exit, t.pos);
        if (acceptWord("sub"))
            s->exitKind = ExitKind::Sub;
        else if (acceptWord("function"))
            s->exitKind = ExitKind::Function;
        else if (acceptWord("property"))
            s->exitKind = ExitKind::Property;
        else if (peek().isWord("for")) {
            if (m_loopDepthFor == 0)
                fail(QStringLiteral("Exit For not within For...Next"));
            next();
            s->exitKind = ExitKind::For;
        } else if (peek().isWord("do")) {
            if (m_loopDepthDo == 0)
                fail(QStringLiteral("Exit Do not within Do...Loop"));
            next();
            s->exitKind = ExitKind::Do;
        } else
            fail(QStringLiteral("Expected: Do or For or Sub or Function or Property"));
        if (m_procedure && ((s->exitKind == ExitKind::Sub && m_procedure->isFunction)
                            || (s->exitKind == ExitKind::Function && !m_procedure->isFunction)))
            fail(m_procedure->isFunction ? QStringLiteral("Exit Sub not allowed in Function or Property")
                                         : QStringLiteral("Exit Function not allowed in Sub or Property"), t);
        return s;
    }
    if (w == QLatin1String("resume")) {
        next();
        auto s = std::make_unique<Stmt>(StmtKind::Resume, t.pos);
        if (acceptWord("next"))
            s->resume = ResumeMode::Next;
        else if (peek().is(TokenKind::Identifier) || peek().is(TokenKind::Number)) {
            s->resume = ResumeMode::Label;
            s->label = peek().is(TokenKind::Number) ? peek().text : peek().lower;
            if (peek().is(TokenKind::Number) && peek().number == 0)
                s->resume = ResumeMode::Here;
            next();
        }
        return s;
    }
    if (w == QLatin1String("goto")) {
        next();
        auto s = std::make_unique<Stmt>(StmtKind::GoTo, t.pos);
        if (!peek().is(TokenKind::Identifier) && !peek().is(TokenKind::Number))
            fail(QStringLiteral("Expected: line number or label"));
        s->label = peek().is(TokenKind::Number) ? peek().text : peek().lower;
        next();
        return s;
    }
    if (w == QLatin1String("close")) {
        next();
        auto s = std::make_unique<Stmt>(StmtKind::Close, t.pos);
        if (!atEndOfStatement()) {
            do {
                Arg a;
                a.value = parseFileNumber();
                s->args.push_back(std::move(a));
            } while (acceptOp(","));
        }
        return s;
    }
    if (w == QLatin1String("print") && peek(1).isOp("#"))
        return parsePrint(StmtKind::Print, true);
    if (w == QLatin1String("write") && peek(1).isOp("#"))
        return parsePrint(StmtKind::Write, true);
    if (w == QLatin1String("debug") && peek(1).isOp(".") && peek(2).isWord("print")) {
        next();
        next();
        return parsePrint(StmtKind::DebugPrint, false);
    }
    if (w == QLatin1String("line") && peek(1).isWord("input")) {
        next();
        next();
        auto s = std::make_unique<Stmt>(StmtKind::LineInput, t.pos);
        s->value = parseFileNumber();
        expectOp(",");
        s->target = parsePostfix();
        return s;
    }
    if (w == QLatin1String("name") && !peek(1).isOp("=") && !peek(1).isOp("(") && !peek(1).isOp(".")) {
        // Name old As new: renames a file
        next();
        auto s = std::make_unique<Stmt>(StmtKind::Name, t.pos);
        s->value = parseExpression();
        expectWord("as", "As");
        s->limit = parseExpression();
        return s;
    }
    if (w == QLatin1String("erase")) {
        next();
        auto s = std::make_unique<Stmt>(StmtKind::Erase, t.pos);
        do {
            Arg a;
            a.value = parsePostfix();
            s->args.push_back(std::move(a));
        } while (acceptOp(","));
        return s;
    }
    if (w == QLatin1String("end")) {
        next();
        return std::make_unique<Stmt>(StmtKind::End, t.pos);
    }
    if (w == QLatin1String("else") || w == QLatin1String("elseif"))
        fail(QStringLiteral("Else without If"));
    if (reservedWords().contains(w))
        fail(QStringLiteral("Syntax error"));
    return parseSimpleStatement();
}

// ReDim [Preserve] a(...), obj.items(...), .items(...)
StmtPtr Parser::parseReDim(const Token &opener)
{
    auto s = std::make_unique<Stmt>(StmtKind::ReDim, opener.pos);
    s->preserve = acceptWord("preserve");
    do {
        if (!peek().isOp(".") && !peek(1).isOp(".")) {
            s->decls.push_back(parseVarDecl(true));
            continue;
        }
        // A member: the object, then the member's name, then its bounds.
        ExprPtr object;
        if (!peek().isOp(".")) {
            object = makeExpr(ExprKind::Name, peek().pos);
            object->name = expectIdentifier();
            object->lower = object->name.toLower();
        }
        for (;;) {
            expectOp(".");
            const Token &name = next();
            if (!name.is(TokenKind::Identifier))
                fail(QStringLiteral("Expected: identifier"), name);
            auto member = makeExpr(ExprKind::Member, name.pos);
            member->name = name.text;
            member->lower = name.lower;
            member->left = std::move(object);
            object = std::move(member);
            if (!peek().isOp("."))
                break;
        }
        VarDecl d;
        d.pos = object->pos;
        d.name = object->name;
        d.lower = object->lower;
        d.isArray = true;
        expectOp("(");
        d.dims = parseDimensions();
        expectOp(")");
        if (acceptWord("as"))
            d.type = parseAsType(&d.isNew, &d.className);
        d.member = std::move(object);
        s->decls.push_back(std::move(d));
    } while (acceptOp(","));
    return s;
}

// Input #n, a, b: the targets are variables, elements or members.
StmtPtr Parser::parseInput(const Token &opener)
{
    auto s = std::make_unique<Stmt>(StmtKind::Input, opener.pos);
    s->value = parseFileNumber();
    expectOp(",");
    do {
        Arg a;
        a.value = parsePostfix();
        s->args.push_back(std::move(a));
    } while (acceptOp(","));
    return s;
}

StmtPtr Parser::parseSimpleStatement()
{
    const Token &first = peek();
    ExprPtr target = parsePostfix();
    if (acceptOp("=")) {
        auto s = std::make_unique<Stmt>(StmtKind::Assign, first.pos);
        if (target->kind == ExprKind::Literal || target->kind == ExprKind::Paren)
            fail(QStringLiteral("Syntax error"), first);
        s->target = std::move(target);
        s->value = parseExpression();
        return s;
    }
    auto s = std::make_unique<Stmt>(StmtKind::Call, first.pos);
    if (target->kind != ExprKind::Name && target->kind != ExprKind::Member && target->kind != ExprKind::Call)
        fail(QStringLiteral("Syntax error"), first);
    if (atEndOfStatement()) {
        if (target->kind == ExprKind::Call) {
            // "Foo(a)" or "obj.Method(a, b)": the parentheses hold the arguments. A single one
            // is itself parenthesised, so it goes by value, as in VBA.
            if (target->args.size() == 1 && target->args[0].value && target->args[0].name.isEmpty()) {
                auto paren = makeExpr(ExprKind::Paren, target->args[0].value->pos);
                paren->left = std::move(target->args[0].value);
                target->args[0].value = std::move(paren);
            }
            s->args = std::move(target->args);
            s->target = std::move(target->left);
        } else {
            s->target = std::move(target);
        }
        return s;
    }
    // "Foo (a), b": the first argument was written in parentheses.
    if (target->kind == ExprKind::Call && peek().isOp(",") && target->args.size() == 1 && target->args[0].value) {
        auto paren = makeExpr(ExprKind::Paren, target->args[0].value->pos);
        paren->left = std::move(target->args[0].value);
        Arg firstArg;
        firstArg.value = std::move(paren);
        s->args.push_back(std::move(firstArg));
        s->target = std::move(target->left);
        next();
        do {
            s->args.push_back(parseArg());
        } while (acceptOp(","));
        return s;
    }
    if (!startsExpression() && !peek().isOp(","))
        fail(QStringLiteral("Expected: end of statement"));
    s->target = std::move(target);
    do {
        s->args.push_back(parseArg());
    } while (acceptOp(","));
    return s;
}

StmtPtr Parser::parseIf()
{
    const Token &opener = next();
    auto s = std::make_unique<Stmt>(StmtKind::If, opener.pos);
    IfBranch branch;
    branch.condition = parseExpression();
    if (!acceptWord("then"))
        fail(QStringLiteral("Expected: Then or GoTo"));
    if (peek().is(TokenKind::Newline) || peek().is(TokenKind::End)) {
        branch.body = parseBlock({"elseif", "else"});
        s->branches.push_back(std::move(branch));
        for (;;) {
            if (peek().isWord("elseif")) {
                next();
                IfBranch b;
                b.condition = parseExpression();
                expectWord("then", "Then");
                b.body = parseBlock({"elseif", "else"});
                s->branches.push_back(std::move(b));
                continue;
            }
            if (peek().isWord("else")) {
                next();
                IfBranch b;
                b.body = parseBlock({});
                s->branches.push_back(std::move(b));
                if (!(peek().isWord("end") && peek(1).isWord("if")))
                    fail(QStringLiteral("Block If without End If"), opener);
            }
            break;
        }
        parseEndOf("if", QStringLiteral("Block If without End If"), opener);
        return s;
    }
    // Single-line form: If c Then a: b Else c: d, also "If c Then: a"
    while (peek().is(TokenKind::Colon))
        next();
    ++m_singleLineIf;
    auto parseLine = [&](Block &body) {
        for (;;) {
            if (peek().is(TokenKind::Newline) || peek().is(TokenKind::End))
                break;
            if (peek().is(TokenKind::Number) && peek().integerLiteral) {
                auto g = std::make_unique<Stmt>(StmtKind::GoTo, peek().pos);
                g->label = next().text;
                body.push_back(std::move(g));
            } else {
                body.push_back(parseStatement());
            }
            if (peek().is(TokenKind::Colon)) {
                next();
                if (peek().is(TokenKind::Newline) || peek().is(TokenKind::End) || peek().isWord("else"))
                    break;
                continue;
            }
            break;
        }
    };
    parseLine(branch.body);
    s->branches.push_back(std::move(branch));
    if (acceptWord("else")) {
        IfBranch b;
        parseLine(b.body);
        s->branches.push_back(std::move(b));
    }
    --m_singleLineIf;
    if (!peek().is(TokenKind::Newline) && !peek().is(TokenKind::End) && !(m_singleLineIf > 0 && peek().isWord("else")))
        fail(QStringLiteral("Expected: end of statement"));
    return s;
}

StmtPtr Parser::parseFor()
{
    const Token &opener = next();
    if (acceptWord("each")) {
        auto s = std::make_unique<Stmt>(StmtKind::ForEach, opener.pos);
        const Token &v = peek();
        s->target = makeExpr(ExprKind::Name, v.pos);
        s->target->name = expectIdentifier();
        s->target->lower = s->target->name.toLower();
        expectWord("in", "In");
        s->collection = parseExpression();
        ++m_loopDepthFor;
        s->body = parseBlock({"next"});
        --m_loopDepthFor;
        parseNext(opener, s->target->lower);
        return s;
    }
    auto s = std::make_unique<Stmt>(StmtKind::For, opener.pos);
    const Token &v = peek();
    s->target = makeExpr(ExprKind::Name, v.pos);
    s->target->name = expectIdentifier();
    s->target->lower = s->target->name.toLower();
    expectOp("=");
    s->value = parseExpression();
    expectWord("to", "To");
    s->limit = parseExpression();
    if (acceptWord("step"))
        s->step = parseExpression();
    ++m_loopDepthFor;
    s->body = parseBlock({"next"});
    --m_loopDepthFor;
    parseNext(opener, s->target->lower);
    return s;
}

// "Next", "Next i", or this loop's part of "Next j, i" (which closes the inner loop and then
// this one at the comma).
void Parser::parseNext(const Token &opener, const QString &variable)
{
    if (m_pendingNext > 0 && peek().isOp(",")) {
        next();
        --m_pendingNext;
        if (!peek().is(TokenKind::Identifier))
            fail(QStringLiteral("Expected: identifier"));
    } else if (!acceptWord("next")) {
        fail(QStringLiteral("For without Next"), opener);
    }
    if (peek().is(TokenKind::Identifier)) {
        const Token &name = next();
        if (name.lower != variable)
            fail(QStringLiteral("Invalid Next control variable reference"), name);
        if (peek().isOp(","))
            ++m_pendingNext;
    }
}

StmtPtr Parser::parseDo()
{
    const Token &opener = next();
    auto s = std::make_unique<Stmt>(StmtKind::Do, opener.pos);
    if (acceptWord("while")) {
        s->preCond = LoopCond::While;
        s->condition = parseExpression();
    } else if (acceptWord("until")) {
        s->preCond = LoopCond::Until;
        s->condition = parseExpression();
    }
    ++m_loopDepthDo;
    s->body = parseBlock({"loop"});
    --m_loopDepthDo;
    if (!acceptWord("loop"))
        fail(QStringLiteral("Do without Loop"), opener);
    if (peek().isWord("while") || peek().isWord("until")) {
        if (s->preCond != LoopCond::None)
            fail(QStringLiteral("Syntax error"));
        s->postCond = next().isWord("while") ? LoopCond::While : LoopCond::Until;
        s->condition = parseExpression();
    }
    return s;
}

StmtPtr Parser::parseWhile()
{
    const Token &opener = next();
    auto s = std::make_unique<Stmt>(StmtKind::While, opener.pos);
    s->condition = parseExpression();
    s->body = parseBlock({"wend"});
    if (!acceptWord("wend"))
        fail(QStringLiteral("While without Wend"), opener);
    return s;
}

StmtPtr Parser::parseSelect()
{
    const Token &opener = next();
    expectWord("case", "Case");
    auto s = std::make_unique<Stmt>(StmtKind::Select, opener.pos);
    s->value = parseExpression();
    expectEndOfStatement();
    skipSeparators();
    bool sawElse = false;
    while (peek().isWord("case")) {
        CaseClause clause;
        clause.pos = next().pos;
        if (sawElse)
            fail(QStringLiteral("Syntax error"), peek());
        if (acceptWord("else")) {
            sawElse = true;
        } else {
            do {
                CaseTest test;
                if (acceptWord("is")) {
                    test.kind = CaseTest::Is;
                    const Token &op = next();
                    static const QHash<QString, Op> ops = {
                        {QStringLiteral("="), Op::Eq},  {QStringLiteral("<>"), Op::Ne}, {QStringLiteral("<"), Op::Lt},
                        {QStringLiteral(">"), Op::Gt},  {QStringLiteral("<="), Op::Le}, {QStringLiteral(">="), Op::Ge},
                    };
                    if (!op.is(TokenKind::Operator) || !ops.contains(op.text))
                        fail(QStringLiteral("Syntax error"), op);
                    test.op = ops.value(op.text);
                    test.a = parseExpression();
                } else {
                    test.a = parseExpression();
                    if (acceptWord("to")) {
                        test.kind = CaseTest::Range;
                        test.b = parseExpression();
                    }
                }
                clause.tests.push_back(std::move(test));
            } while (acceptOp(","));
        }
        clause.body = parseBlock({"case"});
        s->cases.push_back(std::move(clause));
    }
    parseEndOf("select", QStringLiteral("Select Case without End Select"), opener);
    return s;
}

StmtPtr Parser::parseWith()
{
    const Token &opener = next();
    auto s = std::make_unique<Stmt>(StmtKind::With, opener.pos);
    s->target = parseExpression();
    s->body = parseBlock({});
    parseEndOf("with", QStringLiteral("Expected: End With"), opener);
    return s;
}

StmtPtr Parser::parseOnError()
{
    const Token &opener = next();
    acceptWord("local");
    expectWord("error", "Error");
    auto s = std::make_unique<Stmt>(StmtKind::OnError, opener.pos);
    if (acceptWord("resume")) {
        expectWord("next", "Next");
        s->onError = OnErrorMode::ResumeNext;
        return s;
    }
    expectWord("goto", "GoTo");
    const Token &target = peek();
    if (target.is(TokenKind::Number) && target.number == 0) {
        next();
        s->onError = OnErrorMode::Disable;
        return s;
    }
    if (target.isOp("-") && peek(1).is(TokenKind::Number) && peek(1).number == 1) {
        next();
        next();
        s->onError = OnErrorMode::Disable;
        s->label = QStringLiteral("-1");
        return s;
    }
    if (!target.is(TokenKind::Identifier) && !target.is(TokenKind::Number))
        fail(QStringLiteral("Expected: line number or label"));
    s->onError = OnErrorMode::GoTo;
    s->label = target.is(TokenKind::Number) ? target.text : target.lower;
    next();
    return s;
}

ExprPtr Parser::parseFileNumber()
{
    acceptOp("#");
    return parseExpression();
}

StmtPtr Parser::parseOpen()
{
    const Token &opener = next();
    auto s = std::make_unique<Stmt>(StmtKind::Open, opener.pos);
    s->value = parseExpression();
    expectWord("for", "For");
    if (acceptWord("input"))
        s->openMode = OpenMode::Input;
    else if (acceptWord("output"))
        s->openMode = OpenMode::Output;
    else if (acceptWord("append"))
        s->openMode = OpenMode::Append;
    else if (acceptWord("binary"))
        s->openMode = OpenMode::Binary;
    else if (acceptWord("random"))
        s->openMode = OpenMode::Random;
    else
        fail(QStringLiteral("Syntax error"));
    if (acceptWord("access")) {
        if (acceptWord("read"))
            acceptWord("write");
        else
            expectWord("write", "Write");
    }
    if (acceptWord("shared")) {
    } else if (acceptWord("lock")) {
        if (acceptWord("read"))
            acceptWord("write");
        else
            expectWord("write", "Write");
    }
    expectWord("as", "As");
    s->limit = parseFileNumber();
    if (acceptWord("len")) {
        expectOp("=");
        parseExpression();
    }
    return s;
}

StmtPtr Parser::parsePrint(StmtKind kind, bool hasFileNumber)
{
    const Token &opener = next();
    auto s = std::make_unique<Stmt>(kind, opener.pos);
    if (hasFileNumber) {
        s->value = parseFileNumber();
        if (!atEndOfStatement())
            expectOp(",");
    }
    while (!atEndOfStatement()) {
        PrintItem item;
        if (!peek().isOp(",") && !peek().isOp(";"))
            item.value = parseExpression();
        if (peek().isOp(",") || peek().isOp(";"))
            item.separator = next().text.at(0);
        else if (!atEndOfStatement() && !startsExpression())
            fail(QStringLiteral("Expected: end of statement"));
        s->items.push_back(std::move(item));
    }
    return s;
}

// ---- expressions --------------------------------------------------------------------------

bool Parser::startsExpression() const
{
    const Token &t = peek();
    switch (t.kind) {
    case TokenKind::Number:
    case TokenKind::String:
    case TokenKind::Date:
        return true;
    case TokenKind::Identifier:
        return !reservedWords().contains(t.lower) || t.lower == QLatin1String("not");
    case TokenKind::Operator:
        return t.isOp("(") || t.isOp("-") || t.isOp("+") || t.isOp(".");
    default:
        return false;
    }
}

namespace {

// Deepest tree the parser builds: blocks, parentheses, unary operators and the operators of one
// chain all count, so that no later stage walking the tree can run out of stack.
constexpr int kMaxNesting = 600;

} // namespace

void Parser::enterNesting()
{
    if (++m_nesting > kMaxNesting)
        fail(QStringLiteral("Expression too complex"));
}

ExprPtr Parser::parseExpression()
{
    NestingGuard guard(*this);
    return parseBinary(0);
}

namespace {

// Binary operator levels, loosest first.
struct Level {
    std::vector<std::pair<const char *, Op>> ops;
    bool words;
};

const std::vector<Level> &levels()
{
    static const std::vector<Level> table = {
        {{{"imp", Op::Imp}}, true},
        {{{"eqv", Op::Eqv}}, true},
        {{{"xor", Op::Xor}}, true},
        {{{"or", Op::Or}}, true},
        {{{"and", Op::And}}, true},
        {{}, true}, // Not (unary) sits here
        {{{"=", Op::Eq}, {"<>", Op::Ne}, {"<", Op::Lt}, {">", Op::Gt}, {"<=", Op::Le}, {">=", Op::Ge}, {"like", Op::Like}, {"is", Op::Is}}, false},
        {{{"&", Op::Concat}}, false},
        {{{"+", Op::Add}, {"-", Op::Sub}}, false},
        {{{"mod", Op::Mod}}, true},
        {{{"\\", Op::IntDiv}}, false},
        {{{"*", Op::Mul}, {"/", Op::Div}}, false},
        {{}, false}, // unary minus
        {{{"^", Op::Pow}}, false},
    };
    return table;
}

constexpr int kNotLevel = 5;
constexpr int kNegLevel = 12;

// The level of a binary operator at or above minLevel, or -1.
int binaryOperatorAt(const Token &t, int minLevel, Op *op)
{
    if (!t.is(TokenKind::Identifier) && !t.is(TokenKind::Operator))
        return -1;
    const auto &table = levels();
    for (int l = static_cast<int>(table.size()) - 1; l >= minLevel; --l) {
        for (const auto &[text, o] : table[l].ops) {
            if (t.is(TokenKind::Identifier) ? t.lower == QLatin1String(text) : t.text == QLatin1String(text)) {
                *op = o;
                return l;
            }
        }
    }
    return -1;
}

[[gnu::noinline]] ExprPtr makeBinary(Op op, SourcePos pos, ExprPtr left, ExprPtr right)
{
    auto bin = makeExpr(ExprKind::Binary, pos);
    bin->op = op;
    bin->left = std::move(left);
    bin->right = std::move(right);
    return bin;
}

} // namespace

// Precedence climbing: one call per operand and one per operator taken, whatever the number of
// levels, so a parenthesis costs a few frames rather than one per level. The functions on this
// path keep their frames small (the rest is in helpers that are not inlined): the sanitizer
// build's frames are several times larger.
ExprPtr Parser::parseBinary(int minLevel)
{
    ExprPtr left = parseOperand(minLevel);
    // "a + b + c": each operator makes the left side one level deeper.
    struct Chain {
        Parser &parser;
        int length = 0;
        ~Chain() { parser.m_nesting -= length; }
    } chain{*this};
    for (;;) {
        Op op = Op::Add;
        const int level = binaryOperatorAt(peek(), minLevel, &op);
        if (level < 0)
            return left;
        ++chain.length;
        enterNesting();
        const SourcePos pos = next().pos;
        // "2 ^ -52": a sign may follow the power operator.
        ExprPtr right = op == Op::Pow && (peek().isOp("-") || peek().isOp("+")) ? parseOperand(kNegLevel) : parseBinary(level + 1);
        left = makeBinary(op, pos, std::move(left), std::move(right));
    }
}

// An operand with its prefix operators: Not binds looser than comparisons ("Not a = b" is
// "Not (a = b)"), a sign tighter than everything but "^".
ExprPtr Parser::parseOperand(int minLevel)
{
    const Token &t = peek();
    const bool isNot = minLevel <= kNotLevel && t.isWord("not");
    const bool isSign = minLevel <= kNegLevel && (t.isOp("-") || t.isOp("+"));
    if (!isNot && !isSign)
        return parsePostfix();
    NestingGuard guard(*this);
    next();
    ExprPtr operand = parseBinary(isNot ? kNotLevel : kNegLevel);
    if (t.isOp("+"))
        return operand;
    auto e = makeExpr(ExprKind::Unary, t.pos);
    e->op = isNot ? Op::Not : Op::Neg;
    e->left = std::move(operand);
    return e;
}

Arg Parser::parseArg()
{
    Arg a;
    a.pos = peek().pos;
    if (peek().isOp(",") || peek().isOp(")") || atEndOfStatement())
        return a; // omitted
    if (peek().is(TokenKind::Identifier) && peek(1).isOp(":=")) {
        a.name = next().lower;
        next();
    }
    if (peek().isWord("byval"))
        next();
    if (peek().is(TokenKind::Identifier) && peek(1).isOp("(") && peek(2).isOp(")")
        && (peek(3).isOp(",") || peek(3).isOp(")") || peek(3).is(TokenKind::Newline) || peek(3).is(TokenKind::Colon)
            || peek(3).is(TokenKind::End))) {
        // "a()": the whole array
        const Token &name = next();
        next();
        next();
        a.value = makeExpr(ExprKind::Name, name.pos);
        a.value->name = name.text;
        a.value->lower = name.lower;
        return a;
    }
    a.value = parseExpression();
    return a;
}

std::vector<Arg> Parser::parseArgList()
{
    std::vector<Arg> args;
    if (acceptOp(")"))
        return args;
    do {
        args.push_back(parseArg());
    } while (acceptOp(","));
    expectOp(")");
    return args;
}

ExprPtr Parser::parsePrimary()
{
    if (!peek().isOp("("))
        return parseAtom();
    const SourcePos pos = next().pos;
    NestingGuard guard(*this);
    ExprPtr inner = parseBinary(0);
    expectOp(")");
    return makeParen(pos, std::move(inner));
}

ExprPtr Parser::makeParen(SourcePos pos, ExprPtr inner)
{
    auto e = makeExpr(ExprKind::Paren, pos);
    e->left = std::move(inner);
    return e;
}

ExprPtr Parser::parseAtom()
{
    const Token &t = peek();
    switch (t.kind) {
    case TokenKind::Number: {
        next();
        auto e = makeExpr(ExprKind::Literal, t.pos);
        if (t.suffix == QLatin1Char('!') || t.suffix == QLatin1Char('@')) {
            // "1E300!" or a Currency literal past its range does not compile.
            try {
                e->value = t.suffix == QLatin1Char('!') ? ScriptValue::fromSingle(t.number)
                                                        : ScriptValue::fromCurrency(ScriptValue::fromDouble(t.number).toCurrency());
            } catch (const ScriptError &) {
                fail(QStringLiteral("Overflow"), t);
            }
        } else if (t.suffix == QLatin1Char('#') || !t.integerLiteral)
            e->value = ScriptValue::fromDouble(t.number);
        else if (t.suffix == QLatin1Char('&') && !(t.number >= -2147483648.0 && t.number <= 2147483647.0))
            fail(QStringLiteral("Overflow"), t);
        else if (t.suffix == QLatin1Char('&'))
            e->value = ScriptValue::fromLong(static_cast<std::int32_t>(t.number));
        else if (std::abs(t.number) > 2147483647.0)
            e->value = ScriptValue::fromDouble(t.number);
        else
            e->value = ScriptValue::fromNumber(t.number);
        return e;
    }
    case TokenKind::String: {
        next();
        auto e = makeExpr(ExprKind::Literal, t.pos);
        e->value = ScriptValue::fromString(t.text);
        return e;
    }
    case TokenKind::Date: {
        next();
        // #m/d/yyyy#, #h:mm[:ss] [AM|PM]# or both.
        QStringList parts = t.text.trimmed().split(QLatin1Char(' '), Qt::SkipEmptyParts);
        double date = 0;
        if (!parts.isEmpty() && !parts.first().contains(QLatin1Char(':'))) {
            QString first = parts.takeFirst();
            const QStringList mdy = first.replace(QLatin1Char('-'), QLatin1Char('/')).split(QLatin1Char('/'));
            const bool yearFirst = mdy.value(0).size() == 4; // #2026-11-23#
            const QDate d = yearFirst ? QDate(mdy.value(0).toInt(), mdy.value(1).toInt(), mdy.value(2).toInt())
                                      : QDate(mdy.value(2).toInt(), mdy.value(0).toInt(), mdy.value(1).toInt());
            if (mdy.size() != 3 || !d.isValid())
                fail(QStringLiteral("Syntax error"), t);
            date = oleDateFromParts(d.year(), d.month(), d.day());
        }
        if (!parts.isEmpty()) {
            const QStringList hms = parts.takeFirst().split(QLatin1Char(':'));
            int hour = hms.value(0).toInt();
            const int minute = hms.value(1).toInt();
            const int second = hms.value(2).toInt();
            if (!parts.isEmpty()) {
                const QString ampm = parts.takeFirst().toUpper();
                if (ampm == QLatin1String("PM") && hour < 12)
                    hour += 12;
                else if (ampm == QLatin1String("AM") && hour == 12)
                    hour = 0;
                else if (ampm != QLatin1String("AM") && ampm != QLatin1String("PM"))
                    fail(QStringLiteral("Syntax error"), t);
            }
            if (hour > 23 || minute > 59 || second > 59 || !parts.isEmpty())
                fail(QStringLiteral("Syntax error"), t);
            date += (hour * 3600.0 + minute * 60.0 + second) / 86400.0;
        }
        auto e = makeExpr(ExprKind::Literal, t.pos);
        e->value = ScriptValue::fromDate(date);
        return e;
    }
    case TokenKind::Identifier: {
        if (t.lower == QLatin1String("true") || t.lower == QLatin1String("false")) {
            next();
            auto e = makeExpr(ExprKind::Literal, t.pos);
            e->value = ScriptValue::fromBool(t.lower == QLatin1String("true"));
            return e;
        }
        if (t.lower == QLatin1String("nothing") || t.lower == QLatin1String("empty") || t.lower == QLatin1String("null")) {
            next();
            auto e = makeExpr(ExprKind::Literal, t.pos);
            if (t.lower == QLatin1String("nothing"))
                e->value = ScriptValue::nothing();
            else if (t.lower == QLatin1String("null"))
                e->value = ScriptValue::null();
            return e;
        }
        if (t.lower == QLatin1String("new")) {
            next();
            auto e = makeExpr(ExprKind::Call, t.pos);
            auto callee = makeExpr(ExprKind::Name, t.pos);
            callee->name = QStringLiteral("CreateObject");
            callee->lower = QStringLiteral("createobject");
            e->left = std::move(callee);
            QString cls = expectIdentifier();
            while (acceptOp("."))
                cls += QLatin1Char('.') + expectIdentifier();
            Arg a;
            a.value = makeExpr(ExprKind::Literal, t.pos);
            a.value->value = ScriptValue::fromString(cls);
            e->args.push_back(std::move(a));
            return e;
        }
        if (t.lower == QLatin1String("typeof")) {
            next();
            auto e = makeExpr(ExprKind::TypeOf, t.pos);
            e->left = parsePostfix();
            expectWord("is", "Is");
            QString cls = expectIdentifier();
            while (acceptOp("."))
                cls = expectIdentifier();
            e->name = cls;
            e->lower = cls.toLower();
            return e;
        }
        if (t.lower == QLatin1String("not")) {
            // "-Not x": Not where an operand is expected
            next();
            auto e = makeExpr(ExprKind::Unary, t.pos);
            e->op = Op::Not;
            NestingGuard guard(*this);
            e->left = parseBinary(kNotLevel);
            return e;
        }
        if (reservedWords().contains(t.lower))
            fail(QStringLiteral("Expected: expression"));
        next();
        auto e = makeExpr(ExprKind::Name, t.pos);
        e->name = t.text;
        e->lower = t.lower;
        return e;
    }
    case TokenKind::Operator:
        if (t.isOp(".")) {
            // .Member inside a With block
            next();
            auto e = makeExpr(ExprKind::Member, t.pos);
            const Token &name = next();
            if (!name.is(TokenKind::Identifier))
                fail(QStringLiteral("Expected: identifier"), name);
            e->name = name.text;
            e->lower = name.lower;
            return e;
        }
        break;
    default:
        break;
    }
    fail(QStringLiteral("Expected: expression"));
}

ExprPtr Parser::parsePostfix()
{
    return parseSuffixes(parsePrimary());
}

ExprPtr Parser::parseSuffixes(ExprPtr e)
{
    for (;;) {
        const Token &t = peek();
        if (t.isOp(".") && !t.spaceBefore) {
            next();
            const Token &name = next();
            if (!name.is(TokenKind::Identifier))
                fail(QStringLiteral("Expected: identifier"), name);
            if (e->kind == ExprKind::Name && isQualifier(e->lower)) {
                // VBA.Len is Len: the qualifier goes.
                e->pos = name.pos;
                e->name = name.text;
                e->lower = name.lower;
                continue;
            }
            auto m = makeExpr(ExprKind::Member, name.pos);
            m->name = name.text;
            m->lower = name.lower;
            m->left = std::move(e);
            e = std::move(m);
            continue;
        }
        if (t.isOp("!") && peek(1).is(TokenKind::Identifier)) {
            // coll!key is coll("key")
            next();
            const Token &key = next();
            auto c = makeExpr(ExprKind::Call, t.pos);
            c->left = std::move(e);
            Arg a;
            a.value = makeExpr(ExprKind::Literal, key.pos);
            a.value->value = ScriptValue::fromString(key.text);
            c->args.push_back(std::move(a));
            e = std::move(c);
            continue;
        }
        if (t.isOp("(") && e->kind != ExprKind::Literal) {
            next();
            auto c = makeExpr(ExprKind::Call, t.pos);
            c->args = parseArgList();
            c->left = std::move(e);
            e = std::move(c);
            continue;
        }
        return e;
    }
}

} // namespace cadsim
