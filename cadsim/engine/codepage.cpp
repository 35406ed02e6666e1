#include "cadsim/engine/codepage.h"

#include <iconv.h>

#include <cerrno>

namespace cadsim {

namespace {

class IconvHandle {
public:
    IconvHandle(const char *to, const char *from) : m_cd(iconv_open(to, from)) {}
    ~IconvHandle()
    {
        if (valid())
            iconv_close(m_cd);
    }
    IconvHandle(const IconvHandle &) = delete;
    IconvHandle &operator=(const IconvHandle &) = delete;
    bool valid() const { return m_cd != reinterpret_cast<iconv_t>(-1); }
    iconv_t get() const { return m_cd; }

private:
    iconv_t m_cd;
};

} // namespace

QString decodeWindows1252(const QByteArray &bytes)
{
    IconvHandle cd("UTF-16LE", "WINDOWS-1252");
    if (!cd.valid())
        return QString::fromLatin1(bytes);
    QString out;
    out.reserve(bytes.size());
    // One byte at a time so that the five undefined bytes (0x81, 0x8D...) map to themselves.
    for (const char byte : bytes) {
        char in = byte;
        char16_t unit = 0;
        char *inPtr = &in;
        size_t inLeft = 1;
        char *outPtr = reinterpret_cast<char *>(&unit);
        size_t outLeft = sizeof(unit);
        if (static_cast<unsigned char>(byte) < 0x80) {
            out += QLatin1Char(byte);
            continue;
        }
        if (iconv(cd.get(), &inPtr, &inLeft, &outPtr, &outLeft) == static_cast<size_t>(-1))
            out += QChar(static_cast<unsigned char>(byte));
        else
            out += QChar(unit);
    }
    return out;
}

QByteArray encodeWindows1252(const QString &text)
{
    IconvHandle cd("WINDOWS-1252", "UTF-16LE");
    QByteArray out;
    out.reserve(text.size());
    for (const QChar c : text) {
        if (c.unicode() < 0x80) {
            out += static_cast<char>(c.unicode());
            continue;
        }
        if (!cd.valid() || c.isSurrogate()) {
            out += '?';
            continue;
        }
        char16_t unit = c.unicode();
        char *inPtr = reinterpret_cast<char *>(&unit);
        size_t inLeft = sizeof(unit);
        char result = 0;
        char *outPtr = &result;
        size_t outLeft = 1;
        if (iconv(cd.get(), &inPtr, &inLeft, &outPtr, &outLeft) == static_cast<size_t>(-1))
            out += '?';
        else
            out += result;
    }
    return out;
}

} // namespace cadsim
