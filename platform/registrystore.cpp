#include "platform/registrystore.h"

#include "platform/home.h"
#include "platform/jsonregistrystore.h"

#include <QRegularExpression>
#include <atomic>

namespace {

std::atomic<RegistryStore *> g_override{nullptr};

} // namespace

std::optional<RegistryRoot> registryRootFromName(const QString &name)
{
    const QString upper = name.toUpper();
    if (upper == QLatin1String("HKLM") || upper == QLatin1String("HKEY_LOCAL_MACHINE"))
        return RegistryRoot::LocalMachine;
    if (upper == QLatin1String("HKCU") || upper == QLatin1String("HKEY_CURRENT_USER"))
        return RegistryRoot::CurrentUser;
    if (upper == QLatin1String("HKCR") || upper == QLatin1String("HKEY_CLASSES_ROOT"))
        return RegistryRoot::ClassesRoot;
    return std::nullopt;
}

QString registryRootName(RegistryRoot root)
{
    switch (root) {
    case RegistryRoot::LocalMachine:
        return QStringLiteral("HKEY_LOCAL_MACHINE");
    case RegistryRoot::CurrentUser:
        return QStringLiteral("HKEY_CURRENT_USER");
    case RegistryRoot::ClassesRoot:
        break;
    }
    return QStringLiteral("HKEY_CLASSES_ROOT");
}

QString expandEnvironmentStrings(const QString &text)
{
    static const QRegularExpression reference(QStringLiteral("%([^%]+)%"));
    QString result;
    qsizetype last = 0;
    auto it = reference.globalMatch(text);
    while (it.hasNext()) {
        const QRegularExpressionMatch match = it.next();
        result += text.mid(last, match.capturedStart() - last);
        const QByteArray name = match.captured(1).toLocal8Bit();
        if (qEnvironmentVariableIsSet(name.constData()))
            result += qEnvironmentVariable(name.constData());
        else
            result += match.captured(0);
        last = match.capturedEnd();
    }
    result += text.mid(last);
    return result;
}

RegistryStore &RegistryStore::instance()
{
    if (RegistryStore *store = g_override.load())
        return *store;
    static JsonRegistryStore store(mctaskHomePath(QStringLiteral("registry.json")));
    return store;
}

RegistryStore *RegistryStore::setInstance(RegistryStore *store)
{
    return g_override.exchange(store);
}
