#pragma once

#include "host/hresult.h"

#include <QString>

#include <cstdint>
#include <memory>

class IDoxTaskInstance;
class TaskRunRecord;

// The run driver's view of the CAD application: one connection for the length
// of one task run. The real one (McManager) starts and drives the stand-in
// process; tests of the driver use a fake.
class CadConnection
{
public:
    virtual ~CadConnection() = default;

    // Keeps the run's settings; the record receives outputs and print entries
    // while macros run.
    virtual void Init(std::shared_ptr<TaskRunRecord> selectionList, std::int32_t taskType,
                      std::shared_ptr<IDoxTaskInstance> taskInstance, std::int32_t versionYear) = 0;
    // Starts and attaches a new CAD process; on failure lastError() says why.
    virtual HRESULT Start() = 0;
    // One restart after a failed start.
    virtual HRESULT RetryStart(HRESULT previousError) = 0;
    // Runs one macro; throws HostError on failure with lastError() set.
    virtual void RunMacro(const QString &macroText) = 0;
    // Restart policy after each file; throws HostError when a needed restart fails.
    virtual void AfterFile() = 0;
    // Detaches and ends the CAD process.
    virtual HRESULT Close(bool force, HRESULT previousError) = 0;
    // The connection's last error text (translated).
    virtual QString lastError() const = 0;
};

// Switches the CAD application's start-up add-ins off (restore false) and puts
// the remembered values back (restore true).
class StartupAddIns
{
public:
    virtual ~StartupAddIns() = default;
    virtual void SuspendStartupAddIns(bool restore) = 0;
};
