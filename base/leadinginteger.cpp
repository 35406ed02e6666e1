#include "base/leadinginteger.h"

#include <algorithm>
#include <limits>

std::int32_t leadingInteger(const QString &text)
{
    qsizetype i = 0;
    while (i < text.size() && (text[i] == u' ' || (text[i] >= u'\t' && text[i] <= u'\r')))
        ++i;
    bool negative = false;
    if (i < text.size() && (text[i] == u'-' || text[i] == u'+')) {
        negative = text[i] == u'-';
        ++i;
    }
    // One past the largest value: enough to clamp either sign, and it keeps
    // a long run of digits from overflowing.
    constexpr std::int64_t limit = std::int64_t(std::numeric_limits<std::int32_t>::max()) + 1;
    std::int64_t value = 0;
    for (; i < text.size() && text[i] >= u'0' && text[i] <= u'9'; ++i)
        value = std::min(value * 10 + (text[i].unicode() - u'0'), limit);
    if (negative)
        return static_cast<std::int32_t>(-value);
    return static_cast<std::int32_t>(std::min<std::int64_t>(value, std::numeric_limits<std::int32_t>::max()));
}
