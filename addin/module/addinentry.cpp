// The module's four exported entry points.

#include "addin/mctaskaddin.h"
#include "addin/module/moduleregistration.h"
#include "addin/module/moduleservices.h"
#include "host/classfactory.h"
#include "platform/modulepath.h"
#include "platform/registrystore.h"

#include <atomic>

namespace {

// Live objects handed out by the module; the host may unload it at zero.
std::atomic<int> g_liveObjects{0};

class LiveObjectCount final
{
public:
    LiveObjectCount() { ++g_liveObjects; }
    ~LiveObjectCount() { --g_liveObjects; }
    LiveObjectCount(const LiveObjectCount &) = delete;
    LiveObjectCount &operator=(const LiveObjectCount &) = delete;
};

class McTaskAddInFactory final : public IClassFactory
{
public:
    HRESULT CreateInstance(const HostObjectPtr &, HostObjectPtr &object) override
    {
        // Aggregation needs nothing special here: the object answers its own
        // interfaces through the dynamic cast either way.
        auto addin = std::shared_ptr<CMcTaskAddIn>(new CMcTaskAddIn(makeModuleServices()),
                                                   [](CMcTaskAddIn *p) {
                                                       delete p;
                                                       --g_liveObjects;
                                                   });
        ++g_liveObjects;
        object = addin;
        return S_OK;
    }

private:
    LiveObjectCount m_count;
};

QString ownModulePath()
{
    static const char anchor = 0;
    return modulePathOf(&anchor);
}

} // namespace

extern "C" {

__attribute__((visibility("default"))) HRESULT DllGetClassObject(const QString &classId, HostObjectPtr &factory)
{
    if (classId.compare(McTaskAddInIds::ClassId, Qt::CaseInsensitive) != 0)
        return CLASS_E_CLASSNOTAVAILABLE;
    factory = std::make_shared<McTaskAddInFactory>();
    return S_OK;
}

__attribute__((visibility("default"))) HRESULT DllCanUnloadNow()
{
    return g_liveObjects.load() == 0 ? S_OK : S_FALSE;
}

__attribute__((visibility("default"))) HRESULT DllRegisterServer()
{
    return registerAddInModule(RegistryStore::instance(), ownModulePath());
}

__attribute__((visibility("default"))) HRESULT DllUnregisterServer()
{
    return unregisterAddInModule(RegistryStore::instance());
}

} // extern "C"
