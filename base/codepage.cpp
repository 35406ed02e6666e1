#include "base/codepage.h"

#include <algorithm>
#include <cerrno>
#include <iconv.h>

namespace {

// One conversion descriptor per thread: iconv keeps state between calls.
class Windows1252Decoder final
{
public:
    Windows1252Decoder() : m_cd(iconv_open("UTF-16LE", "WINDOWS-1252")) {}
    ~Windows1252Decoder()
    {
        if (valid())
            iconv_close(m_cd);
    }
    Windows1252Decoder(const Windows1252Decoder &) = delete;
    Windows1252Decoder &operator=(const Windows1252Decoder &) = delete;

    QString decode(const QByteArray &bytes)
    {
        if (!valid())
            return QString::fromLatin1(bytes);
        iconv(m_cd, nullptr, nullptr, nullptr, nullptr);

        QString out;
        out.reserve(bytes.size());
        QByteArray input = bytes;
        char *in = input.data();
        size_t inLeft = static_cast<size_t>(input.size());
        char buffer[1024];
        while (inLeft > 0) {
            char *dst = buffer;
            size_t dstLeft = sizeof buffer;
            const size_t rc = iconv(m_cd, &in, &inLeft, &dst, &dstLeft);
            appendUtf16(out, buffer, dst);
            if (rc == static_cast<size_t>(-1) && errno != E2BIG) {
                // A byte without a character in the code page keeps its value.
                out.append(QChar(static_cast<unsigned char>(*in)));
                ++in;
                --inLeft;
            }
        }
        return out;
    }

private:
    bool valid() const { return m_cd != reinterpret_cast<iconv_t>(-1); }

    static void appendUtf16(QString &out, const char *begin, const char *end)
    {
        for (const char *p = begin; p + 1 < end; p += 2) {
            const auto lo = static_cast<unsigned char>(p[0]);
            const auto hi = static_cast<unsigned char>(p[1]);
            out.append(QChar(static_cast<char16_t>(lo | (hi << 8))));
        }
    }

    iconv_t m_cd;
};

// One conversion descriptor per thread: iconv keeps state between calls.
class Windows1252Encoder final
{
public:
    Windows1252Encoder() : m_cd(iconv_open("WINDOWS-1252", "UTF-16LE")) {}
    ~Windows1252Encoder()
    {
        if (m_cd != reinterpret_cast<iconv_t>(-1))
            iconv_close(m_cd);
    }
    Windows1252Encoder(const Windows1252Encoder &) = delete;
    Windows1252Encoder &operator=(const Windows1252Encoder &) = delete;

    QByteArray encode(const QString &text)
    {
        QByteArray out;
        out.reserve(text.size());
        if (m_cd == reinterpret_cast<iconv_t>(-1)) {
            // No converter at all: keep what Latin-1 and the code page share.
            for (const QChar c : text)
                out.append(c.unicode() < 0x80 || (c.unicode() >= 0xA0 && c.unicode() <= 0xFF)
                               ? static_cast<char>(c.unicode())
                               : '?');
            return out;
        }
        iconv(m_cd, nullptr, nullptr, nullptr, nullptr);
        // Host byte order is little-endian on the platforms we build for;
        // QString units are converted explicitly all the same.
        QByteArray utf16;
        utf16.resize(text.size() * 2);
        for (qsizetype i = 0; i < text.size(); ++i) {
            const char16_t u = text[i].unicode();
            utf16[2 * i] = static_cast<char>(u & 0xFF);
            utf16[2 * i + 1] = static_cast<char>(u >> 8);
        }
        char *in = utf16.data();
        size_t inLeft = static_cast<size_t>(utf16.size());
        char buffer[512];
        while (inLeft > 0) {
            char *dst = buffer;
            size_t dstLeft = sizeof buffer;
            const size_t rc = iconv(m_cd, &in, &inLeft, &dst, &dstLeft);
            out.append(buffer, static_cast<qsizetype>(dst - buffer));
            if (rc == static_cast<size_t>(-1)) {
                if (errno == E2BIG)
                    continue;
                // Unmappable or broken unit (a lone surrogate half, or a
                // pair the code page lacks): one "?" per character. The five
                // bytes the decoder keeps as their own value go back as they came.
                const auto lo = static_cast<unsigned char>(in[0]);
                const auto hi = static_cast<unsigned char>(in[1]);
                const bool undefinedByte = hi == 0 && (lo == 0x81 || lo == 0x8D || lo == 0x8F || lo == 0x90 || lo == 0x9D);
                out.append(undefinedByte ? static_cast<char>(lo) : '?');
                const bool pair = inLeft >= 4 && (hi & 0xFC) == 0xD8
                                  && (static_cast<unsigned char>(in[3]) & 0xFC) == 0xDC;
                const size_t skip = pair ? 4 : 2;
                in += skip;
                inLeft -= std::min(inLeft, skip);
            }
        }
        return out;
    }

private:
    iconv_t m_cd;
};

} // namespace

QString decodeWindows1252(const QByteArray &bytes)
{
    thread_local Windows1252Decoder decoder;
    return decoder.decode(bytes);
}

QByteArray encodeWindows1252(const QString &text)
{
    thread_local Windows1252Encoder encoder;
    return encoder.encode(text);
}

QByteArray printableAscii(const QString &text)
{
    QByteArray out;
    out.reserve(text.size());
    for (QChar c : text)
        out.append(c.unicode() >= 32 && c.unicode() < 127 ? char(c.unicode()) : '_');
    return out;
}
