#pragma once

#include "cadsim/engine/scripterror.h"

#include <QString>

namespace cadsim {

enum class TokenKind {
    End,
    Newline,   // end of a line (continuations are joined)
    Colon,     // statement separator, or the end of a label
    Identifier,
    Number,
    String,
    Date,      // #1/2/2024# literal
    Operator,  // ( ) , . ; # & + - * / \ ^ = < > <= >= <> :=  !
};

struct Token {
    TokenKind kind = TokenKind::End;
    QString text;  // identifier as written, operator text, string contents
    QString lower; // identifiers lower-cased (names are case-insensitive)
    double number = 0;
    bool integerLiteral = false; // number written without fraction or exponent
    QChar suffix;                // type character of a number or identifier ($ % & # !)
    bool spaceBefore = false;
    SourcePos pos;

    bool is(TokenKind k) const { return kind == k; }
    bool isOp(const char *op) const { return kind == TokenKind::Operator && text == QLatin1String(op); }
    bool isWord(const char *lowerWord) const
    {
        return kind == TokenKind::Identifier && lower == QLatin1String(lowerWord);
    }
};

} // namespace cadsim
