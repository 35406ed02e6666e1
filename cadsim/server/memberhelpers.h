#pragma once

#include "host/hosterror.h"
#include "platform/automation/automationerrors.h"
#include "platform/automation/automationserver.h"

// Small checks shared by the stand-in's automation objects.
namespace member {

// At least count arguments, or DISP_E_BADPARAMCOUNT.
inline void requireArgs(const AutomationCall &call, std::size_t count)
{
    if (call.argCount() < count)
        throw HostError(DISP_E_BADPARAMCOUNT);
}

} // namespace member
