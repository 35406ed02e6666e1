#pragma once

#include "cadsim/engine/token.h"

#include <QHash>
#include <QString>

#include <vector>

namespace cadsim {

// A compile error: message and position.
struct CompileError {
    QString message;
    SourcePos pos;
    int runCode = 3; // the run call's error code this error gives
};

class CompileException final : public std::exception {
public:
    explicit CompileException(CompileError error) : m_error(std::move(error)) {}
    const CompileError &error() const { return m_error; }
    const char *what() const noexcept override { return "compile error"; }

private:
    CompileError m_error;
};

// Turns macro text into tokens. Conditional compilation (#If/#ElseIf/#Else/#End If, #Const) is
// applied first, line by line, so excluded lines never reach the parser; line numbers stay.
class Lexer final {
public:
    // Compile-time constants of #If ("VBA7", "Win64"...), lower-case names.
    static QHash<QString, double> defaultDirectiveConstants();

    explicit Lexer(const QString &text, QHash<QString, double> directiveConstants = defaultDirectiveConstants());

    // All tokens, ending with Newline and End; throws CompileException.
    std::vector<Token> tokenize();

private:
    QString applyDirectives(const QString &text);
    bool evaluateDirective(const QString &condition, int line);
    void lexLine(const QString &line, int lineNo, std::vector<Token> &out, bool &continued);
    [[noreturn]] void fail(const QString &message, int line, int column);

    QString m_text;
    QHash<QString, double> m_constants;
};

} // namespace cadsim
