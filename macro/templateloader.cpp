#include "macro/templateloader.h"

#include "base/codepage.h"

#include <QResource>

// Resources of a static library are registered only when something asks for them.
static void initTemplateResources()
{
    Q_INIT_RESOURCE(templates);
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

    return decodeWindows1252(bytes->left(size)) + QLatin1Char('\n');
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
