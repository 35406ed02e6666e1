#include "platform/automation/classregistry.h"

namespace {

constexpr RegistryRoot kMachine = RegistryRoot::LocalMachine;
constexpr RegistryView kView = RegistryView::Native;

QString classesPath(const QString &subPath) { return QString::fromUtf16(ClassRegistry::ClassesKey) + u'\\' + subPath; }

std::optional<QString> defaultText(RegistryStore &store, RegistryRoot root, const QString &path)
{
    const auto value = store.readValue(root, kView, path, QString());
    if (!value || value->type == RegistryValueType::Dword || value->text.isEmpty())
        return std::nullopt;
    return value->text;
}

// From the classes root, else from the machine's "SOFTWARE\Classes".
std::optional<QString> classesText(RegistryStore &store, const QString &subPath)
{
    if (auto found = defaultText(store, RegistryRoot::ClassesRoot, subPath))
        return found;
    return defaultText(store, kMachine, classesPath(subPath));
}

bool writeDefault(RegistryStore &store, const QString &subPath, const QString &text)
{
    const QString path = classesPath(subPath);
    return store.createKey(kMachine, kView, path)
        && store.writeValue(kMachine, kView, path, QString(), RegistryValue::fromString(text));
}

bool removeKey(RegistryStore &store, const QString &subPath)
{
    const QString path = classesPath(subPath);
    return !store.keyExists(kMachine, kView, path) || store.deleteKeyTree(kMachine, kView, path);
}

} // namespace

std::optional<QString> ClassRegistry::classIdFromProgId(const QString &progId, RegistryStore &store)
{
    if (progId.isEmpty())
        return std::nullopt;
    return classesText(store, progId + QStringLiteral("\\CLSID"));
}

std::optional<QString> ClassRegistry::classValue(const QString &classId, const QString &subKey, RegistryStore &store)
{
    return classesText(store, QStringLiteral("CLSID\\%1\\%2").arg(classId, subKey));
}

bool ClassRegistry::registerLocalServer(const LocalServer &server, RegistryStore &store)
{
    const QString cls = QStringLiteral("CLSID\\") + server.classId;
    return writeDefault(store, cls, server.description)
        && writeDefault(store, cls + QStringLiteral("\\LocalServer32"), server.commandLine)
        && writeDefault(store, cls + QStringLiteral("\\ProgID"), server.progId)
        && writeDefault(store, cls + QStringLiteral("\\VersionIndependentProgID"), server.versionIndependentProgId)
        && writeDefault(store, server.progId, server.description)
        && writeDefault(store, server.progId + QStringLiteral("\\CLSID"), server.classId)
        && writeDefault(store, server.versionIndependentProgId, server.description)
        && writeDefault(store, server.versionIndependentProgId + QStringLiteral("\\CLSID"), server.classId)
        && writeDefault(store, server.versionIndependentProgId + QStringLiteral("\\CurVer"), server.progId);
}

bool ClassRegistry::unregisterLocalServer(const QString &classId, const QString &progId,
                                          const QString &versionIndependentProgId, RegistryStore &store)
{
    bool ok = removeKey(store, QStringLiteral("CLSID\\") + classId) && removeKey(store, progId);
    const auto current = defaultText(store, kMachine, classesPath(versionIndependentProgId + QStringLiteral("\\CLSID")));
    if (current && current->compare(classId, Qt::CaseInsensitive) == 0)
        ok = removeKey(store, versionIndependentProgId) && ok;
    return ok;
}
