#include "cadsim/engine/likematcher.h"

#include "cadsim/engine/scripterror.h"

#include <vector>

namespace cadsim {

namespace {

struct PatternItem {
    enum Kind { Literal, AnyOne, AnyRun, Digit, Class } kind = Literal;
    QChar ch;
    bool negated = false;
    std::vector<std::pair<QChar, QChar>> ranges;
};

QChar fold(QChar c, bool caseInsensitive)
{
    return caseInsensitive ? c.toLower() : c;
}

std::vector<PatternItem> compile(const QString &pattern, bool ci)
{
    std::vector<PatternItem> items;
    for (int i = 0; i < pattern.size(); ++i) {
        const QChar c = pattern.at(i);
        PatternItem item;
        if (c == QLatin1Char('*')) {
            item.kind = PatternItem::AnyRun;
        } else if (c == QLatin1Char('?')) {
            item.kind = PatternItem::AnyOne;
        } else if (c == QLatin1Char('#')) {
            item.kind = PatternItem::Digit;
        } else if (c == QLatin1Char('[')) {
            const int close = pattern.indexOf(QLatin1Char(']'), i + 1);
            if (close < 0)
                throw ScriptError(93, QStringLiteral("Invalid pattern string"));
            item.kind = PatternItem::Class;
            int j = i + 1;
            if (j < close && pattern.at(j) == QLatin1Char('!')) {
                item.negated = true;
                ++j;
            }
            if (j == close && !item.negated) {
                // "[]" matches the empty string: no item at all.
                i = close;
                continue;
            }
            while (j < close) {
                const QChar lo = fold(pattern.at(j), ci);
                if (j + 2 < close && pattern.at(j + 1) == QLatin1Char('-')) {
                    const QChar hi = fold(pattern.at(j + 2), ci);
                    if (hi < lo)
                        throw ScriptError(93, QStringLiteral("Invalid pattern string"));
                    item.ranges.emplace_back(lo, hi);
                    j += 3;
                } else {
                    item.ranges.emplace_back(lo, lo);
                    ++j;
                }
            }
            i = close;
        } else {
            item.kind = PatternItem::Literal;
            item.ch = fold(c, ci);
        }
        items.push_back(item);
    }
    return items;
}

bool matchesOne(const PatternItem &item, QChar c)
{
    switch (item.kind) {
    case PatternItem::Literal:
        return item.ch == c;
    case PatternItem::AnyOne:
        return true;
    case PatternItem::Digit:
        return c >= QLatin1Char('0') && c <= QLatin1Char('9');
    case PatternItem::Class: {
        bool in = false;
        for (const auto &[lo, hi] : item.ranges) {
            if (c >= lo && c <= hi) {
                in = true;
                break;
            }
        }
        return in != item.negated;
    }
    case PatternItem::AnyRun:
        return true;
    }
    return false;
}

} // namespace

bool likeMatch(const QString &text, const QString &pattern, bool caseInsensitive)
{
    const std::vector<PatternItem> items = compile(pattern, caseInsensitive);
    const int n = static_cast<int>(text.size());
    // reach[j]: the first i pattern items can consume exactly j characters of the text.
    std::vector<char> reach(n + 1, 0), nextReach(n + 1, 0);
    reach[0] = 1;
    for (const PatternItem &item : items) {
        std::fill(nextReach.begin(), nextReach.end(), 0);
        if (item.kind == PatternItem::AnyRun) {
            bool any = false;
            for (int j = 0; j <= n; ++j) {
                any = any || reach[j];
                nextReach[j] = any;
            }
        } else {
            for (int j = 0; j < n; ++j) {
                if (reach[j] && matchesOne(item, fold(text.at(j), caseInsensitive)))
                    nextReach[j + 1] = 1;
            }
        }
        reach.swap(nextReach);
    }
    return reach[n] != 0;
}

} // namespace cadsim
