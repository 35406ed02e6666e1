#include "cadsim/engine/lexer.h"

#include <QRegularExpression>
#include <QStringList>

#include <cmath>

namespace cadsim {

namespace {

bool isIdentStart(QChar c)
{
    return c.isLetter() || c == QLatin1Char('_');
}

bool isIdentChar(QChar c)
{
    return c.isLetterOrNumber() || c == QLatin1Char('_');
}

// Evaluates a #If condition over its tokens.
class DirectiveEvaluator {
public:
    DirectiveEvaluator(const std::vector<Token> &tokens, const QHash<QString, double> &constants)
        : m_tokens(tokens), m_constants(constants) {}

    bool ok() const { return m_ok; }
    double run()
    {
        const double v = orExpr();
        if (m_index < m_tokens.size())
            m_ok = false;
        return v;
    }

private:
    const Token *peek() const { return m_index < m_tokens.size() ? &m_tokens[m_index] : nullptr; }
    double orExpr()
    {
        double v = andExpr();
        while (peek() && (peek()->isWord("or") || peek()->isWord("xor"))) {
            const bool isXor = peek()->isWord("xor");
            ++m_index;
            const double r = andExpr();
            v = isXor ? ((v != 0) != (r != 0) ? -1 : 0) : ((v != 0 || r != 0) ? -1 : 0);
        }
        return v;
    }
    double andExpr()
    {
        double v = notExpr();
        while (peek() && peek()->isWord("and")) {
            ++m_index;
            const double r = notExpr();
            v = (v != 0 && r != 0) ? -1 : 0;
        }
        return v;
    }
    double notExpr()
    {
        if (peek() && peek()->isWord("not")) {
            ++m_index;
            return notExpr() != 0 ? 0 : -1;
        }
        return compare();
    }
    double compare()
    {
        const double l = primary();
        const Token *t = peek();
        if (t && t->kind == TokenKind::Operator) {
            const QString op = t->text;
            if (op == QLatin1String("=") || op == QLatin1String("<>") || op == QLatin1String("<")
                || op == QLatin1String(">") || op == QLatin1String("<=") || op == QLatin1String(">=")) {
                ++m_index;
                const double r = primary();
                bool res = false;
                if (op == QLatin1String("=")) res = l == r;
                else if (op == QLatin1String("<>")) res = l != r;
                else if (op == QLatin1String("<")) res = l < r;
                else if (op == QLatin1String(">")) res = l > r;
                else if (op == QLatin1String("<=")) res = l <= r;
                else res = l >= r;
                return res ? -1 : 0;
            }
        }
        return l;
    }
    double primary()
    {
        const Token *t = peek();
        if (!t) {
            m_ok = false;
            return 0;
        }
        ++m_index;
        if (t->kind == TokenKind::Number)
            return t->number;
        if (t->isWord("true"))
            return -1;
        if (t->isWord("false"))
            return 0;
        if (t->kind == TokenKind::Identifier)
            return m_constants.value(t->lower, 0);
        if (t->isOp("(")) {
            const double v = orExpr();
            if (!peek() || !peek()->isOp(")"))
                m_ok = false;
            else
                ++m_index;
            return v;
        }
        if (t->isOp("-"))
            return -primary();
        m_ok = false;
        return 0;
    }

    const std::vector<Token> &m_tokens;
    const QHash<QString, double> &m_constants;
    std::size_t m_index = 0;
    bool m_ok = true;
};

} // namespace

QHash<QString, double> Lexer::defaultDirectiveConstants()
{
    // A 64-bit host with VBA 7.
    return {{QStringLiteral("vba7"), -1}, {QStringLiteral("vba6"), -1}, {QStringLiteral("win64"), -1},
            {QStringLiteral("win32"), -1}, {QStringLiteral("win16"), 0}, {QStringLiteral("mac"), 0}};
}

Lexer::Lexer(const QString &text, QHash<QString, double> directiveConstants)
    : m_text(text), m_constants(std::move(directiveConstants))
{
}

void Lexer::fail(const QString &message, int line, int column)
{
    throw CompileException(CompileError{message, SourcePos{line, column}});
}

bool Lexer::evaluateDirective(const QString &condition, int line)
{
    std::vector<Token> tokens;
    bool continued = false;
    lexLine(condition, line, tokens, continued);
    DirectiveEvaluator eval(tokens, m_constants);
    const double v = eval.run();
    if (!eval.ok())
        fail(QStringLiteral("Syntax error"), line, 1);
    return v != 0;
}

QString Lexer::applyDirectives(const QString &text)
{
    QString normalized = text;
    normalized.replace(QLatin1String("\r\n"), QLatin1String("\n"));
    normalized.replace(QLatin1Char('\r'), QLatin1Char('\n'));
    QStringList lines = normalized.split(QLatin1Char('\n'));

    struct Level {
        bool parentActive;
        bool taken;  // some branch of this #If was already chosen
        bool active; // the current branch is compiled
        bool seenElse;
        int line;
    };
    std::vector<Level> stack;
    bool active = true;
    for (int i = 0; i < lines.size(); ++i) {
        const QString trimmed = lines[i].trimmed();
        const int lineNo = i + 1;
        if (!trimmed.startsWith(QLatin1Char('#'))) {
            if (!active)
                lines[i].clear();
            continue;
        }
        // Strip a trailing comment from the directive.
        QString body = trimmed.mid(1);
        const int quote = body.indexOf(QLatin1Char('\''));
        if (quote >= 0)
            body = body.left(quote);
        body = body.trimmed();
        const QString lowerBody = body.toLower();
        auto word = [&](const char *w) {
            const QLatin1String l(w);
            return lowerBody.startsWith(l) && (lowerBody.size() == l.size() || !isIdentChar(lowerBody.at(l.size())));
        };
        auto conditionOf = [&](int keywordLength) {
            QString cond = body.mid(keywordLength).trimmed();
            if (!cond.toLower().endsWith(QLatin1String("then")))
                fail(QStringLiteral("Expected: Then"), lineNo, lines[i].size() + 1);
            return cond.left(cond.size() - 4);
        };
        if (word("if")) {
            const bool cond = active && evaluateDirective(conditionOf(2), lineNo);
            stack.push_back({active, cond, cond, false, lineNo});
            active = cond;
        } else if (word("elseif")) {
            if (stack.empty() || stack.back().seenElse)
                fail(QStringLiteral("#Else If, #Else, or #End If must be preceded by a matching #If"), lineNo, 1);
            Level &lv = stack.back();
            const bool cond = lv.parentActive && !lv.taken && evaluateDirective(conditionOf(6), lineNo);
            lv.taken = lv.taken || cond;
            lv.active = cond;
            active = cond;
        } else if (word("else")) {
            if (stack.empty() || stack.back().seenElse)
                fail(QStringLiteral("#Else If, #Else, or #End If must be preceded by a matching #If"), lineNo, 1);
            Level &lv = stack.back();
            lv.seenElse = true;
            lv.active = lv.parentActive && !lv.taken;
            lv.taken = true;
            active = lv.active;
        } else if (word("end") || word("endif")) {
            if (stack.empty())
                fail(QStringLiteral("#Else If, #Else, or #End If must be preceded by a matching #If"), lineNo, 1);
            active = stack.back().parentActive;
            stack.pop_back();
        } else if (word("const")) {
            if (active) {
                const QString rest = body.mid(5);
                const int eq = rest.indexOf(QLatin1Char('='));
                if (eq < 0)
                    fail(QStringLiteral("Expected: ="), lineNo, 1);
                const QString name = rest.left(eq).trimmed().toLower();
                m_constants.insert(name, evaluateDirective(rest.mid(eq + 1), lineNo) ? -1 : 0);
                bool isNumber = false;
                const double n = rest.mid(eq + 1).trimmed().toDouble(&isNumber);
                if (isNumber)
                    m_constants.insert(name, n);
            }
        } else if (active) {
            // Not a directive: a date literal or file number at the start of a line is no statement.
            fail(QStringLiteral("Syntax error"), lineNo, lines[i].indexOf(QLatin1Char('#')) + 1);
        }
        lines[i].clear();
    }
    if (!stack.empty())
        fail(QStringLiteral("#If block without #End If"), stack.back().line, 1);
    return lines.join(QLatin1Char('\n'));
}

namespace {

// "i&", "x#", "c@" at a name: a type character, unless it is an operator ("a&b", "coll!key",
// "Print #1") or a string joined without blanks ("s&\"x\"").
bool hasTypeSuffix(const QString &line, int at)
{
    const QChar c = line.at(at);
    if (c != QLatin1Char('%') && c != QLatin1Char('&') && c != QLatin1Char('!') && c != QLatin1Char('#')
        && c != QLatin1Char('@'))
        return false;
    int k = at + 1;
    if (k >= line.size())
        return true;
    const QChar after = line.at(k);
    if (after.isLetterOrNumber() || after == QLatin1Char('_') || after == QLatin1Char('"') || after == QLatin1Char('&')
        || after == QLatin1Char('#'))
        return false;
    if (c != QLatin1Char('&') || !after.isSpace())
        return true;
    // "a& b" joins two values; "n& = 1", "n&, m&", "n& As" and "n&)" declare or use a Long.
    while (k < line.size() && line.at(k).isSpace())
        ++k;
    if (k >= line.size())
        return true;
    const QChar next = line.at(k);
    return next == QLatin1Char('=') || next == QLatin1Char(',') || next == QLatin1Char(')') || next == QLatin1Char(':')
           || next == QLatin1Char('\'') || line.mid(k, 3).compare(QLatin1String("as "), Qt::CaseInsensitive) == 0;
}

} // namespace

void Lexer::lexLine(const QString &line, int lineNo, std::vector<Token> &out, bool &continued)
{
    continued = false;
    const int n = line.size();
    int i = 0;
    while (i < n) {
        const QChar c = line.at(i);
        if (c == QLatin1Char(' ') || c == QLatin1Char('\t') || c == QChar(0xA0)) {
            ++i;
            continue;
        }
        Token t;
        t.pos = SourcePos{lineNo, i + 1};
        t.spaceBefore = i > 0 && line.at(i - 1).isSpace();
        if (c == QLatin1Char('\''))
            return;
        if (c == QLatin1Char('_') && (i == 0 || line.at(i - 1).isSpace()) && line.mid(i + 1).trimmed().isEmpty()) {
            continued = true;
            return;
        }
        if (c == QLatin1Char('"')) {
            QString s;
            int j = i + 1;
            bool closed = false;
            while (j < n) {
                if (line.at(j) == QLatin1Char('"')) {
                    if (j + 1 < n && line.at(j + 1) == QLatin1Char('"')) {
                        s += QLatin1Char('"');
                        j += 2;
                        continue;
                    }
                    closed = true;
                    ++j;
                    break;
                }
                s += line.at(j++);
            }
            if (!closed)
                fail(QStringLiteral("Unterminated string"), lineNo, i + 1);
            t.kind = TokenKind::String;
            t.text = s;
            out.push_back(t);
            i = j;
            continue;
        }
        const bool prevIsValue = !out.empty() && out.back().pos.line == lineNo
                                 && (out.back().kind == TokenKind::Identifier || out.back().isOp(")"));
        if (c.isDigit() || (c == QLatin1Char('.') && i + 1 < n && line.at(i + 1).isDigit() && !prevIsValue)) {
            int j = i;
            while (j < n && line.at(j).isDigit())
                ++j;
            bool isInt = true;
            if (j < n && line.at(j) == QLatin1Char('.')) {
                isInt = false;
                ++j;
                while (j < n && line.at(j).isDigit())
                    ++j;
            }
            if (j < n && (line.at(j) == QLatin1Char('e') || line.at(j) == QLatin1Char('E') || line.at(j) == QLatin1Char('d')
                          || line.at(j) == QLatin1Char('D'))) {
                int k = j + 1;
                if (k < n && (line.at(k) == QLatin1Char('+') || line.at(k) == QLatin1Char('-')))
                    ++k;
                if (k < n && line.at(k).isDigit()) {
                    while (k < n && line.at(k).isDigit())
                        ++k;
                    isInt = false;
                    j = k;
                }
            }
            QString digits = line.mid(i, j - i);
            digits.replace(QLatin1Char('d'), QLatin1Char('e')).replace(QLatin1Char('D'), QLatin1Char('e'));
            t.kind = TokenKind::Number;
            t.number = digits.toDouble();
            t.integerLiteral = isInt;
            if (j < n && QStringLiteral("%&!#@").contains(line.at(j)) && (j + 1 >= n || !isIdentChar(line.at(j + 1)))) {
                t.suffix = line.at(j);
                ++j;
            }
            if (j < n && isIdentStart(line.at(j)))
                fail(QStringLiteral("Expected: end of statement"), lineNo, j + 1);
            t.text = line.mid(i, j - i);
            out.push_back(t);
            i = j;
            continue;
        }
        if (c == QLatin1Char('&') && i + 1 < n && (line.at(i + 1).toUpper() == QLatin1Char('H') || line.at(i + 1).toUpper() == QLatin1Char('O'))
            && i + 2 < n && line.at(i + 2).isLetterOrNumber()) {
            const bool hex = line.at(i + 1).toUpper() == QLatin1Char('H');
            int j = i + 2;
            while (j < n && (hex ? isxdigit(line.at(j).toLatin1()) : (line.at(j) >= QLatin1Char('0') && line.at(j) <= QLatin1Char('7'))))
                ++j;
            bool ok = false;
            const qulonglong v = line.mid(i + 2, j - i - 2).toULongLong(&ok, hex ? 16 : 8);
            if (!ok || v > 0xFFFFFFFFull)
                fail(QStringLiteral("Overflow"), lineNo, i + 1);
            t.kind = TokenKind::Number;
            t.integerLiteral = true;
            if (j < n && line.at(j) == QLatin1Char('&')) {
                t.suffix = QLatin1Char('&');
                ++j;
            }
            // &H literals are 16-bit when they fit 4 digits and carry no '&'.
            if (v <= 0xFFFF && t.suffix != QLatin1Char('&'))
                t.number = static_cast<std::int16_t>(static_cast<std::uint16_t>(v));
            else
                t.number = static_cast<std::int32_t>(static_cast<std::uint32_t>(v));
            t.text = line.mid(i, j - i);
            out.push_back(t);
            i = j;
            continue;
        }
        if (isIdentStart(c) || c == QLatin1Char('[')) {
            int j = i;
            QString name;
            if (c == QLatin1Char('[')) {
                const int close = line.indexOf(QLatin1Char(']'), i);
                if (close < 0)
                    fail(QStringLiteral("Expected: ]"), lineNo, n + 1);
                name = line.mid(i + 1, close - i - 1);
                j = close + 1;
            } else {
                while (j < n && isIdentChar(line.at(j)))
                    ++j;
                name = line.mid(i, j - i);
                if (j < n && line.at(j) == QLatin1Char('$')) {
                    t.suffix = QLatin1Char('$');
                    ++j;
                } else if (j < n && hasTypeSuffix(line, j)) {
                    t.suffix = line.at(j);
                    ++j;
                }
            }
            t.kind = TokenKind::Identifier;
            t.text = name;
            t.lower = name.toLower();
            // Rem starts a comment where a statement starts.
            if (t.lower == QLatin1String("rem") && t.suffix.isNull()
                && (out.empty() || out.back().pos.line != lineNo || out.back().is(TokenKind::Colon))
                && (j >= n || line.at(j).isSpace())) {
                return;
            }
            out.push_back(t);
            i = j;
            continue;
        }
        if (c == QLatin1Char('#') && !out.empty() && out.back().pos.line == lineNo) {
            // A date literal #...# where a value is expected.
            const Token &prev = out.back();
            static const QStringList keywords = {QStringLiteral("to"), QStringLiteral("case"), QStringLiteral("is"),
                                                 QStringLiteral("and"), QStringLiteral("or"), QStringLiteral("not"),
                                                 QStringLiteral("step"), QStringLiteral("then"), QStringLiteral("else"),
                                                 QStringLiteral("print")};
            const bool valueExpected = (prev.kind == TokenKind::Operator && !prev.isOp(")"))
                                       || (prev.kind == TokenKind::Identifier && keywords.contains(prev.lower));
            const int close = line.indexOf(QLatin1Char('#'), i + 1);
            // "#1/2/2026#" or "#10:30:00 AM#"; "Close #1, #2" holds no date.
            static const QRegularExpression dateText(QStringLiteral("^[0-9]+[/-][0-9]+[/-][0-9]+( +[0-9: APMapm]+)?$|^[0-9]+:[0-9: APMapm]+$"));
            if (valueExpected && close > i + 1 && dateText.match(line.mid(i + 1, close - i - 1).trimmed()).hasMatch()) {
                t.kind = TokenKind::Date;
                t.text = line.mid(i + 1, close - i - 1);
                out.push_back(t);
                i = close + 1;
                continue;
            }
        }
        if (c == QLatin1Char(':')) {
            if (i + 1 < n && line.at(i + 1) == QLatin1Char('=')) {
                t.kind = TokenKind::Operator;
                t.text = QStringLiteral(":=");
                out.push_back(t);
                i += 2;
                continue;
            }
            t.kind = TokenKind::Colon;
            t.text = QStringLiteral(":");
            out.push_back(t);
            ++i;
            continue;
        }
        static const QString twoChar[] = {QStringLiteral("<="), QStringLiteral(">="), QStringLiteral("<>")};
        bool matched = false;
        for (const QString &op : twoChar) {
            if (line.mid(i, 2) == op) {
                t.kind = TokenKind::Operator;
                t.text = op;
                out.push_back(t);
                i += 2;
                matched = true;
                break;
            }
        }
        if (matched)
            continue;
        if (QStringLiteral("(),.;#&+-*/\\^=<>!").contains(c)) {
            t.kind = TokenKind::Operator;
            t.text = QString(c);
            out.push_back(t);
            ++i;
            continue;
        }
        fail(QStringLiteral("Invalid character"), lineNo, i + 1);
    }
}

std::vector<Token> Lexer::tokenize()
{
    const QString text = applyDirectives(m_text);
    const QStringList lines = text.split(QLatin1Char('\n'));
    std::vector<Token> out;
    bool continued = false;
    for (int i = 0; i < lines.size(); ++i) {
        lexLine(lines[i], i + 1, out, continued);
        if (!continued && !out.empty() && !out.back().is(TokenKind::Newline)) {
            Token nl;
            nl.kind = TokenKind::Newline;
            nl.pos = SourcePos{i + 1, static_cast<int>(lines[i].size()) + 1};
            out.push_back(nl);
        }
    }
    Token end;
    end.kind = TokenKind::End;
    end.pos = SourcePos{static_cast<int>(lines.size()), 1};
    if (out.empty() || !out.back().is(TokenKind::Newline)) {
        Token nl = end;
        nl.kind = TokenKind::Newline;
        out.push_back(nl);
    }
    out.push_back(end);
    return out;
}

} // namespace cadsim
