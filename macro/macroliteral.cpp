#include "macro/macroliteral.h"

namespace {

constexpr qsizetype kLineLength = 100;

class LiteralWriter final
{
public:
    explicit LiteralWriter(qsizetype sizeHint) { m_out.reserve(sizeHint); }

    void plain(QChar c) { m_out.append(c); }

    void quote() { m_out.append(QLatin1Char('"')); }

    // A " & " written by the encoder; only these may carry a continuation.
    void join()
    {
        const qsizetype start = m_out.size();
        m_out.append(QLatin1String(" & "));
        if (start >= m_lineStart + kLineLength) {
            m_out.append(QLatin1String("_\r\n"));
            m_lineStart = start + 6;
        }
    }

    void chrW(char16_t unit)
    {
        m_out.append(QLatin1String("ChrW("));
        m_out.append(QString::number(static_cast<int>(unit)));
        m_out.append(QLatin1Char(')'));
    }

    QString take() { return std::move(m_out); }

private:
    QString m_out;
    qsizetype m_lineStart = 0;
};

} // namespace

QString EncodeMacroLiteral(const QString &text)
{
    bool wide = false;
    for (const QChar c : text) {
        if (c.unicode() > 255) {
            wide = true;
            break;
        }
    }
    if (!wide)
        return text;

    LiteralWriter w(text.size() * 8);
    bool inCall = false; // the last piece written was a ChrW call
    for (const QChar c : text) {
        if (c.unicode() <= 255) {
            if (inCall) {
                w.join();
                w.quote();
                inCall = false;
            }
            w.plain(c);
        } else {
            if (!inCall)
                w.quote();
            w.join();
            w.chrW(c.unicode());
            inCall = true;
        }
    }
    if (inCall) {
        w.join();
        w.quote();
    }
    return w.take();
}
