#pragma once

#include "cadsim/engine/membertable.h"
#include "cadsim/server/windowservice.h"
#include "platform/automation/automationserver.h"

// The window service as callers reach it ("Windows"): List gives one entry
// per top-level window [handle, title, parent title, visible, text]; PostMessage
// (handle, message, wParam) and ShowWindow (handle, command) act on one.
class WindowsObject final : public AutomationObject
{
public:
    WindowsObject(WindowService &windows, qint64 processId);
    HRESULT invoke(const QString &member, AutomationCall &call) override;

private:
    using Member = std::function<HRESULT(AutomationCall &)>;
    WindowService &m_windows;
    qint64 m_processId;
    cadsim::NamedTable<Member> m_members;
};
