#pragma once

#include "host/doxcmd.h"
#include "host/hresult.h"

#include <memory>

class IDoxVault;

// The host's command manager: records which commands an add-in hooks.
class IDoxCmdMgr : public virtual HostObject
{
public:
    virtual HRESULT AddHook(std::int32_t commandType, std::int32_t userValue) = 0;
};

// The interface every task add-in implements.
class IDoxAddIn5 : public virtual HostObject
{
public:
    virtual HRESULT GetAddInInfo(DoxAddInInfo *info, const std::shared_ptr<IDoxVault> &vault,
                                 const std::shared_ptr<IDoxCmdMgr> &cmdMgr) = 0;
    virtual HRESULT OnCmd(DoxCmd *cmd, DoxCmdDataArray *data) = 0;
};
