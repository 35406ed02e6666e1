#include "cadsim/server/windowsobject.h"

#include "cadsim/server/memberhelpers.h"

HRESULT WindowsObject::invoke(const QString &name, AutomationCall &call)
{
    if (member::is(name, "List")) {
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
    }
    if (member::is(name, "PostMessage")) {
        member::requireArgs(call, 3);
        return m_windows.postMessage(call.arg(0).toI4(), static_cast<std::uint32_t>(call.arg(1).toI4()),
                                     static_cast<std::uint32_t>(call.arg(2).toI4()));
    }
    if (member::is(name, "ShowWindow")) {
        member::requireArgs(call, 2);
        return m_windows.showWindow(call.arg(0).toI4(), call.arg(1).toI4());
    }
    if (member::is(name, "GetProcessID")) {
        call.setResult(Variant::fromI4(static_cast<std::int32_t>(m_processId)));
        return S_OK;
    }
    return DISP_E_MEMBERNOTFOUND;
}
