#include "cadsim/server/windowsobject.h"

#include "cadsim/server/memberhelpers.h"

WindowsObject::WindowsObject(WindowService &windows, qint64 processId) : m_windows(windows), m_processId(processId)
{
    m_members.add("List", [this](AutomationCall &call) {
        std::vector<AutomationValue> entries;
        for (const WindowService::WindowInfo &window : m_windows.list()) {
            entries.push_back(AutomationValue::fromArray({
                Variant::fromI4(static_cast<std::int32_t>(window.id)),
                Variant::fromBStr(window.title),
                Variant::fromBStr(window.parentTitle),
                Variant::fromBool(window.visible),
                Variant::fromBStr(window.text),
            }));
        }
        call.setResult(AutomationValue::fromArray(std::move(entries)));
        return S_OK;
    });
    m_members.add("PostMessage", [this](AutomationCall &call) {
        member::requireArgs(call, 3);
        return m_windows.postMessage(call.arg(0).toI4(), static_cast<std::uint32_t>(call.arg(1).toI4()),
                                     static_cast<std::uint32_t>(call.arg(2).toI4()));
    });
    m_members.add("ShowWindow", [this](AutomationCall &call) {
        member::requireArgs(call, 2);
        return m_windows.showWindow(call.arg(0).toI4(), call.arg(1).toI4());
    });
    m_members.add("GetProcessID", [this](AutomationCall &call) {
        call.setResult(Variant::fromI4(static_cast<std::int32_t>(m_processId)));
        return S_OK;
    });
}

HRESULT WindowsObject::invoke(const QString &name, AutomationCall &call)
{
    const Member *member = m_members.find(name);
    return member ? (*member)(call) : DISP_E_MEMBERNOTFOUND;
}
