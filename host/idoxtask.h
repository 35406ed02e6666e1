#pragma once

#include "host/doxcmd.h"
#include "host/hresult.h"
#include "host/variant.h"

#include <QStringList>
#include <optional>
#include <vector>

// What task properties and task instances share: named variables.
// GetVariable gives S_OK with the value, S_FALSE when absent (value left
// empty), a negative code on a host failure.
class IDoxVariables : public virtual HostObject
{
public:
    virtual HRESULT GetVariable(const QString &name, Variant &value) = 0;
    virtual HRESULT SetVariable(const QString &name, const Variant &value) = 0;
};

// The task being set up, inside the host's set-up dialog.
class IDoxTaskProperties : public virtual IDoxVariables
{
public:
    virtual HRESULT SetTaskFlags(std::int32_t flags) = 0;
    virtual HRESULT GetMenuCommands(std::vector<TaskMenuCommand> &commands) = 0;
    virtual HRESULT SetMenuCommands(const std::vector<TaskMenuCommand> &commands) = 0;
    virtual HRESULT SetSetupPages(const std::vector<SetupPage> &pages) = 0;

    // The task's declared variable names (the data-card mapping declares the
    // card variables it fills, each with an empty text when first declared).
    virtual HRESULT GetDeclaredVariables(QStringList &names) = 0;
    virtual HRESULT DeclareVariable(const QString &name) = 0;
    // The name of the task being set up (pages derive defaults from it).
    virtual HRESULT GetTaskName(QString &name)
    {
        name.clear();
        return E_NOTIMPL;
    }
};

// One execution of a task: launched on a client, run on the task host.
class IDoxTaskInstance : public virtual IDoxVariables
{
public:
    virtual HRESULT GetInstanceGuid(QString &guid) = 0;
    virtual HRESULT GetStatus(std::int32_t &status) = 0;
    virtual HRESULT SetStatus(std::int32_t status, HRESULT result, const std::optional<QString> &message,
                              const std::vector<AffectedObject> &affected,
                              const std::optional<QString> &extra) = 0;
    virtual HRESULT SetProgressRange(std::int32_t maximum, std::int32_t position, const QString &text) = 0;
    virtual HRESULT SetProgressPos(std::int32_t position, const QString &text) = 0;

    // A task value looked up by name (BSTR) or by number (I4): S_OK or S_FALSE.
    virtual HRESULT GetTaskValue(const Variant &nameOrNumber, Variant &value) = 0;
};
