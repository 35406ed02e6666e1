#include "cadsim/server/eventforwarder.h"

#include "cadsim/model/modeldoc.h"
#include "cadsim/server/scriptbridge.h"
#include "platform/automation/automationserver.h"

EventForwarder::EventForwarder(AutomationServer &server, std::shared_ptr<AutomationObject> application,
                               ScriptBridge &bridge)
    : m_server(server), m_application(std::move(application)), m_bridge(bridge)
{
}

void EventForwarder::documentOpened(ModelDoc &doc)
{
    const QString path = doc.pathName().isEmpty() ? doc.sourcePath() : doc.pathName();
    m_server.fireEvent(m_application, cadevent::AppFileOpened, {Variant::fromBStr(path)});
}

void EventForwarder::documentActivated(ModelDoc &)
{
    m_server.fireEvent(m_application, cadevent::AppActiveDocChanged);
    m_server.fireEvent(m_application, cadevent::AppActiveModelChanged);
}

void EventForwarder::fileSaving(ModelDoc &doc, const QString &fileName)
{
    if (auto object = m_bridge.forDocument(doc))
        m_server.fireEvent(object, cadevent::DocFileSaving, {Variant::fromBStr(fileName)});
}

void EventForwarder::documentDestroyed(ModelDoc &doc)
{
    if (auto object = m_bridge.forDocument(doc))
        m_server.fireEvent(object, cadevent::DocDestroyed);
}

void EventForwarder::printed(ModelDoc &doc, ModelView &view)
{
    if (auto object = m_bridge.forView(doc, view))
        m_server.fireEvent(object, cadevent::ViewPrinted);
}
