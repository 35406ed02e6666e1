#pragma once

#include "cadsim/engine/ast.h"
#include "cadsim/engine/lexer.h"
#include "cadsim/engine/token.h"

#include <QSet>

#include <memory>
#include <vector>

namespace cadsim {

// Builds the syntax tree of one module from its tokens; the first syntax error throws a
// CompileException with its position.
class Parser final {
public:
    explicit Parser(std::vector<Token> tokens);

    std::unique_ptr<Module> parseModule();

    // Lexes and parses a whole text.
    static std::unique_ptr<Module> parse(const QString &text);

private:
    const Token &peek(int ahead = 0) const;
    const Token &next();
    bool atEndOfStatement() const;
    void expectEndOfStatement();
    void skipSeparators();
    bool acceptWord(const char *word);
    bool acceptOp(const char *op);
    void expectWord(const char *word, const char *display);
    void expectOp(const char *op);
    QString expectIdentifier();
    [[noreturn]] void fail(const QString &message, const Token &at) const;
    [[noreturn]] void fail(const QString &message) const { fail(message, peek()); }

    void parseModuleDeclaration(Module &module);
    static void qualifyModuleCalls(Module &module);
    std::unique_ptr<Procedure> parseProcedure(bool isPrivate);
    void collectLabels(Procedure &proc, const Block &block, bool topLevel);
    DeclareProc parseDeclare();
    void parseType(Module &module, const Token &opener);
    void parseEnum(Module &module, const Token &opener);
    StmtPtr parseReDim(const Token &opener);
    StmtPtr parseInput(const Token &opener);
    std::vector<Param> parseParams();
    DeclType parseAsType(bool *isNew = nullptr, QString *className = nullptr);
    static DeclType typeOfSuffix(QChar suffix);
    bool isQualifier(const QString &lower) const;
    VarDecl parseVarDecl(bool redim);
    std::vector<Dimension> parseDimensions();
    void parseConstList(std::vector<ConstDecl> &out);

    Block parseBlock(const std::vector<const char *> &stops);
    bool isStop(const std::vector<const char *> &stops) const;
    StmtPtr parseStatement();
    [[gnu::noinline]] StmtPtr parseLineStatement();
    StmtPtr parseIf();
    StmtPtr parseFor();
    void parseNext(const Token &opener, const QString &variable);
    StmtPtr parseDo();
    StmtPtr parseWhile();
    StmtPtr parseSelect();
    StmtPtr parseWith();
    StmtPtr parseOnError();
    StmtPtr parseOpen();
    StmtPtr parsePrint(StmtKind kind, bool hasFileNumber);
    StmtPtr parseSimpleStatement();
    void parseEndOf(const char *word, const QString &missingMessage, const Token &opener);
    ExprPtr parseFileNumber();

    ExprPtr parseExpression();
    ExprPtr parseBinary(int minLevel);
    ExprPtr parseOperand(int minLevel);
    ExprPtr parsePostfix();
    [[gnu::noinline]] ExprPtr parseSuffixes(ExprPtr e);
    ExprPtr parsePrimary();
    [[gnu::noinline]] ExprPtr parseAtom();
    [[gnu::noinline]] static ExprPtr makeParen(SourcePos pos, ExprPtr inner);
    std::vector<Arg> parseArgList(); // after "(" up to and including ")"
    Arg parseArg();
    bool startsExpression() const;
    [[gnu::noinline]] void enterNesting(); // raises "Expression too complex" past the limit
    struct NestingGuard {
        explicit NestingGuard(Parser &p) : m_parser(p) { p.enterNesting(); }
        ~NestingGuard() { --m_parser.m_nesting; }
        Parser &m_parser;
    };

    std::vector<Token> m_tokens;
    std::size_t m_index = 0;
    int m_nesting = 0; // depth of expressions and blocks, bounded so no input exhausts the stack
    int m_singleLineIf = 0;
    int m_pendingNext = 0; // loops still to close after "Next j, i"
    int m_loopDepthFor = 0;
    int m_loopDepthDo = 0;
    Procedure *m_procedure = nullptr;
    QSet<QString> m_typeNames; // user-defined types declared so far, lower case
    QSet<QString> m_enumNames;
    QString m_moduleName; // from Attribute VB_Name, lower case
};

} // namespace cadsim
