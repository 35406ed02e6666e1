#include "cadsim/engine/regexpobject.h"

#include <QRegularExpression>

#include <vector>

namespace cadsim {

namespace {

const ScriptValue &arg(ScriptArgs &args, std::size_t i)
{
    static const ScriptValue missing = ScriptValue::missing();
    return i < args.size() && args[i] ? *args[i] : missing;
}

QString requiredText(ScriptArgs &args, std::size_t i)
{
    const ScriptValue &v = arg(args, i);
    if (v.isMissing())
        throw ScriptError(ErrNo::ArgumentNotOptional);
    return v.toString();
}

ScriptValue itemOf(const std::vector<ScriptValue> &items, ScriptArgs &args)
{
    const std::int32_t i = arg(args, 0).isMissing() ? -1 : arg(args, 0).toLong();
    if (i < 0 || i >= static_cast<std::int32_t>(items.size()))
        throw ScriptError(ErrNo::InvalidCall);
    return items[static_cast<std::size_t>(i)];
}

// A read-only 0-based list: Matches and SubMatches.
class ItemList final : public ScriptObject {
public:
    ItemList(QString typeName, std::vector<ScriptValue> items) : m_typeName(std::move(typeName)), m_items(std::move(items)) {}
    QString typeName() const override { return m_typeName; }
    std::vector<ScriptValue> enumerate() override { return m_items; }
    ScriptValue defaultValue(ScriptArgs &args) override { return itemOf(m_items, args); }
    ScriptValue invoke(const QString &member, CallKind, ScriptArgs &args) override
    {
        if (member.compare(QLatin1String("Count"), Qt::CaseInsensitive) == 0)
            return ScriptValue::fromLong(static_cast<std::int32_t>(m_items.size()));
        if (member.compare(QLatin1String("Item"), Qt::CaseInsensitive) == 0)
            return itemOf(m_items, args);
        throw ScriptError(ErrNo::NoSuchMember);
    }

private:
    QString m_typeName;
    std::vector<ScriptValue> m_items;
};

class Match final : public ScriptObject {
public:
    explicit Match(const QRegularExpressionMatch &m)
        : m_value(m.captured(0)), m_firstIndex(static_cast<std::int32_t>(m.capturedStart(0)))
    {
        std::vector<ScriptValue> groups;
        for (int i = 1; i <= m.lastCapturedIndex(); ++i)
            groups.push_back(m.capturedStart(i) < 0 ? ScriptValue() : ScriptValue::fromString(m.captured(i)));
        // Groups after the last one that took part exist too, and are Empty.
        for (int i = m.lastCapturedIndex() + 1; i <= m.regularExpression().captureCount(); ++i)
            groups.push_back(ScriptValue());
        m_subMatches = std::make_shared<ItemList>(QStringLiteral("ISubMatches"), std::move(groups));
    }
    QString typeName() const override { return QStringLiteral("IMatch2"); }
    ScriptValue defaultValue(ScriptArgs &) override { return ScriptValue::fromString(m_value); }
    ScriptValue invoke(const QString &member, CallKind, ScriptArgs &args) override
    {
        const QString m = member.toLower();
        if (m == QLatin1String("value"))
            return ScriptValue::fromString(m_value);
        if (m == QLatin1String("firstindex"))
            return ScriptValue::fromLong(m_firstIndex);
        if (m == QLatin1String("length"))
            return ScriptValue::fromLong(static_cast<std::int32_t>(m_value.size()));
        if (m == QLatin1String("submatches"))
            return args.empty() ? ScriptValue::fromObject(m_subMatches) : m_subMatches->defaultValue(args);
        throw ScriptError(ErrNo::NoSuchMember);
    }

private:
    QString m_value;
    std::int32_t m_firstIndex;
    std::shared_ptr<ItemList> m_subMatches;
};

class RegExp final : public ScriptObject {
public:
    QString typeName() const override { return QStringLiteral("IRegExp2"); }
    ScriptValue invoke(const QString &member, CallKind kind, ScriptArgs &args) override
    {
        const QString m = member.toLower();
        const bool put = kind == CallKind::Let;
        if (m == QLatin1String("pattern"))
            return property(m_pattern, put, args);
        if (m == QLatin1String("global"))
            return flag(m_global, put, args);
        if (m == QLatin1String("ignorecase"))
            return flag(m_ignoreCase, put, args);
        if (m == QLatin1String("multiline"))
            return flag(m_multiLine, put, args);
        if (m == QLatin1String("test"))
            return ScriptValue::fromBool(compiled().match(requiredText(args, 0)).hasMatch());
        if (m == QLatin1String("execute"))
            return execute(requiredText(args, 0));
        if (m == QLatin1String("replace"))
            return ScriptValue::fromString(replace(requiredText(args, 0), requiredText(args, 1)));
        throw ScriptError(ErrNo::NoSuchMember);
    }

private:
    ScriptValue property(QString &value, bool put, ScriptArgs &args)
    {
        if (!put)
            return ScriptValue::fromString(value);
        value = requiredText(args, 0);
        return {};
    }
    ScriptValue flag(bool &value, bool put, ScriptArgs &args)
    {
        if (!put)
            return ScriptValue::fromBool(value);
        value = arg(args, 0).toBool();
        return {};
    }

    QRegularExpression compiled() const
    {
        QRegularExpression::PatternOptions options = QRegularExpression::NoPatternOption;
        if (m_ignoreCase)
            options |= QRegularExpression::CaseInsensitiveOption;
        if (m_multiLine)
            options |= QRegularExpression::MultilineOption;
        QRegularExpression re(translateVbScriptPattern(m_pattern, m_multiLine), options);
        if (!re.isValid())
            throw ScriptError(5017, QStringLiteral("Syntax error in regular expression"));
        return re;
    }

    std::vector<QRegularExpressionMatch> matches(const QString &text) const
    {
        std::vector<QRegularExpressionMatch> out;
        const QRegularExpression re = compiled();
        for (auto it = re.globalMatch(text); it.hasNext();) {
            out.push_back(it.next());
            if (!m_global)
                break;
        }
        return out;
    }

    ScriptValue execute(const QString &text) const
    {
        std::vector<ScriptValue> items;
        for (const QRegularExpressionMatch &m : matches(text))
            items.push_back(ScriptValue::fromObject(std::make_shared<Match>(m)));
        return ScriptValue::fromObject(std::make_shared<ItemList>(QStringLiteral("IMatchCollection2"), std::move(items)));
    }

    // $1..$99, $& (the match), $` and $' (text before and after), $$ (a dollar).
    QString replace(const QString &text, const QString &replacement) const
    {
        QString out;
        qsizetype last = 0;
        for (const QRegularExpressionMatch &m : matches(text)) {
            out += text.mid(last, m.capturedStart(0) - last);
            for (qsizetype i = 0; i < replacement.size(); ++i) {
                const QChar c = replacement.at(i);
                if (c != QLatin1Char('$') || i + 1 >= replacement.size()) {
                    out += c;
                    continue;
                }
                const QChar n = replacement.at(i + 1);
                if (n == QLatin1Char('$')) {
                    out += QLatin1Char('$');
                    ++i;
                } else if (n == QLatin1Char('&')) {
                    out += m.captured(0);
                    ++i;
                } else if (n == QLatin1Char('`')) {
                    out += text.left(m.capturedStart(0));
                    ++i;
                } else if (n == QLatin1Char('\'')) {
                    out += text.mid(m.capturedEnd(0));
                    ++i;
                } else if (n.isDigit()) {
                    int group = n.digitValue();
                    qsizetype used = 1;
                    if (i + 2 < replacement.size() && replacement.at(i + 2).isDigit()
                        && group * 10 + replacement.at(i + 2).digitValue() <= m.regularExpression().captureCount()) {
                        group = group * 10 + replacement.at(i + 2).digitValue();
                        used = 2;
                    }
                    if (group == 0 || group > m.regularExpression().captureCount()) {
                        out += c; // not a group: the text stays
                        continue;
                    }
                    out += m.captured(group);
                    i += used;
                } else {
                    out += c;
                }
            }
            last = m.capturedEnd(0);
        }
        out += text.mid(last);
        return out;
    }

    QString m_pattern;
    bool m_global = false;
    bool m_ignoreCase = false;
    bool m_multiLine = false;
};

} // namespace

QString translateVbScriptPattern(const QString &pattern, bool multiLine)
{
    QString out;
    bool inClass = false;
    for (qsizetype i = 0; i < pattern.size(); ++i) {
        const QChar c = pattern.at(i);
        if (c == QLatin1Char('\\') && i + 1 < pattern.size()) {
            const QChar n = pattern.at(i + 1);
            if (n == QLatin1Char('u') && i + 5 < pattern.size()) {
                out += QStringLiteral("\\x{") + pattern.mid(i + 2, 4) + QLatin1Char('}');
                i += 5;
                continue;
            }
            out += c;
            out += n;
            ++i;
            continue;
        }
        if (inClass) {
            if (c == QLatin1Char(']'))
                inClass = false;
            out += c;
            continue;
        }
        if (c == QLatin1Char('[')) {
            inClass = true;
            out += c;
            if (pattern.mid(i + 1, 1) == QLatin1String("]") || pattern.mid(i + 1, 2) == QLatin1String("^]")) {
                // A "]" right after "[" or "[^" is a character of the class.
                const qsizetype skip = pattern.at(i + 1) == QLatin1Char('^') ? 2 : 1;
                out += pattern.mid(i + 1, skip - 1) + QStringLiteral("\\]");
                i += skip;
            }
            continue;
        }
        if (c == QLatin1Char('$') && !multiLine) {
            out += QStringLiteral("\\z"); // the very end, not before a final line break
            continue;
        }
        out += c;
    }
    return out;
}

std::shared_ptr<ScriptObject> makeRegExp()
{
    return std::make_shared<RegExp>();
}

} // namespace cadsim
