#pragma once

#include "cadsim/model/scriptadapters.h"
#include "platform/automation/automationserver.h"

#include <map>
#include <memory>
#include <mutex>

class ModelDoc;
class ModelView;

// How automation callers reach the model's objects: one automation object per
// script object, so each keeps its handle and events reach whoever advised
// it, and the one conversion between automation values and macro values.
// Thread-safe: events ask for objects on the macro thread, calls on the
// server thread.
class ScriptBridge final
{
public:
    explicit ScriptBridge(std::shared_ptr<cadsim::ScriptCadApplication> app) : m_app(std::move(app)) {}

    const std::shared_ptr<cadsim::ScriptCadApplication> &application() const { return m_app; }
    // The automation object of a script object, the same every time; null
    // for objects without a member table.
    std::shared_ptr<AutomationObject> forObject(const std::shared_ptr<cadsim::ScriptObject> &object);
    // Makes automation the object that stands for object (a root object).
    void adopt(const std::shared_ptr<cadsim::ScriptObject> &object, std::shared_ptr<AutomationObject> automation);
    // The object of an open document; null when the application does not hold
    // it (and never held it while asked before).
    std::shared_ptr<AutomationObject> forDocument(const ModelDoc &doc);
    std::shared_ptr<AutomationObject> forView(const ModelDoc &doc, const ModelView &view);

    // Calls a member of object's table with the call's arguments; what the
    // member writes into them goes back to the caller. Errors of the member
    // become the automation results callers expect.
    HRESULT invoke(cadsim::TableObject &object, const QString &member, AutomationCall &call);

    AutomationValue toAutomation(const cadsim::ScriptValue &value);
    // Object references of callers arrive as Nothing: no member takes one yet.
    static cadsim::ScriptValue toScript(const AutomationValue &value);

private:
    std::shared_ptr<cadsim::ScriptDocument> scriptDocument(const ModelDoc &doc);

    std::shared_ptr<cadsim::ScriptCadApplication> m_app;
    std::recursive_mutex m_mutex;
    // The script object is kept so its address is not reused.
    std::map<const cadsim::ScriptObject *,
             std::pair<std::shared_ptr<cadsim::ScriptObject>, std::shared_ptr<AutomationObject>>>
        m_objects;
};
