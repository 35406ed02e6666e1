#include "addin/module/moduleregistration.h"

#include "host/classfactory.h"
#include "platform/registrystore.h"

namespace {

constexpr RegistryRoot Root = RegistryRoot::ClassesRoot;
constexpr RegistryView View = RegistryView::Native;

// Collects the first failure of a sequence of registry writes.
class RegistryWriter final
{
public:
    explicit RegistryWriter(RegistryStore &store) : m_store(store) {}

    RegistryWriter &key(const QString &path, const QString &defaultValue = {}, bool withDefault = true)
    {
        if (!m_ok)
            return *this;
        m_ok = m_store.createKey(Root, View, path);
        if (m_ok && withDefault)
            m_ok = m_store.writeValue(Root, View, path, QString(), RegistryValue::fromString(defaultValue));
        return *this;
    }
    RegistryWriter &emptyKey(const QString &path) { return key(path, {}, false); }
    RegistryWriter &value(const QString &path, const QString &name, const QString &text)
    {
        if (m_ok)
            m_ok = m_store.writeValue(Root, View, path, name, RegistryValue::fromString(text));
        return *this;
    }
    bool ok() const { return m_ok; }

private:
    RegistryStore &m_store;
    bool m_ok = true;
};

QString classKey() { return QStringLiteral("CLSID\\") + McTaskAddInIds::ClassId; }

} // namespace

HRESULT registerAddInModule(RegistryStore &store, const QString &modulePath)
{
    using namespace McTaskAddInIds;
    const QString cls = classKey();
    if (store.keyExists(Root, View, cls))
        store.deleteKeyTree(Root, View, cls);

    RegistryWriter w(store);
    w.key(ProgId, ClassDescription).key(ProgId + QStringLiteral("\\CLSID"), ClassId);
    w.key(VersionIndependentProgId, ClassDescription)
        .key(VersionIndependentProgId + QStringLiteral("\\CLSID"), ClassId)
        .key(VersionIndependentProgId + QStringLiteral("\\CurVer"), ProgId);
    w.key(cls, ClassDescription)
        .value(cls, QStringLiteral("AppID"), AppId)
        .key(cls + QStringLiteral("\\ProgID"), ProgId)
        .key(cls + QStringLiteral("\\VersionIndependentProgID"), VersionIndependentProgId)
        .emptyKey(cls + QStringLiteral("\\Programmable"))
        .key(cls + QStringLiteral("\\InprocServer32"), modulePath)
        .value(cls + QStringLiteral("\\InprocServer32"), QStringLiteral("ThreadingModel"), QStringLiteral("Both"))
        .key(cls + QStringLiteral("\\TypeLib"), TypeLibId);
    w.key(QStringLiteral("AppID\\") + AppId, AppName)
        .emptyKey(QStringLiteral("AppID\\") + ModuleName)
        .value(QStringLiteral("AppID\\") + ModuleName, QStringLiteral("AppID"), AppId);
    return w.ok() ? S_OK : SELFREG_E_CLASS;
}

HRESULT unregisterAddInModule(RegistryStore &store)
{
    using namespace McTaskAddInIds;
    // Missing keys are fine: unregistering twice is not an error.
    for (const QString &key : {classKey(), ProgId, VersionIndependentProgId, QStringLiteral("AppID\\") + AppId,
                               QStringLiteral("AppID\\") + ModuleName}) {
        if (store.keyExists(Root, View, key) && !store.deleteKeyTree(Root, View, key))
            return SELFREG_E_CLASS;
    }
    return S_OK;
}
