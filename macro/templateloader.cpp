#include "macro/templateloader.h"

#include <QResource>

#include <cerrno>
#include <iconv.h>

// Resources of a static library are registered only when something asks for them.
static void initTemplateResources()
{
    Q_INIT_RESOURCE(templates);
}

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

} // namespace

QString fromWindows1252(const QByteArray &bytes)
{
    thread_local Windows1252Decoder decoder;
    return decoder.decode(bytes);
}

CompiledScriptResources::CompiledScriptResources()
{
    initTemplateResources();
}

QString CompiledScriptResources::resourcePath(int number)
{
    switch (number) {
    case ConversionTemplate:
        return QStringLiteral(":/macro/templates/convert.mcb");
    case PrintTemplate:
        return QStringLiteral(":/macro/templates/print.mcb");
    case DefaultScriptTemplate:
        return QStringLiteral(":/macro/templates/script.mcb");
    default:
        return {};
    }
}

bool CompiledScriptResources::contains(int number) const
{
    const QString path = resourcePath(number);
    return !path.isEmpty() && QResource(path).isValid();
}

qint64 CompiledScriptResources::sizeOf(int number) const
{
    const QResource resource(resourcePath(number));
    return resource.isValid() ? resource.uncompressedSize() : 0;
}

std::optional<QByteArray> CompiledScriptResources::load(int number) const
{
    const QResource resource(resourcePath(number));
    if (!resource.isValid())
        return std::nullopt;
    return resource.uncompressedData();
}

TemplateLoader::TemplateLoader(const ScriptResourceStore &store, MessageSink showMessage)
    : m_store(store), m_showMessage(std::move(showMessage))
{
}

QString TemplateLoader::load(int number) const
{
    if (!m_store.contains(number))
        return fail(QStringLiteral("Could not find Script resource!"));
    const qint64 size = m_store.sizeOf(number);
    if (size <= 0)
        return fail(QStringLiteral("Error getting size of Script resource."));
    const std::optional<QByteArray> bytes = m_store.load(number);
    if (!bytes)
        return fail(QStringLiteral("Error loading Script resource."));
    // The whole block must be readable, or the text would end somewhere in the middle.
    if (bytes->size() < size)
        return fail(QStringLiteral("Error locking Script resource."));

    return fromWindows1252(bytes->left(size)) + QLatin1Char('\n');
}

QString TemplateLoader::fail(const QString &message) const
{
    if (m_showMessage)
        m_showMessage(message);
    return {};
}

QString loadScriptTemplate(int number, const TemplateLoader::MessageSink &showMessage)
{
    static const CompiledScriptResources resources;
    return TemplateLoader(resources, showMessage).load(number);
}
