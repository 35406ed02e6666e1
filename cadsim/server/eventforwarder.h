#pragma once

#include "cadsim/model/modelobserver.h"

#include <memory>

class AutomationObject;
class AutomationServer;
class ScriptBridge;

// Event numbers as the connected add-in knows them.
namespace cadevent {
inline constexpr int AppActiveDocChanged = 7;   // application: another document became active
inline constexpr int AppFileOpened = 12;        // application: a document was opened (its path)
inline constexpr int AppActiveModelChanged = 22; // application: the active model changed
inline constexpr int DocFileSaving = 7;         // document: a file is about to be written (its name)
inline constexpr int DocDestroyed = 2;          // document: the document goes away
inline constexpr int ViewPrinted = 10;          // model view: the document was printed
} // namespace cadevent

// Turns what the model reports into automation events for the connected
// callers. From the macro thread each event waits until the callers handled
// it, so a file's name is announced before its bytes are written.
class EventForwarder final : public ModelObserver
{
public:
    EventForwarder(AutomationServer &server, std::shared_ptr<AutomationObject> application,
                   ScriptBridge &bridge);

    void documentOpened(ModelDoc &doc) override;
    void documentActivated(ModelDoc &doc) override;
    void fileSaving(ModelDoc &doc, const QString &fileName) override;
    void documentDestroyed(ModelDoc &doc) override;
    void printed(ModelDoc &doc, ModelView &view) override;

private:
    AutomationServer &m_server;
    std::shared_ptr<AutomationObject> m_application;
    ScriptBridge &m_bridge;
};
