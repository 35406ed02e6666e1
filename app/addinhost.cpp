#include "app/addinhost.h"

#include "common/settingslight.h"

#include "host/classfactory.h"
#include "platform/registrystore.h"

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>

HRESULT CommandManager::AddHook(std::int32_t commandType, std::int32_t)
{
    if (m_hooks.insert(commandType).second)
        m_order.push_back(commandType);
    return S_OK;
}

AddInHost::~AddInHost()
{
    // The add-in object must go before its code is unloaded.
    m_addin.reset();
    if (m_module) {
        auto canUnload = reinterpret_cast<DllCanUnloadNowFn>(m_module->resolve("DllCanUnloadNow"));
        if (canUnload && canUnload() == S_OK)
            m_module->unload();
    }
}

std::unique_ptr<AddInHost> AddInHost::create(RegistryStore &registry, const QString &classId, QString &error)
{
    const QString key = QStringLiteral("CLSID\\%1\\InprocServer32").arg(classId);
    const auto path = registry.readValue(RegistryRoot::ClassesRoot, RegistryView::Native, key, QString());
    if (!path || path->text.isEmpty()) {
        error = QStringLiteral("the add-in %1 is not registered (run 'mctask addin register')").arg(classId);
        return nullptr;
    }
    std::unique_ptr<AddInHost> host(new AddInHost);
    host->m_module = std::make_unique<QLibrary>(path->text);
    if (!host->m_module->load()) {
        error = QStringLiteral("cannot load the add-in module %1: %2").arg(path->text, host->m_module->errorString());
        return nullptr;
    }
    auto getClass = reinterpret_cast<DllGetClassObjectFn>(host->m_module->resolve("DllGetClassObject"));
    if (!getClass) {
        error = QStringLiteral("%1 is not an add-in module").arg(path->text);
        return nullptr;
    }
    HostObjectPtr factoryObject;
    HRESULT hr = getClass(classId, factoryObject);
    const auto factory = queryInterface<IClassFactory>(factoryObject);
    if (failed(hr) || !factory) {
        error = QStringLiteral("the module %1 does not serve the class %2").arg(path->text, classId);
        return nullptr;
    }
    HostObjectPtr object;
    hr = factory->CreateInstance(nullptr, object);
    host->m_addin = queryInterface<IDoxAddIn5>(object);
    if (failed(hr) || !host->m_addin) {
        error = QStringLiteral("the class %1 is not a task add-in").arg(classId);
        return nullptr;
    }
    return host;
}

HRESULT AddInHost::initialise(const std::shared_ptr<IDoxVault> &vault)
{
    return m_addin->GetAddInInfo(&m_info, vault, m_commands);
}

HRESULT AddInHost::send(DoxCmd &cmd, DoxCmdDataArray &data)
{
    if (!m_commands->isHooked(cmd.commandType))
        return S_FALSE;
    return m_addin->OnCmd(&cmd, &data);
}

HRESULT callModuleRegistration(const QString &modulePath, bool unregister, QString &error)
{
    QLibrary module(modulePath);
    if (!module.load()) {
        error = QStringLiteral("cannot load %1: %2").arg(modulePath, module.errorString());
        return E_FAIL;
    }
    const char *entry = unregister ? "DllUnregisterServer" : "DllRegisterServer";
    auto fn = reinterpret_cast<DllRegisterServerFn>(module.resolve(entry));
    if (!fn) {
        error = QStringLiteral("%1 does not export %2").arg(modulePath, QString::fromLatin1(entry));
        return E_FAIL;
    }
    return fn();
}

bool recordInstallationFolder(const QString &modulePath)
{
    QDir folder = QFileInfo(modulePath).absoluteDir();
    if (folder.dirName() == QLatin1String("lib"))
        folder.cdUp();
    return SettingsLight().setInstallationFolder(folder.absolutePath());
}

QString defaultAddInModulePath()
{
    const QDir bin(QCoreApplication::applicationDirPath());
    for (const QString &candidate : {bin.filePath(QStringLiteral("../lib/McTaskAddIn.so")),
                                     bin.filePath(QStringLiteral("McTaskAddIn.so"))}) {
        if (QFileInfo::exists(candidate))
            return QFileInfo(candidate).canonicalFilePath();
    }
    return {};
}
